#pragma once

#include "platform/Export.h"
#include "platform/framework/Types.h"

class CArchive;
class CDumpContext;
class CObject;

// What is known of a class at run time: name, size, schema number, how to make an object, the base class. One constant
// object per class, so any thread may read it.
struct QFCLIB_API CRuntimeClass {
    const char* m_lpszClassName;
    int m_nObjectSize;
    UINT m_wSchema;  // 0xFFFF when objects of the class cannot be serialised
    CObject* (*m_pfnCreateObject)();
    CRuntimeClass* (*m_pfnGetBaseClass)();

    // A new object that the caller owns; null for a class that is only DYNAMIC.
    CObject* CreateObject() const;
    // Null for CObject itself.
    CRuntimeClass* GetBaseClass() const;
    int IsDerivedFrom(const CRuntimeClass* base) const;

    // The SERIAL class of that name, or null.
    static CRuntimeClass* FromName(const char* name);
};

// Root of the object model: run-time class, serialization and the two diagnostic slots. The order of the virtual slots
// is part of the interface. Objects are not locked; who may touch which is said by the derived class.
class QFCLIB_API CObject {
public:
    virtual CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject() = default;
    // The base has nothing to store.
    virtual void Serialize(CArchive& archive);
    virtual void AssertValid() const;
    virtual void Dump(CDumpContext& context) const;

    int IsSerializable() const;
    // True for the class itself and for every class it derives from.
    int IsKindOf(const CRuntimeClass* runtimeClass) const;

    static CRuntimeClass* GetThisClass();

protected:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
};

namespace qfc {

inline constexpr UINT kNoSchema = 0xFFFF;

// Puts a class into the registry that FromName searches, at start-up.
struct QFCLIB_API RuntimeClassRegistration {
    explicit RuntimeClassRegistration(CRuntimeClass* runtimeClass);
};

// Null when the object is null or of another class.
template <class T>
T* DynamicDowncast(CObject* object) {
    return object != nullptr && object->IsKindOf(T::GetThisClass()) ? static_cast<T*>(object) : nullptr;
}

}  // namespace qfc

#define RUNTIME_CLASS(className) (className::GetThisClass())
#define STATIC_DOWNCAST(className, object) (static_cast<className*>(object))
#define DYNAMIC_DOWNCAST(className, object) (qfc::DynamicDowncast<className>(object))

#define DECLARE_DYNAMIC(className)                   \
public:                                              \
    static CRuntimeClass* GetThisClass();            \
    CRuntimeClass* GetRuntimeClass() const override; \
                                                     \
private:

#define DECLARE_DYNCREATE(className)                 \
public:                                              \
    static CObject* CreateObject();                  \
    static CRuntimeClass* GetThisClass();            \
    CRuntimeClass* GetRuntimeClass() const override; \
                                                     \
private:

#define DECLARE_SERIAL(className) DECLARE_DYNCREATE(className)

#define QFCLIB_IMPLEMENT_RUNTIME_CLASS(className, baseClass, schema, createObject)                               \
    CRuntimeClass* className::GetThisClass() {                                                                   \
        static CRuntimeClass runtimeClass{#className, static_cast<int>(sizeof(className)), schema, createObject, \
                                          &baseClass::GetThisClass};                                             \
        return &runtimeClass;                                                                                    \
    }                                                                                                            \
    CRuntimeClass* className::GetRuntimeClass() const { return GetThisClass(); }

#define IMPLEMENT_DYNAMIC(className, baseClass) \
    QFCLIB_IMPLEMENT_RUNTIME_CLASS(className, baseClass, qfc::kNoSchema, nullptr)

#define IMPLEMENT_DYNCREATE(className, baseClass)                \
    CObject* className::CreateObject() { return new className; } \
    QFCLIB_IMPLEMENT_RUNTIME_CLASS(className, baseClass, qfc::kNoSchema, &className::CreateObject)

#define IMPLEMENT_SERIAL(className, baseClass, schema)                                     \
    CObject* className::CreateObject() { return new className; }                           \
    QFCLIB_IMPLEMENT_RUNTIME_CLASS(className, baseClass, schema, &className::CreateObject) \
    static const qfc::RuntimeClassRegistration registrationOf##className(className::GetThisClass());
