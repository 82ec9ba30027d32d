#include "api/EffectBlocks.h"

#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

using namespace qfc;
using Bytes = std::vector<BYTE>;

FilterDescriptorBlock SomeDescriptor() { return {kStandardFrei0r, 2, 1, 0x1234, 7, filter_flag::kDependsOnTime}; }

FilterTableBlock SomeTable() {
    FilterTableBlock table;
    table.parameterCount = 2;
    table.majorVersion = -1;
    table.minorVersion = 2;
    table.apiVersion = 1;
    table.fileSize = 0x0102030405060708;
    table.fileTime = -5;
    table.name = "Glow";
    table.author = "J\xC3\xB6rg";
    table.explanation = "Lets bright parts shine";
    table.parameters = {{1, 0, DefaultOf(0.5F), "Blur", ""}, {0, 3, {1, 0, 0, 0}, "On", ""}};
    return table;
}

TransitionDescriptorBlock SomeTransition() {
    TransitionDescriptorBlock transition;
    transition.majorVersion = 1;
    transition.minorVersion = 9;
    transition.colourModel = 2;
    transition.progressMode = progress_mode::kParameter;
    transition.progressParameter = 1;
    transition.start = 0.25F;
    transition.end = 1.0F;
    transition.fileSize = 99;
    transition.fileTime = 1'700'000'000;
    transition.name = "Wipe";
    transition.author = "";
    transition.explanation = "\xE2\x86\x92";
    transition.parameters = {{1, 0, DefaultOf(0.5F), "Soft", "Edge"}, {1, 0, DefaultOf(0), "Position", ""}};
    return transition;
}

// --- Layouts ------------------------------------------------------------------------------------------------------

TEST(EffectBlocks, AFilterDescriptorIsEightBytes) {
    EXPECT_EQ(WriteFilterDescriptor(SomeDescriptor()), (Bytes{1, 1, 2, 1, 0x34, 0x12, 7, 2}));
}

TEST(EffectBlocks, AFilterTableHasItsFieldsWhereTheLayoutSays) {
    const Bytes bytes = WriteFilterTable(SomeTable());
    ASSERT_EQ(bytes.size(), 456u);
    const auto at = [&](std::size_t from, std::size_t count) {
        return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                     bytes.begin() + static_cast<std::ptrdiff_t>(from + count));
    };
    EXPECT_EQ(at(0, 8), (Bytes{'Q', 'F', 'T', '1', 1, 0, 2, 0}));
    EXPECT_EQ(at(8, 8), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 2, 0, 0, 0}));
    EXPECT_EQ(at(16, 8), (Bytes{0, 0, 0, 0, 1, 0, 0, 0}));
    EXPECT_EQ(at(24, 8), (Bytes{8, 7, 6, 5, 4, 3, 2, 1}));
    EXPECT_EQ(at(32, 8), (Bytes{0xFB, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}));
    EXPECT_EQ(at(40, 5), (Bytes{'G', 'l', 'o', 'w', 0}));
    EXPECT_EQ(at(88, 3), (Bytes{'J', 0xC3, 0xB6}));
    EXPECT_EQ(at(136, 4), (Bytes{'L', 'e', 't', 's'}));
    EXPECT_EQ(at(264, 7), (Bytes{1, 0, 'B', 'l', 'u', 'r', 0}));
    EXPECT_EQ(at(292, 4), (Bytes{0, 0, 0, 0x3F}));
    EXPECT_EQ(at(296, 5), (Bytes{0, 3, 'O', 'n', 0}));
    EXPECT_EQ(at(324, 4), (Bytes{1, 0, 0, 0}));
    EXPECT_EQ(at(328, 128), Bytes(128));
}

TEST(EffectBlocks, ATransitionDescriptorHasAHeadOf56BytesAndItsTextsBehind) {
    const Bytes bytes = WriteTransitionDescriptor(SomeTransition());
    const Bytes head(bytes.begin(), bytes.begin() + 56);
    EXPECT_EQ(head, (Bytes{'Q',  'F',  'X',  '1',  1, 0, 56,   0,    static_cast<BYTE>(bytes.size()),
                           0,    0,    0,  //
                           1,    0,    0,    0,    9, 0, 0,    0,    1,
                           2,    1,    0,    1,    0, 2, 0,  //
                           0,    0,    0x80, 0x3E, 0, 0, 0x80, 0x3F, 0,
                           0,    0,    0,  //
                           99,   0,    0,    0,    0, 0, 0,    0,    0,
                           0xF1, 0x53, 0x65, 0,    0, 0, 0}));
    const Bytes tail(bytes.begin() + 56, bytes.end());
    EXPECT_EQ(tail, (Bytes{4, 0, 'W', 'i', 'p',  'e', 0, 0,   3,   0,   0xE2, 0x86, 0x92,  //
                           1, 0, 0,   0,   0x3F, 4,   0, 'S', 'o', 'f', 't',  4,    0,    'E', 'd', 'g', 'e',
                           1, 0, 0,   0,   0,    8,   0, 'P', 'o', 's', 'i',  't',  'i',  'o', 'n', 0,   0}));
}

TEST(EffectBlocks, WhatIsWrittenReadsBack) {
    EXPECT_EQ(ReadFilterDescriptor(WriteFilterDescriptor(SomeDescriptor())), SomeDescriptor());
    EXPECT_EQ(ReadFilterTable(WriteFilterTable(SomeTable())), SomeTable());
    EXPECT_EQ(ReadTransitionDescriptor(WriteTransitionDescriptor(SomeTransition())), SomeTransition());
    EXPECT_EQ(ReadFilterTable(WriteFilterTable({})), FilterTableBlock());
    EXPECT_EQ(ReadTransitionDescriptor(WriteTransitionDescriptor({})), TransitionDescriptorBlock());
    for (const float number : {0.0F, -1.5F, 3e38F}) EXPECT_EQ(NumberOf(DefaultOf(number)), number);
}

// --- What does not fit --------------------------------------------------------------------------------------------

TEST(EffectBlocks, LongTextsAreCutBetweenCharactersAndFlagged) {
    FilterTableBlock table = SomeTable();
    table.name = std::string(47, 'n') + "\xC3\xA4";  // The last character would end at 49.
    table.explanation = std::string(128, 'e');       // Just fits.
    const auto read = ReadFilterTable(WriteFilterTable(table));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->name, std::string(47, 'n'));
    EXPECT_EQ(read->explanation, std::string(128, 'e'));
    EXPECT_EQ(read->flags, block_flag::kTextCut);

    TransitionDescriptorBlock transition = SomeTransition();
    transition.author = std::string(70000, 'a');
    const auto descriptor = ReadTransitionDescriptor(WriteTransitionDescriptor(transition));
    ASSERT_TRUE(descriptor);
    EXPECT_EQ(descriptor->author, std::string(65535, 'a'));
    EXPECT_EQ(descriptor->flags, block_flag::kTextCut);
}

TEST(EffectBlocks, TextsEndAtAZeroAndBytesThatAreNoCharactersAreLeftOut) {
    FilterTableBlock table = SomeTable();
    table.name = std::string("ab\0cd", 5);
    table.author = "x\xFFy";
    const auto read = ReadFilterTable(WriteFilterTable(table));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->name, "ab");
    EXPECT_EQ(read->author, "xy");
    EXPECT_EQ(read->flags, block_flag::kTextCut);
}

TEST(EffectBlocks, ASeventhParameterIsLeftOutCountedAndFlagged) {
    FilterTableBlock table = SomeTable();
    table.parameterCount = 0;
    table.parameters.assign(7, {1, 0, DefaultOf(1), std::string(26, 'p'), ""});
    const auto read = ReadFilterTable(WriteFilterTable(table));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->parameterCount, 7);
    EXPECT_EQ(read->parameters.size(), 6u);
    EXPECT_EQ(read->parameters[5].name, std::string(26, 'p'));
    EXPECT_EQ(read->flags, block_flag::kParametersLeftOut);
}

TEST(EffectBlocks, ATableMayCountMoreParametersBehindSixOnly) {
    FilterTableBlock table = SomeTable();
    table.parameterCount = 3;  // And two are given.
    EXPECT_TRUE(WriteFilterTable(table).empty());
    table.parameters.clear();
    EXPECT_TRUE(WriteFilterTable(table).empty());
    table.parameters.assign(6, {1, 0, DefaultOf(1), "p", ""});
    table.parameterCount = 900;
    const auto read = ReadFilterTable(WriteFilterTable(table));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->parameterCount, 900);
    EXPECT_EQ(read->parameters.size(), 6u);
    EXPECT_EQ(read->flags, block_flag::kParametersLeftOut);
}

TEST(EffectBlocks, ATransitionWithoutSenseIsNotWritten) {
    for (const std::int16_t parameter : {std::int16_t{2}, std::int16_t{-2}, std::int16_t{32767}}) {
        TransitionDescriptorBlock transition = SomeTransition();
        transition.progressParameter = parameter;
        EXPECT_TRUE(WriteTransitionDescriptor(transition).empty());
    }
    TransitionDescriptorBlock transition = SomeTransition();
    transition.end = std::numeric_limits<float>::quiet_NaN();
    EXPECT_TRUE(WriteTransitionDescriptor(transition).empty());
}

// --- Hostile bytes ------------------------------------------------------------------------------------------------

TEST(EffectBlocks, OtherLengthsAreNoBlocks) {
    const Bytes descriptor = WriteFilterDescriptor(SomeDescriptor());
    const Bytes table = WriteFilterTable(SomeTable());
    const Bytes transition = WriteTransitionDescriptor(SomeTransition());
    const auto resized = [](Bytes bytes, std::size_t size) {
        bytes.resize(size);
        bytes.shrink_to_fit();  // So that a sanitizer sees a step too far.
        return bytes;
    };
    for (std::size_t size = 0; size < 600; ++size) {
        EXPECT_EQ(ReadFilterDescriptor(resized(descriptor, size)).has_value(), size == 8) << size;
        EXPECT_EQ(ReadFilterTable(resized(table, size)).has_value(), size == 456) << size;
        EXPECT_EQ(ReadTransitionDescriptor(resized(transition, size)).has_value(), size == transition.size()) << size;
    }
}

TEST(EffectBlocks, OtherMarksLayoutsAndHeadSizesAreNoBlocks) {
    const auto changed = [](Bytes bytes, std::size_t at) {
        ++bytes[at];
        return bytes;
    };
    EXPECT_FALSE(ReadFilterDescriptor(changed(WriteFilterDescriptor(SomeDescriptor()), 0)));
    for (const std::size_t at : {0, 3, 4, 5}) {
        EXPECT_FALSE(ReadFilterTable(changed(WriteFilterTable(SomeTable()), at))) << at;
    }
    // Mark, layout, head size, total length and the byte that is 0.
    for (const std::size_t at : {0, 3, 4, 5, 6, 7, 8, 9, 10, 11, 23}) {
        EXPECT_FALSE(ReadTransitionDescriptor(changed(WriteTransitionDescriptor(SomeTransition()), at))) << at;
    }
}

TEST(EffectBlocks, LyingCountsAndLengthsAreNoBlocks) {
    const Bytes transition = WriteTransitionDescriptor(SomeTransition());
    const auto with = [&](std::size_t at, BYTE low, BYTE high) {
        Bytes bytes = transition;
        bytes[at] = low;
        bytes[at + 1] = high;
        return ReadTransitionDescriptor(bytes);
    };
    EXPECT_FALSE(with(26, 0xFF, 0xFF));  // Parameters that are not there.
    EXPECT_FALSE(with(26, 1, 0));        // Fewer than there are, and the progress is none of them.
    EXPECT_FALSE(with(26, 3, 0));
    EXPECT_FALSE(with(24, 2, 0));  // Progress behind the last parameter.
    EXPECT_FALSE(with(24, 0xFE, 0xFF));
    EXPECT_FALSE(with(56, 0xFF, 0xFF));  // A name beyond the end.
    EXPECT_FALSE(with(56, 3, 0));
    EXPECT_FALSE(with(30, 0xC0, 0x7F));  // Start is no number.
}

TEST(EffectBlocks, ATableThatNoWriterMakesIsNoBlock) {
    const Bytes whole = WriteFilterTable(SomeTable());
    for (const std::size_t at : {328u, 400u, 455u}) {  // In slots that do not count.
        Bytes bytes = whole;
        bytes[at] = 1;
        EXPECT_FALSE(ReadFilterTable(bytes)) << at;
    }
    FilterTableBlock full = SomeTable();
    full.parameterCount = 7;
    full.parameters.assign(6, {1, 0, DefaultOf(1), "p", ""});
    Bytes bytes = WriteFilterTable(full);
    ASSERT_TRUE(ReadFilterTable(bytes));
    bytes[16] = 0;  // Seven parameters, none of them left out.
    EXPECT_FALSE(ReadFilterTable(bytes));
}

TEST(EffectBlocks, TextsThatAreNoneAreNoBlocks) {
    Bytes table = WriteFilterTable(SomeTable());
    table[41] = 0xFF;
    EXPECT_FALSE(ReadFilterTable(table));
    table = WriteFilterTable(SomeTable());
    table[60] = 'x';  // Behind the end of the name.
    EXPECT_FALSE(ReadFilterTable(table));
    Bytes transition = WriteTransitionDescriptor(SomeTransition());
    transition[59] = 0;
    EXPECT_FALSE(ReadTransitionDescriptor(transition));
}

// Whatever the bytes are, reading ends inside of them; and what reads is what would be written.
TEST(EffectBlocks, RandomDamage_NeverReadsBeyondAndNeverLies) {
    std::mt19937 random(7);
    const Bytes wholes[] = {WriteFilterDescriptor(SomeDescriptor()), WriteFilterTable(SomeTable()),
                            WriteTransitionDescriptor(SomeTransition())};
    for (int round = 0; round < 20000; ++round) {
        Bytes bytes = wholes[round % 3];
        for (unsigned change = random() % 4 + 1; change > 0; --change) {
            bytes[random() % bytes.size()] = static_cast<BYTE>(random() % 3 == 0 ? 0xFF : random());
        }
        if (random() % 4 == 0) bytes.resize(random() % (bytes.size() + 1));
        bytes.shrink_to_fit();
        if (const auto block = ReadFilterDescriptor(bytes)) {
            EXPECT_EQ(WriteFilterDescriptor(*block), bytes);
        }
        if (const auto block = ReadTransitionDescriptor(bytes)) {
            EXPECT_EQ(WriteTransitionDescriptor(*block), bytes);
        }
        if (const auto block = ReadFilterTable(bytes)) {
            EXPECT_LE(block->parameters.size(), 6u);
            EXPECT_EQ(WriteFilterTable(*block), bytes);
        }
        if (HasFailure()) return;
    }
}

}  // namespace
