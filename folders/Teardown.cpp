#include "folders/Teardown.h"

#include "folders/FolderWalk.h"
#include "folders/GalleryOf.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"

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

void Teardown::LetGoOnce(CObject* object, CQFolder& folder) {
    if (object == nullptr || m_gone.contains(object)) return;
    auto* item = static_cast<CQItem*>(object);
    const GUID guid = item->GetUniqueID();  // The item may die in the next call.
    CQGallery* gallery = GalleryOf(folder);
    if (gallery == nullptr || gallery->RemoveItemFromMap(item, ToHandle(&folder)) == 0) {
        m_gone.insert(item);
        delete item;
        return;
    }
    CQItem* canonical = nullptr;
    if (gallery->IsItemHasParentByGuid(guid, canonical) == 0 || canonical != item) {
        m_gone.insert(item);
    } else if (item->GetParentFolder() == &folder) {
        item->SetParentFolder(SurvivorHolding(*gallery, guid));
    }
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

void PassOnParenthood(CQGallery& gallery, const GUID& guid, const CQFolder& former) {
    CQItem* item = nullptr;
    if (gallery.IsItemHasParentByGuid(guid, item) == 0 || item->GetParentFolder() != &former) return;
    item->SetParentFolder(FirstHolder(gallery, guid, [&](const CQFolder* holder) {
        return holder != &former && gallery.IsSubFolderValid(holder) != 0;
    }));
}

}  // namespace qfc
