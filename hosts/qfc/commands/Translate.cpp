#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Galleries.h"
#include "hosts/qfc/library/Translation.h"

#include <nlohmann/json.hpp>

namespace qfc::host {

int Run(const TranslateCollectOptions&, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const CollectedNames names = CollectNames(galleries);
    for (const std::string& name : names.written) console.Say("wrote " + name);
    for (const std::string& name : names.refused) console.Complain("cannot write " + name + " into " + names.file);
    console.Say(Counted(names.written.size(), "name") + " written, " + std::to_string(names.already) +
                " there already");
    console.ShowJson(
        {{"file", names.file}, {"written", names.written}, {"already", names.already}, {"refused", names.refused}});
    return names.refused.empty() ? kDone : kFailed;
}

}  // namespace qfc::host
