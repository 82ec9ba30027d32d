#include "items/Handles.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <thread>

namespace {

namespace fs = std::filesystem;
using Manager = QFCLibraryManager;
using qfc::AsGallery;
using qfc::test::DumpOf;
using qfc::test::IdsOf;
using qfc::test::RawDb;

class EntriesDatabase : public qfc::test::LibraryFixture {};

// --- Export, clear, list -----------------------------------------------------------------------------------------

TEST_F(EntriesDatabase, ExportDB_WritesTheSameContents) {
    AddItem("Sunrise");
    const fs::path copy = Scratch() / "copy.db";
    EXPECT_EQ(Manager::fnExportDB(copy.c_str()), 1);
    EXPECT_EQ(DumpOf(copy), DumpOf(DatabaseFile()));
}

TEST_F(EntriesDatabase, ExportDB_IntoAMissingFolder_Fails) {
    EXPECT_EQ(Manager::fnExportDB((Scratch() / "missing" / "copy.db").c_str()), 0);
    EXPECT_EQ(Manager::fnExportDB(nullptr), 0);
}

TEST_F(EntriesDatabase, ExportDB_WhileStopped_FailsAndWritesNothing) {
    Restart();
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    EXPECT_EQ(Manager::fnExportDB((Scratch() / "copy.db").c_str()), 0);
    EXPECT_FALSE(fs::exists(Scratch() / "copy.db"));
}

TEST_F(EntriesDatabase, ClearDBContent_WhileStarted_IsRefusedAndChangesNothing) {
    AddItem("Sunrise");
    const std::string before = DumpOf(DatabaseFile());
    EXPECT_EQ(Manager::fnClearDBContent(), 0);
    EXPECT_EQ(DumpOf(DatabaseFile()), before);
}

TEST_F(EntriesDatabase, ClearDBContent_DropsEverythingButTheTags) {
    AddItem("Sunrise");
    RawDb(DatabaseFile()).Exec("insert into LIB_TAG_TABLE(TAG_NAME, TAG_GUID) values('blue', X'01')");
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    EXPECT_EQ(Manager::fnClearDBContent(), 1);
    EXPECT_EQ(CountRows("sqlite_master where name = 'ITEM_TABLE'"), 0);
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), 1);

    ASSERT_EQ(Manager::fnStartService(), 1);  // Brings the tables back.
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
    EXPECT_EQ(Manager::fnLoadGallery(kMedia), 0u);
    EXPECT_NE(Manager::fnCreateGallery(kMedia, "Media", 0, 0, 0), 0u);
}

TEST_F(EntriesDatabase, ClearDBContent_OfAFileThatCannotBeOpened_Fails) {
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    std::ofstream(DatabaseFile(), std::ios::binary) << std::string(4096, 'x');
    EXPECT_EQ(Manager::fnClearDBContent(), 0);
}

TEST_F(EntriesDatabase, ListGalleries_GivesIdsAndNames) {
    Manager::fnCreateGallery(7, "Seven", 0, 0, 0);
    Manager::fnCreateGallery(3, "Three", 0, 0, 0);
    std::vector<qfc::StoredGallery> galleries;
    ASSERT_EQ(Manager::fnListGalleries(galleries), 1);
    EXPECT_EQ(IdsOf(galleries), (std::vector<int>{1, 3, 7}));
    EXPECT_EQ(galleries[1].name, "Three");
    EXPECT_EQ(galleries[0].rootFolder, AsGallery(m_hMedia)->GetDBId());
}

TEST_F(EntriesDatabase, ListGalleries_WhileStopped_FailsAndKeepsTheList) {
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    std::vector<qfc::StoredGallery> galleries(2);
    EXPECT_EQ(Manager::fnListGalleries(galleries), 0);
    EXPECT_EQ(galleries.size(), 2u);
}

// --- On the calling thread -----------------------------------------------------------------------------------------

// The database is not closed under a function that uses it.
TEST_F(EntriesDatabase, DirectFunctions_MayMeetAnyStartAndStop) {
    qfc::test::CloseAllGalleries();
    std::atomic<bool> done = false;
    const fs::path copy = Scratch() / "copy.db";
    std::thread exporting([&] {
        while (!done) {
            const bool bExported = Manager::fnExportDB(copy.c_str()) != 0;
            EXPECT_TRUE(!bExported || fs::exists(copy));
        }
    });
    std::thread listing([&] {
        while (!done) {
            std::vector<qfc::StoredGallery> galleries;
            const bool bListed = Manager::fnListGalleries(galleries) != 0;
            EXPECT_EQ(galleries.size(), bListed ? 1u : 0u);
        }
    });
    for (int cycle = 0; cycle < 10; ++cycle) {
        EXPECT_EQ(Manager::fnStopService(), 1);
        EXPECT_EQ(Manager::fnStartService(), 1);
    }
    done = true;
    exporting.join();
    listing.join();
}

TEST_F(EntriesDatabase, DirectFunctions_WorkInsideACallback) {
    AddItem("Sunrise");
    const fs::path copy = Scratch() / "copy.db";
    std::vector<qfc::StoredGallery> galleries;
    int listed = 0;
    int exported = 0;
    int cleared = 1;
    int ended = 0;
    Listen("callback", [&](QFCLibCallbackParam*) {
        if (ended != 0) return 1;
        listed = Manager::fnListGalleries(galleries);
        exported = Manager::fnExportDB(copy.c_str());
        cleared = Manager::fnClearDBContent();
        ended = Manager::EndDbSession4ImportLib(Manager::StartDbSession4ImportLib(copy.c_str()));
        return 1;
    });
    Settle();
    EXPECT_EQ(listed, 1);
    EXPECT_EQ(IdsOf(galleries), (std::vector<int>{kMedia}));
    EXPECT_EQ(exported, 1);
    EXPECT_EQ(cleared, 0);
    EXPECT_EQ(ended, 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 1);
}

}  // namespace
