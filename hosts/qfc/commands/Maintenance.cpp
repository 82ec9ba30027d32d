#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Session.h"
#include "hosts/qfc/library/TagClearing.h"

#include <filesystem>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// Both commands are for a library that is there; opening it would make one.
std::string ExistingLibrary() {
    const std::string path = LibraryPath();
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) throw Failure("there is no library " + path);
    return path;
}

std::string Listed(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + text;
    return list;
}

}  // namespace

int Run(const ClearOptions&, const Console& console) {
    const std::string path = ExistingLibrary();
    const ChangeLock lock;
    const Interrupt interrupt;  // A clear that is begun goes as a whole.
    if (!QFCLibraryManager::fnClearDBContent()) throw Failure("cannot clear " + path);
    const ClearedTags tags = ClearTags();
    const std::string cleared =
        "cleared " + path + (tags.categories.empty() ? "" : " with the tags of " + Listed(tags.categories));
    if (tags.left.empty()) {
        console.Say(cleared);
    } else {
        console.Complain(cleared + ", except: " + Listed(tags.left));
    }
    console.ShowJson({{"cleared", path}, {"categories", tags.categories}, {"failed", tags.left}});
    return tags.left.empty() ? kDone : kFailed;
}

int Run(const CheckOptions&, const Console& console) {
    const std::string path = ExistingLibrary();
    std::vector<LibraryFinding> findings;
    if (!fnCheckLibrary(path.c_str(), findings)) throw Failure("cannot read " + path);
    Json json{{"library", path}, {"findings", Json::array()}};
    for (const LibraryFinding& finding : findings) {
        const char* kind = LibraryFindingName(finding.kind);
        json["findings"].push_back({{"kind", kind}, {"row", finding.row}, {"text", finding.sentence}});
        console.Show(std::string(kind) + (finding.row.empty() ? "" : " " + finding.row) + ": " + finding.sentence);
    }
    console.ShowJson(json);
    if (!findings.empty()) throw Failure(Counted(findings.size(), "finding") + " in " + path);
    console.Say("no damage found in " + path);
    return kDone;
}

}  // namespace qfc::host
