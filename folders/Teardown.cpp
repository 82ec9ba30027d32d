#include "folders/Teardown.h"

#include "folders/FolderWalk.h"
#include "folders/GalleryOf.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"

#include <algorithm>

namespace qfc {

namespace {

thread_local Teardown* t_outermost = nullptr;

// The first folder of the item's parent list that the test accepts. Handles are only compared here: a folder may be
// gone without its gallery having been told.
template <class IsAlive>
CQFolder* FirstHolder(const CQGallery& gallery, const GUID& guid, IsAlive&& isAlive) {
    for (const ULONGLONG handle : gallery.GetItemParentList(guid)) {
        CQFolder* holder = AsFolder(handle);
        if (isAlive(holder)) return holder;
    }
    return nullptr;
}

// Another folder of the tree that has this very object in its array, or null.
CQFolder* OtherFolderWith(CQGallery& gallery, const CQItem& item, const CQFolder& folder) {
    const auto has = [&](CQFolder& candidate) {
        const CObArray* objects = &candidate != &folder ? candidate.GetItemArray() : nullptr;
        return objects != nullptr && std::find(objects->begin(), objects->end(), &item) != objects->end();
    };
    for (CQFolder* candidate : SubtreeOf(gallery)) {
        if (has(*candidate)) return candidate;
    }
    return has(gallery) ? &gallery : nullptr;
}

}  // namespace

Teardown::Teardown(CQFolder& cleared) : m_cleared(cleared), m_outer(t_outermost) {
    if (t_outermost == nullptr) t_outermost = this;
}

Teardown::~Teardown() {
    if (m_outer == nullptr) t_outermost = nullptr;
}

void Teardown::LetGo(CObject* item, CQFolder& folder) {
    const Teardown here(folder);
    t_outermost->LetGoOnce(item, folder);
}

bool Teardown::IsGone(const CObject* object) { return t_outermost != nullptr && t_outermost->m_gone.contains(object); }

void Teardown::NoteGone(const CObject* object) {
    if (t_outermost != nullptr) t_outermost->m_gone.insert(object);
}

void Teardown::LetGoOnce(CObject* object, CQFolder& folder) {
    if (object == nullptr || IsGone(object)) return;
    auto* item = static_cast<CQItem*>(object);
    const GUID guid = GuidOfItem(*item);  // The item may die in the next call.
    CQGallery* gallery = GalleryOf(folder);
    if (!LeaveGallery(gallery, *item, folder)) {
        NoteGone(item);
        delete item;
        return;
    }
    if (!IsGone(item) && item->GetParentFolder() == &folder) item->SetParentFolder(SurvivorHolding(*gallery, guid));
}

// Null while a whole tree goes: then nobody survives.
CQFolder* Teardown::SurvivorHolding(CQGallery& gallery, const GUID& guid) {
    if (m_cleared.IsRoot()) return nullptr;
    if (!m_survivors) {
        m_survivors.emplace();
        for (const CQFolder* folder : SubtreeOf(gallery)) {
            if (folder->IsSubfolderOf(&m_cleared) == 0) m_survivors->insert(folder);
        }
    }
    return FirstHolder(gallery, guid, [this](const CQFolder* holder) { return m_survivors->contains(holder); });
}

bool LeaveGallery(CQGallery* gallery, CQItem& item, CQFolder& folder) {
    const GUID guid = GuidOfItem(item);
    CQItem* canonical = nullptr;
    if (gallery == nullptr || gallery->IsItemHasParentByGuid(guid, canonical) == 0) return false;
    const bool second = &item != canonical;
    CQFolder* other = second ? OtherFolderWith(*gallery, item, folder) : nullptr;
    if (other != nullptr && item.GetParentFolder() == &folder) item.SetParentFolder(other);
    gallery->RemoveItemFromMap(other != nullptr ? canonical : &item, ToHandle(&folder));
    // A second object that was the last to go has taken the canonical one along.
    if (second && other == nullptr) Teardown::NoteGone(&item);
    CQItem* left = nullptr;
    if (gallery->IsItemHasParentByGuid(guid, left) == 0) Teardown::NoteGone(canonical);
    return true;
}

void DropOccurrences(CObArray& array, const CObject* object) {
    for (int position = array.GetSize() - 1; position >= 0; --position) {
        if (array.GetAt(position) == object) array.RemoveAt(position);
    }
}

void PassOnParenthood(CQGallery& gallery, const GUID& guid, const CQFolder& former) {
    CQItem* item = nullptr;
    if (gallery.IsItemHasParentByGuid(guid, item) == 0 || item->GetParentFolder() != &former) return;
    if (t_outermost != nullptr) {
        item->SetParentFolder(t_outermost->SurvivorHolding(gallery, guid));
        return;
    }
    item->SetParentFolder(FirstHolder(gallery, guid, [&](const CQFolder* holder) {
        return holder != &former && gallery.IsSubFolderValid(holder) != 0;
    }));
}

}  // namespace qfc
