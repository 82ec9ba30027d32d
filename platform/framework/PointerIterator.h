#pragma once

#include <iterator>
#include <utility>

namespace qfc {

// Walks pointers to a base class as pointers of the derived type TYPE.
template <class Base, class TYPE>
class PointerIterator {
public:
    using iterator_category = std::input_iterator_tag;
    using value_type = TYPE;
    using difference_type = std::ptrdiff_t;
    using pointer = const TYPE*;
    using reference = TYPE;

    PointerIterator() = default;
    explicit PointerIterator(Base position) : m_position(position) {}

    TYPE operator*() const { return static_cast<TYPE>(*m_position); }
    PointerIterator& operator++() {
        ++m_position;
        return *this;
    }
    PointerIterator operator++(int) {
        PointerIterator before = *this;
        ++m_position;
        return before;
    }
    bool operator==(const PointerIterator& other) const { return m_position == other.m_position; }

private:
    Base m_position{};
};

}  // namespace qfc
