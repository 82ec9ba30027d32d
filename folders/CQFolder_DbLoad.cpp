#include "db/CurrentDBTools.h"
#include "db/DBTools.h"
#include "folders/CQFolder.h"
#include "folders/FolderConstants.h"
#include "folders/FolderLoad.h"
#include "folders/FolderRows.h"
#include "folders/GalleryOf.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"

#include <memory>
#include <new>
#include <set>

namespace qfc {

namespace {

// The item of that GUID which the gallery has already, or null.
CQItem* SharedItem(const CQGallery* gallery, const GUID& guid) {
    CQItem* item = nullptr;
    return gallery != nullptr && gallery->IsItemHasParentByGuid(guid, item) != 0 ? item : nullptr;
}

// What has no row has nothing below it either: -1 is what every gallery root has as its parent.
bool HasRow(const CQFolder& folder) { return folder.GetDBId() >= 0; }

std::set<GUID> GuidsIn(CQFolder& folder) {
    std::set<GUID> guids;
    const CQFolder::ItemArray* items = folder.GetItemArray();
    if (items == nullptr) return guids;
    for (const CQItem* item : *items) {
        if (item != nullptr) guids.insert(item->GetUniqueID());
    }
    return guids;
}

}  // namespace

FolderLoad::FolderLoad(CQFolder& start) : m_start(start) {
    for (const CQFolder* folder = start.GetParent(); folder != nullptr; folder = folder->GetParent()) {
        m_met.insert(folder->GetDBId());
        ++m_startDepth;
    }
    m_met.insert(start.GetDBId());
}

FolderLoad::~FolderLoad() = default;

int FolderLoad::Run() {
    if (m_start.GetDBTools() == nullptr || !HasRow(m_start)) return 0;
    // Sub-folders that are here already need not be those that the database has below the start.
    const bool bare = m_start.GetFirstSubFolder() == nullptr;
    DBTools& tools = *m_start.GetDBTools();
    m_rows = bare ? RowsOfTree(tools, m_start.GetDBId()) : RowByRow(tools);
    return LoadBelow(m_start, m_startDepth);
}

bool FolderLoad::TakeRow(CQFolder& folder, FolderRows& rows) {
    if (!HasRow(folder)) return false;
    const auto row = rows.Folder(folder.m_nDBId);
    if (!row) return false;
    folder.m_strVersion = row->version;
    folder.m_dwFolderID = static_cast<DWORD>(row->predefinedId);
    if (folder.m_strFolderName != row->name) folder.m_strTranslateName.Empty();
    folder.m_strFolderName = row->name;
    folder.m_dwAdopt = static_cast<DWORD>(row->adoptType);
    folder.m_dwTrusty = static_cast<DWORD>(row->trustyType);
    folder.m_dwExtra = static_cast<DWORD>(row->typeExtra);
    folder.m_nExpandStatus = row->expandType;
    folder.m_nIndex = row->orderIndex;
    if (folder.m_strFolderName.Find("--", 1) != -1) folder.m_dwTrusty |= kTrustyOfKeyName;
    return true;
}

void FolderLoad::TakeItems(CQFolder& folder, FolderRows& rows) {
    if (!HasRow(folder)) return;
    const bool current = IsCurrentDBTools(folder.m_pDBTools);
    CQGallery* gallery = GalleryOf(folder);
    // A folder holds an item once, whatever the rows say.
    std::set<GUID> held = GuidsIn(folder);
    for (const GUID& guid : rows.Placements(folder.m_nDBId)) {
        if (!held.insert(guid).second) continue;
        CQItem* item = SharedItem(gallery, guid);
        std::unique_ptr<CQItem> loaded = item == nullptr ? rows.Item(guid) : nullptr;
        // A shared item keeps the folder that loaded it first as its parent, as long as that lives.
        if (folder.AddItem(loaded != nullptr ? loaded.get() : item, loaded != nullptr) == 0) continue;
        if (loaded != nullptr) item = loaded.release();
        if (item->GetParentFolder() == nullptr) item->SetParentFolder(&folder);
        if (current && gallery != nullptr) gallery->AddItem2Map(item, ToHandle(&folder));
    }
}

void FolderLoad::AddChild(CQFolder& parent, int nRow) {
    auto child = std::make_unique<CQFolder>();
    child->m_pParent = &parent;
    child->m_nDBId = nRow;
    child->m_pDBTools = parent.m_pDBTools;
    if (parent.AddFolder(child.get(), 1, 1) != 0) static_cast<void>(child.release());
}

int FolderLoad::LoadBelow(CQFolder& folder, int nDepth) {
    const auto children = m_rows->Children(folder.GetDBId());
    if (!children) return 0;
    if (nDepth >= kMaxLoadDepth) return 1;
    for (const int row : *children) {
        if (row >= 0 && m_met.insert(row).second) AddChild(folder, row);
    }
    const CQFolder::FolderList* list = folder.GetFolderList();
    if (list == nullptr || list->IsEmpty()) return 1;
    for (CQFolder* child : *list) {
        if (child == nullptr || !HasRow(*child)) continue;
        TakeRow(*child, *m_rows);
        TakeItems(*child, *m_rows);
        LoadBelow(*child, nDepth + 1);
    }
    // Without memory: in the order of the rows they might be stored later.
    if (folder.SortSubFolder() == 0) throw std::bad_alloc();
    return 1;
}

}  // namespace qfc

int CQFolder::LoadTreeFromDb() {
    if (m_dwFolderID == 0 || m_pDBTools == nullptr) return 0;
    m_nDBId = m_pDBTools->GetGalleryIdByFolder(static_cast<int>(m_dwFolderID));
    if (m_nDBId < 0) return 0;
    return LoadFolderFromDb() != 0 && LoadSubFoldersFromDb() != 0;
}

int CQFolder::LoadFolderFromDb() {
    return m_pDBTools != nullptr && qfc::FolderLoad::TakeRow(*this, *qfc::RowByRow(*m_pDBTools));
}

int CQFolder::LoadSubFoldersFromDb() { return qfc::FolderLoad(*this).Run(); }

int CQFolder::LoadSubItemsFromDb() {
    if (m_pDBTools != nullptr) qfc::FolderLoad::TakeItems(*this, *qfc::RowByRow(*m_pDBTools));
    return 0;
}
