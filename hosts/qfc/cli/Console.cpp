#include "hosts/qfc/cli/Console.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace qfc::host {

void Console::Show(const std::string& line) const {
    if (!m_json) std::cout << Printable(line) << '\n';
}

void Console::Say(const std::string& line) const {
    if (m_quiet) return;
    Show(line);
    // Lines of long work are read while it goes on.
    std::cout.flush();
}

void Console::ShowJson(const Json& document) const {
    if (!m_json) return;
    // Names may hold bytes that are no UTF-8; JSON has no place for them.
    std::cout << document.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    m_hasDocument = true;
}

void Console::Fail(const std::string& reason) const {
    if (!m_hasDocument) ShowJson({{"error", reason}});
    Complain(reason);
}

void Console::Complain(const std::string& line) const {
    std::cout.flush();
    std::cerr << "qfc: " << Printable(line) << '\n';
}

bool Console::Flush() const {
    std::cout.flush();
    return static_cast<bool>(std::cout);
}

std::string Printable(const std::string& text) {
    std::string printable = text;
    for (char& c : printable) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) c = '?';
    }
    return printable;
}

std::string Counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace qfc::host
