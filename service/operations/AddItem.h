#pragma once

#include "platform/framework/CString.h"
#include "service/LibraryOperation.h"

#include <vector>

class CQItem;

// Adds one item to folders of a gallery. Worker thread, as every operation.
class LibraryOperation_AddItem : public LibraryOperation {
public:
    LibraryOperation_AddItem(ULONGLONG hGallery, std::vector<CString>&& folderPaths, CQItem* pItem);

    // 0 without gallery, paths or item; else 1, whatever the folders did: a path that names none is skipped and a
    // refused add does not stop the others. When a folder of the gallery then holds this very object, it gets the tags
    // of the presets that name it.
    int execute() override;
    // Adds the item's GUID and the row number of the folder at the first path, if there is one.
    void FillCallbackParam(QFCLibCallbackParam& param) override;

protected:
    const std::vector<CString>& FolderPaths() const { return m_folderPaths; }
    // Null when none was given.
    const CQItem* Item() const { return m_pItem; }

private:
    std::vector<CString> m_folderPaths;
    CQItem* m_pItem;
};
