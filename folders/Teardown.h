#pragma once

#include <unordered_set>

class CQFolder;
class CQItem;

namespace qfc {

// Ends items while folders are cleared. One object may stand in several places (in several folders of the tree, or
// twice in one); across the whole of the outermost clearing it is ended once and never looked at again. Made on the
// stack by every Clear; nested ones share the outermost one's memory. One thread.
class Teardown {
public:
    Teardown();
    ~Teardown();
    Teardown(const Teardown&) = delete;
    Teardown& operator=(const Teardown&) = delete;

    // The folder's gallery takes the item back; the item is destroyed when there is no gallery or it does not know it.
    void LetGo(CQItem* item, CQFolder& folder);

private:
    Teardown* const m_outer;
    std::unordered_set<const CQItem*> m_gone;  // Addresses only. Of the outermost one.
};

}  // namespace qfc
