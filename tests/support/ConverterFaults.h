#pragma once

#include <thread>
#include <utility>

namespace qfc::test {

// On a thread that has no converter yet.
template <class Work>
void OnNewThread(Work&& work) {
    std::thread(std::forward<Work>(work)).join();
}

// Lets the calling thread make no converter of texts and no context of the compressor while an object lives, as when
// memory or descriptors run out inside of the libraries that make them. A program that links the source file has
// definitions of its own of what makes them. One at a time on a thread.
class ConverterFaults {
public:
    ConverterFaults();
    ~ConverterFaults();
    ConverterFaults(const ConverterFaults&) = delete;
    ConverterFaults& operator=(const ConverterFaults&) = delete;

    // How many could not be made.
    int Refused() const;
};

}  // namespace qfc::test
