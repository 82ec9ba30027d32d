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

#include <algorithm>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

constexpr const char* kUsualCategory = "My tags";

// A fresh item draws a GUID; the library has no other way to one.
GUID NewGuid() { return CQItem().GetUniqueID(); }

CLibTag NewTag(const std::string& name, const GUID& category) {
    CLibTag tag;
    tag.m_guid = NewGuid();
    tag.m_guidCategory = category;
    tag.m_strName = ToCString(name);
    return tag;
}

void RefuseClash(const Tags& tags, const std::string& name, int gallery, const GUID& self) {
    const auto other = NameClash(tags, name, gallery);
    if (other && !(other->tag.m_guid == self)) throw Failure("there is a tag " + QualifiedName(*other) + " already");
}

// A name means one of the gallery. What listings print of a category means that category; null when the
// text is the name of a new one.
const CTagCategory* CategoryFor(const Tags& tags, const std::string& text, int gallery) {
    if (const CTagCategory* named = tags.CategoryNamed(text, gallery)) return named;
    const CTagCategory* other = nullptr;
    for (const CTagCategory& called : tags.CategoriesCalled(text, std::nullopt)) {
        if (IsSameTagName(ToText(called.m_strName), text)) continue;
        other = tags.CategoryByGuid(called.m_guid);
        if (called.m_nGallery == gallery) return other;
    }
    if (other == nullptr) {
        const auto label = tags.GalleryInLabel(text);
        if (!label) return nullptr;
        throw Failure("there is no category " + text + "; for a new one give its name alone, with --gallery \"" +
                      *label + "\"");
    }
    throw Failure("the category " + text + " is one of the gallery " + tags.GalleryName(other->m_nGallery));
}

using TagsByGallery = std::map<int, std::vector<FoundTag>>;

// By gallery, each once: what one call of the library can change together.
TagsByGallery ByGallery(const Tags& tags, const std::vector<std::string>& texts, std::optional<int> gallery) {
    TagsByGallery found;
    for (const std::string& text : texts) {
        const FoundTag tag = tags.Find(text, gallery);
        std::vector<FoundTag>& same = found[tag.gallery];
        const auto isKnown = [&](const FoundTag& known) { return known.tag.m_guid == tag.tag.m_guid; };
        if (std::ranges::none_of(same, isKnown)) same.push_back(tag);
    }
    return found;
}

std::string NamesOf(const std::vector<FoundTag>& tags) {
    std::string names;
    for (const FoundTag& tag : tags) names += (names.empty() ? "" : ", ") + QualifiedName(tag);
    return names;
}

std::list<CLibTag> TagsIn(const std::vector<FoundTag>& found) {
    std::list<CLibTag> tags;
    for (const FoundTag& tag : found) tags.push_back(tag.tag);
    return tags;
}

// Changes the tags gallery by gallery, all or none; `isDone` tells of each whether it is changed.
void ForEachGallery(Tags& tags, const TagsByGallery& found,
                    const std::function<void(int, std::list<CLibTag>, const std::string&)>& change,
                    const std::function<bool(const CLibTag&)>& isDone) {
    const Interrupt interrupt;
    TagBackup before;
    for (const auto& [gallery, same] : found) before.Keep(tags, gallery, TagsIn(same));
    const auto changeAll = [&] {
        for (const auto& [gallery, same] : found) change(gallery, TagsIn(same), NamesOf(same));
    };
    const auto isAllDone = [&] {
        return std::ranges::all_of(found, [&](const auto& each) {
            return std::ranges::all_of(each.second, [&](const FoundTag& tag) { return isDone(tag.tag); });
        });
    };
    ChangeOrAsBefore(tags, before, changeAll, isAllDone);
}

int SetChecked(const TagCheckOptions& options, bool checked, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    TagChanges changes(tags, galleries);
    const TagsByGallery found = ByGallery(tags, options.tags, NamedGallery(galleries, options.gallery));
    const auto change = [&](int gallery, std::list<CLibTag> same, const std::string& names) {
        for (CLibTag& tag : same) tag.m_bChecked = checked;
        changes.StoreTags(gallery, same, std::string("cannot ") + (checked ? "check " : "uncheck ") + names);
    };
    const auto isDone = [&](CLibTag tag) {
        tag.m_bChecked = checked;
        return IsStoredAs(tags, tag);
    };
    ForEachGallery(tags, found, change, isDone);
    Json json = Json::array();
    for (const auto& [gallery, same] : found) {
        console.Say((checked ? "checked " : "unchecked ") + NamesOf(same));
        for (const FoundTag& tag : same) json.push_back(TagJson(*tags.ByGuid(tag.tag.m_guid)));
    }
    console.ShowJson({{"tags", json}});
    return kDone;
}

}  // namespace

int Run(const TagCreateOptions& options, const Console& console) {
    RequireTagName(options.name);
    const std::string categoryName = options.category.empty() ? kUsualCategory : options.category;
    RequireTagName(categoryName);
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    const int gallery = galleries.Resolve(options.gallery).id;
    Tags tags(session);
    RefuseClash(tags, options.name, gallery, GUID_NULL);
    TagChanges changes(tags, galleries);
    const std::string what = "cannot make the tag " + options.name;
    const CTagCategory* known = CategoryFor(tags, categoryName, gallery);
    CLibTag tag = NewTag(options.name, known != nullptr ? known->m_guid : NewGuid());
    if (known != nullptr) {
        changes.StoreTags(gallery, {tag}, what);
    } else {
        CTagCategory category;
        category.m_guid = tag.m_guidCategory;
        category.m_nGallery = gallery;
        category.m_strName = ToCString(categoryName);
        category.m_tags.push_back(tag);
        changes.StoreCategory(category, what);
    }
    const FoundTag made = *tags.ByGuid(tag.m_guid);
    console.Say("made the tag " + QualifiedName(made));
    console.ShowJson(TagJson(made));
    return kDone;
}

int Run(const TagRenameOptions& options, const Console& console) {
    RequireTagName(options.name);
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    const FoundTag found = tags.Find(options.tag, NamedGallery(galleries, options.gallery));
    RefuseClash(tags, options.name, found.gallery, found.tag.m_guid);
    CLibTag renamed = found.tag;
    renamed.m_strName = ToCString(options.name);
    TagChanges(tags, galleries).StoreTags(found.gallery, {renamed}, "cannot rename " + QualifiedName(found));
    const FoundTag shown = *tags.ByGuid(renamed.m_guid);
    console.Say("renamed to " + QualifiedName(shown));
    console.ShowJson(TagJson(shown));
    return kDone;
}

int Run(const TagDeleteOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    const TagsByGallery found = ByGallery(tags, options.tags, NamedGallery(galleries, options.gallery));
    for (const auto& [gallery, same] : found) {
        for (const FoundTag& tag : same) {
            if (!tag.tag.m_bDeletable) throw Failure(QualifiedName(tag) + " cannot be deleted");
        }
    }
    std::list<GUID> guids;
    for (const auto& [gallery, same] : found) guids.splice(guids.end(), GuidsOf(TagsIn(same)));
    const std::vector<FoundItem> carriers = Carriers(galleries, guids);
    TagChanges changes(tags, galleries);
    const auto change = [&](int gallery, const std::list<CLibTag>& same, const std::string& names) {
        changes.DeleteTags(gallery, same, "cannot delete " + names);
    };
    ForEachGallery(tags, found, change, [&](const CLibTag& tag) { return IsGone(tags, tag.m_guid); });
    Forget(carriers, guids);
    Json deleted = Json::array(), items = Json::array();
    for (const auto& [gallery, same] : found) {
        for (const FoundTag& tag : same) deleted.push_back(TagJson(tag));
        console.Say("deleted " + NamesOf(same));
    }
    for (const FoundItem& item : carriers) items.push_back(ItemJson(*item.gallery, *item.item, tags));
    console.ShowJson({{"deleted", deleted}, {"items", items}});
    return kDone;
}

int Run(const TagCheckOptions& options, const Console& console) { return SetChecked(options, true, console); }

int Run(const TagUncheckOptions& options, const Console& console) { return SetChecked(options, false, console); }

int Run(const TagDefaultsOptions&, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    const auto counted = [&] {
        std::size_t count = 0;
        for (const CTagCategory& category : tags.Categories()) count += category.m_tags.size();
        return std::pair(tags.Categories().size(), count);
    };
    const auto before = counted();
    TagChanges(tags, galleries).StoreDefaults();
    const auto after = counted();
    const std::size_t categories = after.first - before.first;
    const std::size_t made = after.second - before.second;
    console.Say("the default tags are there (new: " + std::to_string(categories) +
                (categories == 1 ? " category, " : " categories, ") + Counted(made, "tag") + ")");
    console.ShowJson({{"newCategories", categories}, {"newTags", made}});
    return kDone;
}

}  // namespace qfc::host
