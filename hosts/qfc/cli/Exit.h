#pragma once

#include <stdexcept>
#include <string>

namespace qfc::host {

// The exit codes of qfc.
enum Exit { kDone = 0, kFailed = 1, kWrongUsage = 2 };

// Ends a command with one line on the error stream. Thrown by commands and by library/, caught in main.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& message, Exit exit = kFailed) : std::runtime_error(message), m_exit(exit) {}
    Exit Code() const { return m_exit; }

private:
    Exit m_exit;
};

// The command line asks for something that has no meaning, whatever the library holds.
class WrongUsage : public Failure {
public:
    explicit WrongUsage(const std::string& message) : Failure(message, kWrongUsage) {}
};

}  // namespace qfc::host
