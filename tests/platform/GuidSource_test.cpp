#include "platform/os/GuidSource.h"

#include <gtest/gtest.h>
#include <set>

namespace {

TEST(GuidSource, MakesRandomVersion4Guids) {
    std::set<GUID> seen;
    for (int i = 0; i < 100; ++i) {
        GUID guid{};
        ASSERT_EQ(CoCreateGuid(&guid), 0);
        EXPECT_EQ(guid.Data3 >> 12, 4) << qfc::GuidToText(guid);
        EXPECT_EQ(guid.Data4[0] & 0xC0, 0x80) << qfc::GuidToText(guid);
        EXPECT_TRUE(seen.insert(guid).second);
    }
}

TEST(GuidSource, RefusesNull) { EXPECT_LT(CoCreateGuid(nullptr), 0); }

}  // namespace
