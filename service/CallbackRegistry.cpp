#include "service/CallbackRegistry.h"

#include <utility>

namespace qfc {

CallbackRegistry::CallbackRegistry(const CallbackRegistry& other) { *this = other; }

CallbackRegistry& CallbackRegistry::operator=(const CallbackRegistry& other) {
    std::map<CString, std::shared_ptr<Callback>> copy;
    for (const auto& [name, callback] : other.m_callbacks) copy.emplace(name, std::make_shared<Callback>(*callback));
    m_callbacks = std::move(copy);
    return *this;
}

std::shared_ptr<const CallbackRegistry::Callback> CallbackRegistry::Find(const CString& strName) const {
    const auto found = m_callbacks.find(strName);
    return found != m_callbacks.end() ? found->second : nullptr;
}

bool CallbackRegistry::Register(const CString& strName, Callback callback) {
    if (!callback) return false;
    m_callbacks.insert_or_assign(strName, std::make_shared<Callback>(std::move(callback)));
    return true;
}

bool CallbackRegistry::Unregister(const CString& strName) { return m_callbacks.erase(strName) != 0; }

void CallbackRegistry::CallAll(QFCLibCallbackParam* pParam) const {
    // By name from entry to entry: any call may change the map.
    for (auto entry = m_callbacks.begin(); entry != m_callbacks.end();) {
        const CString strName = entry->first;
        const std::shared_ptr<Callback> pCallback = entry->second;
        (*pCallback)(pParam);
        entry = m_callbacks.upper_bound(strName);
    }
}

}  // namespace qfc
