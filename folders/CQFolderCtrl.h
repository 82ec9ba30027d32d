#pragma once

#include "platform/Export.h"
#include "platform/framework/CString.h"
#include "platform/framework/Types.h"

// Identity and sort data of a folder. The only virtual operation is the destructor. A plain value: unguarded.
class QFCLIB_API CQFolderCtrl {
public:
    CQFolderCtrl();
    // What a copy takes along, and what it leaves:
    //   taken: folder id, version tag, sort info, expand status     left: string id, index (a new copy has "" and -1)
    CQFolderCtrl(const CQFolderCtrl& source);
    CQFolderCtrl& operator=(const CQFolderCtrl& source);
    virtual ~CQFolderCtrl();

    // Non-zero marks a predefined folder; a gallery root carries its gallery's id.
    DWORD GetFolderID() const { return m_dwFolderID; }
    void SetFolderID(DWORD dwId) { m_dwFolderID = dwId; }
    CString& GetFolderStrID() { return m_strFolderStrID; }
    const CString& GetFolderStrID() const { return m_strFolderStrID; }
    // Position among the siblings; -1 when none was given.
    int GetIndex() const { return m_nIndex; }
    void SetIndex(int nIndex) { m_nIndex = nIndex; }
    // The sort last applied to the items; a non-zero order is ascending.
    void GetSortInfo(DWORD& dwType, int& nOrder) const;
    void SetSortInfo(DWORD dwType, int nOrder);
    // 1 to 4 by the version tag, 0 for any other tag.
    int GetVersion() const;

protected:
    void _Copy(const CQFolderCtrl& source);

    DWORD m_dwFolderID = 0;
    CString m_strFolderStrID;
    CString m_strVersion;
    DWORD m_dwSortType = 0xFFFFFFFF;
    int m_nSortOrder = 0;
    int m_nExpandStatus = 0;
    int m_nIndex = -1;
};
