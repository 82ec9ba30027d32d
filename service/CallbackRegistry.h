#pragma once

#include "platform/framework/CString.h"

#include <functional>
#include <map>
#include <memory>

struct QFCLibCallbackParam;

namespace qfc {

// The named callbacks of the service, in the case-sensitive order of their names. Knows no lock: its owner holds the
// service mutex around every call.
class CallbackRegistry {
public:
    using Callback = std::function<int(QFCLibCallbackParam*)>;

    CallbackRegistry() = default;
    // Entry by entry: the functions are copied, not shared.
    CallbackRegistry(const CallbackRegistry& other);
    CallbackRegistry& operator=(const CallbackRegistry& other);

    // The function registered under the name, or null. Whoever holds it may let it die outside the lock.
    std::shared_ptr<const Callback> Find(const CString& strName) const;
    // Replaces the function registered under the name. False for an empty function.
    bool Register(const CString& strName, Callback callback);
    // False when the name is unknown.
    bool Unregister(const CString& strName);

    // Calls every function once, ignoring results. A function may register and unregister meanwhile, itself included:
    // what is gone is not called any more, what is new is called when its name is still to come. An exception ends the
    // pass and reaches the caller.
    void CallAll(QFCLibCallbackParam* pParam) const;

private:
    // Shared, so that a function that unregisters itself outlives its own call.
    std::map<CString, std::shared_ptr<Callback>> m_callbacks;
};

}  // namespace qfc
