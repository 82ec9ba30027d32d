#include "folders/Teardown.h"

#include "db/CurrentDBTools.h"
#include "folders/FolderWalk.h"
#include "folders/GalleryOf.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/ItemGuid.h"

#include <algorithm>
#include <utility>

namespace qfc {

namespace {

CQFolder& TopmostOf(CQFolder& folder) {
    CQFolder* top = &folder;
    while (top->GetParent() != nullptr) top = top->GetParent();
    return *top;
}

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

bool Has(CQFolder& folder, const CObject& object) {
    const CObArray* objects = folder.GetItemArray();
    return objects != nullptr && std::find(objects->begin(), objects->end(), &object) != objects->end();
}

// The first folder of the tree that is accepted and has this very object in its array, or null.
template <class IsAccepted>
CQFolder* FirstFolderWith(const CObject& object, CQFolder& top, IsAccepted&& isAccepted) {
    const auto has = [&](CQFolder& candidate) { return isAccepted(candidate) && Has(candidate, object); };
    for (CQFolder* candidate : SubtreeOf(top)) {
        if (has(*candidate)) return candidate;
    }
    return has(top) ? &top : nullptr;
}

CQFolder* OtherFolderWith(CQGallery& gallery, const CQItem& item, const CQFolder& folder) {
    return FirstFolderWith(item, gallery, [&](const CQFolder& candidate) { return &candidate != &folder; });
}

bool IsOnlyParent(const CQGallery& gallery, const GUID& guid, const CQFolder& folder) {
    return FirstHolder(gallery, guid, [&](const CQFolder* holder) { return holder != &folder; }) == nullptr;
}

}  // namespace

Teardown::Teardown(CQFolder& cleared, Extent extent) : m_cleared(cleared), m_extent(extent), m_outer(t_outermost) {
    if (t_outermost == nullptr) t_outermost = this;
}

Teardown::~Teardown() {
    if (m_outer == nullptr) t_outermost = nullptr;
}

void Teardown::LetGo(CObject* item, CQFolder& folder) {
    const Teardown here(folder);
    t_outermost->LetGoOnce(item, folder);
}

void Teardown::PassOn(const CObject* object, CQFolder& former) {
    const Teardown here(former);
    if (object == nullptr || IsGone(object) || t_outermost->m_endingObjects.contains(object)) return;
    CQFolder* holder = t_outermost->SurvivorWith(object);
    if (holder == nullptr) return;
    auto* item = const_cast<CQItem*>(static_cast<const CQItem*>(object));
    if (item->GetParentFolder() == &former) item->SetParentFolder(holder);
}

bool Teardown::IsGone(const CObject* object) { return t_outermost != nullptr && t_outermost->m_gone.contains(object); }

void Teardown::NoteGone(const CObject* object) {
    if (t_outermost != nullptr) t_outermost->m_gone.insert(object);
}

void Teardown::LetGoOnce(CObject* object, CQFolder& folder) {
    if (object == nullptr || IsGone(object) || m_endingObjects.contains(object)) return;
    auto* item = static_cast<CQItem*>(object);
    CQGallery* gallery = GalleryOf(folder);
    if (LeaveGallery(gallery, *item, folder)) return;
    if (CQFolder* holder = SurvivorWith(item)) {
        if (item->GetParentFolder() == &folder) item->SetParentFolder(holder);
        return;
    }
    m_ending.emplace_back(item);
    m_endingObjects.insert(item);
}

const std::unordered_set<const CQFolder*>& Teardown::Survivors() {
    if (m_survivors) return *m_survivors;
    m_survivors.emplace();
    // Nobody survives when a whole tree goes.
    if (m_extent == Extent::kSubtree && m_cleared.IsRoot()) return *m_survivors;
    const auto survives = [this](const CQFolder& folder) {
        return m_extent == Extent::kOwnItems ? &folder != &m_cleared : folder.IsSubfolderOf(&m_cleared) == 0;
    };
    CQFolder& top = TopmostOf(m_cleared);
    if (survives(top)) m_survivors->insert(&top);
    for (const CQFolder* folder : SubtreeOf(top)) {
        if (survives(*folder)) m_survivors->insert(folder);
    }
    return *m_survivors;
}

CQFolder* Teardown::SurvivorHolding(const CQGallery& gallery, const GUID& guid) {
    return FirstHolder(gallery, guid, [this](const CQFolder* holder) { return Survivors().contains(holder); });
}

// One object is searched for; for more of them it pays to note who has what.
CQFolder* Teardown::SurvivorWith(const CObject* object) {
    if (Survivors().empty()) return nullptr;
    if (!std::exchange(m_searched, true)) return SearchSurvivorsFor(object);
    if (!m_held) NoteWhatSurvivorsHold();
    const auto found = m_held->find(object);
    return found != m_held->end() ? found->second : nullptr;
}

CQFolder* Teardown::SearchSurvivorsFor(const CObject* object) {
    const auto survives = [this](const CQFolder& folder) { return Survivors().contains(&folder); };
    return FirstFolderWith(*object, TopmostOf(m_cleared), survives);
}

void Teardown::NoteWhatSurvivorsHold() {
    std::unordered_map<const CObject*, CQFolder*> held;
    const auto note = [&](CQFolder& folder) {
        const CObArray* objects = Survivors().contains(&folder) ? folder.GetItemArray() : nullptr;
        if (objects == nullptr) return;
        for (const CObject* object : *objects) held.try_emplace(object, &folder);
    };
    CQFolder& top = TopmostOf(m_cleared);
    for (CQFolder* folder : SubtreeOf(top)) note(*folder);
    note(top);
    m_held = std::move(held);
}

bool EndsItsItems(const CQFolder& folder) {
    return folder.GetDBTools() == nullptr || IsCurrentDBTools(folder.GetDBTools());
}

// The index would end the item with its last parent, so a folder that has it without being one becomes one.
void KeepForOthers(CQGallery& gallery, CQItem& canonical, const CQFolder& leaving) {
    if (!IsOnlyParent(gallery, GuidOfItem(canonical), leaving)) return;
    CQFolder* other =
        t_outermost != nullptr ? t_outermost->SurvivorWith(&canonical) : OtherFolderWith(gallery, canonical, leaving);
    if (other != nullptr) gallery.AddItem2Map(&canonical, ToHandle(other));
}

bool LeaveGallery(CQGallery* gallery, CQItem& item, CQFolder& folder) {
    const GUID guid = GuidOfItem(item);  // The item may die below.
    CQItem* canonical = nullptr;
    if (gallery == nullptr || gallery->IsItemHasParentByGuid(guid, canonical) == 0) return false;
    const bool second = &item != canonical;
    CQFolder* other = second ? OtherFolderWith(*gallery, item, folder) : nullptr;
    if (other != nullptr && item.GetParentFolder() == &folder) item.SetParentFolder(other);
    if (second && Has(folder, *canonical)) {
        // The folder stays a parent, for the canonical object.
        if (other != nullptr) return true;
        Teardown::NoteGone(&item);
        delete &item;
        return true;
    }
    KeepForOthers(*gallery, *canonical, folder);
    gallery->RemoveItemFromMap(other != nullptr ? canonical : &item, ToHandle(&folder));
    // A second object that was the last to go has taken the canonical one along.
    if (second && other == nullptr) Teardown::NoteGone(&item);
    CQItem* left = nullptr;
    if (gallery->IsItemHasParentByGuid(guid, left) == 0) Teardown::NoteGone(canonical);
    PassOnParenthood(*gallery, guid, folder);
    return true;
}

void DropOccurrences(CObArray& array, const CObject* object) {
    for (int position = array.GetSize() - 1; position >= 0; --position) {
        if (array.GetAt(position) == object) array.RemoveAt(position);
    }
}

void PassOnIfHeldElsewhere(CQItem& item, CQFolder& former) {
    CQGallery* gallery = GalleryOf(former);
    if (gallery == nullptr || item.GetParentFolder() != &former) return;
    const auto holds = [&](CQFolder* holder) { return gallery->IsSubFolderValid(holder) != 0 && Has(*holder, item); };
    if (Has(former, item)) return;
    if (CQFolder* other = FirstHolder(*gallery, GuidOfItem(item), holds)) item.SetParentFolder(other);
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
