#pragma once

#include "platform/framework/CString.h"
#include "service/LibraryOperation.h"

class DBTools;

// Makes an empty gallery, stores it and hands it to the gallery document, also when the database is a session's.
class LibraryOperation_CreateGallery : public LibraryOperation {
public:
    LibraryOperation_CreateGallery(int nGalleryId, const CString& strName, DWORD dwAdopt, DWORD dwTrusty,
                                   DWORD dwTypeExtra, DBTools* pDBTools);

    int execute() override;

    ULONGLONG Created() const { return m_hCreated; }

private:
    int m_nGalleryId;
    CString m_strName;
    DWORD m_dwAdopt;
    DWORD m_dwTrusty;
    DWORD m_dwTypeExtra;
    DBTools* m_pDBTools;
    ULONGLONG m_hCreated = 0;
};
