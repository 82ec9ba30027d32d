#include "platform/text/CaseFold.h"

#include "platform/text/AnsiCodec.h"
#include "platform/text/CaseFoldTables.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

namespace qfc {
namespace {

char32_t Folded(std::span<const CaseRange> ranges, char32_t character) {
    const auto range = std::lower_bound(ranges.begin(), ranges.end(), character,
                                        [](const CaseRange& r, char32_t c) { return r.last < c; });
    if (range == ranges.end() || character < range->first) return character;
    if ((character - range->first) % static_cast<char32_t>(range->step) != 0) return character;
    return static_cast<char32_t>(static_cast<std::int32_t>(character) + range->delta);
}

// (lower, upper) for every pair, by lower.
using UpperCases = std::vector<std::pair<char32_t, char32_t>>;

UpperCases InvertPairs() {
    UpperCases upper;
    for (const CaseRange& range : kCasePairs) {
        for (char32_t c = range.first; c <= range.last; c += static_cast<char32_t>(range.step)) {
            upper.emplace_back(static_cast<char32_t>(static_cast<std::int32_t>(c) + range.delta), c);
        }
    }
    std::sort(upper.begin(), upper.end());
    return upper;
}

}  // namespace

char32_t FoldToLower(char32_t character) {
    if (character < 0x80) return character >= U'A' && character <= U'Z' ? character + 0x20 : character;
    const char32_t folded = Folded(kCasePairs, character);
    return folded != character ? folded : Folded(kOneWayFolds, character);
}

char32_t FoldToUpper(char32_t character) {
    if (character < 0x80) return character >= U'a' && character <= U'z' ? character - 0x20 : character;
    static const UpperCases upperCases = InvertPairs();
    const char32_t lower = FoldToLower(character);
    const auto found = std::lower_bound(upperCases.begin(), upperCases.end(), std::pair(lower, char32_t{0}));
    return found != upperCases.end() && found->first == lower ? found->second : character;
}

std::string FoldAnsiToLower(std::string_view text) { return MapAnsiCharacters(text, &FoldToLower); }

std::string FoldAnsiToUpper(std::string_view text) { return MapAnsiCharacters(text, &FoldToUpper); }

}  // namespace qfc
