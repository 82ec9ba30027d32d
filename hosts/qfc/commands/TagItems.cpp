#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/commands/Interrupt.h"
#include "hosts/qfc/commands/TagText.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/TagChanges.h"
#include "hosts/qfc/library/TagWholeChange.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

namespace qfc::host {
namespace {

std::vector<FoundItem> FindItems(Galleries& galleries, const TagItemsOptions& options) {
    std::vector<FoundItem> items;
    for (const std::string& text : options.items) {
        const FoundItem found = FindItem(galleries, options.gallery, text);
        const auto isKnown = [&](const FoundItem& known) { return known.item == found.item; };
        if (std::ranges::none_of(items, isKnown)) items.push_back(found);
    }
    return items;
}

std::list<GUID> TagsFor(const Tags& tags, const std::vector<std::string>& texts, const CQGallery& gallery) {
    std::list<GUID> guids;
    for (const std::string& text : texts) {
        const GUID guid = tags.FindFor(text, Galleries::NameOf(gallery).id).tag.m_guid;
        if (std::ranges::find(guids, guid) == guids.end()) guids.push_back(guid);
    }
    return guids;
}

std::string Listed(const std::vector<std::string>& texts) {
    std::string list;
    for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + text;
    return list;
}

// What tells giving tags from taking them away.
struct Direction {
    void (TagChanges::*change)(const std::vector<CQItem*>&, const std::list<GUID>&, const std::string&);
    bool carriesAfterwards;
    const char* failure;
    const char* done;
    const char* nothing;
};
constexpr Direction kGive{&TagChanges::Link, true, "cannot add ", "tagged ", "tagged already: "};
constexpr Direction kTake{&TagChanges::Unlink, false, "cannot remove ", "untagged ", "not tagged so: "};

// Which tags a name means depends on the gallery of the item; those that get the same ones are changed together.
using Groups = std::map<std::vector<GUID>, std::vector<CQItem*>>;

bool IsDone(const Tags& tags, const Groups::value_type& group, const Direction& direction) {
    return std::ranges::all_of(group.first, [&](const GUID& tag) {
        const std::set<GUID> carriers = tags.CarriersOf(tag);
        return std::ranges::all_of(group.second, [&](const CQItem* item) {
            return carriers.contains(item->GetUniqueID()) == direction.carriesAfterwards;
        });
    });
}

void ChangeGroups(Tags& tags, Galleries& galleries, const Groups& groups, const Direction& direction,
                  const std::string& what) {
    TagChanges changes(tags, galleries);
    const Interrupt interrupt;
    std::set<GUID> changing;
    for (const auto& [guids, items] : groups) changing.insert(guids.begin(), guids.end());
    TagBackup before;
    for (const GUID& guid : changing) {
        const FoundTag tag = *tags.ByGuid(guid);
        before.Keep(tags, tag.gallery, {tag.tag});
    }
    const auto change = [&] {
        for (const auto& [guids, items] : groups) {
            (changes.*direction.change)(items, {guids.begin(), guids.end()}, what);
        }
    };
    const auto isDone = [&] {
        return std::ranges::all_of(groups, [&](const auto& group) { return IsDone(tags, group, direction); });
    };
    ChangeOrAsBefore(tags, before, change, isDone);
}

// All names are looked up before anything is changed. Items that stand so already are not touched, and not counted.
int ChangeItems(const TagItemsOptions& options, const Direction& direction, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    Groups groups;
    std::vector<FoundItem> changing, standing;
    for (const FoundItem& item : FindItems(galleries, options)) {
        const std::list<GUID> guids = TagsFor(tags, options.tags, *item.gallery);
        const auto isSo = [&](const GUID& tag) {
            return (item.item->IsTagExist(tag) != 0) == direction.carriesAfterwards;
        };
        const bool isStanding = std::ranges::all_of(guids, isSo);
        (isStanding ? standing : changing).push_back(item);
        if (!isStanding) groups[{guids.begin(), guids.end()}].push_back(item.item);
    }
    const std::string listed = Listed(options.tags);
    if (changing.empty() && !direction.carriesAfterwards) throw Failure("nothing to remove: no item has " + listed);
    ChangeGroups(tags, galleries, groups, direction, direction.failure + listed);
    Json changed = Json::array(), unchanged = Json::array();
    for (const FoundItem& item : changing) {
        changed.push_back(ItemJson(*item.gallery, *item.item, tags));
        const std::string names = TagNames(tags.Of(*item.item));
        console.Say(direction.done + ShownName(*item.item) + (names.empty() ? "" : ": " + names));
    }
    for (const FoundItem& item : standing) {
        unchanged.push_back(ItemJson(*item.gallery, *item.item, tags));
        console.Say(direction.nothing + ShownName(*item.item));
    }
    console.ShowJson({{"items", changed}, {"unchanged", unchanged}});
    return kDone;
}

}  // namespace

int Run(const TagAddOptions& options, const Console& console) { return ChangeItems(options, kGive, console); }

int Run(const TagRemoveOptions& options, const Console& console) { return ChangeItems(options, kTake, console); }

int Run(const TagMergeOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    const auto gallery = NamedGallery(galleries, options.gallery);
    const FoundTag target = tags.Find(options.tags.back(), gallery);
    std::vector<FoundTag> sources;
    for (std::size_t i = 0; i + 1 < options.tags.size(); ++i) {
        const FoundTag source =
            gallery ? tags.Find(options.tags[i], gallery) : tags.FindFor(options.tags[i], target.gallery);
        const auto isKnown = [&](const FoundTag& known) { return known.tag.m_guid == source.tag.m_guid; };
        if (isKnown(target) || std::ranges::any_of(sources, isKnown)) continue;
        if (source.gallery != target.gallery) {
            throw Failure(QualifiedName(source) + " and " + QualifiedName(target) + " are of two galleries");
        }
        if (!source.tag.m_bDeletable) throw Failure(QualifiedName(source) + " cannot be deleted");
        sources.push_back(source);
    }
    if (sources.empty()) throw Failure("nothing to merge: " + QualifiedName(target) + " is the target itself");
    TagChanges changes(tags, galleries);
    Json merged = Json::array(), items = Json::array();
    for (const FoundItem& item :
         changes.Merge(target.gallery, target.tag, sources, "cannot merge into " + QualifiedName(target))) {
        items.push_back(ItemJson(*item.gallery, *item.item, tags));
    }
    for (const FoundTag& source : sources) {
        merged.push_back(TagJson(source));
        console.Say("merged " + QualifiedName(source) + " into " + QualifiedName(target));
    }
    console.ShowJson({{"target", TagJson(target)}, {"merged", merged}, {"items", items}});
    return kDone;
}

}  // namespace qfc::host
