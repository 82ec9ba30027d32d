// Compiled for the sanitizers alone: what they are to make of libraries that they do not see into.
#include "hosts/qfc/effects/ProbeReport.h"

// Fontconfig keeps its arrays by their distance from the object that owns them; the leak sanitizer sees no pointer to
// them and takes them for lost. Without its report, which would stand among the messages of the command.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }

// What a plugin loses is not ours; and where it ends its process, the leak sanitizer may not start the one it looks
// from.
extern "C" int __lsan_is_turned_off();
extern "C" int __lsan_is_turned_off() { return qfc::host::IsPluginsProcess() ? 1 : 0; }

// Pango starts fontconfig on a thread of its own; the thread sanitizer does not see how they wait for each other.
extern "C" const char* __tsan_default_options();
extern "C" const char* __tsan_default_options() { return "ignore_noninstrumented_modules=1"; }
