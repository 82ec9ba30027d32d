#include "folders/Teardown.h"

#include "folders/GalleryOf.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"

namespace qfc {

namespace {
thread_local Teardown* t_outermost = nullptr;
}

Teardown::Teardown() : m_outer(t_outermost) {
    if (t_outermost == nullptr) t_outermost = this;
}

Teardown::~Teardown() {
    if (m_outer == nullptr) t_outermost = nullptr;
}

void Teardown::LetGo(CQItem* item, CQFolder& folder) {
    auto& gone = t_outermost->m_gone;
    if (item == nullptr || gone.contains(item)) return;
    const GUID guid = item->GetUniqueID();  // The item may die in the next call.
    CQGallery* gallery = GalleryOf(folder);
    if (gallery != nullptr && gallery->RemoveItemFromMap(item, ToHandle(&folder)) != 0) {
        CQItem* canonical = nullptr;
        const bool alive = gallery->IsItemHasParentByGuid(guid, canonical) != 0 && canonical == item;
        if (!alive) gone.insert(item);
        return;
    }
    gone.insert(item);
    delete item;
}

}  // namespace qfc
