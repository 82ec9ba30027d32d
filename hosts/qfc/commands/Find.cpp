#include "hosts/qfc/library/Find.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/library/TagFilter.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <nlohmann/json.hpp>
#include <set>

namespace qfc::host {
namespace {

bool Fits(CQItem& item, const FindOptions& options) {
    if (!options.kind.empty() && options.kind != KindOf(item)) return false;
    if (!options.text) return true;
    const CString text = ToCString(*options.text);
    if (item.FindSomeThing(text, options.description, options.annotation, 0, 0) != 0) return true;
    // The stored name is what the library looks at; people look for the one they see.
    return CQItem(ToCString(ShownName(item))).FindSomeThing(text, 0, 0, 0, 0) != 0;
}

// Each item once, however many folders hold it, in the order of the tree.
std::vector<CQItem*> Matches(CQGallery& gallery, const FindOptions& options, const TagFilter& filter) {
    std::vector<CQItem*> matches;
    std::set<GUID> seen;
    for (CQFolder* folder : WholeTree(gallery)) {
        for (CQItem* item : Items(*folder)) {
            const bool fits = Fits(*item, options) && filter.Fits(*item, Galleries::NameOf(gallery).id);
            if (fits && seen.insert(item->GetUniqueID()).second) matches.push_back(item);
        }
    }
    return matches;
}

std::vector<CQGallery*> Searched(Galleries& galleries, const std::string& gallery) {
    if (gallery.empty()) return galleries.All();
    CQGallery* named = galleries.Find(gallery);
    return named != nullptr ? std::vector{named} : std::vector<CQGallery*>{};
}

}  // namespace

int Run(const FindOptions& options, const Console& console) {
    const Session session;
    Galleries galleries(session);
    const TagFilter filter(session, options.tags, options.any);
    const Tags tags(session);
    Json json = Json::array();
    for (CQGallery* gallery : Searched(galleries, options.gallery)) {
        for (const CQItem* item : Matches(*gallery, options, filter)) {
            json.push_back(ItemJson(*gallery, *item, tags));
            std::string where = Galleries::NameOf(*gallery).name + ":";
            for (const std::string& path : PathsOf(*gallery, *item)) where += " " + path + ",";
            where.pop_back();
            const std::string names = TagNames(tags.Of(*item));
            if (!names.empty()) where += "  [" + names + "]";
            console.Show(ItemLine(*item, where));
        }
    }
    console.ShowJson(json);
    if (json.empty()) throw Failure("nothing found" + (options.text ? " for " + *options.text : ""));
    return kDone;
}

}  // namespace qfc::host
