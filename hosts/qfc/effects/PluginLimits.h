#pragma once

#include <chrono>

namespace qfc::host {

// Enters the limits under which this process runs a plugin; only its end leads out of them. It ends with its parent,
// and can neither start processes nor leave its group, where the kernel filters system calls and the processor is one
// whose calls are known here; elsewhere a plugin may. Threads are free. Before any other thread is started.
// False when some limit of the caller's is lower already: that one stays, and a plugin may fail by it. Throws
// std::system_error when a limit cannot be entered, and when the parent is gone.
bool EnterPluginLimits(std::chrono::milliseconds time, int answerDescriptor);

}  // namespace qfc::host
