#include "platform/compress/Compression.h"

#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <thread>
#include <vector>
#include <zstd.h>

namespace {

std::string Sample(std::size_t size) {
    std::string text;
    while (text.size() < size) text += "frame " + std::to_string(text.size() / 32) + " of the film; ";
    text.resize(size);
    return text;
}

std::string Compressed(const std::string& raw) {
    std::string result(ZSTD_compressBound(raw.size()), '\0');
    auto length = static_cast<unsigned>(result.size());
    EXPECT_EQ(qfc::Compress(static_cast<unsigned>(raw.size()), raw.data(), &length, result.data()), 1);
    result.resize(length);
    return result;
}

int Unpack(const std::string& compressed, std::string& raw) {
    auto length = static_cast<unsigned>(raw.size());
    const int result =
        qfc::Decompress(static_cast<unsigned>(compressed.size()), compressed.data(), &length, raw.data());
    if (result == 1) raw.resize(length);
    return result;
}

bool CanUnpackTo(const std::string& bytes, std::uint64_t size) {
    return qfc::CanUnpackTo(std::as_bytes(std::span(bytes)), size);
}

TEST(Compression, GivesBackWhatWentIn) {
    for (const std::size_t size : {1, 100, 65535, 65536, 65537, 131072}) {
        const std::string raw = Sample(size);
        std::string back(size, '\0');
        ASSERT_EQ(Unpack(Compressed(raw), back), 1) << size;
        EXPECT_EQ(back, raw) << size;
    }
}

TEST(Compression, OutputThatDoesNotFit_FailsAndLeavesTheLength) {
    std::string noise(64, '\0');
    std::iota(noise.begin(), noise.end(), '\1');
    std::string destination(noise.size(), '\0');
    unsigned length = 64;
    EXPECT_NE(qfc::Compress(64, noise.data(), &length, destination.data()), 1);
    EXPECT_EQ(length, 64u);
}

TEST(Compression, UnpackingIntoLessThanItNeeds_Fails) {
    std::string small(99, '\0');
    EXPECT_NE(Unpack(Compressed(Sample(100)), small), 1);
}

TEST(Compression, GarbageTornAndFlippedBytesAreRefused) {
    const std::string good = Compressed(Sample(5000));
    std::string back(5000, '\0');
    EXPECT_NE(Unpack("this was never compressed", back), 1);
    EXPECT_NE(Unpack(good.substr(0, good.size() - 1), back), 1);
    std::string flipped = good;
    flipped[flipped.size() / 2] ^= 1;
    EXPECT_NE(Unpack(flipped, back), 1);
}

TEST(Compression, FramesCarryAChecksum) {
    std::string flipped = Compressed(Sample(5000));
    flipped.back() ^= 1;
    std::string back(5000, '\0');
    EXPECT_NE(Unpack(flipped, back), 1);
}

TEST(Compression, MissingBuffersFail) {
    unsigned length = 100;
    char byte = 0;
    EXPECT_NE(qfc::Compress(1, nullptr, &length, &byte), 1);
    EXPECT_NE(qfc::Compress(1, &byte, &length, nullptr), 1);
    EXPECT_NE(qfc::Compress(1, &byte, nullptr, &byte), 1);
    EXPECT_NE(qfc::Decompress(1, nullptr, &length, &byte), 1);
}

TEST(Compression, SizeIsJudgedFromTheHeaderAlone) {
    const std::string compressed = Compressed(Sample(5000));
    EXPECT_TRUE(CanUnpackTo(compressed, 5000));
    EXPECT_TRUE(CanUnpackTo(compressed.substr(0, 18), 5000));
    EXPECT_FALSE(CanUnpackTo(compressed, 4999));
    EXPECT_FALSE(CanUnpackTo("this was never compressed", 5000));
    EXPECT_FALSE(CanUnpackTo("", 0));
}

// A frame of twelve bytes: magic, a single segment with four bytes of size, the header of an empty last block.
TEST(Compression, SizeThatSoFewBytesCannotHoldIsRefused) {
    const std::string frame("\x28\xB5\x2F\xFD\xA0\xFF\xFF\xFF\x7F\x01\0\0", 12);
    EXPECT_FALSE(CanUnpackTo(frame, 2147483647));
    const std::string zeros = Compressed(std::string(100'000'000, '\0'));
    EXPECT_TRUE(CanUnpackTo(zeros, 100'000'000));
}

struct ReplacedBinding : testing::Test {
    ~ReplacedBinding() override { qfc::SetCompressionBinding(before); }
    qfc::CompressionBinding before = qfc::SetCompressionBinding({nullptr, nullptr, nullptr});
};

TEST_F(ReplacedBinding, SizesAreJudgedByTheBindingInForce) {
    EXPECT_TRUE(CanUnpackTo("no frame of anything", 7));
    qfc::SetCompressionBinding(
        {nullptr, nullptr, [](unsigned length, const void*, std::uint64_t size) { return size == length + 1u; }});
    EXPECT_TRUE(CanUnpackTo("four", 5));
    EXPECT_FALSE(CanUnpackTo("four", 6));
}

TEST_F(ReplacedBinding, MissingEntriesGive1154) {
    unsigned length = 1;
    char byte = 0;
    EXPECT_EQ(qfc::Compress(1, &byte, &length, &byte), 1154);
    EXPECT_EQ(qfc::Decompress(1, &byte, &length, &byte), 1154);
}

TEST_F(ReplacedBinding, OtherFunctionsAreCalledInstead) {
    const auto refuse = [](unsigned, const void*, unsigned*, void*) { return 77; };
    qfc::SetCompressionBinding({refuse, before.decompress});
    unsigned length = 1;
    char byte = 0;
    EXPECT_EQ(qfc::Compress(1, &byte, &length, &byte), 77);
    EXPECT_EQ(qfc::SetCompressionBinding(before).decompress, before.decompress);
    EXPECT_EQ(Compressed("x").empty(), false);
}

TEST_F(ReplacedBinding, MayChangeWhileOthersCompress) {
    qfc::SetCompressionBinding(before);
    const std::string raw = Sample(1000);
    std::thread worker([&] {
        for (int i = 0; i < 200; ++i) {
            std::string destination(2000, '\0');
            unsigned length = 2000;
            const int result = qfc::Compress(1000, raw.data(), &length, destination.data());
            EXPECT_TRUE(result == 1 || result == 1154) << result;
        }
    });
    for (int i = 0; i < 200; ++i) {
        qfc::SetCompressionBinding({nullptr, nullptr});
        qfc::SetCompressionBinding(before);
    }
    worker.join();
}

}  // namespace
