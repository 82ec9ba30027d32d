#include "folders/CQFolder.h"
#include "folders/FolderNumbers.h"

#include <vector>

DWORD CQFolder::GetNewItemStreamNumber() {
    ItemArray* items = GetItemArray();
    if (items == nullptr) return 0;
    const DWORD number = qfc::FolderNumbers::StreamNumbersOf(*this, *items).FirstFree(m_dwNextItemNumber);
    m_dwNextItemNumber = number + 1;
    return number;
}

DWORD CQFolder::GetNewFolderStorageNumber() {
    if (m_dwNextFolderNumber == 0) m_dwNextFolderNumber = 1;
    const qfc::NumberRuns& used = qfc::FolderNumbers::StorageNumbersOf(*this);
    DWORD number = used.FirstFree(m_dwNextFolderNumber);
    if (number == 0) number = used.FirstFree(1);
    m_dwNextFolderNumber = number + 1;
    return number;
}

int CQFolder::SearchFolderNumRecursive(DWORD dwNumber) {
    std::vector<CQFolder*> pending{this};
    while (!pending.empty()) {
        CQFolder* folder = pending.back();
        pending.pop_back();
        if (folder->m_dwStorageNumber == dwNumber) return 1;
        const FolderList* list = folder->GetFolderList();
        if (list == nullptr) continue;
        for (CQFolder* child : *list) {
            if (child != nullptr && child->m_strFilePath.IsEmpty()) pending.push_back(child);
        }
    }
    return 0;
}
