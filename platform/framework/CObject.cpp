#include "platform/framework/CObject.h"

#include <map>
#include <mutex>
#include <string_view>

namespace {

// Classes register while the library is loaded, readers may come later from any thread.
struct Registry {
    std::mutex mutex;
    std::map<std::string_view, CRuntimeClass*> classes;
};

Registry& TheRegistry() {
    static Registry registry;
    return registry;
}

}  // namespace

CObject* CRuntimeClass::CreateObject() const { return m_pfnCreateObject != nullptr ? m_pfnCreateObject() : nullptr; }

CRuntimeClass* CRuntimeClass::GetBaseClass() const {
    return m_pfnGetBaseClass != nullptr ? m_pfnGetBaseClass() : nullptr;
}

int CRuntimeClass::IsDerivedFrom(const CRuntimeClass* base) const {
    for (const CRuntimeClass* candidate = this; candidate != nullptr; candidate = candidate->GetBaseClass()) {
        if (candidate == base) return 1;
    }
    return 0;
}

CRuntimeClass* CRuntimeClass::FromName(const char* name) {
    if (name == nullptr) return nullptr;
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.classes.find(name);
    return found != registry.classes.end() ? found->second : nullptr;
}

CRuntimeClass* CObject::GetThisClass() {
    static CRuntimeClass runtimeClass{"CObject", static_cast<int>(sizeof(CObject)), qfc::kNoSchema, nullptr, nullptr};
    return &runtimeClass;
}

CRuntimeClass* CObject::GetRuntimeClass() const { return GetThisClass(); }

void CObject::Serialize(CArchive&) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext&) const {}

int CObject::IsSerializable() const { return GetRuntimeClass()->m_wSchema != qfc::kNoSchema; }

int CObject::IsKindOf(const CRuntimeClass* runtimeClass) const {
    return GetRuntimeClass()->IsDerivedFrom(runtimeClass);
}

namespace qfc {

RuntimeClassRegistration::RuntimeClassRegistration(CRuntimeClass* runtimeClass) {
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    registry.classes.emplace(runtimeClass->m_lpszClassName, runtimeClass);
}

}  // namespace qfc
