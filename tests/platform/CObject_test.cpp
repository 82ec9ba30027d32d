#include "platform/framework/CObject.h"

#include <gtest/gtest.h>
#include <memory>

namespace {

class Named : public CObject {
    DECLARE_DYNAMIC(Named)
};

class Made : public Named {
    DECLARE_DYNCREATE(Made)
public:
    int value = 7;
};

class Stored : public Made {
    DECLARE_SERIAL(Stored)
};

class Unrelated : public CObject {
    DECLARE_DYNAMIC(Unrelated)
};

IMPLEMENT_DYNAMIC(Named, CObject)
IMPLEMENT_DYNCREATE(Made, Named)
IMPLEMENT_SERIAL(Stored, Made, 5)
IMPLEMENT_DYNAMIC(Unrelated, CObject)

TEST(RuntimeClass, KnowsNameSizeSchemaAndBase) {
    const CRuntimeClass* stored = RUNTIME_CLASS(Stored);
    EXPECT_STREQ(stored->m_lpszClassName, "Stored");
    EXPECT_EQ(stored->m_nObjectSize, static_cast<int>(sizeof(Stored)));
    EXPECT_EQ(stored->m_wSchema, 5u);
    EXPECT_EQ(stored->GetBaseClass(), RUNTIME_CLASS(Made));
    EXPECT_EQ(RUNTIME_CLASS(CObject)->GetBaseClass(), nullptr);
}

TEST(RuntimeClass, DynamicAndDyncreateHaveNoSchema) {
    EXPECT_EQ(RUNTIME_CLASS(Named)->m_wSchema, 0xFFFFu);
    EXPECT_EQ(RUNTIME_CLASS(Made)->m_wSchema, 0xFFFFu);
    EXPECT_FALSE(Named().IsSerializable());
    EXPECT_FALSE(Made().IsSerializable());
    EXPECT_TRUE(Stored().IsSerializable());
}

TEST(RuntimeClass, CreatesObjectsOfDyncreateClassesOnly) {
    const std::unique_ptr<CObject> object(RUNTIME_CLASS(Made)->CreateObject());
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(object->GetRuntimeClass(), RUNTIME_CLASS(Made));
    EXPECT_EQ(STATIC_DOWNCAST(Made, object.get())->value, 7);
    EXPECT_EQ(RUNTIME_CLASS(Named)->CreateObject(), nullptr);
}

TEST(RuntimeClass, OnlySerialClassesAreFoundByName) {
    EXPECT_EQ(CRuntimeClass::FromName("Stored"), RUNTIME_CLASS(Stored));
    EXPECT_EQ(CRuntimeClass::FromName("Made"), nullptr);
    EXPECT_EQ(CRuntimeClass::FromName("stored"), nullptr);
    EXPECT_EQ(CRuntimeClass::FromName(""), nullptr);
    EXPECT_EQ(CRuntimeClass::FromName(nullptr), nullptr);
}

TEST(ObjectModel, IsKindOfFollowsTheBases) {
    const Stored stored;
    EXPECT_TRUE(stored.IsKindOf(RUNTIME_CLASS(Stored)));
    EXPECT_TRUE(stored.IsKindOf(RUNTIME_CLASS(Made)));
    EXPECT_TRUE(stored.IsKindOf(RUNTIME_CLASS(CObject)));
    EXPECT_FALSE(stored.IsKindOf(RUNTIME_CLASS(Unrelated)));
    EXPECT_FALSE(Made().IsKindOf(RUNTIME_CLASS(Stored)));
    EXPECT_FALSE(Unrelated().IsKindOf(RUNTIME_CLASS(Made)));
    EXPECT_FALSE(stored.IsKindOf(nullptr));
}

TEST(ObjectModel, DynamicDowncastIsNullForOtherClasses) {
    Stored stored;
    CObject* object = &stored;
    EXPECT_EQ(DYNAMIC_DOWNCAST(Made, object), &stored);
    EXPECT_EQ(DYNAMIC_DOWNCAST(Unrelated, object), nullptr);
    CObject* missing = nullptr;
    EXPECT_EQ(DYNAMIC_DOWNCAST(Made, missing), nullptr);
}

}  // namespace
