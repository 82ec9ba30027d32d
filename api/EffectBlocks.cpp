#include "api/EffectBlocks.h"

#include "db/EffectRecords.h"
#include "platform/text/Utf8.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <string_view>
#include <type_traits>

namespace qfc {

namespace {

constexpr std::uint8_t kLayout = 1;
constexpr std::string_view kTableMark = "QFT1";
constexpr std::string_view kTransitionMark = "QFX1";
constexpr std::uint16_t kTransitionHead = 56;
constexpr std::size_t kNameField = 48;
constexpr std::size_t kExplanationField = 128;
constexpr std::size_t kSlotName = 26;
constexpr std::size_t kSlots = 6;
constexpr std::size_t kLongestText = std::numeric_limits<std::uint16_t>::max();
constexpr std::size_t kMostParameters = std::numeric_limits<std::uint16_t>::max();
constexpr std::size_t kLengthAt = 8;       // Of the total length in a transition's descriptor.
constexpr std::size_t kTableFlagsAt = 16;  // Of the flags in a filter's table.
constexpr std::size_t kTransitionFlagsAt = 36;

using Unsigned32 = std::uint32_t;

// Characters up to the first zero, as many as fit; `cut` turns true when something had to go.
std::string Fitting(std::string_view text, std::size_t room, bool& cut) {
    std::string fitting;
    for (std::string_view rest = text; !rest.empty() && rest.front() != '\0';) {
        const DecodedCharacter next = DecodeUtf8(rest);
        const bool fits = next.valid && fitting.size() + next.length <= room;
        if (fits) fitting += rest.substr(0, next.length);
        cut = cut || !fits;
        if (next.valid && !fits) break;
        rest.remove_prefix(next.length);
    }
    return fitting;
}

bool IsText(std::string_view text) {
    while (!text.empty()) {
        const DecodedCharacter next = DecodeUtf8(text);
        if (!next.valid || text.front() == '\0') return false;
        text.remove_prefix(next.length);
    }
    return true;
}

// Appends little-endian numbers and texts.
class BlockWriter {
public:
    template <typename Number>
    void Put(Number number) {
        const auto value = static_cast<std::make_unsigned_t<Number>>(number);
        for (std::size_t byte = 0; byte < sizeof(Number); ++byte) {
            m_bytes.push_back(static_cast<BYTE>(static_cast<std::uint64_t>(value) >> (8 * byte)));
        }
    }
    void Put(float number) { Put(std::bit_cast<Unsigned32>(number)); }
    void PutBytes(std::span<const BYTE> bytes) { m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end()); }
    void PutMark(std::string_view mark) { m_bytes.insert(m_bytes.end(), mark.begin(), mark.end()); }
    // Filled up with zeros.
    void PutField(std::string_view text, std::size_t room) {
        const std::string fitting = Fitting(text, room, m_cut);
        PutMark(fitting);
        m_bytes.resize(m_bytes.size() + room - fitting.size());
    }
    void PutText(std::string_view text) {
        const std::string fitting = Fitting(text, kLongestText, m_cut);
        Put(static_cast<std::uint16_t>(fitting.size()));
        PutMark(fitting);
    }
    void PutZeros(std::size_t count) { m_bytes.resize(m_bytes.size() + count); }
    void Replace(std::size_t at, Unsigned32 number) {
        for (std::size_t byte = 0; byte < sizeof number; ++byte) {
            m_bytes[at + byte] = static_cast<BYTE>(number >> (8 * byte));
        }
    }

    bool HasCut() const { return m_cut; }
    std::size_t Size() const { return m_bytes.size(); }
    std::vector<BYTE> Take() { return std::move(m_bytes); }

private:
    std::vector<BYTE> m_bytes;
    bool m_cut = false;
};

// Takes from the front; once something was not there it has failed, and gives zeros and nothing.
class BlockReader {
public:
    explicit BlockReader(std::span<const BYTE> bytes) : m_rest(bytes) {}

    template <typename Number>
    Number Get() {
        std::uint64_t value = 0;
        const std::span<const BYTE> bytes = Bytes(sizeof(Number));
        for (std::size_t byte = 0; byte < bytes.size(); ++byte) value |= std::uint64_t{bytes[byte]} << (8 * byte);
        return static_cast<Number>(value);
    }
    float GetFloat() { return std::bit_cast<float>(Get<Unsigned32>()); }
    std::array<BYTE, 4> GetDefault() {
        std::array<BYTE, 4> value{};
        std::ranges::copy(Bytes(value.size()), value.begin());
        return value;
    }
    std::span<const BYTE> Bytes(std::size_t count) {
        m_failed = m_failed || count > m_rest.size();
        if (m_failed) return {};
        const std::span<const BYTE> bytes = m_rest.first(count);
        m_rest = m_rest.subspan(count);
        return bytes;
    }
    void Expect(bool holds) { m_failed = m_failed || !holds; }
    void ExpectMark(std::string_view mark) { Expect(AsText(Bytes(mark.size())) == mark); }
    // A text that may be followed by zeros, and by nothing else.
    std::string GetField(std::size_t room) {
        std::string_view text = AsText(Bytes(room));
        const std::size_t zero = std::min(text.find('\0'), text.size());
        Expect(text.find_first_not_of('\0', zero) == std::string_view::npos);
        return Checked(text.substr(0, zero));
    }
    std::string GetText() { return Checked(AsText(Bytes(Get<std::uint16_t>()))); }

    std::size_t Left() const { return m_rest.size(); }
    bool HasFailed() const { return m_failed; }

private:
    static std::string_view AsText(std::span<const BYTE> bytes) {
        return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
    }
    std::string Checked(std::string_view text) {
        Expect(IsText(text));
        return m_failed ? std::string() : std::string(text);
    }

    std::span<const BYTE> m_rest;
    bool m_failed = false;
};

Unsigned32 FlagsOf(Unsigned32 given, bool cut, bool leftOut) {
    return given | (cut ? block_flag::kTextCut : 0U) | (leftOut ? block_flag::kParametersLeftOut : 0U);
}

void PutSlot(BlockWriter& writer, const EffectParameter& parameter) {
    writer.Put(parameter.type);
    writer.Put(parameter.flags);
    writer.PutField(parameter.name, kSlotName);
    writer.PutBytes(parameter.defaultValue);
}

EffectParameter GetSlot(BlockReader& reader) {
    EffectParameter parameter;
    parameter.type = reader.Get<std::uint8_t>();
    parameter.flags = reader.Get<std::uint8_t>();
    parameter.name = reader.GetField(kSlotName);
    parameter.defaultValue = reader.GetDefault();
    return parameter;
}

EffectParameter GetParameter(BlockReader& reader) {
    EffectParameter parameter;
    parameter.type = reader.Get<std::uint8_t>();
    parameter.defaultValue = reader.GetDefault();
    parameter.name = reader.GetText();
    parameter.explanation = reader.GetText();
    return parameter;
}

bool IsProgress(int parameter, std::size_t count) {
    return parameter == -1 || (parameter >= 0 && static_cast<std::size_t>(parameter) < count);
}

void PutTransitionHead(BlockWriter& writer, const TransitionDescriptorBlock& block, std::size_t count) {
    writer.PutMark(kTransitionMark);
    writer.Put(std::uint16_t{kLayout});
    writer.Put(kTransitionHead);
    writer.Put(Unsigned32{0});  // The length, once it is known.
    writer.Put(block.majorVersion);
    writer.Put(block.minorVersion);
    writer.Put(block.standard);
    writer.Put(block.colourModel);
    writer.Put(block.progressMode);
    writer.PutZeros(1);
    writer.Put(block.progressParameter);
    writer.Put(static_cast<std::uint16_t>(count));
    writer.Put(block.start);
    writer.Put(block.end);
    writer.Put(block.flags);
    writer.Put(block.fileSize);
    writer.Put(block.fileTime);
}

// Answers how many parameters follow.
std::size_t GetTransitionHead(BlockReader& reader, TransitionDescriptorBlock& block, std::size_t size) {
    reader.ExpectMark(kTransitionMark);
    reader.Expect(reader.Get<std::uint16_t>() == kLayout);
    reader.Expect(reader.Get<std::uint16_t>() == kTransitionHead);
    reader.Expect(reader.Get<Unsigned32>() == size);
    block.majorVersion = reader.Get<std::int32_t>();
    block.minorVersion = reader.Get<std::int32_t>();
    block.standard = reader.Get<std::uint8_t>();
    block.colourModel = reader.Get<std::uint8_t>();
    block.progressMode = reader.Get<std::uint8_t>();
    reader.Expect(reader.Get<std::uint8_t>() == 0);
    block.progressParameter = reader.Get<std::int16_t>();
    const std::size_t count = reader.Get<std::uint16_t>();
    block.start = reader.GetFloat();
    block.end = reader.GetFloat();
    block.flags = reader.Get<Unsigned32>();
    block.fileSize = reader.Get<std::uint64_t>();
    block.fileTime = reader.Get<std::int64_t>();
    reader.Expect(IsProgress(block.progressParameter, count));
    reader.Expect(std::isfinite(block.start) && std::isfinite(block.end));
    return count;
}

}  // namespace

std::vector<BYTE> WriteFilterDescriptor(const FilterDescriptorBlock& block) {
    BlockWriter writer;
    writer.Put(kLayout);
    writer.Put(block.standard);
    writer.Put(block.pluginType);
    writer.Put(block.colourModel);
    writer.Put(block.index);
    writer.Put(block.parameterCount);
    writer.Put(block.flags);
    return writer.Take();
}

std::optional<FilterDescriptorBlock> ReadFilterDescriptor(std::span<const BYTE> bytes) {
    if (bytes.size() != kFilterDescriptorSize) return std::nullopt;
    BlockReader reader(bytes);
    reader.Expect(reader.Get<std::uint8_t>() == kLayout);
    FilterDescriptorBlock block;
    block.standard = reader.Get<std::uint8_t>();
    block.pluginType = reader.Get<std::uint8_t>();
    block.colourModel = reader.Get<std::uint8_t>();
    block.index = reader.Get<std::uint16_t>();
    block.parameterCount = reader.Get<std::uint8_t>();
    block.flags = reader.Get<std::uint8_t>();
    return reader.HasFailed() ? std::nullopt : std::optional(block);
}

std::vector<BYTE> WriteFilterTable(const FilterTableBlock& block) {
    const std::size_t given = std::min(block.parameters.size(), kMostParameters);
    const std::size_t count = std::max<std::size_t>(block.parameterCount, given);
    const std::size_t slots = std::min(given, kSlots);
    if (slots < std::min(count, kSlots)) return {};
    BlockWriter writer;
    writer.PutMark(kTableMark);
    writer.Put(std::uint16_t{kLayout});
    writer.Put(static_cast<std::uint16_t>(count));
    writer.Put(block.majorVersion);
    writer.Put(block.minorVersion);
    writer.Put(block.flags);
    writer.Put(block.apiVersion);
    writer.Put(block.fileSize);
    writer.Put(block.fileTime);
    writer.PutField(block.name, kNameField);
    writer.PutField(block.author, kNameField);
    writer.PutField(block.explanation, kExplanationField);
    for (std::size_t slot = 0; slot < slots; ++slot) PutSlot(writer, block.parameters[slot]);
    writer.PutZeros(kFilterTableSize - writer.Size());
    writer.Replace(kTableFlagsAt, FlagsOf(block.flags, writer.HasCut(), count > slots));
    return writer.Take();
}

std::optional<FilterTableBlock> ReadFilterTable(std::span<const BYTE> bytes) {
    if (bytes.size() != kFilterTableSize) return std::nullopt;
    BlockReader reader(bytes);
    FilterTableBlock block;
    reader.ExpectMark(kTableMark);
    reader.Expect(reader.Get<std::uint16_t>() == kLayout);
    block.parameterCount = reader.Get<std::uint16_t>();
    block.majorVersion = reader.Get<std::int32_t>();
    block.minorVersion = reader.Get<std::int32_t>();
    block.flags = reader.Get<Unsigned32>();
    block.apiVersion = reader.Get<Unsigned32>();
    block.fileSize = reader.Get<std::uint64_t>();
    block.fileTime = reader.Get<std::int64_t>();
    block.name = reader.GetField(kNameField);
    block.author = reader.GetField(kNameField);
    block.explanation = reader.GetField(kExplanationField);
    const std::size_t slots = std::min<std::size_t>(block.parameterCount, kSlots);
    for (std::size_t slot = 0; slot < slots; ++slot) block.parameters.push_back(GetSlot(reader));
    reader.Expect(std::ranges::all_of(reader.Bytes(reader.Left()), [](BYTE byte) { return byte == 0; }));
    reader.Expect(block.parameterCount <= kSlots || (block.flags & block_flag::kParametersLeftOut) != 0);
    return reader.HasFailed() ? std::nullopt : std::optional(std::move(block));
}

std::vector<BYTE> WriteTransitionDescriptor(const TransitionDescriptorBlock& block) {
    const std::size_t count = std::min(block.parameters.size(), kMostParameters);
    if (!IsProgress(block.progressParameter, count) || !std::isfinite(block.start) || !std::isfinite(block.end)) {
        return {};
    }
    BlockWriter writer;
    PutTransitionHead(writer, block, count);
    for (const std::string* text : {&block.name, &block.author, &block.explanation}) writer.PutText(*text);
    for (std::size_t index = 0; index < count; ++index) {
        const EffectParameter& parameter = block.parameters[index];
        writer.Put(parameter.type);
        writer.PutBytes(parameter.defaultValue);
        writer.PutText(parameter.name);
        writer.PutText(parameter.explanation);
    }
    if (writer.Size() > std::numeric_limits<Unsigned32>::max()) return {};
    writer.Replace(kLengthAt, static_cast<Unsigned32>(writer.Size()));
    writer.Replace(kTransitionFlagsAt, FlagsOf(block.flags, writer.HasCut(), count < block.parameters.size()));
    return writer.Take();
}

std::optional<TransitionDescriptorBlock> ReadTransitionDescriptor(std::span<const BYTE> bytes) {
    BlockReader reader(bytes);
    TransitionDescriptorBlock block;
    const std::size_t count = GetTransitionHead(reader, block, bytes.size());
    for (std::string* text : {&block.name, &block.author, &block.explanation}) *text = reader.GetText();
    for (std::size_t index = 0; index < count && !reader.HasFailed(); ++index) {
        block.parameters.push_back(GetParameter(reader));
    }
    const bool whole = !reader.HasFailed() && reader.Left() == 0;
    return whole ? std::optional(std::move(block)) : std::nullopt;
}

std::array<BYTE, 4> DefaultOf(float number) {
    BlockWriter writer;
    writer.Put(number);
    std::array<BYTE, 4> value{};
    std::ranges::copy(writer.Take(), value.begin());
    return value;
}

float NumberOf(const std::array<BYTE, 4>& defaultValue) { return BlockReader(defaultValue).GetFloat(); }

}  // namespace qfc
