#include "hosts/qfc/Progress.h"

#include <cstdio>
#include <gtest/gtest.h>

namespace {

using qfc::host::Progress;
using qfc::host::ProgressLine;

TEST(Progress, TheBarFillsWithTheWork) {
    EXPECT_EQ(ProgressLine(0, 4, "a"), "[........................] 0/4 a");
    EXPECT_EQ(ProgressLine(2, 4, "a"), "[############............] 2/4 a");
    EXPECT_EQ(ProgressLine(4, 4, "a"), "[########################] 4/4 a");
    EXPECT_EQ(ProgressLine(5, 4, "a"), "[########################] 5/4 a");
    EXPECT_EQ(ProgressLine(0, 0, ""), "[########################] 0/0 ");
}

TEST(Progress, LongTextsAreCutBetweenCharacters) {
    std::string umlauts;
    for (int i = 0; i < 100; ++i) umlauts += "\u00fc";
    const std::string line = ProgressLine(1, 1, umlauts);
    EXPECT_TRUE(line.ends_with("\u00fc"));
    EXPECT_EQ(line.size(), ProgressLine(1, 1, "").size() + 34 * 2);
}

TEST(Progress, NothingIsShownWhereThereIsNoTerminal) {
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    {
        Progress progress(file, 3);
        EXPECT_FALSE(progress.IsShown());
        progress.Step("one");
        progress.Clear();
    }
    EXPECT_EQ(std::ftell(file), 0);
    std::fclose(file);
}

}  // namespace
