#include "db/CppSQLite3Exception.h"

#include <gtest/gtest.h>
#include <optional>
#include <sqlite3.h>
#include <utility>

namespace {

TEST(CppSQLite3Exception, TextIsNameCodeAndMessage) {
    const CppSQLite3Exception error(1000, "Database not open");
    EXPECT_EQ(error.errorCode(), 1000);
    EXPECT_STREQ(error.errorMessage(), "CPPSQLITE_ERROR[1000]: Database not open");
}

TEST(CppSQLite3Exception, AbsentMessageEndsInColonAndBlank) {
    EXPECT_STREQ(CppSQLite3Exception(1, static_cast<const char*>(nullptr)).errorMessage(), "SQLITE_ERROR[1]: ");
    EXPECT_STREQ(CppSQLite3Exception(1, static_cast<char*>(nullptr), true).errorMessage(), "SQLITE_ERROR[1]: ");
}

TEST(CppSQLite3Exception, CodeOutsideTheTableIsUnknown) {
    EXPECT_STREQ(CppSQLite3Exception(4711, "x").errorMessage(), "UNKNOWN_ERROR[4711]: x");
    EXPECT_STREQ(CppSQLite3Exception(-3, "x").errorMessage(), "UNKNOWN_ERROR[-3]: x");
    EXPECT_STREQ(CppSQLite3Exception::errorCodeAsString(26), "UNKNOWN_ERROR");
}

TEST(CppSQLite3Exception, EveryCodeOfTheTableHasItsName) {
    const std::pair<int, const char*> table[] = {
        {0, "SQLITE_OK"},          {1, "SQLITE_ERROR"},     {2, "SQLITE_INTERNAL"},  {3, "SQLITE_PERM"},
        {4, "SQLITE_ABORT"},       {5, "SQLITE_BUSY"},      {6, "SQLITE_LOCKED"},    {7, "SQLITE_NOMEM"},
        {8, "SQLITE_READONLY"},    {9, "SQLITE_INTERRUPT"}, {10, "SQLITE_IOERR"},    {11, "SQLITE_CORRUPT"},
        {12, "SQLITE_NOTFOUND"},   {13, "SQLITE_FULL"},     {14, "SQLITE_CANTOPEN"}, {15, "SQLITE_PROTOCOL"},
        {16, "SQLITE_EMPTY"},      {17, "SQLITE_SCHEMA"},   {18, "SQLITE_TOOBIG"},   {19, "SQLITE_CONSTRAINT"},
        {20, "SQLITE_MISMATCH"},   {21, "SQLITE_MISUSE"},   {22, "SQLITE_NOLFS"},    {23, "SQLITE_AUTH"},
        {24, "SQLITE_FORMAT"},     {25, "SQLITE_RANGE"},    {100, "SQLITE_ROW"},     {101, "SQLITE_DONE"},
        {1000, "CPPSQLITE_ERROR"},
    };
    for (const auto& [code, name] : table) EXPECT_STREQ(CppSQLite3Exception::errorCodeAsString(code), name);
}

// The leak sanitizer sees a message that is not released, the address sanitizer one that is released twice.
TEST(CppSQLite3Exception, MessageOfSqliteIsReleasedOnRequest) {
    char* message = sqlite3_mprintf("from SQLite");
    EXPECT_STREQ(CppSQLite3Exception(1, message, true).errorMessage(), "SQLITE_ERROR[1]: from SQLite");
}

TEST(CppSQLite3Exception, MessageStaysTheCallersOtherwise) {
    char text[] = "mine";
    EXPECT_STREQ(CppSQLite3Exception(1, text, false).errorMessage(), "SQLITE_ERROR[1]: mine");
    EXPECT_STREQ(text, "mine");
}

TEST(CppSQLite3Exception, CopyOutlivesTheOriginal) {
    std::optional<CppSQLite3Exception> original(std::in_place, 5, "database is locked");
    const CppSQLite3Exception copy(*original);
    CppSQLite3Exception assigned(1, "other");
    assigned = *original;
    original.reset();
    EXPECT_EQ(copy.errorCode(), 5);
    EXPECT_STREQ(copy.errorMessage(), "SQLITE_BUSY[5]: database is locked");
    EXPECT_EQ(assigned.errorCode(), 5);
    EXPECT_STREQ(assigned.errorMessage(), "SQLITE_BUSY[5]: database is locked");
}

TEST(CppSQLite3Exception, LongMessageIsNotCut) {
    const std::string message(5000, 'm');
    EXPECT_EQ(CppSQLite3Exception(19, message.c_str()).errorMessage(), "SQLITE_CONSTRAINT[19]: " + message);
}

}  // namespace
