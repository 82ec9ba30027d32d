#pragma once

#include "folders/CQFolder.h"

#include <list>
#include <map>
#include <memory>

namespace qfc {
class Teardown;
}

// The root of one folder tree: adds the current folder and an index of the tree's items by GUID. The gallery owns its
// folders and, through the index, one canonical object for each GUID. int results are 1 and 0.
//
// Threads: unguarded, like the tree it is the root of.
class QFCLIB_API CQGallery : public CQFolder {
    DECLARE_DYNCREATE(CQGallery)

public:
    CQGallery();
    CQGallery(const CString& strName, DWORD dwTrusty, DWORD dwAdopt, DWORD dwExtra);
    CQGallery(const CQGallery&) = delete;
    CQGallery& operator=(const CQGallery&) = delete;
    // Clears the tree while the index still stands, so that an item held by several folders is destroyed once.
    ~CQGallery() override;

    // --- The index of items. Parents are folder handles (items/Handles.h), in the order added. ---------------------
    // Takes ownership of `pItem` when its GUID is new; a known GUID keeps its canonical item. The same parent twice in
    // a row is kept once. 0 for null.
    int AddItem2Map(CQItem* pItem, ULONGLONG hParent);
    // Removes every occurrence of the parent. Destroys `pItem` when it is a second object for the GUID, and the
    // canonical item with its last parent. 0, nothing changed, for null or an unknown GUID.
    int RemoveItemFromMap(CQItem* pItem, ULONGLONG hParent);
    // 1 and the canonical item when the GUID is known; 0 and `pOut` untouched otherwise.
    int IsItemHasParentByGuid(const GUID& guid, CQItem*& pOut) const;
    std::list<ULONGLONG> GetItemParentList(const GUID& guid) const;

    // --- The current folder ------------------------------------------------------------------------------------
    // The current folder while it is in the tree; else the first sub-folder, or the gallery itself when its list is
    // empty, becomes current. Null without a list.
    CQFolder* GetCurrentFolder();
    // With `bFlush` the folder that was current is first written back to its gallery file, if there is one. Always 1.
    int SetCurrentFolder(CQFolder* pFolder, int bFlush);
    void SetCurrentFolderNull() { m_pCurrentFolder = nullptr; }
    // 0 when the path names no folder; the current folder then stays. The active path is not rebuilt. Uses the one list
    // of components of the process: called from one thread at a time, whatever the gallery.
    int SetCurrentFolderByPath(const char* pszPath);
    int GenerateActiveFolderPath();
    // The text that GenerateActiveFolderPath last made.
    const CString& GetActiveFolderPath() const { return m_strActiveFolderPath; }
    int AddToCurrentFolder(CQFolder* pFolder);

    // --- The tree ----------------------------------------------------------------------------------------------
    // The first sub-folder with trust bit 2 when it has bit 64 too, else its first sub-folder with bit 64, or null.
    CQFolder* GetFirstCanAddItemFolder();
    // Folders of the tree without a sub-folder; the gallery itself is not counted.
    int GetFinalFolderCount();
    // Compares with the files of the gallery and of its direct sub-folders, case-sensitively.
    int IsFileInUse(const CString& strPath);
    // Destroys the direct sub-folders that live in files of their own, then writes the gallery file.
    int UnlinkAll();

    // Kept: both answer 1 and do nothing.
    static int LetGallerySleep(DWORD dwGallery);
    static int WakeUpGallery(DWORD dwGallery);

private:
    friend class qfc::Teardown;  // Takes items out of the index without needing memory.

    struct ItemEntry {
        std::unique_ptr<CQItem> pItem;  // The canonical object of the GUID.
        std::list<ULONGLONG> parents;   // Never empty.
    };

    void FlushCurrentFolder();

    CQFolder* m_pCurrentFolder = nullptr;  // Borrowed; may dangle, see GetCurrentFolder.
    CString m_strActiveFolderPath;
    std::map<GUID, ItemEntry> m_itemMap;  // In the order of the GUIDs' raw bytes.
};
