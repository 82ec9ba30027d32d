#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <system_error>
#include <thread>

namespace {

namespace fs = std::filesystem;
using qfc::test::RawDb;

class LibrarySeeding : public qfc::test::StoppedServiceFixture {};

TEST_F(LibrarySeeding, AMissingLibrary_IsSeededFromTheTemplate) {
    MakeTemplate();
    ASSERT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("SEED where N = 42"), 1);
    EXPECT_EQ(CountRows("sqlite_master where name = 'GALLERY_TABLE'"), 1);
    // Nothing of the copying is left behind.
    EXPECT_EQ(std::distance(fs::directory_iterator(DataFolder()), fs::directory_iterator()), 1);
}

TEST_F(LibrarySeeding, TheTemplateFolderIsFoundInLowerCaseToo) {
    MakeTemplate();
    fs::rename(TemplateFile().parent_path(), HostFolder() / "orvel.dat");
    ASSERT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("SEED where N = 42"), 1);
}

// The journal of a transaction that never ended, of a library that is gone.
TEST_F(LibrarySeeding, AJournalOfALostLibrary_IsNotRolledIntoTheSeed) {
    MakeTemplate();
    {
        RawDb lost(Scratch() / "lost.db");
        lost.Exec(
            "create table SEED(N, FILL); with recursive C(I) as (select 1 union all select I + 1 from C limit 400)"
            " insert into SEED select 1, randomblob(500) from C");
        // The schema and the root page change first, then so much that the journal has to be synced.
        lost.Exec(
            "pragma cache_size = 2; begin; create table LATER(N); delete from SEED where rowid <= 300; "
            "update SEED set N = 2, FILL = randomblob(500)");
        fs::copy_file(Scratch() / "lost.db-journal", DatabaseFile().string() + "-journal");
        lost.Exec("rollback");
    }
    ASSERT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("SEED where N = 42"), 1);
    EXPECT_EQ(RawDb(DatabaseFile()).Cell("pragma integrity_check"), "'ok'");
}

// Whoever only moved the library aside for a moment needs them.
TEST_F(LibrarySeeding, JournalsOfALostLibrary_AreKeptUnderAnotherName) {
    for (const bool bTemplate : {false, true}) {
        SCOPED_TRACE(bTemplate);
        if (bTemplate) MakeTemplate();
        fs::remove(DatabaseFile());
        for (const char* pszSuffix : {"-journal", "-wal"}) {
            fs::remove(DatabaseFile().string() + pszSuffix + ".lost");
            std::ofstream(DatabaseFile().string() + pszSuffix) << "unfinished" << pszSuffix << bTemplate;
        }
        ASSERT_EQ(Start(), 1);
        ASSERT_EQ(Stop(), 1);
        for (const char* pszSuffix : {"-journal", "-wal"}) {
            std::ifstream kept(DatabaseFile().string() + pszSuffix + ".lost");
            std::string text;
            EXPECT_TRUE(kept >> text);
            EXPECT_EQ(text, std::string("unfinished") + pszSuffix + (bTemplate ? "1" : "0"));
            EXPECT_FALSE(fs::exists(DatabaseFile().string() + pszSuffix));
        }
    }
}

TEST_F(LibrarySeeding, JournalOfASecondLostLibrary_LeavesTheFirstOnesAlone) {
    const std::string strJournal = DatabaseFile().string() + "-journal";
    for (const char* pszWhich : {"first", "second", "third"}) {
        fs::remove(DatabaseFile());
        std::ofstream(strJournal) << pszWhich;
        ASSERT_EQ(Start(), 1);
        ASSERT_EQ(Stop(), 1);
    }
    const auto textOf = [](const std::string& path) {
        std::string text;
        std::ifstream(path) >> text;
        return text;
    };
    EXPECT_EQ(textOf(strJournal + ".lost"), "first");
    EXPECT_EQ(textOf(strJournal + ".lost2"), "second");
    EXPECT_EQ(textOf(strJournal + ".lost3"), "third");
}

TEST_F(LibrarySeeding, AnExistingLibrary_IsNotSeeded) {
    MakeTemplate();
    RawDb(DatabaseFile()).Exec("create table MINE(N)");
    ASSERT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("MINE"), 0);
    EXPECT_EQ(CountRows("sqlite_master where name = 'SEED'"), 0);
}

// Somebody who knows no turns puts a library there while the template is being copied, which a long template shows.
TEST_F(LibrarySeeding, ALibraryThatAppearsWhileTheTemplateIsCopied_IsNotReplaced) {
    MakeTemplate();
    RawDb(TemplateFile()).Exec("create table LONG(B); insert into LONG values(zeroblob(32 * 1024 * 1024))");
    const fs::path made = Scratch() / "made.db";
    RawDb(made).Exec("create table MINE(N)");
    bool bInTime = false;
    for (int attempt = 0; attempt < 20 && !bInTime; ++attempt) {
        fs::remove(DatabaseFile());
        std::thread other([&] {
            while (fs::is_empty(DataFolder())) std::this_thread::yield();
            std::error_code taken;  // A link never replaces what is there.
            fs::create_hard_link(made, DatabaseFile(), taken);
            bInTime = !taken;
        });
        EXPECT_EQ(Start(), 1);
        other.join();
        if (bInTime) {
            EXPECT_EQ(CountRows("sqlite_master where name = 'MINE'"), 1);
            EXPECT_EQ(CountRows("sqlite_master where name = 'SEED'"), 0);
        }
        EXPECT_EQ(Stop(), 1);
    }
    EXPECT_TRUE(bInTime);
}

TEST_F(LibrarySeeding, AReadOnlyTemplate_GivesALibraryThatCanBeWritten) {
    MakeTemplate();
    fs::permissions(TemplateFile(), fs::perms::owner_read);
    ASSERT_EQ(Start(), 1);
    EXPECT_NE(fs::status(DatabaseFile()).permissions() & fs::perms::owner_write, fs::perms::none);
}

TEST_F(LibrarySeeding, WithoutTemplate_AnEmptyLibraryIsMade) {
    ASSERT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("sqlite_master where type = 'table' and name like '%TABLE'"), 13);
}

TEST_F(LibrarySeeding, ATemplateThatCannotBeCopied_IsIgnored) {
    fs::create_directories(TemplateFile());  // A folder of that name.
    ASSERT_EQ(Start(), 1);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), 0);
}

}  // namespace
