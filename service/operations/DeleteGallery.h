#pragma once

#include "service/LibraryOperation.h"

#include <vector>

class DBTools;

// Removes the stored trees of galleries; trees in memory are not touched.
class LibraryOperation_DeleteGallery : public LibraryOperation {
public:
    LibraryOperation_DeleteGallery(const std::vector<int>& galleryIds, DBTools* pDBTools);

    int execute() override;

private:
    std::vector<int> m_galleryIds;
    DBTools* m_pDBTools;
};
