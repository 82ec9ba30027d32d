#pragma once

#include "hosts/qfc/cli/Options.h"

#include <string>
#include <variant>

namespace qfc::host {

// Nothing is left to do but to print `text` and leave with `exit`: help on standard output, or one line about wrong
// usage on the error stream.
struct LeaveNow {
    int exit = 0;
    std::string text;
    bool json = false;  // JSON was asked for, as far as the arguments can be understood.
};

// Turns the arguments into options; touches nothing else. Main thread, once.
std::variant<Invocation, LeaveNow> ReadCommandLine(int argc, const char* const* argv);

}  // namespace qfc::host
