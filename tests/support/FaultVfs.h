#pragma once

#include <cstdint>
#include <memory>
#include <optional>

namespace qfc::test {

// A file system for SQLite that fails on demand. While it lives it is the process's default, so every connection opened
// then goes through it; all of them must be closed before it dies. Counted are the calls that change a file (write,
// sync, truncate and delete) or, on demand, also those that open, look for, measure, read and lock one. A failing
// call changes nothing, and nothing is really synced, so it is also the fast way to run a database that no power cut
// threatens. Faults are for one thread; without them several may use it.
class FaultVfs {
public:
    FaultVfs();
    ~FaultVfs();
    FaultVfs(const FaultVfs&) = delete;
    FaultVfs& operator=(const FaultVfs&) = delete;

    enum class Counted { kChanges, kEverything };

    // The n-th counted call from now on fails, counting from 1; sticky: and all that follow, until Heal.
    void FailAt(int n, bool sticky, Counted counted = Counted::kChanges);
    // Until the next FailAt, LimitSpace or Heal a delete that fails has deleted: it is the sync of the folder that
    // failed.
    void FailDeletesBehindTheAct();
    // The disk takes this many more bytes: a write that needs more fails as on a full disk. Deleting and truncating
    // give bytes back.
    void LimitSpace(std::int64_t bytes);
    // SQLite's waits for a busy file end at once, as if their time had passed.
    void SkipWaits();
    // Nothing fails any more, and waits are waits.
    void Heal();

    // Counted calls since the last FailAt, LimitSpace or Heal.
    int Calls() const;
    // Whether a call has failed since then.
    bool HasFailed() const;

    struct State;

private:
    std::unique_ptr<State> m_state;
};

}  // namespace qfc::test
