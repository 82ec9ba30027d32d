#include "hosts/qfc/media/SoundEnvelope.h"

#include "hosts/qfc/media/Waveform.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using qfc::host::DrawWaveform;
using qfc::host::Picture;
using qfc::host::SoundEnvelope;

TEST(SoundEnvelope, ColumnsHoldTheExtremesOfTheirPart) {
    SoundEnvelope envelope;
    envelope.Add(std::vector<float>{0.1f, -0.5f, 0.9f, 0.2f}, 1);
    const auto columns = envelope.Columns(2);
    ASSERT_EQ(columns.size(), 2u);
    EXPECT_FLOAT_EQ(columns[0].low, -0.5f);
    EXPECT_FLOAT_EQ(columns[0].high, 0.1f);
    EXPECT_FLOAT_EQ(columns[1].low, 0.2f);
    EXPECT_FLOAT_EQ(columns[1].high, 0.9f);
    EXPECT_FLOAT_EQ(columns[1].energy, (0.81f + 0.04f) / 2);
}

TEST(SoundEnvelope, ChannelsOfAMomentCountTogether) {
    SoundEnvelope envelope;
    envelope.Add(std::vector<float>{0.1f, -0.5f, 0.9f, 0.2f}, 2);
    EXPECT_EQ(envelope.Moments(), 2u);
    EXPECT_FLOAT_EQ(envelope.Columns(2)[0].low, -0.5f);
}

TEST(SoundEnvelope, ALongSoundKeepsItsShapeInBoundedMemory) {
    SoundEnvelope envelope;
    constexpr int kBlocks = 1000;
    for (int block = 0; block < kBlocks; ++block)
        envelope.Add(std::vector<float>(1000, static_cast<float>(block) / kBlocks), 1);
    const auto columns = envelope.Columns(10);
    for (int i = 0; i < 10; ++i) EXPECT_NEAR(columns[static_cast<std::size_t>(i)].high, (i + 1) / 10.0, 0.01) << i;
}

TEST(SoundEnvelope, AShortSoundFillsAllColumns) {
    SoundEnvelope envelope;
    envelope.Add(std::vector<float>{0.5f}, 1);
    for (const auto& column : envelope.Columns(160)) EXPECT_FLOAT_EQ(column.high, 0.5f);
}

TEST(SoundEnvelope, WhatIsNoNumberIsSilence) {
    SoundEnvelope envelope;
    envelope.Add(std::vector<float>{std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(), 7},
                 1);
    const auto column = envelope.Columns(1)[0];
    EXPECT_FLOAT_EQ(column.low, 0);
    EXPECT_FLOAT_EQ(column.high, 1);
}

TEST(SoundEnvelope, NoSamplesGiveNoColumns) {
    SoundEnvelope envelope;
    envelope.Add({}, 2);
    envelope.Add(std::vector<float>{1.0f}, 0);
    EXPECT_TRUE(envelope.Columns(10).empty());
}

int Bright(const Picture& picture, int x) {
    int count = 0;
    for (int y = 0; y < picture.height; ++y) count += (picture.At(x, y) >> 8 & 0xFF) > 0x70;
    return count;
}

TEST(Waveform, LoudPartsStandHigherThanQuietOnes) {
    SoundEnvelope envelope;
    for (int i = 0; i < 16000; ++i)
        envelope.Add(std::vector<float>{(i < 8000 ? 0.2f : 0.8f) * (i % 2 ? 1.0f : -1.0f)}, 1);
    const Picture picture = DrawWaveform(envelope, {160, 90});
    EXPECT_NEAR(Bright(picture, 120), 90 * 0.92, 3);
    EXPECT_NEAR(Bright(picture, 40), 90 * 0.23, 3);
}

TEST(Waveform, SilenceIsAFlatLine) {
    SoundEnvelope envelope;
    envelope.Add(std::vector<float>(1000), 1);
    const Picture picture = DrawWaveform(envelope, {160, 90});
    for (int x = 0; x < 160; ++x) EXPECT_LE(Bright(picture, x), 2);
    EXPECT_NE(picture.At(80, 45), picture.At(80, 5));
}

}  // namespace
