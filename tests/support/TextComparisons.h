#pragma once

#include <cstdint>

namespace qfc::test {

// Counts how often anything in the process compares two texts with strcmp while an object lives: the work of a sort by
// name, which takes no time to measure. A program that links the source file has a definition of its own of strcmp,
// which holds for everything that is linked into it. Any thread may compare. One at a time.
class TextComparisons {
public:
    TextComparisons();
    ~TextComparisons();
    TextComparisons(const TextComparisons&) = delete;
    TextComparisons& operator=(const TextComparisons&) = delete;

    std::uint64_t Seen() const;
};

}  // namespace qfc::test
