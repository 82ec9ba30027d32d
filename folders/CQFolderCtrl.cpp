#include "folders/CQFolderCtrl.h"

#include "folders/FolderVersions.h"

#include <algorithm>
#include <iterator>

CQFolderCtrl::CQFolderCtrl() : m_strVersion(qfc::kNoFolderVersionTag) {}

CQFolderCtrl::CQFolderCtrl(const CQFolderCtrl& source) { _Copy(source); }

CQFolderCtrl& CQFolderCtrl::operator=(const CQFolderCtrl& source) {
    _Copy(source);
    return *this;
}

CQFolderCtrl::~CQFolderCtrl() = default;

void CQFolderCtrl::GetSortInfo(DWORD& dwType, int& nOrder) const {
    dwType = m_dwSortType;
    nOrder = m_nSortOrder;
}

void CQFolderCtrl::SetSortInfo(DWORD dwType, int nOrder) {
    m_dwSortType = dwType;
    m_nSortOrder = nOrder;
}

int CQFolderCtrl::GetVersion() const {
    const auto* end = std::end(qfc::kFolderVersionTags);
    const auto* found =
        std::find_if(qfc::kFolderVersionTags, end, [this](const char* tag) { return m_strVersion == tag; });
    return found != end ? static_cast<int>(found - qfc::kFolderVersionTags) + 1 : 0;
}

// Kept: neither the string id nor the index travels.
void CQFolderCtrl::_Copy(const CQFolderCtrl& source) {
    m_dwFolderID = source.m_dwFolderID;
    m_strVersion = source.m_strVersion;
    m_dwSortType = source.m_dwSortType;
    m_nSortOrder = source.m_nSortOrder;
    m_nExpandStatus = source.m_nExpandStatus;
}
