#pragma once

#include <memory>
#include <unordered_set>

class CQFolder;

namespace qfc {

class FolderRows;

// One load of folder rows below a folder. It remembers the rows it has met, so that rows which are their own ancestors
// (or parents) end it, and stops kMaxLoadDepth levels below the topmost folder. One thread, on the stack.
class FolderLoad {
public:
    explicit FolderLoad(CQFolder& start);

    ~FolderLoad();

    // 0 when the rows below the start cannot be read; what lies deeper does not stop the load.
    int Run();

    // The two steps that are asked for alone as well.
    static bool TakeRow(CQFolder& folder, FolderRows& rows);
    static void TakeItems(CQFolder& folder, FolderRows& rows);

private:
    int LoadBelow(CQFolder& folder, int nDepth);
    void AddChild(CQFolder& parent, int nRow);

    CQFolder& m_start;
    std::unique_ptr<FolderRows> m_rows;
    int m_startDepth = 0;
    std::unordered_set<int> m_met;
};

}  // namespace qfc
