#pragma once

#include "folders/CQFolder.h"

#include <cstdint>
#include <map>

namespace qfc {

// A set of numbers kept as runs of consecutive ones, so that the dense sets met here take next to no memory.
class NumberRuns {
public:
    void Add(DWORD dwNumber);
    bool Has(DWORD dwNumber) const;
    // The first number from `dwFrom` on that is not in the set; 0 follows the largest one.
    DWORD FirstFree(DWORD dwFrom) const;
    void Clear() { m_runs.clear(); }

private:
    std::map<DWORD, DWORD> m_runs;  // First to last; never touching each other.
};

// Which stream numbers the items of one folder use, and which storage numbers the folders of one gallery file. Both
// answers are those of searching everything anew; they are kept as long as nothing that they rest on has changed:
// the item array (its modification count), the number of any counted item, any list or number of any tree. Not noticed:
// a file path that is set in a numbered tree, and a sub-folder replaced through a reference into the list. Belongs to
// the thread of the folder.
class FolderNumbers {
public:
    static const NumberRuns& StreamNumbersOf(CQFolder& folder, CQFolder::ItemArray& items);
    // Called when an item was appended to the array and has its number.
    static void NoteAppended(CQFolder& folder, const CQFolder::ItemArray& items, CQItem& item) noexcept;
    // Called when the number of an item that some folder has counted changes.
    static void NoteItemNumberChanged();

    static const NumberRuns& StorageNumbersOf(CQFolder& fileRoot);
    // Called when sub-folders of the folder only changed places; nTreeChangesBefore: the count before they did.
    static void NoteReordered(CQFolder& folder, std::uint64_t nTreeChangesBefore);
    // Gives a new storage number to a folder that was just added; nTreeChangesBefore: the count before it was.
    static void AssignStorageNumber(CQFolder& child, std::uint64_t nTreeChangesBefore);

    // How many items and folders were looked at so far, process-wide: what the tests measure.
    static std::uint64_t VisitsSoFar();

private:
    static FolderNumbers& Of(CQFolder& folder);
    // False when a list was met that does not tell of its changes.
    bool CountStorages(CQFolder& fileRoot);

    NumberRuns m_streams;
    const CObArray* m_items = nullptr;  // Null: nothing is known.
    unsigned long long m_itemsModification = 0;
    std::uint64_t m_itemNumberChanges = 0;

    NumberRuns m_storages;
    bool m_storagesKnown = false;
    std::uint64_t m_treeChanges = 0;
};

}  // namespace qfc
