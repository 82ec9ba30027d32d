#pragma once

#include "platform/framework/CString.h"
#include "service/LibraryOperation.h"

class CQFolder;

// Makes a folder below another one, in memory and in the database or in neither.
class LibraryOperation_CreateFolder : public LibraryOperation {
public:
    // The order index of all bits places the folder behind its siblings.
    static constexpr DWORD kBehindSiblings = 0xFFFFFFFF;

    LibraryOperation_CreateFolder(ULONGLONG hGallery, const CString& strParentPath, const CString& strName,
                                  DWORD dwFirst, DWORD dwSecond, DWORD dwThird, DWORD dwFolderId, DWORD dwOrderIndex);

    int execute() override;

    // The new folder, which the tree owns; null on failure.
    CQFolder* Created() const { return m_pCreated; }

private:
    CQFolder* FindParent() const;
    int IndexBelow(CQFolder& parent) const;

    CString m_strParentPath;
    CString m_strName;
    DWORD m_dwFirst;
    DWORD m_dwSecond;
    DWORD m_dwThird;
    DWORD m_dwFolderId;
    DWORD m_dwOrderIndex;
    CQFolder* m_pCreated = nullptr;
};
