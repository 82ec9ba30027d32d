#include "hosts/qfc/cli/CommandLine.h"

#include "hosts/qfc/cli/CommandGroups.h"
#include "hosts/qfc/cli/Parser.h"

namespace qfc::host {

std::variant<Invocation, LeaveNow> ReadCommandLine(int argc, const char* const* argv) {
    Parser parser;
    AddContentCommands(parser);
    AddOrderCommands(parser);
    AddPictureCommands(parser);
    AddLibraryCommands(parser);
    AddTagCommands(parser);
    AddEffectCommands(parser);
    return parser.Read(argc, argv);
}

}  // namespace qfc::host
