#pragma once

// Marks what hosts may link against; everything else stays hidden inside the shared library.
#if defined(__GNUC__)
#define QFCLIB_API __attribute__((visibility("default")))
#else
#define QFCLIB_API
#endif
