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

// A known one: "www.example.com" in the space of domain names.
TEST(GuidSource, NameGivesItsVersion5Guid) {
    const GUID domains = *qfc::GuidFromText("6BA7B810-9DAD-11D1-80B4-00C04FD430C8");
    EXPECT_EQ(qfc::GuidToText(qfc::GuidOfName(domains, "www.example.com")), "2ED6657D-E927-568B-95E1-2665A8AEA6A2");
}

TEST(GuidSource, NamesAreTakenWithTheirNulsAndInTheirSpace) {
    using namespace std::string_view_literals;
    EXPECT_NE(qfc::GuidOfName(GUID_NULL, "a\0b"sv), qfc::GuidOfName(GUID_NULL, "a\0c"sv));
    EXPECT_NE(qfc::GuidOfName(GUID_NULL, "a"), qfc::GuidOfName(GUID{1, 0, 0, {}}, "a"));
    EXPECT_EQ(qfc::GuidOfName(GUID_NULL, ""), qfc::GuidOfName(GUID_NULL, ""));
}

TEST(GuidSource, RefusesNull) { EXPECT_LT(CoCreateGuid(nullptr), 0); }

}  // namespace
