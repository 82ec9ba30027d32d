#include "db/CppSQLite3.h"
#include "db/CurrentDBTools.h"
#include "db/DBTools.h"
#include "folders/CQFolder.h"
#include "folders/FolderConstants.h"
#include "folders/FolderLoad.h"
#include "folders/GalleryOf.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/Handles.h"
#include "items/RowReader.h"

#include <memory>
#include <set>
#include <vector>

namespace qfc {

FolderLoad::FolderLoad(CQFolder& start) : m_start(start) {
    for (const CQFolder* folder = &start; folder != nullptr; folder = folder->GetParent()) {
        m_met.insert(folder->GetDBId());
        ++m_startDepth;
    }
    --m_startDepth;
}

bool FolderLoad::QueryChildren(const CQFolder& folder, std::vector<int>& rows) const {
    CppSQLite3Query query;
    if (folder.GetDBTools() == nullptr || !folder.GetDBTools()->QueryChildFolders(folder.GetDBId(), query)) {
        return false;
    }
    for (RowReader row(query); !row.AtEnd(); row.Next()) rows.push_back(row.Int("ID", kNoFolder));
    return true;
}

void FolderLoad::AddChild(CQFolder& parent, int nRow) {
    auto child = std::make_unique<CQFolder>();
    child->m_pParent = &parent;
    child->m_nDBId = nRow;
    child->m_pDBTools = parent.m_pDBTools;
    if (parent.AddFolder(child.get(), 1, 1) != 0) static_cast<void>(child.release());
}

int FolderLoad::LoadBelow(CQFolder& folder, int nDepth) {
    std::vector<int> rows;
    if (!QueryChildren(folder, rows)) return 0;
    if (nDepth >= kMaxLoadDepth) return 1;
    for (const int row : rows) {
        if (row >= 0 && m_met.insert(row).second) AddChild(folder, row);
    }
    const CQFolder::FolderList* list = folder.GetFolderList();
    if (list == nullptr || list->IsEmpty()) return 1;
    for (CQFolder* child : *list) {
        if (child == nullptr) continue;
        child->LoadFolderFromDb();
        child->LoadSubItemsFromDb();
        LoadBelow(*child, nDepth + 1);
    }
    folder.SortSubFolder();
    return 1;
}

}  // namespace qfc

namespace {

// The item of that GUID which the gallery has already, or null.
CQItem* SharedItem(const CQGallery* gallery, const GUID& guid) {
    CQItem* item = nullptr;
    return gallery != nullptr && gallery->IsItemHasParentByGuid(guid, item) != 0 ? item : nullptr;
}

std::unique_ptr<CQItem> LoadItem(const GUID& guid, DBTools* tools) {
    auto item = std::make_unique<CQItem>();
    item->SetUniqueID(guid);
    item->fnSetDbTools(tools);
    item->fnLoadItemFromDb();
    item->LoadLibTagFromDB();
    return item;
}

std::vector<GUID> QueryPlacements(DBTools& tools, int nFolder) {
    std::vector<GUID> guids;
    CppSQLite3Query query;
    if (!tools.QueryFolderItems(nFolder, query)) return guids;
    for (qfc::RowReader row(query); !row.AtEnd(); row.Next()) {
        if (const auto guid = row.Guid("ITEM_ID")) guids.push_back(*guid);
    }
    return guids;
}

}  // namespace

int CQFolder::LoadTreeFromDb() {
    if (m_dwFolderID == 0 || m_pDBTools == nullptr) return 0;
    m_nDBId = m_pDBTools->GetGalleryIdByFolder(static_cast<int>(m_dwFolderID));
    if (m_nDBId < 0) return 0;
    return LoadFolderFromDb() != 0 && LoadSubFoldersFromDb() != 0;
}

int CQFolder::LoadFolderFromDb() {
    CppSQLite3Query query;
    if (m_pDBTools == nullptr || !m_pDBTools->QueryFolder(m_nDBId, query)) return 0;
    const qfc::RowReader row(query);
    if (row.AtEnd()) return 0;
    m_strVersion = row.Text("VERSION", "");
    m_dwFolderID = static_cast<DWORD>(row.Int("PREDEFINED_ID", -1));
    m_strFolderName = row.NameText("FOLDER_NAME", "");
    m_dwAdopt = static_cast<DWORD>(row.Int("ADOPT_TYPE", -1));
    m_dwTrusty = static_cast<DWORD>(row.Int("TRUSTY_TYPE", -1));
    m_dwExtra = static_cast<DWORD>(row.Int("TYPE_EXTRA", -1));
    m_nExpandStatus = row.Int("EXPAND_TYPE", -1);
    m_nIndex = row.Int("ORDER_INDEX", -1);
    if (m_strFolderName.Find("--", 1) != -1) m_dwTrusty |= qfc::kTrustyOfKeyName;
    return 1;
}

int CQFolder::LoadSubFoldersFromDb() { return qfc::FolderLoad(*this).Run(); }

// Kept: 0 in every case.
int CQFolder::LoadSubItemsFromDb() {
    if (m_pDBTools == nullptr) return 0;
    const bool current = qfc::IsCurrentDBTools(m_pDBTools);
    CQGallery* gallery = qfc::GalleryOf(*this);
    // A folder holds an item once, whatever the rows say.
    std::set<GUID> held;
    if (const ItemArray* items = GetItemArray()) {
        for (const CQItem* item : *items) {
            if (item != nullptr) held.insert(item->GetUniqueID());
        }
    }
    for (const GUID& guid : QueryPlacements(*m_pDBTools, m_nDBId)) {
        if (!held.insert(guid).second) continue;
        CQItem* item = SharedItem(gallery, guid);
        std::unique_ptr<CQItem> loaded = item == nullptr ? LoadItem(guid, m_pDBTools) : nullptr;
        // A shared item keeps the folder that loaded it first as its parent.
        if (AddItem(loaded != nullptr ? loaded.get() : item, loaded != nullptr) == 0) continue;
        if (loaded != nullptr) item = loaded.release();
        if (current && gallery != nullptr) gallery->AddItem2Map(item, qfc::ToHandle(this));
    }
    return 0;
}
