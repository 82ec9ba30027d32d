#pragma once

#include "tests/support/LibraryFixture.h"

#include <initializer_list>
#include <set>
#include <string>
#include <vector>

namespace qfc::test {

inline constexpr DWORD kFilterType = 128;
inline constexpr DWORD kTransitionType = 64;

inline FilterEntry MakeFilterEntry(const GUID& guid, BYTE fill = 1) {
    return {std::vector<BYTE>(8, fill), std::vector<BYTE>(456, fill), guid};
}

inline DS_Filter_File_Record MakeFilterFile(const char* pszName, const std::vector<GUID>& items) {
    DS_Filter_File_Record file;
    file.strFileName = pszName;
    file.nFilterCount = static_cast<int>(items.size());
    for (const GUID& guid : items) file.filters.push_back(MakeFilterEntry(guid));
    return file;
}

inline DS_Transition_Record MakeTransitionRecord(const char* pszName, const GUID& guid = GUID_NULL) {
    DS_Transition_Record transition;
    transition.strFileName = pszName;
    transition.descriptor.assign(60, 7);
    transition.guidItem = guid;
    return transition;
}

// The library with effects: the gallery's folders hold filters or transitions.
class EffectFixture : public LibraryFixture {
protected:
    static std::vector<DS_Filter_File_Record> FilterFiles() {
        std::vector<DS_Filter_File_Record> files;
        EXPECT_TRUE(GetFilterRecord(files));
        return files;
    }
    static std::vector<DS_Transition_Record> TransitionRecords() {
        std::vector<DS_Transition_Record> transitions;
        EXPECT_TRUE(GetTransitionRecord(transitions));
        return transitions;
    }
    // Adds a filter in a file of its own, "<name>.so", and waits; its GUID.
    GUID AddFilter(const char* pszName, const char* pszPath = "Clips") {
        CQItem* const pItem = NewItem(pszName, kFilterType);
        const GUID guid = pItem->GetUniqueID();
        const std::string file = std::string(pszName) + ".so";
        EXPECT_EQ(QFCLibraryManager::fnAddItemAsync_Filter(MakeFilterFile(file.c_str(), {guid}), 0, m_hMedia, {pszPath},
                                                           pItem, 0),
                  1);
        Settle();
        EXPECT_EQ(Folder(pszPath)->HasItem(guid, 0), 1);
        return guid;
    }
    GUID AddTransition(const char* pszName, const char* pszPath = "Clips") {
        CQItem* const pItem = NewItem(pszName, kTransitionType);
        const GUID guid = pItem->GetUniqueID();
        const std::string file = std::string(pszName) + ".so";
        EXPECT_EQ(QFCLibraryManager::fnAddItemAsync_Transition(MakeTransitionRecord(file.c_str()), m_hMedia, {pszPath},
                                                               pItem, 0),
                  1);
        Settle();
        EXPECT_EQ(Folder(pszPath)->HasItem(guid, 0), 1);
        return guid;
    }
    CQFolder* MakePredefined(const char* pszParentPath, const char* pszName) const {
        return QFCLibraryManager::fnCreateFolder(m_hMedia, pszParentPath, pszName, 0, 0, 0, 77);
    }
    static std::string NamesIn(CQFolder& folder) {
        std::string names;
        const CQFolder::ItemArray* const pItems = folder.GetItemArray();
        if (pItems == nullptr) return names;
        for (const CQItem* const pItem : *pItems) names += std::string(pItem->GetItemName()) + " ";
        return names;
    }
};

}  // namespace qfc::test
