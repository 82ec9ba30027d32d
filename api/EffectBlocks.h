#pragma once

#include "platform/Export.h"
#include "platform/framework/Types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

// One layout for the blocks of effect records (docs/effects.md), for hosts that have none of their own. The library
// stores blocks byte for byte and never reads them. Pure functions on bytes; any thread. Readers take nothing for
// granted: whatever is not exactly a block of layout 1, as the writers make it, is empty. All texts are UTF-8.
namespace qfc {

// Of a filter's descriptor.
namespace filter_flag {
inline constexpr std::uint8_t kThumbnailRendered = 1;
inline constexpr std::uint8_t kDependsOnTime = 2;
inline constexpr std::uint8_t kNoVisibleEffect = 4;  // With the parameters' defaults.
}  // namespace filter_flag

// Of a filter's table and of a transition's descriptor. The writers set these two by themselves.
namespace block_flag {
inline constexpr std::uint32_t kTextCut = 1;
inline constexpr std::uint32_t kParametersLeftOut = 2;
}  // namespace block_flag

// How a transition gets from A to B.
namespace progress_mode {
inline constexpr std::uint8_t kTime = 0;       // By the time it is given.
inline constexpr std::uint8_t kParameter = 1;  // By a parameter, from its start to its end value.
inline constexpr std::uint8_t kMix = 2;        // Through the mix of both, blended by the host.
}  // namespace progress_mode

inline constexpr std::uint8_t kStandardFrei0r = 1;

// The descriptor of a filter: 8 bytes.
struct FilterDescriptorBlock {
    std::uint8_t standard = kStandardFrei0r;
    std::uint8_t pluginType = 0;
    std::uint8_t colourModel = 0;
    std::uint16_t index = 0;          // In its file.
    std::uint8_t parameterCount = 0;  // 255 stands for that many and more.
    std::uint8_t flags = 0;

    bool operator==(const FilterDescriptorBlock&) const = default;
};

// The four bytes are the type's own business; numbers are 32-bit floats (DefaultOf, NumberOf).
struct EffectParameter {
    std::uint8_t type = 0;
    std::uint8_t flags = 0;  // Filters only.
    std::array<BYTE, 4> defaultValue{};
    std::string name;
    std::string explanation;  // Transitions only.

    bool operator==(const EffectParameter&) const = default;
};

// The table of a filter: 456 bytes. Texts hold at most 48, 48 and 128 bytes, names of parameters 26; six parameters.
struct FilterTableBlock {
    std::uint16_t parameterCount = 0;  // As the effect has them: those given, or more behind six that are.
    std::int32_t majorVersion = 0;
    std::int32_t minorVersion = 0;
    std::uint32_t flags = 0;
    std::uint32_t apiVersion = 0;
    std::uint64_t fileSize = 0;
    std::int64_t fileTime = 0;
    std::string name;
    std::string author;
    std::string explanation;
    std::vector<EffectParameter> parameters;

    bool operator==(const FilterTableBlock&) const = default;
};

// The descriptor of a transition: as long as its texts, which hold at most 65,535 bytes each; as many parameters.
struct TransitionDescriptorBlock {
    std::int32_t majorVersion = 0;
    std::int32_t minorVersion = 0;
    std::uint8_t standard = kStandardFrei0r;
    std::uint8_t colourModel = 0;
    std::uint8_t progressMode = progress_mode::kTime;
    std::int16_t progressParameter = -1;  // -1 or the index of one of the parameters.
    float start = 0;                      // Finite numbers.
    float end = 1;
    std::uint32_t flags = 0;
    std::uint64_t fileSize = 0;
    std::int64_t fileTime = 0;
    std::string name;
    std::string author;
    std::string explanation;
    std::vector<EffectParameter> parameters;

    bool operator==(const TransitionDescriptorBlock&) const = default;
};

// What does not fit is cut, between characters, or left out, and the flags say so. Texts end at a zero; bytes that form
// no character are left out.
QFCLIB_API std::vector<BYTE> WriteFilterDescriptor(const FilterDescriptorBlock& block);
// The count is raised to the parameters given. Empty when it counts others that would have fitted.
QFCLIB_API std::vector<BYTE> WriteFilterTable(const FilterTableBlock& block);
// Empty when the progress parameter is none of those given, or start or end is no finite number.
QFCLIB_API std::vector<BYTE> WriteTransitionDescriptor(const TransitionDescriptorBlock& block);

QFCLIB_API std::optional<FilterDescriptorBlock> ReadFilterDescriptor(std::span<const BYTE> bytes);
QFCLIB_API std::optional<FilterTableBlock> ReadFilterTable(std::span<const BYTE> bytes);
QFCLIB_API std::optional<TransitionDescriptorBlock> ReadTransitionDescriptor(std::span<const BYTE> bytes);

QFCLIB_API std::array<BYTE, 4> DefaultOf(float number);
QFCLIB_API float NumberOf(const std::array<BYTE, 4>& defaultValue);

}  // namespace qfc
