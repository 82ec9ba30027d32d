#pragma once

#include "folders/CQFolder.h"

#include <cstddef>
#include <iterator>
#include <new>
#include <vector>

// The two pre-order walks over folders, one range type per stop rule:
//     for (CQFolder* folder : qfc::SubtreeOf(start)) ...
// and the search FirstBelow, which needs no memory.
// Sub-folder lists are asked for through GetFolderList; the lists met must not change during the walk. Both end on
// every tree, also when the start is in no list. Memory grows with the depth only, and no sibling is looked for twice.
namespace qfc {

// The cursor under them. Not copied: it is used in place.
class FolderWalk {
public:
    enum class Stop { BehindSubtree, BackAtStart };

    explicit FolderWalk(CQFolder& start, Stop stop = Stop::BehindSubtree);

    // Null at the end.
    CQFolder* Current() const { return m_current; }
    // How far below the start the current folder is, 1 for its sub-folders; meaningful within the start's subtree.
    std::size_t Depth() const { return m_levels.size(); }
    void Advance();
    // Leaves out what is below the current folder.
    void PassBy();

private:
    struct Level {
        CQFolder::FolderList* list;
        POSITION next;
    };

    bool Enter(CQFolder& folder);
    CQFolder* NextInLevels();
    void Surround();

    CQFolder& m_start;
    const Stop m_stop;
    std::vector<Level> m_levels;  // From the outermost folder that is walked to the innermost.
    CQFolder* m_top = nullptr;    // Set once the walk has left the start's subtree.
    bool m_toppedOut = false;
    CQFolder* m_current = nullptr;
};

// The walk over a subtree that needs no memory, but looks for a place among its siblings at each step. It gives every
// folder it meets the parent in whose list it stands, to find back: one that was put into a list by hand may have none.
class FolderWalkWithoutMemory {
public:
    explicit FolderWalkWithoutMemory(CQFolder& top);

    // As of FolderWalk.
    CQFolder* Current() const { return m_current; }
    void Advance();
    void PassBy();

private:
    bool Enter(CQFolder& folder);
    bool Meet(CQFolder& parent, POSITION position);

    CQFolder& m_top;
    CQFolder* m_current = nullptr;
};

// What a search does about a folder that it meets.
enum class Met { kFound, kGoOn, kPassBy };

// The first folder below the top that `judge(CQFolder&)` finds, or null, also without memory for the walk: it is begun
// anew then. Lists as they stand decide, not the parents that the folders name.
template <class Judge>
CQFolder* FirstBelow(CQFolder& top, Judge&& judge) {
    const auto search = [&](auto walk) -> CQFolder* {
        while (CQFolder* folder = walk.Current()) {
            const Met met = judge(*folder);
            if (met == Met::kFound) return folder;
            if (met == Met::kPassBy) {
                walk.PassBy();
            } else {
                walk.Advance();
            }
        }
        return nullptr;
    };
    try {
        return search(FolderWalk(top));
    } catch (const std::bad_alloc&) {
        return search(FolderWalkWithoutMemory(top));
    }
}

template <FolderWalk::Stop kStop>
class FolderRange {
public:
    class Iterator {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = CQFolder*;
        using difference_type = std::ptrdiff_t;
        using pointer = CQFolder**;
        using reference = CQFolder*;

        explicit Iterator(FolderWalk& walk) : m_walk(walk) {}
        CQFolder* operator*() const { return m_walk.Current(); }
        Iterator& operator++() {
            m_walk.Advance();
            return *this;
        }
        bool operator==(std::default_sentinel_t) const { return m_walk.Current() == nullptr; }

    private:
        FolderWalk& m_walk;
    };

    explicit FolderRange(CQFolder& start) : m_walk(start, kStop) {}
    Iterator begin() { return Iterator(m_walk); }
    std::default_sentinel_t end() const { return {}; }

private:
    FolderWalk m_walk;
};

// From the first sub-folder to the last folder of the start's subtree; the start itself is not among them.
class SubtreeOf : public FolderRange<FolderWalk::Stop::BehindSubtree> {
public:
    using FolderRange::FolderRange;
};

// From the first sub-folder on until the walk is back at the start. From a root that is its subtree. From any other
// folder with sub-folders it goes on behind the subtree, passes the topmost folder itself and ends before the start,
// so it meets every folder of the tree but the start. From a folder without sub-folders it meets none.
class UntilBackAt : public FolderRange<FolderWalk::Stop::BackAtStart> {
public:
    using FolderRange::FolderRange;
};

}  // namespace qfc
