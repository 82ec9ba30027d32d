#include "hosts/qfc/cli/CommandGroups.h"
#include "hosts/qfc/cli/CommonOptions.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/cli/Parser.h"

#include <CLI/CLI.hpp>

namespace qfc::host {

void AddLibraryCommands(Parser& parser) {
    auto [exported, exportOptions] =
        parser.Add<ExportOptions>(parser.Root(), "export", "Write a copy of the library to a file", "export backup.db");
    AddPlace(exported, "FILE", exportOptions->file, "File to write; replaced when it exists");

    auto [imported, importOptions] = parser.Add<ImportLibraryOptions>(
        parser.Root(), "import-library", "Add the galleries, folders, items and tags of another library",
        "import-library backup.db");
    AddPlace(imported, "FILE", importOptions->file, "The other library; it is never changed");

    // A flag may be given as "--yes=no".
    auto [clear, clearOptions] = parser.Add<ClearOptions>(
        parser.Root(), "clear", "Empty the library; only the tags of predefined galleries stay, without their items",
        "clear --yes", [](const ClearOptions& o) {
            if (!o.yes) throw WrongUsage("clear wants --yes");
        });
    clear->add_flag("--yes", clearOptions->yes, "Really do it")->required();

    CLI::App& translate = Parser::AddGroup(parser.Root(), "translate", "Translated names of folders and items",
                                           "translate collect && qfc --translate on tree");
    parser.Add<TranslateCollectOptions>(translate, "collect",
                                        "Write the names that have no translation into the translation file",
                                        "translate collect");

    parser.Add<CheckOptions>(parser.Root(), "check", "Look for damage in the library; changes nothing", "check");
}

}  // namespace qfc::host
