#include "service/CallbackRegistry.h"

#include "service/QFCLibCallbackParam.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

namespace {

class CallbackRegistryTest : public testing::Test {
protected:
    qfc::CallbackRegistry::Callback Note(const std::string& mark) {
        return [this, mark](QFCLibCallbackParam*) {
            m_called += mark;
            return 0;
        };
    }
    std::string CallAll() {
        m_called.clear();
        m_registry.CallAll(&m_param);
        return m_called;
    }

    qfc::CallbackRegistry m_registry;
    QFCLibCallbackParam m_param;
    std::string m_called;
};

TEST_F(CallbackRegistryTest, CallsRunInTheCaseSensitiveOrderOfNames) {
    for (const char* name : {"b", "a", "B", "A", "", "ab"})
        m_registry.Register(name, Note(std::string("<") + name + ">"));
    EXPECT_EQ(CallAll(), "<><A><B><a><ab><b>");
}

TEST_F(CallbackRegistryTest, NamesAreComparedAsUnsignedBytes) {
    m_registry.Register("\xC3\x84", Note("umlaut"));
    m_registry.Register("z", Note("z "));
    EXPECT_EQ(CallAll(), "z umlaut");
}

TEST_F(CallbackRegistryTest, TheSameNameTwice_KeepsOnlyTheSecondFunction) {
    EXPECT_TRUE(m_registry.Register("name", Note("first")));
    EXPECT_TRUE(m_registry.Register("name", Note("second")));
    EXPECT_EQ(CallAll(), "second");
}

TEST_F(CallbackRegistryTest, AnEmptyFunction_IsRefusedAndChangesNothing) {
    m_registry.Register("name", Note("kept"));
    EXPECT_FALSE(m_registry.Register("name", nullptr));
    EXPECT_FALSE(m_registry.Register("other", {}));
    EXPECT_EQ(CallAll(), "kept");
}

TEST_F(CallbackRegistryTest, UnregisteringAnUnknownName_IsRefused) {
    m_registry.Register("name", Note("kept"));
    EXPECT_FALSE(m_registry.Unregister("Name"));
    EXPECT_TRUE(m_registry.Unregister("name"));
    EXPECT_FALSE(m_registry.Unregister("name"));
    EXPECT_EQ(CallAll(), "");
}

TEST_F(CallbackRegistryTest, AFunctionThatIsHeld_OutlivesItsReplacementAndItsRemoval) {
    EXPECT_EQ(m_registry.Find("name"), nullptr);
    m_registry.Register("name", Note("first"));
    const auto pFirst = m_registry.Find("name");
    m_registry.Register("name", Note("second"));
    const auto pSecond = m_registry.Find("name");
    m_registry.Unregister("name");
    EXPECT_EQ(m_registry.Find("name"), nullptr);
    (*pFirst)(&m_param);
    (*pSecond)(&m_param);
    EXPECT_EQ(m_called, "firstsecond");
}

TEST_F(CallbackRegistryTest, EveryFunctionGetsTheSameRecord) {
    std::vector<QFCLibCallbackParam*> seen;
    for (const char* name : {"a", "b"}) {
        m_registry.Register(name, [&](QFCLibCallbackParam* pParam) {
            seen.push_back(pParam);
            return 1;
        });
    }
    CallAll();
    EXPECT_EQ(seen, (std::vector<QFCLibCallbackParam*>{&m_param, &m_param}));
}

TEST_F(CallbackRegistryTest, AFunctionKeepsItsOwnState) {
    m_registry.Register("count", [this, count = 0](QFCLibCallbackParam*) mutable {
        m_called += std::to_string(++count);
        return 0;
    });
    EXPECT_EQ(CallAll(), "1");
    EXPECT_EQ(CallAll(), "2");
}

TEST_F(CallbackRegistryTest, AFunctionMayUnregisterItselfAndOthers) {
    m_registry.Register("a", [this, mark = std::string("a")](QFCLibCallbackParam*) {
        m_registry.Unregister("a");
        m_registry.Unregister("b");
        m_called += mark;  // What the function holds is still there.
        return 0;
    });
    m_registry.Register("b", Note("b"));
    m_registry.Register("c", Note("c"));
    EXPECT_EQ(CallAll(), "ac");
    EXPECT_EQ(CallAll(), "c");
}

TEST_F(CallbackRegistryTest, NamesThatAreStillToCome_AreCalledInTheSamePass) {
    m_registry.Register("m", [this](QFCLibCallbackParam*) {
        m_registry.Register("a", Note("a"));
        m_registry.Register("z", Note("z"));
        m_called += "m";
        return 0;
    });
    EXPECT_EQ(CallAll(), "mz");
    EXPECT_EQ(CallAll(), "amz");
}

TEST_F(CallbackRegistryTest, AnExceptionEndsThePassAndReachesTheCaller) {
    m_registry.Register("a", Note("a"));
    m_registry.Register("b", [](QFCLibCallbackParam*) -> int { throw std::runtime_error("b"); });
    m_registry.Register("c", Note("c"));
    EXPECT_THROW(m_registry.CallAll(&m_param), std::runtime_error);
    EXPECT_EQ(m_called, "a");
}

TEST_F(CallbackRegistryTest, Copies_HoldFunctionsOfTheirOwn) {
    m_registry.Register("count", [this, count = 0](QFCLibCallbackParam*) mutable {
        m_called += std::to_string(++count);
        return 0;
    });
    CallAll();
    const qfc::CallbackRegistry copy = m_registry;
    CallAll();
    m_registry.Unregister("count");
    m_called.clear();
    copy.CallAll(&m_param);
    EXPECT_EQ(m_called, "2");
}

}  // namespace
