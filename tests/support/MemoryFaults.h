#pragma once

namespace qfc::test {

// Lets memory run out on the calling thread: while an object lives, calls of operator new and SQLite's allocations are
// counted, and the n-th of them fails, counting from 1; sticky: and all that follow. A program that links the source
// file has its operator new and SQLite's allocator replaced, and SQLite's lookaside switched off. One at a time on a
// thread.
class MemoryFaults {
public:
    explicit MemoryFaults(int n, bool sticky = false);
    ~MemoryFaults();
    MemoryFaults(const MemoryFaults&) = delete;
    MemoryFaults& operator=(const MemoryFaults&) = delete;

    // Whether an allocation has failed.
    bool HasFailed() const;
};

}  // namespace qfc::test
