#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

// The order into which a folder's items come when a transition is added, and a short way to it.
namespace qfc {

// For each position, every later element that comes before the one there is swapped in. Equal elements may change
// places.
template <typename Element, typename Before>
void ExchangeSort(std::span<Element> elements, Before before) {
    for (std::size_t position = 0; position < elements.size(); ++position) {
        for (std::size_t later = position + 1; later < elements.size(); ++later) {
            if (before(elements[later], elements[position])) std::swap(elements[later], elements[position]);
        }
    }
}

// The same outcome. While all but the last element are in order, which is so whenever one was added to what was sorted
// before, it takes one pass: the exchange sort puts the last element behind its equals, and hands the first of each run
// of equal elements behind it on to the end of that run.
template <typename Element, typename Before>
void ExchangeSortAfterAdding(std::span<Element> elements, Before before) {
    if (elements.empty()) return;
    const auto last = elements.end() - 1;
    if (!std::is_sorted(elements.begin(), last, before)) {
        ExchangeSort(elements, before);
        return;
    }
    const auto place = std::upper_bound(elements.begin(), last, *last, before);
    std::rotate(place, last, elements.end());
    for (auto run = place == elements.end() ? place : place + 1; run != elements.end();) {
        const auto next =
            std::find_if(run + 1, elements.end(), [&](const Element& element) { return before(*run, element); });
        std::rotate(run, run + 1, next);
        run = next;
    }
}

}  // namespace qfc
