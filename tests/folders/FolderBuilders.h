#pragma once

#include "folders/CQFolder.h"
#include "folders/GalleryFile.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "tests/items/ItemBuilders.h"

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

// Folders whose inside can be set, a gallery file that writes down what is asked of it, and random trees.
namespace qfc::test {

class OpenFolder : public CQFolder {
public:
    using CQFolder::CQFolder;
    using CQFolder::m_bDeleted;
    using CQFolder::m_bWritable;
    using CQFolder::m_dwNextFolderNumber;
    using CQFolder::m_dwNextItemNumber;
    using CQFolder::m_dwStorageNumber;
    using CQFolder::m_nDBId;
    using CQFolder::m_nExpandStatus;
    using CQFolder::m_pFileStorage;
    using CQFolder::m_pSecondStorage;
    using CQFolder::m_pStorage;
    using CQFolder::m_strFilePath;
    using CQFolder::m_strTranslateName;
    using CQFolder::m_strVersion;
};

// Any folder's inside: members of all folders are reached through their base's accessors of OpenFolder.
class FolderInside : public CQFolder {
public:
    static CString& FilePath(CQFolder& folder) { return folder.*&FolderInside::m_strFilePath; }
    static DWORD& StorageNumber(CQFolder& folder) { return folder.*&FolderInside::m_dwStorageNumber; }
    static DWORD& NextItemNumber(CQFolder& folder) { return folder.*&FolderInside::m_dwNextItemNumber; }
    static DWORD& NextFolderNumber(CQFolder& folder) { return folder.*&FolderInside::m_dwNextFolderNumber; }
    static int& DbId(CQFolder& folder) { return folder.*&FolderInside::m_nDBId; }
    static CString& Version(CQFolder& folder) { return folder.*&FolderInside::m_strVersion; }
};

inline CQItem* NewItem(unsigned nNumber, const char* pszName = "", DWORD dwType = 1) {
    auto* item = new CQItem(pszName);
    item->SetUniqueID(GuidOf(nNumber));
    item->SetItemType(dwType);
    return item;
}

inline CQItem* AddNew(CQFolder& folder, unsigned nNumber, const char* pszName = "", DWORD dwType = 1) {
    CQItem* item = NewItem(nNumber, pszName, dwType);
    folder.AddItem(item, 1);
    return item;
}

// Siblings of few indexes under names in no order, so many that sorting which is not stable shows.
struct TiedFolders {
    std::vector<std::pair<std::string, int>> folders;  // Name and index.
    std::vector<std::string> sorted;                   // The names by index, equal ones as they are.
};

inline TiedFolders ManyTiedFolders() {
    TiedFolders tied;
    for (int i = 0; i < 60; ++i) tied.folders.emplace_back(std::to_string((i * 37 + 11) % 60), i * 7 % 3);
    for (int index = 0; index < 3; ++index) {
        for (const auto& [name, itsIndex] : tied.folders) {
            if (itsIndex == index) tied.sorted.push_back(name);
        }
    }
    return tied;
}

inline std::vector<std::string> Names(CQFolder::FolderList* list) {
    std::vector<std::string> names;
    if (list == nullptr) return names;
    for (const CQFolder* folder : *list) names.emplace_back(folder != nullptr ? folder->GetFolderName().View() : "-");
    return names;
}

inline std::vector<std::string> ItemNames(CQFolder::ItemArray* items) {
    std::vector<std::string> names;
    if (items == nullptr) return names;
    for (const CQItem* item : *items) names.emplace_back(item != nullptr ? item->GetItemName().View() : "-");
    return names;
}

// Writes down every request as "verb folder" and answers with `result`.
class RecordedFile : public GalleryFile {
public:
    // Answers for every file root with a path while it lives.
    RecordedFile() {
        s_current = this;
        SetGalleryFileSource([](const CQFolder&) -> GalleryFile* { return s_current; });
    }
    ~RecordedFile() override {
        SetGalleryFileSource(nullptr);
        s_current = nullptr;
    }

    int OpenFolderStorage(CQFolder& folder) override { return Note("open", folder); }
    int CloseFolderStorage(CQFolder& folder) override { return Note("close", folder); }
    int DeleteFolderStorage(CQFolder& folder) override { return Note("delete", folder); }
    int FlushFolder(CQFolder& folder) override { return Note("flush", folder); }
    int SaveTreeAndClose(CQFolder& fileRoot) override { return Note("save", fileRoot); }
    int DeleteItemStreams(CQFolder& folder, CQItem& item) override {
        calls.push_back("streams " + std::string(folder.GetFolderName().View()) + " " +
                        std::string(item.GetItemName().View()));
        return result;
    }
    int LoadBlackBox(CQItem&) override { return 0; }
    int LoadFilm(CQItem&) override { return 0; }

    std::vector<std::string> calls;
    int result = 1;

private:
    int Note(const char* verb, const CQFolder& folder) {
        calls.push_back(std::string(verb) + " " + std::string(folder.GetFolderName().View()));
        return result;
    }

    static inline RecordedFile* s_current = nullptr;
};

// All folders below `root` in pre-order, by plain recursion: what every walk is compared with.
inline void ListBelow(CQFolder& root, std::vector<CQFolder*>& out) {
    if (root.GetFolderList() == nullptr) return;
    for (CQFolder* child : *root.GetFolderList()) {
        out.push_back(child);
        ListBelow(*child, out);
    }
}

// Adds `count` folders, each below one already in the tree, and returns all of them, the root first.
inline std::vector<CQFolder*> GrowRandomTree(CQFolder& root, int count, std::mt19937& random) {
    std::vector<CQFolder*> folders{&root};
    for (int i = 0; i < count; ++i) {
        CQFolder* parent = folders[random() % folders.size()];
        auto* child = new CQFolder(("F" + std::to_string(random() % 7)).c_str(), 0, 0, 0);
        parent->AddFolder(child, 0, static_cast<int>(random() % 2));
        child->SetFolderID(static_cast<DWORD>(random() % 5));
        folders.push_back(child);
    }
    return folders;
}

}  // namespace qfc::test
