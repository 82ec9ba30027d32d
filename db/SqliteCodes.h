#pragma once

// The few SQLite numbers that code above the access layer has to name; sqlite3.h itself stays inside that layer, which
// checks these against it when it is compiled.
namespace qfc::sqlite {

inline constexpr int kOk = 0;
inline constexpr int kError = 1;
inline constexpr int kNoMem = 7;
inline constexpr int kReadOnly = 8;
inline constexpr int kIoError = 10;
inline constexpr int kCorrupt = 11;
inline constexpr int kCantOpen = 14;
inline constexpr int kSchema = 17;
inline constexpr int kMisuse = 21;
inline constexpr int kNotADatabase = 26;
// Extended code: the file has a journal to roll back, which a read-only connection may not do.
inline constexpr int kReadOnlyRollback = 776;

// Column types, as CppSQLite3Query::fieldType answers them.
inline constexpr int kTypeInteger = 1;
inline constexpr int kTypeFloat = 2;
inline constexpr int kTypeText = 3;
inline constexpr int kTypeBlob = 4;
inline constexpr int kTypeNull = 5;

}  // namespace qfc::sqlite
