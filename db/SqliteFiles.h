#pragma once

#include <array>

// The names of what SQLite keeps beside a database and applies to it when it is opened: suffixes of its own name.
namespace qfc::sqlite {

inline constexpr char kJournalSuffix[] = "-journal";
inline constexpr char kLogSuffix[] = "-wal";
inline constexpr std::array<const char*, 2> kUnfinishedSuffixes{kJournalSuffix, kLogSuffix};

}  // namespace qfc::sqlite
