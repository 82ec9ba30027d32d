#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

namespace qfc::host {

// A bar on the last line of a terminal; where the stream is none, or when told to be quiet, it shows nothing. One
// thread at a time.
class Progress {
public:
    Progress(std::FILE* stream, std::size_t total, bool quiet = false);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // False where there is no terminal, or when told to be quiet.
    bool IsShown() const { return m_stream != nullptr; }

    // One more is done; the text says what, shortened to fit.
    void Step(std::string_view text);

    // Takes the bar away, so that a line can be printed; the next step shows it again.
    void Clear();

private:
    std::FILE* m_stream;  // null: show nothing
    std::size_t m_total;
    std::size_t m_done = 0;
};

// The bar's line for a terminal of 80 columns.
std::string ProgressLine(std::size_t done, std::size_t total, std::string_view text);

}  // namespace qfc::host
