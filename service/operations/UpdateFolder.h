#pragma once

#include "platform/framework/CString.h"
#include "service/LibraryOperation.h"

class CQFolder;
class DBTools;

// Gives a folder new values and stores them. The values stay in memory when they cannot be stored.
class LibraryOperation_UpdateFolder : public LibraryOperation {
public:
    LibraryOperation_UpdateFolder(const CString& strName, DWORD dwAdopt, DWORD dwTrusty, DWORD dwTypeExtra,
                                  DBTools* pDBTools, CQFolder* pFolder);

    int execute() override;

private:
    CString m_strName;
    DWORD m_dwAdopt;
    DWORD m_dwTrusty;
    DWORD m_dwTypeExtra;
    DBTools* m_pDBTools;
    CQFolder* m_pFolder;
};
