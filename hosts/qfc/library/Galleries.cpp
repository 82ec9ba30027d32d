#include "hosts/qfc/library/Galleries.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/Paths.h"
#include "hosts/qfc/library/ReadSession.h"
#include "hosts/qfc/library/Tags.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>

namespace qfc::host {
namespace {

struct Predefined {
    int id;
    const char* name;
};

constexpr int kMedia = 1;
// 7 belongs to no gallery.
constexpr Predefined kPredefined[] = {
    {1, "Media"},         {2, "Sounds"},     {3, "Templates"},    {4, "Transitions"}, {5, "Titles"},
    {6, "Filters"},       {8, "Overlays"},   {9, "Motion Paths"}, {10, "Media H5"},   {11, "Sounds H5"},
    {12, "Templates H5"}, {13, "Titles H5"}, {14, "Overlays H5"}, {15, "Speed"},      {16, "AR Stickers"},
};
constexpr int kFirstOwnId = 100;

std::optional<int> PredefinedId(const std::string& name) {
    const auto* found = std::ranges::find_if(kPredefined, [&](const Predefined& p) { return name == p.name; });
    return found != std::end(kPredefined) ? std::optional(found->id) : std::nullopt;
}

bool IsNumber(const std::string& text) {
    return !text.empty() && std::ranges::all_of(text, [](unsigned char c) { return c >= '0' && c <= '9'; });
}

GalleryName ById(const std::string& number, const std::vector<GalleryName>& stored) {
    const int id = RowNumber("#" + number).value_or(0);
    const auto found = std::ranges::find(stored, id, &GalleryName::id);
    if (found != stored.end()) return *found;
    const auto name = PredefinedName(id);
    if (!name) throw Failure("no gallery with the id " + number);
    return {id, *name};
}

GalleryName ByName(const std::string& name, const std::vector<GalleryName>& stored) {
    if (const auto id = PredefinedId(name)) return {*id, name};
    std::vector<GalleryName> matches;
    std::ranges::copy_if(stored, std::back_inserter(matches), [&](const GalleryName& g) { return g.name == name; });
    if (matches.empty()) throw Failure("no gallery " + name);
    if (matches.size() == 1) return matches.front();
    std::string ids;
    for (const GalleryName& match : matches) ids += (ids.empty() ? "" : ", ") + std::to_string(match.id);
    throw Failure("several galleries are called " + name + "; name one by its id: " + ids);
}

// Rows of other programs may have no name.
std::string LabelOf(const GalleryName& gallery) {
    return gallery.name.empty() ? std::to_string(gallery.id) : gallery.name;
}

// The number of the parent that the root folders of all galleries have.
constexpr int kAboveGalleries = -1;

std::vector<StoredGallery> StoredRows(DBTools* other = nullptr) {
    std::vector<StoredGallery> rows;
    if (!QFCLibraryManager::fnListGalleries(rows, other)) throw Failure("cannot list the galleries");
    return rows;
}

[[noreturn]] void ThrowCannotLoad(const GalleryName& gallery) {
    throw Failure("cannot load the gallery " + LabelOf(gallery));
}

}  // namespace

std::optional<std::string> PredefinedName(int id) {
    const auto* found = std::ranges::find(kPredefined, id, &Predefined::id);
    return found != std::end(kPredefined) ? std::optional<std::string>(found->name) : std::nullopt;
}

std::vector<std::string> PredefinedNames() {
    std::vector<std::string> names;
    for (const Predefined& predefined : kPredefined) names.emplace_back(predefined.name);
    return names;
}

bool IsOwnGallery(int id) { return !PredefinedName(id); }

std::vector<GalleryName> Galleries::Stored(DBTools* other) {
    const std::vector<StoredGallery> rows = StoredRows(other);
    std::vector<GalleryName> galleries;
    for (const StoredGallery& row : rows) {
        const bool known = std::ranges::find(galleries, row.galleryId, &GalleryName::id) != galleries.end();
        // Of two rows with one id only the first is ever reached.
        if (!known) galleries.push_back({row.galleryId, ToText(row.name)});
    }
    return galleries;
}

bool Galleries::IsStored(int id) const {
    const std::vector<GalleryName> stored = Stored();
    return std::ranges::find(stored, id, &GalleryName::id) != stored.end();
}

GalleryName Galleries::Resolve(const std::string& idOrName) const {
    if (idOrName.empty()) return {kMedia, *PredefinedName(kMedia)};
    const std::vector<GalleryName> stored = Stored();
    return IsNumber(idOrName) ? ById(idOrName, stored) : ByName(idOrName, stored);
}

CQGallery* Galleries::Load(int id) {
    if (const auto loaded = m_loaded.find(id); loaded != m_loaded.end()) return loaded->second;
    CQGallery* gallery = AsGallery(QFCLibraryManager::fnLoadGallery(id));
    if (gallery != nullptr) m_loaded[id] = gallery;
    return gallery;
}

bool Galleries::IsSeen(const GalleryName& made) const {
    try {
        return IsStored(made.id);
    } catch (const Failure& failure) {
        throw Failure("the gallery " + made.name + " may be made: " + failure.what());
    }
}

CQGallery& Galleries::Make(const GalleryName& wanted) {
    CQGallery* gallery = AsGallery(QFCLibraryManager::fnCreateGallery(wanted.id, ToCString(wanted.name), 0, 0, 0));
    if (gallery == nullptr || !IsSeen(wanted)) throw Failure("cannot make the gallery " + wanted.name);
    m_loaded[wanted.id] = gallery;
    return *gallery;
}

CQGallery& Galleries::Open(const std::string& idOrName) {
    const GalleryName wanted = Resolve(idOrName);
    // Loading comes first: a second row with the same id would be accepted, and its tree never be seen again.
    if (CQGallery* gallery = Load(wanted.id)) return *gallery;
    if (IsStored(wanted.id)) ThrowCannotLoad(wanted);
    return Make(wanted);
}

CQGallery* Galleries::Find(const std::string& idOrName) {
    const GalleryName wanted = Resolve(idOrName);
    if (CQGallery* gallery = Load(wanted.id)) return gallery;
    if (IsStored(wanted.id)) ThrowCannotLoad(wanted);
    return nullptr;
}

std::vector<CQGallery*> Galleries::All() {
    std::vector<CQGallery*> galleries;
    for (const GalleryName& stored : Stored()) {
        if (CQGallery* gallery = Load(stored.id)) {
            galleries.push_back(gallery);
        } else if (IsStored(stored.id) && !IsWithoutFolder(stored.id)) {  // Another qfc may just have removed it.
            ThrowCannotLoad(stored);
        }
    }
    return galleries;
}

std::size_t Galleries::CountRows(int id) const {
    return static_cast<std::size_t>(std::ranges::count(StoredRows(), id, &StoredGallery::galleryId));
}

bool Galleries::IsWithoutFolder(int id) const {
    const std::vector<StoredGallery> rows = StoredRows();
    const auto row = std::ranges::find(rows, id, &StoredGallery::galleryId);
    if (row == rows.end()) return false;
    const ReadSession reader(LibraryPath());
    if (!reader.IsOpen()) return false;
    const auto isEmpty = [&](int folder) {
        const auto folders = StoredSubFolders(reader.Tools(), folder);
        const auto items = StoredItems(reader.Tools(), folder);
        return folders && folders->empty() && items && items->empty();
    };
    const auto isNamed = [&](int root) {
        return std::ranges::find(rows, root, &StoredGallery::rootFolder) != rows.end();
    };
    // Its folder may be one of those that no gallery names.
    const auto roots = StoredSubFolders(reader.Tools(), kAboveGalleries);
    if (!roots || !std::ranges::all_of(*roots, [&](int root) { return isNamed(root) || isEmpty(root); })) return false;
    return row->rootFolder < 0 || (IsFolderGone(reader.Tools(), row->rootFolder) && isEmpty(row->rootFolder));
}

CQGallery& Galleries::Counterpart(const GalleryName& other) {
    if (PredefinedName(other.id)) return Open(std::to_string(other.id));
    // A name that no path or option could give back gets one that does.
    std::string name = other.name;
    std::ranges::replace(name, '\\', '_');
    if (name.empty() || IsNumber(name)) name = "Gallery " + std::to_string(other.id);
    const std::vector<GalleryName> stored = Stored();
    const bool known = PredefinedId(name) || std::ranges::find(stored, name, &GalleryName::name) != stored.end();
    return known ? Open(name) : Create(name);
}

CQGallery& Galleries::Create(const std::string& name) {
    if (IsNumber(name)) throw WrongUsage("a gallery's name cannot be a number: " + name);
    RequireName(name);
    const std::vector<GalleryName> stored = Stored();
    const auto predefined = PredefinedId(name);
    const bool taken = std::ranges::any_of(
        stored, [&](const GalleryName& g) { return predefined ? g.id == *predefined : g.name == name; });
    if (taken) throw Failure("there is a gallery " + name + " already");
    return Make({predefined ? *predefined : FreeId(stored), name});
}

// Tags may be left of a gallery that is gone: the new one would begin with them.
int Galleries::FreeId(const std::vector<GalleryName>& stored) const {
    const Tags tags(m_session);
    int id = kFirstOwnId;
    while (std::ranges::find(stored, id, &GalleryName::id) != stored.end() ||
           std::ranges::find(tags.Categories(), id, &CTagCategory::m_nGallery) != tags.Categories().end()) {
        ++id;
    }
    return id;
}

void Galleries::Close(CQGallery& gallery) {
    std::erase_if(m_loaded, [&](const auto& entry) { return entry.second == &gallery; });
    GetGalleryDoc()->CloseGallery(&gallery);
}

GalleryName Galleries::NameOf(const CQGallery& gallery) {
    return {static_cast<int>(gallery.GetFolderID()), ToText(gallery.GetFolderName())};
}

}  // namespace qfc::host
