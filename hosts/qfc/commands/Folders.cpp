#include "hosts/qfc/Progress.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/FolderMaker.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Removal.h"
#include "hosts/qfc/library/Tree.h"

#include <nlohmann/json.hpp>

namespace qfc::host {

int Run(const MakeFolderOptions& options, const Console& console) {
    const std::vector<std::string> components = SplitPath(options.folder);
    RequireUtf8(options.folder);
    if (components.empty()) throw WrongUsage("mkdir wants the name of a folder");
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    FolderMaker maker(galleries.Open(options.gallery), FolderMaker::Names::kTyped);
    CQFolder* folder = maker.Make(components);
    if (folder == nullptr) throw Failure("cannot make the folder " + JoinPath(components));
    if (maker.Made().empty()) throw Failure("there is a folder " + PathOf(*folder) + " already");
    for (const std::string& path : maker.Made()) console.Say("made " + path);
    for (const std::string& path : maker.NotLast()) console.Complain("cannot put the folder " + path + " last");
    console.ShowJson({{"folder", FolderJson(*folder)}, {"made", maker.Made()}, {"notLast", maker.NotLast()}});
    return maker.NotLast().empty() ? kDone : kFailed;
}

int Run(const RemoveFolderOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    CQFolder& folder = *FindFolder(galleries, options.gallery, options.folder).folder;
    const std::string path = PathOf(folder);
    const bool filled = !SubFolders(folder).empty() || !Items(folder).empty();
    if (filled && !options.recursive) throw Failure(path + " is not empty; --recursive removes it with all it holds");
    const Json removed = FolderJson(folder);
    const Interrupt interrupt;
    Progress progress(stdout, WholeTree(folder).size(), console.IsJson() || console.IsQuiet());
    const RemovalStep step = [&](const std::string& next) { progress.Step(next); };
    const FolderRemoval done = RemoveFolder(galleries, folder, step, interrupt.Flag());
    progress.Clear();
    if (!done.isBegun && !done.isWhole) throw Failure(done.Text());
    const bool isGone = done.isStored == false;
    if (isGone) console.Say("removed " + path);
    for (const std::string& line : done.Lines()) console.Complain(line);
    console.ShowJson({{"removed", isGone ? removed : Json(nullptr)},
                      {"failed", done.folders.stored},
                      {"unseen", done.folders.unseen},
                      {"itemsLeft", done.items.stored},
                      {"itemsUnseen", done.items.unseen},
                      {"itemsBefore", done.itemsBefore},
                      {"itemsInFolder", done.itemsPlaced},
                      {"linksLeft", !done.links.stored.empty()},
                      {"linksUnseen", !done.links.unseen.empty()},
                      {"halt", done.halt},
                      {"interrupted", done.IsInterrupted()}});
    return done.IsDone() ? kDone : kFailed;
}

}  // namespace qfc::host
