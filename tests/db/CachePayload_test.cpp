#include "db/CachePayload.h"

#include "platform/compress/Compression.h"
#include "tests/db/DbTestSupport.h"

#include <climits>

namespace {

using qfc::PackPayload;
using qfc::PayloadIsSound;
using qfc::PayloadWrite;
using qfc::StoredPayload;
using qfc::UnpackPayload;
using qfc::test::Bytes;
using qfc::test::Noise;
using qfc::test::Repeated;

StoredPayload AsStored(const PayloadWrite& payload) {
    return {payload.rawSize, payload.compressedSize, payload.Stored()};
}

Bytes RoundTrip(const Bytes& bytes) {
    const PayloadWrite payload = PackPayload(0, bytes);
    Bytes back(bytes.size());
    return UnpackPayload(AsStored(payload), back) ? back : Bytes{};
}

// Puts another compressor in place until the end of the test.
class Binding {
public:
    explicit Binding(qfc::CompressionBinding binding) : m_before(qfc::SetCompressionBinding(binding)) {}
    ~Binding() { qfc::SetCompressionBinding(m_before); }

private:
    qfc::CompressionBinding m_before;
};

int Missing(unsigned, const void*, unsigned*, void*) { return qfc::kCompressionMissing; }

// Reports success although it wrote more than there was room for.
int Boasts(unsigned sourceLength, const void*, unsigned* destinationLength, void*) {
    *destinationLength = sourceLength + 1;
    return qfc::kCompressionSucceeded;
}

// Makes of the bytes as many others.
int KeepsTheSize(unsigned sourceLength, const void* source, unsigned* destinationLength, void* destination) {
    for (unsigned i = 0; i < sourceLength; ++i) {
        static_cast<unsigned char*>(destination)[i] = static_cast<const unsigned char*>(source)[i] ^ 0xFF;
    }
    *destinationLength = sourceLength;
    return qfc::kCompressionSucceeded;
}

int MakesNothing(unsigned, const void*, unsigned* destinationLength, void*) {
    *destinationLength = 0;
    return qfc::kCompressionSucceeded;
}

// What the compressor calls a success fits into a buffer of the raw size, and is stored.
TEST(CachePayload, CompressedToExactlyItsOwnSizeIsStoredCompressed) {
    const Binding binding({KeepsTheSize, KeepsTheSize});
    const PayloadWrite payload = PackPayload(0, Repeated(100, 7));
    EXPECT_EQ(payload.compressedSize, 100);
    EXPECT_EQ(RoundTrip(Repeated(100, 7)), Repeated(100, 7));
}

TEST(CachePayload, CompressedToNothingIsStoredRaw) {
    const Binding binding({MakesNothing, Missing});
    const Bytes bytes = Repeated(100, 7);
    const PayloadWrite payload = PackPayload(0, bytes);
    EXPECT_EQ(payload.compressedSize, 0);
    EXPECT_EQ(payload.Stored().data(), bytes.data());
    EXPECT_EQ(RoundTrip(bytes), bytes);
}

TEST(CachePayload, ComesBackAsItWas) {
    for (const std::size_t size : {1U, 2U, 63U, 64U, 4096U, 65535U, 65536U, 65537U, 131072U}) {
        EXPECT_EQ(RoundTrip(Repeated(size, 7)), Repeated(size, 7)) << size;
        EXPECT_EQ(RoundTrip(Noise(size)), Noise(size)) << size;
    }
}

TEST(CachePayload, ShrinkingBytesAreCompressed) {
    const Bytes bytes = Repeated(1000, 7);
    const PayloadWrite payload = PackPayload(2, bytes);
    EXPECT_EQ(payload.kind, 2);
    EXPECT_EQ(payload.rawSize, 1000);
    EXPECT_GT(payload.compressedSize, 0);
    EXPECT_LE(payload.compressedSize, 1000);
    EXPECT_EQ(payload.Stored().size(), static_cast<std::size_t>(payload.compressedSize));
}

TEST(CachePayload, BytesThatDoNotFitTheirOwnSizeStayRaw) {
    const Bytes noise = Noise(300);
    const PayloadWrite payload = PackPayload(0, noise);
    EXPECT_EQ(payload.compressedSize, 0);
    EXPECT_EQ(payload.Stored().data(), noise.data());
    EXPECT_EQ(payload.Stored().size(), 300U);
}

TEST(CachePayload, EmptyBytesHaveSizeZero) {
    const PayloadWrite payload = PackPayload(0, {});
    EXPECT_EQ(payload.rawSize, 0);
    EXPECT_EQ(payload.compressedSize, 0);
}

TEST(CachePayload, WithoutCompressorIsRaw) {
    const Binding none({&Missing, &Missing});
    const Bytes bytes = Repeated(1000, 7);
    const PayloadWrite payload = PackPayload(0, bytes);
    EXPECT_EQ(payload.compressedSize, 0);
    EXPECT_EQ(RoundTrip(bytes), bytes);
}

TEST(CachePayload, WithoutDecompressorACompressedRowIsRefused) {
    const Bytes bytes = Repeated(1000, 7);
    const PayloadWrite payload = PackPayload(0, bytes);
    const Binding none({&Missing, &Missing});
    Bytes back(1000);
    EXPECT_FALSE(UnpackPayload(AsStored(payload), back));
}

TEST(CachePayload, CompressorThatBoastsIsNotBelieved) {
    const Binding boasting({&Boasts, &Boasts});
    EXPECT_EQ(PackPayload(0, Repeated(1000, 7)).compressedSize, 0);
}

TEST(CachePayload, HostileSizesAreRefusedBeforeAnyAllocation) {
    const Bytes bytes = Repeated(1000, 7);
    const PayloadWrite payload = PackPayload(0, bytes);
    const StoredPayload good = AsStored(payload);
    ASSERT_TRUE(PayloadIsSound(good));

    const auto with = [&](auto change) {
        StoredPayload row = good;
        change(row);
        return PayloadIsSound(row);
    };
    EXPECT_FALSE(with([](auto& row) { row.rawSize = -1; }));
    EXPECT_FALSE(with([](auto& row) { row.rawSize = INT_MIN; }));
    EXPECT_FALSE(with([](auto& row) { row.rawSize = INT_MAX; }));
    EXPECT_FALSE(with([](auto& row) { row.rawSize = 0; }));
    EXPECT_FALSE(with([](auto& row) { row.rawSize = 999; }));
    EXPECT_FALSE(with([](auto& row) { row.rawSize = 1001; }));
    EXPECT_FALSE(with([](auto& row) { row.compressedSize = -1; }));
    EXPECT_FALSE(with([](auto& row) { row.compressedSize += 1; }));
    EXPECT_FALSE(with([](auto& row) { row.compressedSize = INT_MAX; }));
    EXPECT_FALSE(with([](auto& row) { row.bytes = {}; }));
    EXPECT_FALSE(with([](auto& row) { row.bytes = row.bytes.first(row.bytes.size() - 1); }));
}

TEST(CachePayload, RawBytesBeyondTheAnnouncedSizeAreRefused) {
    const Bytes bytes = Noise(100);
    EXPECT_FALSE(PayloadIsSound({99, 0, bytes}));
    EXPECT_TRUE(PayloadIsSound({100, 0, bytes}));
}

TEST(CachePayload, RawBytesThatFallShortLeaveTheRestZero) {
    const Bytes bytes = Repeated(3, 9);
    Bytes target = Repeated(5, 1);
    ASSERT_TRUE(UnpackPayload({5, 0, bytes}, target));
    const Bytes expected{std::byte{9}, std::byte{9}, std::byte{9}, std::byte{0}, std::byte{0}};
    EXPECT_EQ(target, expected);
}

TEST(CachePayload, TargetOfAnotherSizeIsRefused) {
    const Bytes bytes = Repeated(1000, 7);
    const PayloadWrite payload = PackPayload(0, bytes);
    Bytes target(999);
    EXPECT_FALSE(UnpackPayload(AsStored(payload), target));
}

TEST(CachePayload, GarbageIsRefused) {
    const Bytes noise = Noise(200);
    Bytes target(1000);
    EXPECT_FALSE(PayloadIsSound({1000, 200, noise}));
    EXPECT_FALSE(UnpackPayload({1000, 200, noise}, target));
}

// Each byte of a frame flipped: refused or, where the frame does not mind, the same bytes again. Never anything else.
TEST(CachePayload, DamagedFrameNeverGivesOtherBytes) {
    Bytes bytes = Noise(400);
    bytes.resize(2000);
    const PayloadWrite payload = PackPayload(0, bytes);
    ASSERT_GT(payload.compressedSize, 0);
    for (std::size_t i = 0; i < payload.compressed.size(); ++i) {
        PayloadWrite damaged = payload;
        damaged.compressed[i] ^= std::byte{0x10};
        Bytes target(2000);
        if (UnpackPayload(AsStored(damaged), target)) {
            EXPECT_EQ(target, bytes) << "byte " << i;
        }
    }
}

TEST(CachePayload, CutFrameIsRefused) {
    const Bytes bytes = Repeated(2000, 3);
    const PayloadWrite payload = PackPayload(0, bytes);
    for (int size = 1; size < payload.compressedSize; ++size) {
        Bytes target(2000);
        EXPECT_FALSE(UnpackPayload({2000, size, payload.Stored().first(static_cast<std::size_t>(size))}, target));
    }
}

}  // namespace
