#include "api/QFCLib.h"
#include "hosts/qfc/Progress.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/ImportPlan.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/library/AddQueue.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/Find.h"
#include "hosts/qfc/library/FolderMaker.h"
#include "hosts/qfc/library/MediaItem.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/Placement.h"
#include "hosts/qfc/library/Tree.h"
#include "hosts/qfc/media/DecodePool.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// "#row" or a path; the components of the folder to import into.
std::vector<std::string> BaseFolder(Galleries& galleries, CQGallery& gallery, const ImportOptions& options) {
    if (RowNumber(options.folder)) {
        const FoundFolder found = FindFolder(galleries, options.gallery, options.folder);
        if (found.gallery != &gallery) throw Failure(options.folder + " is in another gallery");
        RequireReachable(gallery, *found.folder);
        return ComponentsOf(*found.folder);
    }
    const std::vector<std::string> components = SplitPath(options.folder);
    RequireLevels(components.size());
    // What is there of the path has to be one folder; that is said before anything is decoded.
    CQFolder* folder = &gallery;
    for (std::size_t i = 0; i < components.size() && folder != nullptr; ++i)
        folder = ChildNamed(*folder, components[i]);
    return components;
}

// Runs one import and keeps what came of it.
class Importing {
public:
    Importing(CQGallery& gallery, ImportPlan plan, bool automatic, const Interrupt& interrupt, const Console& console)
        : m_gallery(gallery),
          m_plan(std::move(plan)),
          m_isAutomatic(automatic),
          m_interrupt(interrupt),
          m_console(console),
          m_folders(gallery, FolderMaker::Names::kShown),
          m_progress(stdout, m_plan.files.size(), console.IsJson() || console.IsQuiet()) {}

    void Go() {
        LeaveOutRemembered();
        for (const ImportPlan::Known& known : m_plan.already) Remember(known.path);
        for (const ImportPlan::Known& known : m_plan.already) {
            Tell("there already: " + known.path + (known.paths.empty() ? "" : " (" + known.paths.front() + ")"));
        }
        for (const WalkProblem& problem : m_plan.problems) NoteBroken(problem.path, problem.text);
        AddAll();
        m_progress.Clear();
    }

    int Report() const {
        m_console.ShowJson(AsJson());
        std::string summary = Counted(m_added.size(), "file") + " added";
        if (!m_plan.already.empty()) summary += ", " + std::to_string(m_plan.already.size()) + " there already";
        if (!m_broken.empty()) summary += ", " + std::to_string(m_broken.size()) + " not readable";
        if (!m_refused.empty()) summary += ", " + std::to_string(m_refused.size()) + " not stored";
        if (!m_unseen.empty()) summary += ", " + std::to_string(m_unseen.size()) + " not seen";
        if (!m_remembered.empty()) summary += ", " + std::to_string(m_remembered.size()) + " imported before";
        if (m_skipped > 0) summary += ", " + std::to_string(m_skipped) + " no media";
        if (m_interrupt.IsRaised()) {
            m_console.Complain("interrupted: " + summary);
        } else {
            m_console.Say(summary);
        }
        // Broken files are the files' fault; what could not be stored is ours.
        const bool useful = !m_added.empty() || !m_plan.already.empty() || !m_remembered.empty();
        if (!useful && m_refused.empty() && m_unseen.empty()) m_console.Complain("nothing to import");
        const bool isWhole = m_refused.empty() && m_unseen.empty() && m_forgotten.empty() && m_notLast.empty();
        return useful && isWhole && !m_interrupt.IsRaised() ? kDone : kFailed;
    }

private:
    // What was loaded automatically is remembered under the number of the gallery's root; the user may have removed it
    // since, and does not want it back.
    void LeaveOutRemembered() {
        if (!m_isAutomatic) return;
        std::erase_if(m_plan.files, [&](const ImportPlan::File& file) {
            if (!IsRemembered(file.path) && !IsRemembered(file.path)) return false;
            m_remembered.push_back(file.path);
            return true;
        });
        for (const std::string& path : m_remembered) Tell("imported before: " + path);
    }

    // The library says no as well when it cannot look; asked again, it may be able to.
    bool IsRemembered(const std::string& path) const {
        return QFCLibraryManager::fnIsItemInAutoLoadedByPathTable(path.c_str(), m_gallery.GetDBId()) != 0;
    }

    // Only what is stored: a file that was remembered too early would be lost.
    void Remember(const std::string& path) {
        if (!m_isAutomatic) return;
        if (IsRemembered(path)) return;
        QFCLibraryManager::fnAddItemIntoAutoLodedByPathTable(path.c_str(), m_gallery.GetDBId());
        if (IsRemembered(path) || IsRemembered(path)) return;
        m_forgotten.push_back(path);
        m_progress.Clear();
        m_console.Complain(path + ": cannot be remembered in the library");
    }

    void AddAll() {
        AddQueue queue(m_gallery);
        std::vector<std::string> paths;
        for (const ImportPlan::File& file : m_plan.files) paths.push_back(file.path);
        {
            DecodePool pool(std::move(paths), m_interrupt.Flag(), {});
            for (const ImportPlan::File& file : m_plan.files) {
                const auto media = pool.Next();
                if (!media) break;
                m_progress.Step(file.name);
                Add(file, *media, queue);
                Collect(queue);
            }
        }
        queue.Settle();
        Collect(queue);
        for (const CQFolder* folder : queue.MendOrders()) NoteOrder("what was added last in ", PathOf(*folder));
        for (const std::string& path : m_folders.NotLast()) NoteOrder("the folder last: ", path);
    }

    void Add(const ImportPlan::File& file, const DecodedMedia& media, AddQueue& queue) {
        // Of a file that was being decoded when Ctrl-C came nothing is known.
        if (!media.IsGood() && m_interrupt.IsRaised()) return;
        if (!media.isMedia && !file.named) {
            ++m_skipped;
            return;
        }
        if (!media.IsGood()) return NoteBroken(file.path, media.error);
        if (!file.storable) return NoteBroken(file.path, "its name is not UTF-8");
        try {
            CQFolder* folder = m_folders.Make(file.folder);
            std::unique_ptr<CQItem> item = folder != nullptr ? MakeItem(media, file.name) : nullptr;
            if (item == nullptr) return NoteRefused(file.path);
            queue.Add(std::move(item), *folder, {m_folders.StoredPath(*folder), m_folders.ShownPath(*folder)});
        } catch (const Failure& failure) {
            NoteRefused(file.path, failure.what());
        }
    }

    void Collect(AddQueue& queue) {
        for (const AddQueue::Outcome& outcome : queue.TakeOutcomes()) {
            if (!outcome.stored) {
                NoteUnseen(outcome.file);
                continue;
            }
            if (!*outcome.stored) {
                NoteRefused(outcome.file);
                continue;
            }
            Remember(outcome.file);
            m_added.push_back(outcome);
            Tell("added " + outcome.folder + "\\" + outcome.name);
        }
    }

    // A line for every file, unless a bar shows how far it is.
    void Tell(const std::string& line) {
        if (!m_progress.IsShown()) m_console.Say(line);
    }
    void NoteBroken(const std::string& path, const std::string& text) {
        m_broken.push_back({path, text});
        m_progress.Clear();
        m_console.Complain(path + ": " + text);
    }
    void NoteRefused(const std::string& path, const std::string& reason = "cannot be stored in the library") {
        m_refused.push_back(path);
        m_progress.Clear();
        m_console.Complain(path + ": " + reason);
    }

    void NoteUnseen(const std::string& path) {
        m_unseen.push_back(path);
        m_progress.Clear();
        m_console.Complain(path + ": the library cannot be looked at; it may be stored");
    }

    void NoteOrder(const std::string& what, const std::string& path) {
        m_notLast.push_back(path);
        m_progress.Clear();
        m_console.Complain("cannot put " + what + path);
    }

    Json AsJson() const {
        Json json{{"gallery", Galleries::NameOf(m_gallery).name}};
        json["added"] = Json::array();
        json["already"] = Json::array();
        json["broken"] = Json::array();
        for (const AddQueue::Outcome& added : m_added) {
            json["added"].push_back({{"guid", GuidToText(added.guid)},
                                     {"name", added.name},
                                     {"folder", added.folder},
                                     {"file", added.file}});
        }
        for (const auto& known : m_plan.already) {
            json["already"].push_back({{"file", known.path}, {"paths", known.paths}});
        }
        for (const auto& broken : m_broken) json["broken"].push_back({{"file", broken.path}, {"error", broken.text}});
        json["notStored"] = m_refused;
        json["unseen"] = m_unseen;
        json["notLast"] = m_notLast;
        if (m_isAutomatic) json["importedBefore"] = m_remembered;
        if (m_isAutomatic) json["notRemembered"] = m_forgotten;
        json["skipped"] = m_skipped;
        json["interrupted"] = m_interrupt.IsRaised();
        return json;
    }

    CQGallery& m_gallery;
    ImportPlan m_plan;
    const bool m_isAutomatic;
    const Interrupt& m_interrupt;
    const Console& m_console;
    FolderMaker m_folders;
    Progress m_progress;
    std::vector<AddQueue::Outcome> m_added;
    std::vector<WalkProblem> m_broken;
    std::vector<std::string> m_refused;
    std::vector<std::string> m_unseen;      // Nobody knows whether they are stored.
    std::vector<std::string> m_notLast;     // Folders with items, or folders, whose stored order is another one.
    std::vector<std::string> m_remembered;  // Left out.
    std::vector<std::string> m_forgotten;   // Stored, but not remembered.
    std::size_t m_skipped = 0;              // Files of directories that are no media.
};

}  // namespace

int Run(const ImportOptions& options, const Console& console) {
    RequireUtf8(options.folder);
    const Interrupt interrupt;
    const Walk walk = WalkFiles(options.paths, &interrupt.Flag());
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    CQGallery& gallery = galleries.Open(options.gallery);
    ImportPlan plan = PlanImport(walk, gallery, BaseFolder(galleries, gallery, options));
    // The worker gives added items the tags that the data beside the program want for them; both are read before.
    QFCLibraryManager::fnLoadLibTag();
    CLibTagsMgr::GetLibTagMgr()->GeneratePresetTagData();
    Importing importing(gallery, std::move(plan), options.automatic, interrupt, console);
    importing.Go();
    return importing.Report();
}

}  // namespace qfc::host
