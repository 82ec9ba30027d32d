#include "hosts/qfc/pictures/Exif.h"

#include "hosts/qfc/CalendarTime.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <libexif/exif-data.h>
#include <memory>

namespace qfc::host {

namespace {

constexpr std::array<std::uint8_t, 6> kExifMark = {'E', 'x', 'i', 'f', 0, 0};
// libexif looks at no more than this, the size of one JPEG segment.
constexpr std::size_t kMaxBlock = 0xFFFE;

struct ExifRelease {
    void operator()(ExifData* data) const noexcept { exif_data_unref(data); }
};
using ExifPtr = std::unique_ptr<ExifData, ExifRelease>;

ExifPtr Parse(std::span<const std::uint8_t> block) {
    ExifPtr data(exif_data_new());
    if (!data) return nullptr;
    // Tags are judged as stored; libexif would else rewrite wrong types into right ones.
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), block.data(), static_cast<unsigned>(std::min(block.size(), kMaxBlock)));
    return data;
}

int Rotation(ExifData& data) {
    const ExifEntry* entry = exif_content_get_entry(data.ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->components != 1 || entry->size < 2) return 0;
    constexpr std::array<int, 9> kDegrees = {0, 0, 0, 180, 0, 270, 90, 90, 270};
    const ExifShort value = exif_get_short(entry->data, exif_data_get_byte_order(&data));
    return value < kDegrees.size() ? kDegrees[value] : 0;
}

std::string Text(ExifData& data, ExifTag tag) {
    const ExifEntry* entry = exif_content_get_entry(data.ifd[EXIF_IFD_EXIF], tag);
    if (!entry || entry->format != EXIF_FORMAT_ASCII || !entry->data) return {};
    const char* begin = reinterpret_cast<const char*>(entry->data);
    return {begin, std::find(begin, begin + entry->size, char{})};
}

std::optional<std::int64_t> Recorded(ExifData& data) {
    const std::string stamp = Text(data, EXIF_TAG_DATE_TIME_ORIGINAL);
    if (stamp.empty()) return std::nullopt;
    const std::optional<std::int64_t> zoned = ParseTime(stamp + Text(data, EXIF_TAG_OFFSET_TIME_ORIGINAL));
    return zoned ? zoned : ParseTime(stamp);
}

std::size_t ReadAt(std::ifstream& file, std::uint64_t at, std::span<std::uint8_t> out) {
    file.clear();
    file.seekg(static_cast<std::streamoff>(at));
    file.read(reinterpret_cast<char*>(out.data()), static_cast<std::streamsize>(out.size()));
    return static_cast<std::size_t>(file.gcount());
}

// Walks the segments up to the picture data and gives the first that holds EXIF.
std::vector<std::uint8_t> JpegBlock(std::ifstream& file) {
    std::uint64_t at = 2;
    std::array<std::uint8_t, 4> head{};
    for (int segments = 0; segments < 256 && ReadAt(file, at, head) == head.size() && head[0] == 0xFF; ++segments) {
        if (head[1] == 0xFF) {
            ++at;
            continue;
        }
        const std::size_t length = static_cast<std::size_t>(head[2] << 8 | head[3]);
        if (head[1] == 0xDA || head[1] == 0xD9 || length < 2) break;
        if (head[1] == 0xE1) {
            std::vector<std::uint8_t> block(length - 2);
            block.resize(ReadAt(file, at + 4, block));
            if (block.size() > kExifMark.size() && std::equal(kExifMark.begin(), kExifMark.end(), block.begin()))
                return block;
        }
        at += 2 + length;
    }
    return {};
}

std::vector<std::uint8_t> WithMark(std::span<const std::uint8_t> tiff) {
    std::vector<std::uint8_t> block(kExifMark.size() + tiff.size());
    std::ranges::copy(tiff, std::ranges::copy(kExifMark, block.begin()).out);
    return block;
}

// Most writers put the directory behind the pixels, out of libexif's reach: its entries are brought to the front.
// Values that stand elsewhere in the file are lost by that; the orientation stands in its entry.
std::vector<std::uint8_t> DirectoryBrought(std::ifstream& file, std::span<const std::uint8_t> start, bool bigEndian) {
    const ExifByteOrder order = bigEndian ? EXIF_BYTE_ORDER_MOTOROLA : EXIF_BYTE_ORDER_INTEL;
    const std::uint32_t at = exif_get_long(start.data() + 4, order);
    std::array<std::uint8_t, 2> count{};
    if (ReadAt(file, at, count) != count.size()) return {};
    const std::size_t entries = std::min<std::size_t>(exif_get_short(count.data(), order), 1000);
    std::vector<std::uint8_t> tiff(start.begin(), start.begin() + 8);
    exif_set_long(tiff.data() + 4, order, 8);
    tiff.resize(8 + 2 + entries * 12 + 4);
    exif_set_short(tiff.data() + 8, order, static_cast<ExifShort>(entries));
    const std::size_t got = ReadAt(file, std::uint64_t{at} + 2, std::span(tiff).subspan(10, entries * 12));
    if (got != entries * 12) return {};
    return WithMark(tiff);
}

std::vector<std::uint8_t> TiffBlock(std::ifstream& file, bool bigEndian) {
    std::vector<std::uint8_t> start(kMaxBlock - kExifMark.size());
    start.resize(ReadAt(file, 0, start));
    if (start.size() < 8) return {};
    const ExifByteOrder order = bigEndian ? EXIF_BYTE_ORDER_MOTOROLA : EXIF_BYTE_ORDER_INTEL;
    const bool inReach = exif_get_long(start.data() + 4, order) + std::uint64_t{1024} < start.size();
    const bool whole = start.size() < kMaxBlock - kExifMark.size();
    return inReach || whole ? WithMark(start) : DirectoryBrought(file, start, bigEndian);
}

std::vector<std::uint8_t> FindBlock(std::ifstream& file) {
    std::array<std::uint8_t, 4> magic{};
    if (ReadAt(file, 0, magic) != magic.size()) return {};
    if (magic[0] == 0xFF && magic[1] == 0xD8) return JpegBlock(file);
    if (std::memcmp(magic.data(), "II*\0", 4) == 0) return TiffBlock(file, false);
    if (std::memcmp(magic.data(), "MM\0*", 4) == 0) return TiffBlock(file, true);
    return {};
}

}  // namespace

ExifFacts ReadExifBlock(std::span<const std::uint8_t> block) {
    ExifFacts facts;
    if (block.size() < kExifMark.size() + 8) return facts;
    if (const ExifPtr data = Parse(block)) {
        facts.rotation = Rotation(*data);
        facts.recorded = Recorded(*data);
    }
    return facts;
}

ExifFacts ReadExif(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return file ? ReadExifBlock(FindBlock(file)) : ExifFacts{};
}

}  // namespace qfc::host
