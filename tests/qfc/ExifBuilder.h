#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qfc::test {

// Builds TIFF structures byte by byte, in either byte order.
class TiffBuilder {
public:
    explicit TiffBuilder(bool bigEndian) : m_bigEndian(bigEndian) {
        m_bytes = bigEndian ? std::string("MM\0*", 4) : std::string("II*\0", 4);
    }

    void Put(std::uint32_t value, int bytes) {
        for (int i = 0; i < bytes; ++i)
            m_bytes += static_cast<char>(value >> 8 * (m_bigEndian ? bytes - 1 - i : i) & 0xFF);
    }
    // An entry whose value stands in it.
    void PutShortEntry(std::uint32_t tag, std::uint32_t value, std::uint32_t count = 1) {
        Put(tag, 2);
        Put(3, 2);
        Put(count, 4);
        Put(value, 2);
        Put(0, 2);
    }
    void PutEntry(std::uint32_t tag, std::uint32_t type, std::uint32_t count, std::uint32_t value) {
        Put(tag, 2);
        Put(type, 2);
        Put(count, 4);
        Put(value, 4);
    }
    void PutText(std::string_view text) { m_bytes += text; }
    std::uint32_t Size() const { return static_cast<std::uint32_t>(m_bytes.size()); }
    const std::string& Bytes() const { return m_bytes; }

private:
    bool m_bigEndian;
    std::string m_bytes;
};

struct ExifWanted {
    std::uint32_t orientation = 1;
    bool bigEndian = false;
    std::string original = {};  // DateTimeOriginal
    std::string offset = {};    // OffsetTimeOriginal
};

// "Exif\0\0" and a TIFF header with the two directories that a camera writes.
inline std::string ExifBlock(const ExifWanted& wanted) {
    TiffBuilder tiff(wanted.bigEndian);
    tiff.Put(8, 4);
    tiff.Put(2, 2);
    tiff.PutShortEntry(0x0112, wanted.orientation);
    tiff.PutEntry(0x8769, 4, 1, 38);
    tiff.Put(0, 4);
    const std::uint32_t texts = 38 + 2 + 2 * 12 + 4;
    const auto length = [](const std::string& text) { return static_cast<std::uint32_t>(text.size() + 1); };
    const bool hasOffset = wanted.offset.size() > 3;  // a shorter text would stand in its entry
    tiff.Put(hasOffset ? 2 : 1, 2);
    tiff.PutEntry(0x9003, 2, length(wanted.original), hasOffset ? texts : texts - 12);
    if (hasOffset) tiff.PutEntry(0x9011, 2, length(wanted.offset), texts + length(wanted.original));
    tiff.Put(0, 4);
    tiff.PutText(wanted.original + '\0' + wanted.offset + '\0');
    return std::string("Exif\0\0", 6) + tiff.Bytes();
}

// A JPEG with the block behind its start mark.
inline std::string WithExif(const std::string& jpeg, const std::string& block) {
    const std::size_t length = block.size() + 2;
    const std::string head = {'\xFF', '\xE1', static_cast<char>(length >> 8), static_cast<char>(length & 0xFF)};
    return jpeg.substr(0, 2) + head + block + jpeg.substr(2);
}

// An uncompressed RGB picture of one colour; its directory stands behind the pixels.
inline std::string TiffFile(std::uint32_t width, std::uint32_t height, std::uint32_t orientation, bool bigEndian) {
    TiffBuilder tiff(bigEndian);
    const std::uint32_t pixels = width * height * 3;
    tiff.Put(8 + pixels, 4);
    tiff.PutText(std::string(pixels, '\x60'));
    const std::uint32_t depths = 8 + pixels + 2 + 10 * 12 + 4;
    tiff.Put(10, 2);
    tiff.PutShortEntry(0x0100, width);
    tiff.PutShortEntry(0x0101, height);
    tiff.PutEntry(0x0102, 3, 3, depths);
    tiff.PutShortEntry(0x0103, 1);
    tiff.PutShortEntry(0x0106, 2);
    tiff.PutEntry(0x0111, 4, 1, 8);
    tiff.PutShortEntry(0x0112, orientation);
    tiff.PutShortEntry(0x0115, 3);
    tiff.PutShortEntry(0x0116, height);
    tiff.PutEntry(0x0117, 4, 1, pixels);
    tiff.Put(0, 4);
    for (int i = 0; i < 3; ++i) tiff.Put(8, 2);
    return tiff.Bytes();
}

}  // namespace qfc::test
