#include "service/operations/DeleteGallery.h"

#include "db/DBTools.h"

LibraryOperation_DeleteGallery::LibraryOperation_DeleteGallery(const std::vector<int>& galleryIds, DBTools* pDBTools)
    : m_galleryIds(galleryIds), m_pDBTools(pDBTools) {}

int LibraryOperation_DeleteGallery::execute() {
    return m_pDBTools != nullptr && m_pDBTools->DeleteFolderTrees(m_galleryIds) ? 1 : 0;
}
