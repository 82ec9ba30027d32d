#include "hosts/qfc/library/Tags.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Text.h"

#include <algorithm>
#include <list>

namespace qfc::host {
namespace {

std::set<GUID> GuidsIn(CppSQLite3Query& query, const char* column) {
    std::set<GUID> guids;
    for (; !query.eof(); query.nextRow()) {
        int length = 0;
        const unsigned char* bytes = query.getBlobField(column, length);
        if (const auto guid = GuidFromBytes(bytes, static_cast<std::size_t>(length))) guids.insert(*guid);
    }
    return guids;
}

std::string InCategory(const FoundTag& tag) { return tag.category + "/" + ToText(tag.tag.m_strName); }

// What tells one of several from the others: its place, and its GUID where places are alike.
template <class Found, class Label, class Guid>
std::string TellApart(const std::vector<Found>& found, Label&& label, Guid&& guid) {
    std::string text;
    for (const Found& one : found) {
        const auto alike = [&](const Found& other) { return label(other) == label(one); };
        const bool isUnique = std::ranges::count_if(found, alike) == 1;
        text += (text.empty() ? "" : ", ") + label(one) + (isUnique ? "" : " (" + GuidToText(guid(one)) + ")");
    }
    return text;
}

std::string Where(const Tags& tags, std::optional<int> gallery) {
    return gallery ? " in the gallery " + tags.GalleryName(*gallery) : "";
}

FoundTag OnlyOne(const std::vector<FoundTag>& found, const std::string& text, const std::string& where) {
    if (found.size() == 1) return found.front();
    if (found.empty()) throw Failure("no tag " + text + where);
    throw Failure("several tags are called " + text + ": " +
                  TellApart(found, QualifiedName, [](const FoundTag& tag) { return tag.tag.m_guid; }));
}

}  // namespace

Tags::Tags(const Session&) : m_reader(LibraryPath()) {
    if (!m_reader.IsOpen()) throw Failure("cannot read the tags of " + LibraryPath());
    Reload();
}

void Tags::Reload() {
    std::vector<CTagCategory> categories;
    if (!m_reader.Tools().LoadTags(categories)) throw Failure("cannot read the tags of " + LibraryPath());
    const auto galleries = Galleries::Stored(nullptr);
    m_categories = std::move(categories);
    std::ranges::stable_sort(m_categories, {}, &CTagCategory::m_nGallery);
    m_galleryNames.clear();
    for (const auto& gallery : galleries) m_galleryNames.emplace(gallery.id, gallery.name);
    m_byGuid.clear();
    for (const CTagCategory& category : m_categories) {
        for (const CLibTag& tag : category.m_tags) m_byGuid.emplace(tag.m_guid, Entry(category, tag));
    }
}

bool Tags::TryReload() {
    for (int tries = 0; tries < 2; ++tries) {
        try {
            Reload();
            return true;
        } catch (const Failure&) {  // A fault may pass, as the lock of another program does.
        }
    }
    return false;
}

std::string Tags::GalleryName(int gallery) const {
    if (const auto stored = m_galleryNames.find(gallery); stored != m_galleryNames.end()) return stored->second;
    return PredefinedName(gallery).value_or(std::to_string(gallery));
}

std::set<GUID> Tags::CarriersOf(const GUID& tag) const {
    CppSQLite3Query query;
    if (!m_reader.Tools().QueryTagItems(tag, query)) throw Failure("cannot read the links of a tag");
    return GuidsIn(query, "ITEM_GUID");
}

bool Tags::HasLinks(const GUID& tag) const {
    CppSQLite3Query query;
    if (!m_reader.Tools().QueryTagItems(tag, query)) throw Failure("cannot read the links of a tag");
    return !query.eof();
}

std::set<GUID> Tags::LinksOf(const GUID& item) const {
    CppSQLite3Query query;
    if (!m_reader.Tools().QueryItemTags(item, query)) throw Failure("cannot read the links of an item");
    return GuidsIn(query, "TAGS_GUID");
}

FoundTag Tags::Entry(const CTagCategory& category, const CLibTag& tag) const {
    return {category.m_nGallery, GalleryName(category.m_nGallery), ToText(category.m_strName), tag};
}

std::optional<FoundTag> Tags::ByGuid(const GUID& guid) const {
    const auto found = m_byGuid.find(guid);
    return found != m_byGuid.end() ? std::optional(found->second) : std::nullopt;
}

const CTagCategory* Tags::CategoryByGuid(const GUID& guid) const {
    const auto found = std::ranges::find(m_categories, guid, &CTagCategory::m_guid);
    return found != m_categories.end() ? &*found : nullptr;
}

std::vector<FoundTag> Tags::Named(const std::string& text, std::optional<int> gallery) const {
    if (const auto guid = GuidFromText(text)) {
        const auto tag = ByGuid(*guid);
        return tag ? std::vector{*tag} : std::vector<FoundTag>{};
    }
    std::vector<FoundTag> byName, byPlace;
    for (const CTagCategory& category : m_categories) {
        if (gallery && category.m_nGallery != *gallery) continue;
        for (const CLibTag& tag : category.m_tags) {
            const FoundTag entry = Entry(category, tag);
            if (IsSameTagName(ToText(tag.m_strName), text)) {
                byName.push_back(entry);
            } else if (IsSameTagName(InCategory(entry), text) || IsSameTagName(QualifiedName(entry), text)) {
                byPlace.push_back(entry);
            }
        }
    }
    return byName.empty() ? byPlace : byName;
}

FoundTag Tags::Find(const std::string& text, std::optional<int> gallery) const {
    return OnlyOne(Named(text, gallery), text, Where(*this, gallery));
}

FoundTag Tags::FindFor(const std::string& text, int gallery) const {
    const std::vector<FoundTag> near = Named(text, gallery);
    return near.empty() ? Find(text, std::nullopt) : OnlyOne(near, text, "");
}

std::vector<CTagCategory> Tags::CategoriesCalled(const std::string& text, std::optional<int> gallery) const {
    if (const auto guid = GuidFromText(text)) {
        const CTagCategory* category = CategoryByGuid(*guid);
        return category != nullptr ? std::vector{*category} : std::vector<CTagCategory>{};
    }
    std::vector<CTagCategory> byName, byPlace;
    for (const CTagCategory& category : m_categories) {
        if (gallery && category.m_nGallery != *gallery) continue;
        if (IsSameTagName(ToText(category.m_strName), text)) {
            byName.push_back(category);
        } else if (IsSameTagName(CategoryLabel(*this, category), text)) {
            byPlace.push_back(category);
        }
    }
    return byName.empty() ? byPlace : byName;
}

CTagCategory Tags::FindCategory(const std::string& text, std::optional<int> gallery) const {
    const std::vector<CTagCategory> found = CategoriesCalled(text, gallery);
    if (found.empty()) throw Failure("no category " + text + Where(*this, gallery));
    if (found.size() == 1) return found.front();
    const auto label = [&](const CTagCategory& category) { return CategoryLabel(*this, category); };
    throw Failure("several categories are called " + text + ": " +
                  TellApart(found, label, [](const CTagCategory& category) { return category.m_guid; }));
}

std::optional<std::string> Tags::GalleryInLabel(const std::string& text) const {
    std::vector<std::string> names = PredefinedNames();
    for (const auto& [id, name] : m_galleryNames) names.push_back(name);
    for (std::size_t colon = text.find(':'); colon != std::string::npos; colon = text.find(':', colon + 1)) {
        const std::string front = text.substr(0, colon);
        const auto isNamed = [&](const std::string& name) { return IsSameTagName(name, front); };
        const auto found = std::ranges::find_if(names, isNamed);
        if (found != names.end()) return *found;
    }
    return std::nullopt;
}

const CTagCategory* Tags::CategoryNamed(const std::string& name, int gallery) const {
    const auto found = std::ranges::find_if(m_categories, [&](const CTagCategory& category) {
        return category.m_nGallery == gallery && IsSameTagName(ToText(category.m_strName), name);
    });
    return found != m_categories.end() ? &*found : nullptr;
}

std::vector<FoundTag> Tags::Of(const CQItem& item) const {
    std::list<GUID> guids;
    item.CopyTagVec(guids);
    std::vector<FoundTag> tags;
    for (const GUID& guid : guids) {
        FoundTag unknown;
        unknown.tag.m_guid = guid;
        tags.push_back(ByGuid(guid).value_or(unknown));
    }
    std::ranges::stable_sort(tags, {}, [](const FoundTag& tag) {
        const std::string name = ToText(tag.tag.m_strName);
        return std::pair(name.empty(), name);
    });
    return tags;
}

std::string CategoryLabel(const Tags& tags, const CTagCategory& category) {
    return tags.GalleryName(category.m_nGallery) + ":" + ToText(category.m_strName);
}

std::string QualifiedName(const FoundTag& tag) { return tag.galleryName + ":" + InCategory(tag); }

std::string TagNames(const std::vector<FoundTag>& tags) {
    std::string names;
    for (const FoundTag& tag : tags) {
        if (tag.tag.m_strName.IsEmpty()) continue;
        names += (names.empty() ? "" : ", ") + ToText(tag.tag.m_strName);
    }
    return names;
}

bool IsSameTagName(const std::string& left, const std::string& right) {
    return ToCString(left).CompareNoCase(right.c_str()) == 0;
}

std::optional<FoundTag> NameClash(const Tags& tags, const std::string& name, int gallery) {
    for (const CTagCategory& category : tags.Categories()) {
        if (category.m_nGallery != gallery) continue;
        for (const CLibTag& tag : category.m_tags) {
            if (IsSameTagName(ToText(tag.m_strName), name)) return tags.ByGuid(tag.m_guid);
        }
    }
    return std::nullopt;
}

}  // namespace qfc::host
