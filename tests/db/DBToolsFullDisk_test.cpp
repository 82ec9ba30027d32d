// What a disk that is full, or fails behind a commit, leaves of single operations.
#include "tests/db/DbTestSupport.h"

#include <filesystem>
#include <optional>

namespace {

using namespace qfc::test;

using DBToolsFolderSync = LibraryTest;

// The one false that hides a change: the deletion of the journal is the commit, and the sync of the folder behind it
// failed. What was written is seen, and by the same object, too.
TEST_F(DBToolsFolderSync, FailingBehindTheCommitIsFalseAndTheChangeStays) {
    const int folder = AddFolder("a", AddGallery(1));
    int hidden = 0;
    for (int n = 1;; ++n) {
        m_disk.FailAt(n, false);
        m_disk.FailDeletesBehindTheAct();
        const bool result = AddItem(n, folder, n, Noise(9000));
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        const bool stored = Count("ITEM_TABLE where ITEM_ID = " + Literal(MakeGuid(n))) == "1";
        EXPECT_NE(result, failed) << "call " << n;
        EXPECT_TRUE(stored || !result) << "call " << n;
        CppSQLite3Query query;
        EXPECT_TRUE(m_tools->QueryItem(MakeGuid(n), query)) << "call " << n;
        EXPECT_NE(query.eof(), stored) << "call " << n;
        const std::string rows = stored ? "1" : "0";
        EXPECT_EQ(Count("RELATION_TABLE where ITEM_ID = " + Literal(MakeGuid(n))), rows) << "call " << n;
        EXPECT_EQ(Count("CACHE_DATA_TABLE where ITEM_ID = " + Literal(MakeGuid(n))), rows) << "call " << n;
        EXPECT_TRUE(AddItem(1000 + n, folder, n)) << "call " << n;
        if (HasFailure() || !failed) break;
        if (stored) ++hidden;
    }
    EXPECT_EQ(hidden, 1);
}

using DBToolsFullDisk = LibraryTest;

// What was acknowledged while the disk filled up is there, and nothing else; with space back it goes on.
TEST_F(DBToolsFullDisk, EveryAcknowledgedAddIsStored) {
    const int folder = AddFolder("a", AddGallery(1));
    m_disk.LimitSpace(300000);
    int acknowledged = 0;
    int refused = 0;
    for (int number = 1; number <= 60; ++number) {
        (AddItem(number, folder, number, Noise(12000, static_cast<unsigned>(number))) ? acknowledged : refused) += 1;
    }
    EXPECT_GT(acknowledged, 5);
    EXPECT_GT(refused, 5);
    EXPECT_EQ(Count("ITEM_TABLE"), std::to_string(acknowledged));
    EXPECT_EQ(Count("RELATION_TABLE"), std::to_string(acknowledged));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), std::to_string(acknowledged));
    m_disk.Heal();
    EXPECT_TRUE(AddItem(99, folder, 99, Noise(12000)));
    EXPECT_EQ(Count("ITEM_TABLE"), std::to_string(acknowledged + 1));
}

TEST_F(DBToolsFullDisk, ExportThatDoesNotFitIsFalse) {
    ASSERT_TRUE(AddItem(1, AddGallery(1), 0, Noise(100000)));
    const std::string before = DumpOf(m_path);
    m_disk.LimitSpace(50000);
    EXPECT_FALSE(m_tools->ExportDatabase((m_folder / "export.db").c_str()));
    m_disk.Heal();
    EXPECT_EQ(DumpOf(m_path), before);
    EXPECT_TRUE(m_tools->ExportDatabase((m_folder / "export.db").c_str()));
}

TEST_F(DBToolsFullDisk, NewLibraryThatDoesNotFitIsNotOpened) {
    m_disk.LimitSpace(20000);
    bool ok = true;
    const DBTools tools(CString((m_folder / "other.db").c_str()), ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(m_disk.HasFailed());
}

}  // namespace
