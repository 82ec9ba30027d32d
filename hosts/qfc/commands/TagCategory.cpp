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
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

void RefuseClash(const Tags& tags, const std::string& name, int gallery, const GUID& self) {
    const CTagCategory* other = tags.CategoryNamed(name, gallery);
    if (other != nullptr && !(other->m_guid == self)) {
        throw Failure("there is a category " + CategoryLabel(tags, *other) + " already");
    }
}

}  // namespace

int Run(const TagCategoryCreateOptions& options, const Console& console) {
    RequireTagName(options.name);
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    CTagCategory category;
    category.m_guid = CQItem().GetUniqueID();
    category.m_nGallery = galleries.Resolve(options.gallery).id;
    category.m_strName = ToCString(options.name);
    RefuseClash(tags, options.name, category.m_nGallery, GUID_NULL);
    TagChanges(tags, galleries).StoreCategory(category, "cannot make the category " + options.name);
    console.Say("made the category " + CategoryLabel(tags, category));
    console.ShowJson(CategoryJson(tags, category));
    return kDone;
}

int Run(const TagCategoryRenameOptions& options, const Console& console) {
    RequireTagName(options.name);
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    CTagCategory category = tags.FindCategory(options.category, NamedGallery(galleries, options.gallery));
    RefuseClash(tags, options.name, category.m_nGallery, category.m_guid);
    const std::string what = "cannot rename " + CategoryLabel(tags, category);
    // The library replaces the category with all its tags, so they go along.
    category.m_strName = ToCString(options.name);
    TagChanges(tags, galleries).StoreCategory(category, what);
    console.Say("renamed to " + CategoryLabel(tags, category));
    console.ShowJson(CategoryJson(tags, category));
    return kDone;
}

int Run(const TagCategoryDeleteOptions& options, const Console& console) {
    const ChangeLock lock;
    const Session session;
    Galleries galleries(session);
    Tags tags(session);
    const CTagCategory category = tags.FindCategory(options.category, NamedGallery(galleries, options.gallery));
    const std::string name = CategoryLabel(tags, category);
    const auto isKept = [](const CLibTag& tag) { return !tag.m_bDeletable; };
    if (!category.m_bDeletable || std::ranges::any_of(category.m_tags, isKept)) {
        throw Failure(name + " cannot be deleted" + (category.m_bDeletable ? ": it has tags that cannot" : ""));
    }
    TagChanges changes(tags, galleries);
    Json items = Json::array();
    const Interrupt interrupt;
    for (const FoundItem& item : DeleteWithTags(tags, changes, galleries, category, "cannot delete the tags of " + name,
                                                "cannot delete " + name)) {
        items.push_back(ItemJson(*item.gallery, *item.item, tags));
    }
    console.Say("deleted " + name + " with " + Counted(category.m_tags.size(), "tag"));
    Json deleted = CategoryJson(tags, category);
    deleted["tags"] = category.m_tags.size();
    console.ShowJson({{"deleted", deleted}, {"items", items}});
    return kDone;
}

}  // namespace qfc::host
