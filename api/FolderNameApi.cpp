#include "api/FolderNameApi.h"

#include "folders/FolderPath.h"

CString GenerateFolderPath2(CQFolder* pFolder) { return qfc::FolderPathText(pFolder); }
