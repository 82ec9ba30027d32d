// Damaged files, what lies beside them, and what an examination does when it cannot be finished.
#include "db/LibraryCheck.h"
#include "db/LibrarySnapshot.h"
#include "tests/db/LibraryCheckTest.h"
#include "tests/support/MemoryFaults.h"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <sqlite3.h>

namespace {

using namespace qfc::test;
using qfc::LibraryFinding;
using Kind = qfc::LibraryFindingKind;

TEST_F(LibraryCheckTest, DamagedPagesAreReported) {
    std::string bytes = ReadFile(m_path);
    for (std::size_t i = 8192; i < bytes.size(); i += 3) bytes[i] = static_cast<char>(bytes[i] ^ 0x55);
    m_folder.Write("library.db", bytes);
    const auto findings = Check();
    EXPECT_TRUE(std::any_of(findings.begin(), findings.end(),
                            [](const LibraryFinding& finding) { return finding.kind == Kind::kDamagedFile; }));
}

// A copy of file and journal in the middle of a commit is what a crash leaves.
TEST_F(LibraryCheckTest, HotJournalNeedsRecoveryAndIsLeftAlone) {
    const std::string torn = m_folder / "torn.db";
    {
        RawDb writer(m_path);
        writer.Exec(
            "PRAGMA cache_size = 1; PRAGMA cache_spill = 1; BEGIN EXCLUSIVE; DELETE FROM CACHE_DATA_TABLE;"
            "INSERT INTO CACHE_DATA_TABLE VALUES(1, 0, zeroblob(500000), 0, x'09')");
        std::filesystem::copy_file(m_path, torn);
        std::filesystem::copy_file(m_path + "-journal", torn + "-journal");
    }
    const std::string file = ReadFile(torn);
    const std::string journal = ReadFile(torn + "-journal");
    ASSERT_FALSE(journal.empty());
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(torn.c_str(), findings), 1);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, Kind::kNeedsRecovery);
    EXPECT_EQ(ReadFile(torn), file);
    EXPECT_EQ(ReadFile(torn + "-journal"), journal);
    EXPECT_EQ(fnSnapshotLibrary(torn.c_str(), (m_folder / "copy.db").c_str()), 0);
}

// Does something at the start of the n-th statement of every connection opened while it lives.
class AtStatement {
public:
    AtStatement(int n, std::function<void()> act) : m_left(n), m_act(std::move(act)) {
        s_current = this;
        sqlite3_auto_extension(reinterpret_cast<void (*)()>(&OnOpen));
    }
    ~AtStatement() {
        sqlite3_cancel_auto_extension(reinterpret_cast<void (*)()>(&OnOpen));
        s_current = nullptr;
    }
    AtStatement(const AtStatement&) = delete;
    AtStatement& operator=(const AtStatement&) = delete;

    bool HasActed() const { return m_left <= 0; }

private:
    static int OnOpen(sqlite3* connection, char**, const sqlite3_api_routines*) {
        return sqlite3_trace_v2(connection, SQLITE_TRACE_STMT, &OnStatement, nullptr);
    }
    static int OnStatement(unsigned, void*, void*, void*) {
        if (s_current != nullptr && --s_current->m_left == 0) s_current->m_act();
        return 0;
    }

    static inline AtStatement* s_current = nullptr;
    int m_left;
    std::function<void()> m_act;
};

// Another host may crash at any moment of the examination. Whatever was found before is worthless then.
TEST_F(LibraryCheckTest, HotJournalThatAppearsDuringTheExamination_IsTheOnlyFinding) {
    Exec("INSERT INTO GALLERY_TABLE VALUES(2, 555)");
    std::string journal;
    {
        RawDb writer(m_path);
        writer.Exec(
            "PRAGMA cache_size = 1; PRAGMA cache_spill = 1; BEGIN EXCLUSIVE; DELETE FROM CACHE_DATA_TABLE;"
            "INSERT INTO CACHE_DATA_TABLE VALUES(1, 0, zeroblob(500000), 0, x'09')");
        journal = ReadFile(m_path + "-journal");
        writer.Exec("ROLLBACK");
    }
    ASSERT_FALSE(journal.empty());
    int examined = 0;
    for (int n = 1;; ++n) {
        std::filesystem::remove(m_path + "-journal");
        std::vector<LibraryFinding> findings;
        bool hasActed = false;
        {
            AtStatement crash(n, [&] { m_folder.Write("library.db-journal", journal); });
            EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 1) << "statement " << n;
            hasActed = crash.HasActed();
        }
        ASSERT_EQ(findings.size(), 1U) << "statement " << n;
        EXPECT_EQ(findings[0].kind, hasActed ? Kind::kNeedsRecovery : Kind::kGalleryIdTwice) << "statement " << n;
        if (!hasActed) break;
        EXPECT_EQ(ReadFile(m_path + "-journal"), journal);
        ++examined;
    }
    EXPECT_GT(examined, 10);
}

TEST_F(LibraryCheckTest, CheckNeverWrites) {
    Exec("INSERT INTO GALLERY_TABLE VALUES(2, 555)");
    const std::string before = ReadFile(m_path);
    Check();
    EXPECT_EQ(ReadFile(m_path), before);
    EXPECT_EQ(m_folder.Entries().size(), 1U);
}

TEST_F(LibraryCheckTest, FileWhoseCheckFailsIsDamageOfTheFile) {
    ExpectFindings(
        "CREATE TABLE FOREIGN_TABLE(N); CREATE INDEX FOREIGN_INDEX ON FOREIGN_TABLE(N); PRAGMA writable_schema = 1;"
        "UPDATE sqlite_master SET sql = 'CREATE INDEX FOREIGN_INDEX ON FOREIGN_TABLE(N COLLATE FOREIGN_ORDER)'"
        " WHERE name = 'FOREIGN_INDEX'",
        {{Kind::kDamagedFile, ""}});
}

TEST(LibraryCheck, FileThatWritesAheadIsReportedAndNothingIsLeftBesideIt) {
    const TempFolder folder;
    const std::string path = folder / "library.db";
    RawDb(path).Exec("PRAGMA journal_mode = WAL; CREATE TABLE ITEM_TABLE(ITEM_ID)");
    ASSERT_EQ(folder.Entries().size(), 1U);
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(path.c_str(), findings), 1);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, Kind::kWriteAheadLog);
    EXPECT_EQ(fnSnapshotLibrary(path.c_str(), (folder / "copy.db").c_str()), 0);
    EXPECT_EQ(folder.Entries().size(), 1U);
}

// SQLite reads a log that merely lies there, though the header knows of none.
TEST_F(LibraryCheckTest, FileWithALogBesideItIsReportedAndLeftAlone) {
    m_folder.Write("library.db-wal", "newer pages");
    ExpectOnly(Kind::kWriteAheadLog);
    EXPECT_EQ(m_folder.Entries().size(), 2U);
    EXPECT_EQ(ReadFile(m_path + "-wal"), "newer pages");
}

// A look for the log that failed has not seen that there is none.
TEST_F(LibraryCheckTest, FileWithALogBesideIt_FailingAtAnyCallIsNotExamined) {
    m_folder.Write("library.db-wal", "newer pages");
    for (int n = 1;; ++n) {
        std::vector<LibraryFinding> findings;
        m_disk.FailAt(n, false, FaultVfs::Counted::kEverything);
        const int result = fnCheckLibrary(m_path.c_str(), findings);
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        // A fault at the close no longer matters.
        EXPECT_TRUE(result == 1 || failed) << "call " << n;
        EXPECT_EQ(findings.size(), result == 1 ? 1U : 0U) << "call " << n;
        EXPECT_TRUE(findings.empty() || findings[0].kind == Kind::kWriteAheadLog) << "call " << n;
        EXPECT_EQ(ReadFile(m_path + "-wal"), "newer pages") << "call " << n;
        if (HasFailure() || !failed) break;
    }
}

TEST_F(LibraryCheckTest, EmptyFileKeepsTheJournalBesideIt) {
    m_folder.Write("library.db", "");
    m_folder.Write("library.db-journal", "unfinished business");
    Check();
    EXPECT_EQ(ReadFile(m_path), "");
    EXPECT_EQ(ReadFile(m_path + "-journal"), "unfinished business");
}

TEST_F(LibraryCheckTest, FileThatWritesAhead_FailingAtAnyReadIsNotExamined) {
    MarkAsWritingAhead(m_path);
    for (int n = 1;; ++n) {
        std::vector<LibraryFinding> findings;
        m_disk.FailAt(n, false, FaultVfs::Counted::kEverything);
        const int result = fnCheckLibrary(m_path.c_str(), findings);
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        // A fault at the close no longer matters.
        EXPECT_TRUE(result == 1 || failed) << "call " << n;
        EXPECT_EQ(findings.size(), result == 1 ? 1U : 0U) << "call " << n;
        EXPECT_TRUE(findings.empty() || findings[0].kind == Kind::kWriteAheadLog) << "call " << n;
        EXPECT_EQ(m_folder.Entries().size(), 1U) << "call " << n;
        if (HasFailure() || !failed) break;
    }
}

// A disk that fails while the file is read says nothing about the file.
TEST_F(LibraryCheckTest, FailingAtAnyReadIsNotDamage) {
    m_disk.FailAt(0, false, FaultVfs::Counted::kEverything);
    EXPECT_TRUE(Check().empty());
    const int calls = m_disk.Calls();
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            std::vector<LibraryFinding> findings;
            m_disk.FailAt(n, sticky, FaultVfs::Counted::kEverything);
            const int result = fnCheckLibrary(m_path.c_str(), findings);
            const bool failed = m_disk.HasFailed();
            m_disk.Heal();
            EXPECT_TRUE(findings.empty()) << "call " << n << ": " << findings[0].sentence;
            // The last calls give up locks.
            EXPECT_TRUE(result == 0 || !sticky || n > calls - 3) << "call " << n << " of " << calls;
            if (HasFailure()) return;
            if (failed) continue;
            EXPECT_EQ(result, 1);
            EXPECT_GT(n, 5);
            break;
        }
    }
}

// SQLite's own check reports damage and pages that it could not read in one answer, and in the same way.
TEST_F(LibraryCheckTest, FailingAtAnyReadOfADamagedFileAddsNothingToItsDamage) {
    Open();
    ASSERT_TRUE(AddItem(3, m_deep, 0, Noise(20000)));
    ASSERT_TRUE(AddItem(4, m_deep, 1, Noise(20000)));
    ASSERT_TRUE(m_tools->DeleteItemFromFolder(MakeGuid(4), m_deep));
    m_tools.reset();
    std::string bytes = ReadFile(m_path);
    bytes[4096] = 0x55;  // The kind of the second page: the root of the first table.
    m_folder.Write("library.db", bytes);
    const auto sentences = [](const std::vector<LibraryFinding>& findings) {
        std::vector<std::string> all;
        for (const LibraryFinding& finding : findings) all.push_back(finding.sentence);
        return all;
    };
    const auto damage = sentences(Check());
    ASSERT_FALSE(damage.empty());
    for (int n = 1;; ++n) {
        std::vector<LibraryFinding> findings;
        m_disk.FailAt(n, false, FaultVfs::Counted::kEverything);
        const int result = fnCheckLibrary(m_path.c_str(), findings);
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        EXPECT_EQ(sentences(findings), result == 1 ? damage : std::vector<std::string>{}) << "call " << n;
        if (HasFailure()) return;
        if (failed) continue;
        EXPECT_EQ(result, 1);
        EXPECT_GT(n, 15);
        break;
    }
}

TEST_F(LibraryCheckTest, WithoutMemoryAtAnyCallNothingIsFound) {
    const std::string before = ReadFile(m_path);
    for (const bool sticky : {false, true}) {
        for (int n = 1;; n += n < 200 ? 1 : 11) {
            std::vector<LibraryFinding> findings;
            bool failed = false;
            {
                const MemoryFaults faults(n, sticky);
                fnCheckLibrary(m_path.c_str(), findings);
                failed = faults.HasFailed();
            }
            ASSERT_TRUE(findings.empty()) << "call " << n << ": " << findings[0].sentence;
            if (!failed) break;
        }
    }
    EXPECT_EQ(ReadFile(m_path), before);
}

TEST_F(LibraryCheckTest, BusyLibraryIsNotExamined) {
    RawDb writer(m_path);
    writer.Exec("BEGIN EXCLUSIVE");
    m_disk.SkipWaits();
    std::vector<LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 0);
    EXPECT_TRUE(findings.empty());
    writer.Exec("ROLLBACK");
    EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 1);
    EXPECT_TRUE(findings.empty());
}

}  // namespace
