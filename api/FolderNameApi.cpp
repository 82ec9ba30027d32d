#include "api/FolderNameApi.h"

#include "api/names/FolderNames.h"
#include "api/names/PathRules.h"
#include "folders/FolderDisplay.h"
#include "folders/FolderPath.h"

#include <vector>

CString GenerateFolderPath2(CQFolder* pFolder) { return qfc::FolderPathText(pFolder); }

CString GenerateFolderName(CQFolder* pParent, CString strName) { return qfc::EncodedNameBelow(pParent, strName); }

CString GetFolderDisplayName(CString strName) { return qfc::DisplayNameOf(strName); }

CString GetFolderDisplayName(CQFolder* pFolder, HINSTANCE hModule) { return qfc::FolderDisplayName(pFolder, hModule); }

CString GetFolderDisplayPath(CQFolder* pFolder, HINSTANCE hModule) { return qfc::FolderDisplayPath(pFolder, hModule); }

CString GetFolderDisplayPath(CString strNameOrPath) { return qfc::DisplayPathOf(strNameOrPath); }

CString GenerateFolderDisplayPath(CQFolder* pParent, CString strName, HINSTANCE hModule) {
    return qfc::DisplayPathBelow(pParent, strName, hModule);
}

CString GenerateFolderNameFromDispalyPath(CString strRootDisplayName, CString strDisplayPath) {
    std::vector<CString> texts = qfc::SplitFolderPath(strDisplayPath);
    texts.insert(texts.begin(), strRootDisplayName);
    return qfc::EncodeFolderName(texts);
}

CString GenerateFolderPathFromDispalyPath(CString strRootDisplayName, CString strDisplayPath) {
    return qfc::StoredPathOf(strRootDisplayName, strDisplayPath);
}

CString GenerateFolderPathFromName(CString strName) { return qfc::PathOfEncodedName(strName); }
