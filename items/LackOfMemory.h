#pragma once

#include <new>

namespace qfc {

// Runs the work; lack of memory on its way is a failure like any other and gives the empty result.
template <class Work>
auto UnlessMemoryEnds(Work&& work) -> decltype(work()) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace qfc
