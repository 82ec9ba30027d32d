#include "hosts/qfc/library/TagClearing.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/LinkRelease.h"
#include "hosts/qfc/library/TagBackup.h"
#include "hosts/qfc/library/TagChanges.h"
#include "hosts/qfc/library/Text.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <string_view>

namespace qfc::host {
namespace {

constexpr std::string_view kLinkTable = "TAG_ITEM_RELATION_TABLE";

// Tags do not lead to all links: some are to tags that nobody sees, or that are gone.
struct Links {
    std::set<GUID> items;       // That are linked and have no row.
    std::set<GUID> tags;        // The same.
    bool hasMalformed = false;  // Some hold something else than two GUIDs.
};

Links LookAtLinks() {
    const std::string library = LibraryPath();
    std::vector<LibraryFinding> findings;
    if (!fnCheckLibrary(library.c_str(), findings)) throw Failure("cannot read " + library);
    Links links;
    for (const LibraryFinding& finding : findings) {
        const auto guid = GuidFromText(finding.row);
        if (finding.kind == LibraryFindingKind::kLinkWithoutItem && guid) links.items.insert(*guid);
        if (finding.kind == LibraryFindingKind::kLinkWithoutTag && guid) links.tags.insert(*guid);
        if (finding.kind == LibraryFindingKind::kBadGuid && finding.row == kLinkTable) links.hasMalformed = true;
    }
    return links;
}

void TakeOwnCategories(Tags& tags, TagChanges& changes, ClearedTags& cleared) {
    std::vector<CTagCategory> own;
    std::ranges::copy_if(tags.Categories(), std::back_inserter(own),
                         [](const CTagCategory& category) { return IsOwnGallery(category.m_nGallery); });
    for (const CTagCategory& category : own) {
        const std::string name = CategoryLabel(tags, category);
        try {
            if (!category.m_tags.empty()) changes.DeleteTags(category.m_nGallery, category.m_tags, name);
            changes.DeleteCategory(category, name);
            cleared.categories.push_back(name);
        } catch (const Failure&) {
            const bool isRead = tags.TryReload();
            const CTagCategory* stays = tags.CategoryByGuid(category.m_guid);
            if (isRead && stays == nullptr) {
                cleared.categories.push_back(name);
                continue;
            }
            const bool isEmpty = isRead && stays->m_tags.empty();
            const char* unseen = isRead ? "" : ", which cannot be read";
            cleared.left.push_back((isEmpty ? "the category " : "the tags of ") + name + unseen);
        }
    }
}

void TakeNamedLinks(const Tags& tags, const std::set<GUID>& items) {
    std::map<GUID, std::vector<GUID>> links;
    for (const GUID& item : items) {
        for (const GUID& tag : tags.LinksOf(item)) links[tag].push_back(item);
    }
    for (const auto& [tag, linked] : links) UnlinkStored(linked, {tag});
}

// Where no item can be named the library takes the links with their tag, which comes back then if it was there.
void TakeLinksWithTheirTags(Tags& tags, const std::set<GUID>& goneTags, ClearedTags& cleared) {
    std::map<GUID, FoundTag> linked;
    for (const GUID& guid : goneTags) {
        if (tags.HasLinks(guid)) linked[guid].tag.m_guid = guid;
    }
    for (const CTagCategory& category : tags.Categories()) {
        for (const CLibTag& tag : category.m_tags) {
            if (tags.HasLinks(tag.m_guid)) linked[tag.m_guid] = *tags.ByGuid(tag.m_guid);
        }
    }
    for (const auto& [guid, found] : linked) {
        TagBackup backup;
        if (!goneTags.contains(guid)) backup.Keep(tags, found.gallery, {found.tag});
        QFCLibraryManager::fnDeleteTag(static_cast<DWORD>(found.gallery), {found.tag});
        if (!backup.PutBack(tags).empty())
            cleared.left.push_back("the tag " + QualifiedName(found) + ", which is changed");
    }
}

void TakeAll(ClearedTags& cleared) {
    const Session session;
    Galleries galleries(session);
    if (!galleries.Stored().empty()) throw Failure("there are galleries again");
    Tags tags(session);
    TagChanges changes(tags, galleries);
    TakeOwnCategories(tags, changes, cleared);
    const Links links = LookAtLinks();
    TakeNamedLinks(tags, links.items);
    if (links.hasMalformed) TakeLinksWithTheirTags(tags, links.tags, cleared);
    const Links left = LookAtLinks();
    if (left.hasMalformed) {
        cleared.left.push_back("links of tags without a valid GUID, which nothing can name ('qfc check' lists them)");
    } else if (!left.items.empty()) {
        cleared.left.push_back("links of tags to items that are gone ('qfc check' lists them)");
    }
}

}  // namespace

ClearedTags ClearTags() {
    ClearedTags cleared;
    try {
        TakeAll(cleared);
    } catch (const Failure& failure) {
        cleared.left.push_back(std::string("tags and links that could not be looked at: ") + failure.what());
    }
    return cleared;
}

}  // namespace qfc::host
