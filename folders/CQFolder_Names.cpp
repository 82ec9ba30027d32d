#include "api/names/FolderNames.h"
#include "api/names/Translation.h"
#include "folders/CQFolder.h"
#include "folders/FolderDisplay.h"
#include "folders/FolderWalk.h"
#include "platform/text/AnsiText.h"
#include "platform/text/CodePages.h"

#include <algorithm>
#include <string_view>

CString CQFolder::GetNameFormImportFolder(CString strList) {
    CString last;
    std::string_view rest = strList.View();
    while (!rest.empty()) {
        const std::size_t end = std::min(qfc::FindInAnsi(rest, "|"), rest.size());
        CString name(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
        if (name.IsEmpty()) continue;
        if (name.Trim().IsEmpty()) break;
        last = name;
    }
    return last;
}

// Kept: found once it stays, also under a name that was given through GetFolderName().
CString& CQFolder::GetTranslateFolderName() {
    if (!m_strTranslateName.IsEmpty() || !qfc::IsTranslationOn()) return m_strTranslateName;
    if (qfc::IsTranslationCollected()) {
        qfc::WriteTranslation(m_dwAdopt, m_strFolderName, true);
        return m_strTranslateName;
    }
    CString found = qfc::LookUpTranslation(m_dwAdopt, m_strFolderName, true);
    if (found.IsEmpty() && IsPredefinedFolder() != 0) {
        found = qfc::LookUpTranslation(qfc::kPredefinedFolderSection, qfc::DisplayNameOf(m_strFolderName));
    }
    m_strTranslateName = CDBStringHelper::UTF_82ASCII(found);
    return m_strTranslateName;
}

int CQFolder::IsFolderNameValid(CString strName, HINSTANCE hModule) {
    if (m_pParent == nullptr) return 1;
    if (strName.IsEmpty()) return 0;
    const FolderList* siblings = m_pParent->GetFolderList();
    if (siblings == nullptr) return 1;
    for (CQFolder* sibling : *siblings) {
        if (sibling == nullptr || sibling == this) continue;
        // Kept: a name is compared with whole display paths, so below the first level no bare name is taken.
        if (qfc::FolderDisplayPath(sibling, hModule) == strName) return 0;
    }
    return 1;
}

CQFolder* CQFolder::GetSubFolderByDisplayPath(CString strPath, HINSTANCE hModule) {
    for (CQFolder* folder : qfc::SubtreeOf(*this)) {
        if (qfc::FolderDisplayPath(folder, hModule) == strPath) return folder;
    }
    return nullptr;
}
