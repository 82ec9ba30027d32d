#include "db/LibrarySnapshot.h"

#include "tests/db/DbTestSupport.h"
#include "tests/support/MemoryFaults.h"

#include <filesystem>

namespace {

using namespace qfc::test;

class LibrarySnapshotTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        ASSERT_TRUE(AddItem(1, AddGallery(1), 0, Noise(100000)));
    }

    int Snapshot() { return fnSnapshotLibrary(m_path.c_str(), m_target.c_str()); }
    std::size_t Files() const { return m_folder.Entries().size(); }

    std::string m_target = m_folder / "copy.db";
};

TEST_F(LibrarySnapshotTest, CopiesALibraryInUseAndLeavesItAlone) {
    const std::string before = ReadFile(m_path);
    EXPECT_EQ(Snapshot(), 1);
    EXPECT_EQ(DumpOf(m_target), DumpOf(m_path));
    EXPECT_EQ(ReadFile(m_path), before);
    EXPECT_EQ(Files(), 2U);
}

TEST_F(LibrarySnapshotTest, ReplacesTheTarget) {
    m_folder.Write("copy.db", "something else");
    EXPECT_EQ(Snapshot(), 1);
    EXPECT_EQ(DumpOf(m_target), DumpOf(m_path));
}

// An old target whose writer was killed in the middle of a commit.
TEST_F(LibrarySnapshotTest, TargetWithUnfinishedBusinessIsLeftAsItIs) {
    {
        RawDb old(m_folder / "old.db");
        old.Exec(
            "CREATE TABLE X(N); INSERT INTO X VALUES(zeroblob(500000)); PRAGMA cache_size = 1; BEGIN EXCLUSIVE;"
            "DELETE FROM X; INSERT INTO X VALUES(zeroblob(500000))");
        std::filesystem::copy_file(m_folder / "old.db", m_target);
        std::filesystem::copy_file(m_folder / "old.db-journal", m_target + "-journal");
    }
    const std::string torn = ReadFile(m_target);
    EXPECT_EQ(Snapshot(), 0);
    EXPECT_EQ(ReadFile(m_target), torn);
    EXPECT_EQ(Files(), 4U);
    // Whoever opens it finishes the business, and then it can be replaced.
    EXPECT_EQ(RawDb(m_target).Cell("select count(*) from X"), "1");
    EXPECT_EQ(Snapshot(), 1);
    EXPECT_EQ(DumpOf(m_target), DumpOf(m_path));
}

TEST_F(LibrarySnapshotTest, TargetWithALogBesideItIsLeftAsItIs) {
    for (const bool exists : {false, true}) {
        if (exists) m_folder.Write("copy.db", "something else");
        m_folder.Write("copy.db-wal", "newer pages");
        EXPECT_EQ(Snapshot(), 0);
        EXPECT_EQ(std::filesystem::exists(m_target), exists);
        EXPECT_EQ(ReadFile(m_target + "-wal"), "newer pages");
    }
}

TEST_F(LibrarySnapshotTest, EmptyJournalBesideTheTargetMeansNothing) {
    m_folder.Write("copy.db-journal", "");
    EXPECT_EQ(Snapshot(), 1);
    EXPECT_EQ(DumpOf(m_target), DumpOf(m_path));
}

TEST_F(LibrarySnapshotTest, SourceWithALogBesideItIsRefused) {
    m_tools.reset();
    m_folder.Write("library.db-wal", "newer pages");
    EXPECT_EQ(Snapshot(), 0);
    EXPECT_EQ(Files(), 2U);
    EXPECT_EQ(ReadFile(m_path + "-wal"), "newer pages");
}

// A fault while the header is looked at says nothing about the file: a log would be left beside it.
TEST_F(LibrarySnapshotTest, SourceWithALogFailsAtEveryRead) {
    m_tools.reset();
    MarkAsWritingAhead(m_path);
    for (int n = 1;; ++n) {
        m_disk.FailAt(n, false, FaultVfs::Counted::kEverything);
        EXPECT_EQ(Snapshot(), 0) << "call " << n;
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        EXPECT_EQ(Files(), 1U) << "call " << n;
        if (HasFailure() || !failed) break;
    }
}

TEST_F(LibrarySnapshotTest, BusySourceIsWaitedForAndThenGivenUp) {
    RawDb writer(m_path);
    writer.Exec("BEGIN EXCLUSIVE");
    m_disk.SkipWaits();
    EXPECT_EQ(Snapshot(), 0);
    EXPECT_EQ(Files(), 1U);
    writer.Exec("ROLLBACK");
    EXPECT_EQ(Snapshot(), 1);
}

TEST_F(LibrarySnapshotTest, FailureKeepsTheTargetAndLeavesNoTrace) {
    m_folder.Write("copy.db", "something else");
    m_disk.LimitSpace(30000);
    EXPECT_EQ(Snapshot(), 0);
    m_disk.Heal();
    EXPECT_EQ(ReadFile(m_target), "something else");
    EXPECT_EQ(Files(), 2U);
}

TEST_F(LibrarySnapshotTest, FailingAtAnyCallGivesTheOldTargetOrTheWholeCopy) {
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            m_folder.Write("copy.db", "something else");
            m_disk.FailAt(n, sticky);
            const int result = Snapshot();
            const bool failed = m_disk.HasFailed();
            m_disk.Heal();
            if (result == 1) {
                EXPECT_EQ(DumpOf(m_target), DumpOf(m_path)) << "call " << n;
            } else {
                EXPECT_EQ(ReadFile(m_target), "something else") << "call " << n;
            }
            EXPECT_EQ(Files(), 2U) << "call " << n;
            if (HasFailure() || !failed) break;
        }
    }
}

TEST_F(LibrarySnapshotTest, SourceMustBeADatabaseThatIsThere) {
    EXPECT_EQ(fnSnapshotLibrary((m_folder / "missing.db").c_str(), m_target.c_str()), 0);
    EXPECT_EQ(fnSnapshotLibrary(m_folder.Write("text", std::string(2000, 'x')).c_str(), m_target.c_str()), 0);
    EXPECT_EQ(fnSnapshotLibrary(nullptr, m_target.c_str()), 0);
    EXPECT_FALSE(std::filesystem::exists(m_target));
    EXPECT_EQ(Files(), 2U);
}

TEST_F(LibrarySnapshotTest, TargetMustBeAnotherFileInAFolderThatIsThere) {
    const std::string before = ReadFile(m_path);
    EXPECT_EQ(fnSnapshotLibrary(m_path.c_str(), m_path.c_str()), 0);
    EXPECT_EQ(fnSnapshotLibrary(m_path.c_str(), (m_folder.Path() + "/./library.db").c_str()), 0);
    EXPECT_EQ(fnSnapshotLibrary(m_path.c_str(), (m_folder / "missing/copy.db").c_str()), 0);
    EXPECT_EQ(fnSnapshotLibrary(m_path.c_str(), ""), 0);
    EXPECT_EQ(fnSnapshotLibrary(m_path.c_str(), nullptr), 0);
    EXPECT_EQ(ReadFile(m_path), before);
    EXPECT_EQ(Files(), 1U);
}

TEST_F(LibrarySnapshotTest, WithoutMemoryAtAnyCallGivesTheOldTargetOrTheWholeCopy) {
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            m_folder.Write("copy.db", "something else");
            int result = 0;
            bool failed = false;
            {
                const MemoryFaults faults(n, sticky);
                result = Snapshot();
                failed = faults.HasFailed();
            }
            if (result == 1) {
                EXPECT_EQ(DumpOf(m_target), DumpOf(m_path)) << "call " << n;
            } else {
                EXPECT_EQ(ReadFile(m_target), "something else") << "call " << n;
            }
            EXPECT_EQ(Files(), 2U) << "call " << n;
            if (HasFailure() || !failed) break;
        }
    }
}

}  // namespace
