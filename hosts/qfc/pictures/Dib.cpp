#include "hosts/qfc/pictures/Dib.h"

#include <cstddef>
#include <cstdlib>

namespace qfc::host {

namespace {

constexpr std::size_t kHeaderSize = 40;
constexpr std::int64_t kMaxSide = 32767;

struct Header {
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool topDown = false;
    unsigned bits = 0;
    std::size_t paletteEntries = 0;
    std::size_t stride = 0;
    std::size_t pixelOffset = 0;
};

std::uint32_t Read32(std::span<const std::uint8_t> bytes, std::size_t at) {
    return bytes[at] | bytes[at + 1] << 8 | bytes[at + 2] << 16 | static_cast<std::uint32_t>(bytes[at + 3]) << 24;
}

unsigned Read16(std::span<const std::uint8_t> bytes, std::size_t at) {
    return static_cast<unsigned>(bytes[at] | bytes[at + 1] << 8);
}

void Write32(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

std::size_t Stride(std::int64_t width, unsigned bits) { return (static_cast<std::size_t>(width) * bits + 31) / 32 * 4; }

// Everything is checked in 64 bits before a byte behind the header is read.
std::optional<Header> ReadHeader(std::span<const std::uint8_t> dib) {
    if (dib.size() < kHeaderSize || Read32(dib, 0) != kHeaderSize || Read32(dib, 16) != 0) return std::nullopt;
    Header header;
    header.width = static_cast<std::int32_t>(Read32(dib, 4));
    header.height = static_cast<std::int32_t>(Read32(dib, 8));
    header.topDown = header.height < 0;
    header.height = std::abs(header.height);
    header.bits = Read16(dib, 14);
    if (header.width < 1 || header.width > kMaxSide || header.height < 1 || header.height > kMaxSide)
        return std::nullopt;
    if (header.bits != 8 && header.bits != 24 && header.bits != 32) return std::nullopt;
    if (header.bits == 8) {
        const std::uint32_t used = Read32(dib, 32);
        if (used > 256) return std::nullopt;
        header.paletteEntries = used == 0 ? 256 : used;
    }
    header.stride = Stride(header.width, header.bits);
    header.pixelOffset = kHeaderSize + header.paletteEntries * 4;
    if (dib.size() < header.pixelOffset + header.stride * static_cast<std::size_t>(header.height)) return std::nullopt;
    return header;
}

std::uint32_t ColourAt(std::span<const std::uint8_t> dib, std::size_t at) {
    return 0xFF000000u | static_cast<std::uint32_t>(dib[at + 2]) << 16 | static_cast<std::uint32_t>(dib[at + 1]) << 8 |
           dib[at];
}

// An index behind the palette's end is black, as the bytes name no colour for it.
std::uint32_t PaletteColour(std::span<const std::uint8_t> dib, const Header& header, std::uint8_t index) {
    return index < header.paletteEntries ? ColourAt(dib, kHeaderSize + std::size_t{index} * 4) : 0xFF000000u;
}

}  // namespace

std::size_t PackedDibSize(PictureSize size) {
    return kHeaderSize + Stride(size.width, 24) * static_cast<std::size_t>(size.height);
}

std::vector<std::uint8_t> PackDib(const Picture& picture) {
    if (picture.IsEmpty()) return {};
    std::vector<std::uint8_t> dib(PackedDibSize({picture.width, picture.height}));
    const std::size_t stride = Stride(picture.width, 24);
    Write32(dib, 0, kHeaderSize);
    Write32(dib, 4, static_cast<std::uint32_t>(picture.width));
    Write32(dib, 8, static_cast<std::uint32_t>(picture.height));
    dib[12] = 1;
    dib[14] = 24;
    Write32(dib, 20, static_cast<std::uint32_t>(dib.size() - kHeaderSize));
    for (int y = 0; y < picture.height; ++y) {
        std::size_t at = kHeaderSize + stride * static_cast<std::size_t>(picture.height - 1 - y);
        for (int x = 0; x < picture.width; ++x) {
            const std::uint32_t pixel = picture.At(x, y);
            dib[at++] = static_cast<std::uint8_t>(pixel);
            dib[at++] = static_cast<std::uint8_t>(pixel >> 8);
            dib[at++] = static_cast<std::uint8_t>(pixel >> 16);
        }
    }
    return dib;
}

std::optional<Picture> ReadDib(std::span<const std::uint8_t> dib) {
    const std::optional<Header> header = ReadHeader(dib);
    if (!header) return std::nullopt;
    Picture picture(static_cast<int>(header->width), static_cast<int>(header->height));
    const std::size_t step = header->bits / 8;
    for (int y = 0; y < picture.height; ++y) {
        const int row = header->topDown ? y : picture.height - 1 - y;
        std::size_t at = header->pixelOffset + header->stride * static_cast<std::size_t>(row);
        for (int x = 0; x < picture.width; ++x, at += step)
            picture.At(x, y) = step == 1 ? PaletteColour(dib, *header, dib[at]) : ColourAt(dib, at);
    }
    return picture;
}

}  // namespace qfc::host
