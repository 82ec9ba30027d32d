#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/commands/Describe.h"
#include "hosts/qfc/commands/TagText.h"
#include "hosts/qfc/library/ChangeLock.h"
#include "hosts/qfc/library/TagChanges.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Tree.h"

#include <algorithm>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>

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

using Change = void (TagChanges::*)(const std::vector<CQItem*>&, const std::list<GUID>&, const std::string&);

// Which tags a name means depends on the gallery of the item; those that get the same ones are changed together. All
// names are looked up before anything is changed.
int ChangeItems(const TagItemsOptions& options, Change change, const std::string& verb, const std::string& done,
                const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    const std::vector<FoundItem> found = FindItems(galleries, options);
    std::map<std::vector<GUID>, std::vector<CQItem*>> groups;
    for (const FoundItem& item : found) {
        const std::list<GUID> guids = TagsFor(tags, options.tags, *item.gallery);
        groups[{guids.begin(), guids.end()}].push_back(item.item);
    }
    TagChanges changes(tags, galleries);
    const std::string what = "cannot " + verb + " " + Listed(options.tags);
    for (const auto& [guids, items] : groups) (changes.*change)(items, {guids.begin(), guids.end()}, what);
    Json json = Json::array();
    for (const FoundItem& item : found) {
        json.push_back(ItemJson(*item.gallery, *item.item, tags));
        const std::string names = TagNames(tags.Of(*item.item));
        console.Say(done + " " + ToText(item.item->GetItemName()) + (names.empty() ? "" : ": " + names));
    }
    console.ShowJson({{"items", json}});
    return kDone;
}

}  // namespace

int Run(const TagAddOptions& options, const Console& console) {
    return ChangeItems(options, &TagChanges::Link, "add", "tagged", console);
}

int Run(const TagRemoveOptions& options, const Console& console) {
    return ChangeItems(options, &TagChanges::Unlink, "remove", "untagged", console);
}

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
