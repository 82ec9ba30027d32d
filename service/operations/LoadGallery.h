#pragma once

#include "service/LibraryOperation.h"

class DBTools;

// Loads a stored gallery with its tree. It joins the gallery document when it is of the service database; galleries of
// sessions stay out of it.
class LibraryOperation_LoadGallery : public LibraryOperation {
public:
    LibraryOperation_LoadGallery(int nGalleryId, DBTools* pDBTools);

    int execute() override;

    ULONGLONG Loaded() const { return m_hLoaded; }

private:
    int m_nGalleryId;
    DBTools* m_pDBTools;
    ULONGLONG m_hLoaded = 0;
};
