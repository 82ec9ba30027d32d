#pragma once

#include "platform/framework/Types.h"
#include "service/QFCLibCallbackParam.h"

#include <atomic>
#include <cstdint>

// One piece of work for the service's worker: it captures its arguments when it is made, is queued once and executed at
// most once. Always owned by shared pointers: the worker holds one, a waiting caller another. What the arguments point
// to is borrowed.
// Threads: made and queued on the caller's thread, executed on the worker. The result and the outputs may be read by
// others once the event is signalled.
class LibraryOperation {
public:
    LibraryOperation();
    LibraryOperation(const LibraryOperation&) = delete;
    LibraryOperation& operator=(const LibraryOperation&) = delete;

    virtual ~LibraryOperation();
    // Non-zero for success. Worker thread only, as the next.
    virtual int execute() = 0;
    // The base fills in the gallery and leaves item and folder at "none".
    virtual void FillCallbackParam(QFCLibCallbackParam& param);

    // Manual-reset; null when it could not be made. Never signalled for an operation that is dropped.
    HANDLE Event() const { return m_hEvent; }
    // Once per operation: after it was executed, or when it is dropped instead.
    void NoteExecuted() { End(kExecuted); }
    void NoteDropped() { End(kDropped); }
    // Waits until either was noted; true when it was executed.
    bool AwaitEnd() const;
    std::int32_t Result() const { return m_nResult; }
    void SetResult(std::int32_t nResult) { m_nResult = nResult; }
    bool IsAsync() const { return m_nAsync != 0; }
    // Before queueing only.
    void SetAsync() { m_nAsync = 1; }

protected:
    ULONGLONG Gallery() const { return m_hGallery; }
    void SetGallery(ULONGLONG hGallery) { m_hGallery = hGallery; }

private:
    static constexpr int kQueued = 0;
    static constexpr int kExecuted = 1;
    static constexpr int kDropped = 2;

    void End(int nHow);

    HANDLE m_hEvent;
    std::atomic<int> m_nEnd = kQueued;  // Beside the event, which a dropped operation leaves alone.
    std::int32_t m_nResult = 0;
    std::int32_t m_nAsync = 0;
    ULONGLONG m_hGallery = 0;
};
