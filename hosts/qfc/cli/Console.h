#pragma once

#include "hosts/qfc/cli/Options.h"

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace qfc::host {

using Json = nlohmann::ordered_json;

// Where a command's words go. In JSON mode standard output carries one document and nothing else. Main thread.
class Console {
public:
    explicit Console(const GlobalOptions& options) : m_json(options.json), m_quiet(options.quiet) {}

    bool IsJson() const { return m_json; }
    bool IsQuiet() const { return m_quiet; }

    // A line of what was asked for. Nothing in JSON mode.
    void Show(const std::string& line) const;
    // What was done, for people. Nothing in JSON mode or when quiet.
    void Say(const std::string& line) const;
    // The document of JSON mode; otherwise nothing.
    void ShowJson(const Json& document) const;
    // Says on the error stream why the command ended early. In JSON mode standard output still gets its one document:
    // unless the command has shown its own, one that holds the reason.
    void Fail(const std::string& reason) const;
    // One line on the error stream, in every mode.
    void Complain(const std::string& line) const;

    // False when standard output did not take everything.
    bool Flush() const;

private:
    bool m_json;
    bool m_quiet;
    mutable bool m_hasDocument = false;
};

// Names come from files and other people's libraries: control characters would reach the terminal. They become '?'.
std::string Printable(const std::string& text);

// "1 item", "2 items".
std::string Counted(std::size_t count, const std::string& noun);

}  // namespace qfc::host
