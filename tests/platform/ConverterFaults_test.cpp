// What a thread cannot get once from the libraries that convert and compress, it asks for again.
#include "tests/support/ConverterFaults.h"

#include "platform/compress/Compression.h"
#include "platform/text/CodePages.h"

#include <gtest/gtest.h>
#include <new>
#include <string>

namespace {

using qfc::test::ConverterFaults;
using qfc::test::OnNewThread;

struct ConvertersThatFail : testing::Test {
    ConvertersThatFail() { EXPECT_TRUE(qfc::SetAnsiCodePage("CP1252")); }
    ~ConvertersThatFail() override { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST_F(ConvertersThatFail, NoQuestionMarksStandForATextThatCouldBeConverted) {
    OnNewThread([] {
        {
            const ConverterFaults faults;
            EXPECT_THROW(qfc::AnsiToUtf8("Rome \xE9"), std::bad_alloc);
            EXPECT_THROW(qfc::Utf8ToAnsi("Rome \xC3\xA9"), std::bad_alloc);
            EXPECT_THROW(qfc::AnsiToUtf16("Rome"), std::bad_alloc);
            EXPECT_EQ(faults.Refused(), 6);
        }
        EXPECT_EQ(qfc::AnsiToUtf8("Rome \xE9"), "Rome \xC3\xA9");
        EXPECT_EQ(qfc::Utf8ToAnsi("Rome \xC3\xA9"), "Rome \xE9");
        EXPECT_EQ(qfc::AnsiToUtf16("Rome"), u"Rome");
    });
}

TEST_F(ConvertersThatFail, APageThatCannotBeOpenedIsNotChosen) {
    {
        const ConverterFaults faults;
        EXPECT_FALSE(qfc::SetAnsiCodePage("CP932"));
    }
    EXPECT_STREQ(qfc::AnsiCodePage(), "CP1252");
    EXPECT_TRUE(qfc::SetAnsiCodePage("CP932"));
}

TEST(CompressionThatCannotBegin, SaysSo_AndBeginsTheNextTime) {
    OnNewThread([] {
        const std::string raw(1000, 'x');
        std::string packed(raw.size(), '\0');
        std::string back(raw.size(), '\0');
        auto length = static_cast<unsigned>(packed.size());
        const auto compress = [&] {
            return qfc::Compress(static_cast<unsigned>(raw.size()), raw.data(), &length, packed.data());
        };
        const auto decompress = [&] {
            auto room = static_cast<unsigned>(back.size());
            return qfc::Decompress(length, packed.data(), &room, back.data());
        };
        {
            const ConverterFaults faults;
            EXPECT_EQ(compress(), qfc::kCompressionNoMemory);
        }
        ASSERT_EQ(compress(), qfc::kCompressionSucceeded);
        {
            const ConverterFaults faults;
            EXPECT_EQ(decompress(), qfc::kCompressionNoMemory);
        }
        ASSERT_EQ(decompress(), qfc::kCompressionSucceeded);
        EXPECT_EQ(back, raw);
    });
}

}  // namespace
