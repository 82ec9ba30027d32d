#pragma once

#include <unordered_set>
#include <vector>

class CQFolder;

namespace qfc {

// One load of folder rows below a folder. It remembers the rows it has met, so that rows which are their own ancestors
// (or parents) end it, and stops kMaxLoadDepth levels below the topmost folder. One thread, on the stack.
class FolderLoad {
public:
    explicit FolderLoad(CQFolder& start);

    // 0 when the rows below the start cannot be read; what lies deeper does not stop the load.
    int Run() { return LoadBelow(m_start, m_startDepth); }

private:
    int LoadBelow(CQFolder& folder, int nDepth);
    bool QueryChildren(const CQFolder& folder, std::vector<int>& rows) const;
    void AddChild(CQFolder& parent, int nRow);

    CQFolder& m_start;
    int m_startDepth = 0;
    std::unordered_set<int> m_met;
};

}  // namespace qfc
