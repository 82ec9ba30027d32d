#include "folders/Teardown.h"

#include "db/CurrentDBTools.h"
#include "folders/FolderWalk.h"
#include "folders/GalleryOf.h"
#include "folders/ObjectArrays.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"

#include <algorithm>
#include <new>
#include <utility>

namespace qfc {

namespace {

thread_local Teardown* t_outermost = nullptr;

}  // namespace

Teardown::Teardown(CQFolder& cleared, Extent extent) : m_cleared(cleared), m_extent(extent), m_outer(t_outermost) {
    if (t_outermost == nullptr) t_outermost = this;
}

Teardown::~Teardown() {
    if (m_outer != nullptr) return;
    t_outermost = nullptr;
    while (m_firstEnding != nullptr) delete std::exchange(m_firstEnding, m_firstEnding->m_pNextEnding);
}

bool Teardown::EndsItemsOf(const CQFolder& folder) {
    if (t_outermost->m_extent == Extent::kTreeAndAllItems) return true;
    return folder.GetDBTools() == nullptr || IsCurrentDBTools(folder.GetDBTools());
}

void Teardown::LetGo(CQItem* item, CQFolder& folder) {
    if (item == nullptr || LeaveIndex(*item, folder)) return;
    t_outermost->EndUnlessHeld(*item, folder);
}

bool Teardown::LeaveIndex(CQItem& item, CQFolder& folder) {
    CQGallery* gallery = GalleryOf(folder);
    CQItem* canonical = nullptr;
    if (gallery == nullptr || gallery->IsItemHasParentByGuid(GuidOfItem(item), canonical) == 0) return false;
    if (&item != canonical) {
        t_outermost->EndUnlessHeld(item, folder);
        if (Holds(folder.GetItemArray(), canonical)) return true;
    }
    t_outermost->LeaveEntry(*gallery, GuidOfItem(item), folder);
    return true;
}

void Teardown::PassOn(const CObject* object, CQFolder& former) {
    CQFolder* holder = object != nullptr ? t_outermost->SurvivorWith(object) : nullptr;
    if (holder == nullptr) return;
    auto* item = const_cast<CQItem*>(static_cast<const CQItem*>(object));
    if (item->GetParentFolder() == &former) item->SetParentFolder(holder);
}

void Teardown::EndLater(CQItem& item) {
    if (std::exchange(item.m_bEnding, true)) return;
    (m_lastEnding != nullptr ? m_lastEnding->m_pNextEnding : m_firstEnding) = &item;
    m_lastEnding = &item;
}

void Teardown::EndUnlessHeld(CQItem& item, CQFolder& former) {
    if (item.m_bEnding) return;
    CQFolder* holder = SurvivorWith(&item);
    if (holder == nullptr) {
        EndLater(item);
    } else if (item.GetParentFolder() == &former) {
        item.SetParentFolder(holder);
    }
}

// The entry would end with its last parent, so a folder that has the item without being one takes that one's place.
void Teardown::LeaveEntry(CQGallery& gallery, const GUID& guid, CQFolder& folder) {
    const auto found = gallery.m_itemMap.find(guid);
    CQItem& canonical = *found->second.pItem;
    auto& parents = found->second.parents;
    const ULONGLONG leaving = ToHandle(&folder);
    if (std::any_of(parents.begin(), parents.end(), [&](ULONGLONG parent) { return parent != leaving; })) {
        parents.remove(leaving);
    } else if (CQFolder* other = SurvivorWith(&canonical)) {
        std::replace(parents.begin(), parents.end(), leaving, ToHandle(other));
        parents.unique();
    } else {
        EndLater(*found->second.pItem.release());
        gallery.m_itemMap.erase(found);
        return;
    }
    if (canonical.GetParentFolder() == &folder) canonical.SetParentFolder(NextParent(canonical, parents));
}

// The first parent of the index that has the item, else any folder that does.
CQFolder* Teardown::NextParent(const CQItem& item, const std::list<ULONGLONG>& parents) {
    for (const ULONGLONG handle : parents) {
        // Only an address until it is known to be alive: a folder may be gone without its gallery having been told.
        CQFolder* parent = AsFolder(handle);
        if (IsSurvivor(parent) && Holds(parent->GetItemArray(), &item)) return parent;
    }
    return SurvivorWith(&item);
}

bool Teardown::IsNobodyLeft() const { return m_extent != Extent::kOwnItems && m_cleared.IsRoot(); }

// The first accepted one of the folders that are not cleared, the topmost one last, or null.
template <class IsAccepted>
CQFolder* Teardown::FirstSurvivor(IsAccepted&& isAccepted) const {
    const auto judge = [&](CQFolder& folder) {
        if (&folder == &m_cleared) return m_extent == Extent::kOwnItems ? Met::kGoOn : Met::kPassBy;
        return isAccepted(folder) ? Met::kFound : Met::kGoOn;
    };
    CQFolder& top = TopmostOf(m_cleared);
    if (CQFolder* found = FirstBelow(top, judge)) return found;
    return judge(top) == Met::kFound ? &top : nullptr;
}

bool Teardown::IsSurvivor(const CQFolder* address) {
    if (IsNobodyLeft()) return false;
    if (HasNotedSurvivors()) return m_survivors->contains(address);
    return FirstSurvivor([=](const CQFolder& folder) { return &folder == address; }) != nullptr;
}

// One object is searched for; for more of them it pays to note who has what.
CQFolder* Teardown::SurvivorWith(const CObject* object) {
    if (IsNobodyLeft()) return nullptr;
    if (std::exchange(m_searched, true) && HasNotedWhatSurvivorsHold()) {
        const auto found = m_held->find(object);
        return found != m_held->end() ? found->second : nullptr;
    }
    return FirstSurvivor([=](CQFolder& folder) { return Holds(folder.GetItemArray(), object); });
}

bool Teardown::HasNotedSurvivors() {
    if (m_survivors) return true;
    try {
        std::unordered_set<const CQFolder*> survivors;
        FirstSurvivor([&](const CQFolder& folder) {
            survivors.insert(&folder);
            return false;
        });
        m_survivors = std::move(survivors);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

bool Teardown::HasNotedWhatSurvivorsHold() {
    if (m_held) return true;
    try {
        std::unordered_map<const CObject*, CQFolder*> held;
        FirstSurvivor([&](CQFolder& folder) {
            const CObArray* objects = folder.GetItemArray();
            if (objects == nullptr) return false;
            for (const CObject* object : *objects) held.try_emplace(object, &folder);
            return false;
        });
        m_held = std::move(held);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

}  // namespace qfc
