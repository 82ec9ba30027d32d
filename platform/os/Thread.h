#pragma once

#include "platform/framework/Types.h"

#include <memory>

namespace qfc {

// One thread with a procedure, created suspended: nothing of it runs before Resume(). The object is used by
// one thread at a time; only its Handle() may be used by others meanwhile.
class WorkerThread {
public:
    using Procedure = unsigned (*)(void*);

    // Not created (see IsCreated) when the procedure is null or the system gives no thread.
    WorkerThread(Procedure procedure, void* argument);
    // Waits for the procedure to return; a thread that was never resumed ends without running it.
    ~WorkerThread();
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;

    bool IsCreated() const;
    // The suspend count before: 1 the first time, 0 later, 0xFFFFFFFF when there is no thread.
    DWORD Resume();
    // For WaitForSingleObject: signalled once the procedure has returned. Null when there is no thread; owned here.
    HANDLE Handle() const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace qfc
