// Compiled for the leak sanitizer alone. Fontconfig keeps its arrays by their distance from the object that owns them,
// so the sanitizer sees no pointer to them and takes them for lost.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }

// Without its report, which would stand among the messages of the command.
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options() { return "print_suppressions=0"; }
