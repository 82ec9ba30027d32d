#include "platform/text/CodePages.h"
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"

#include <gtest/gtest.h>

namespace {

using Manager = QFCLibraryManager;

using qfc::test::RawDb;

class EntriesAutoLoaded : public qfc::test::LibraryFixture {
protected:
    void TearDown() override {
        qfc::SetAnsiCodePage("UTF-8");
        LibraryFixture::TearDown();
    }

    const GUID m_item{1, 2, 3, {4, 5, 6}};
};

TEST_F(EntriesAutoLoaded, AnItem_IsKnownInTheFolderItWasLoadedIntoOnly) {
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, 7), 0);
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, 7), 1);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, 7), 1);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, 8), 0);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(GUID{9, 9, 9, {}}, 7), 0);
}

TEST_F(EntriesAutoLoaded, AFile_IsFoundInAnyCase) {
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("C:\\Media\\RAIN.Avi", 7), 1);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("c:\\media\\rain.avi", 7), 1);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("C:\\MEDIA\\Rain.AVI", 7), 1);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("C:\\Media\\Rain.Avi", 8), 0);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("C:\\Media\\Snow.avi", 7), 0);
    EXPECT_EQ(CountRows("ITEM_AUTO_LOADED_TABLE where FILE_PATH = 'c:\\media\\rain.avi'"), 1);
}

TEST_F(EntriesAutoLoaded, APathBeyondAscii_IsFoundInAnyCase) {
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("/media/\xC3\x84pfel.png", 7), 1);  // A with dots
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("/MEDIA/\xC3\xA4pfel.png", 7), 1);
}

// Katakana: A and a small kind of it end in the letters A and a.
TEST_F(EntriesAutoLoaded, ASecondByteThatLooksLikeALetter_HasNoCase) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP932"));
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("C:\\\x83\x41.WAV", 7), 1);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("c:\\\x83\x41.wav", 7), 1);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("C:\\\x83\x61.WAV", 7), 0);
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("C:\\\x83\x61.WAV", 7), 1);
    EXPECT_EQ(CountRows("ITEM_AUTO_LOADED_TABLE"), 2);
}

TEST_F(EntriesAutoLoaded, ItemsAndFilesOfOneFolder_AreRowsOfTheirOwn) {
    ASSERT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, 7), 1);
    for (const char* path : {"a.avi", "b.avi", "a.avi"}) {
        ASSERT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable(path, 7), 1);
    }
    EXPECT_EQ(CountRows("ITEM_AUTO_LOADED_TABLE"), 3);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, 7), 1);
}

// Rows of items have an empty path.
TEST_F(EntriesAutoLoaded, AnEmptyPath_IsFoundWhereItemsWereLoaded_AndNoneIsTheSame) {
    for (const char* path : {"", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable(path, 7), 0);
    }
    ASSERT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, 7), 1);
    for (const char* path : {"", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable(path, 7), 1);
    }
}

TEST_F(EntriesAutoLoaded, NumbersArePassedThroughAsGiven) {
    for (const int folder : {0, -1, -2147483647 - 1, 2147483647}) {
        EXPECT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, folder), 1);
        EXPECT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("a.avi", folder), 1);
        EXPECT_EQ(CountRows("ITEM_AUTO_LOADED_TABLE where FOLDER_ID = " + std::to_string(folder)), 2);
        EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, folder), 1);
        EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("A.AVI", folder), 1);
    }
}

TEST_F(EntriesAutoLoaded, AreKnownAfterARestart) {
    ASSERT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, 7), 1);
    ASSERT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("Rain.avi", 7), 1);
    Restart();
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, 7), 1);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("rain.AVI", 7), 1);
}

TEST_F(EntriesAutoLoaded, WhileStopped_EveryFunctionIsZero) {
    ASSERT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, 7), 1);
    ASSERT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("a.avi", 7), 1);
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, 8), 0);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, 7), 0);
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("b.avi", 7), 0);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("a.avi", 7), 0);
    EXPECT_EQ(CountRows("ITEM_AUTO_LOADED_TABLE"), 2);
}

TEST_F(EntriesAutoLoaded, WithoutTheirTable_EveryFunctionIsZero) {
    RawDb(DatabaseFile()).Exec("drop table ITEM_AUTO_LOADED_TABLE");
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, 7), 0);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, 7), 0);
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("a.avi", 7), 0);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("a.avi", 7), 0);
}

TEST_F(EntriesAutoLoaded, ARowThatIsRefused_IsZeroAndNotKnown) {
    RawDb(DatabaseFile())
        .Exec("create trigger REFUSE before insert on ITEM_AUTO_LOADED_TABLE begin select raise(fail, 'refused'); end");
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedTable(m_item, 7), 0);
    EXPECT_EQ(Manager::fnAddItemIntoAutoLodedByPathTable("a.avi", 7), 0);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedTable(m_item, 7), 0);
    EXPECT_EQ(Manager::fnIsItemInAutoLoadedByPathTable("a.avi", 7), 0);
}

// They run on the calling thread, which may be the worker.
TEST_F(EntriesAutoLoaded, MayBeUsedInACallback) {
    int nKnown = 0;
    Listen("mark", [&](QFCLibCallbackParam* pParam) {
        Manager::fnAddItemIntoAutoLodedTable(pParam->guidItem, 7);
        nKnown += Manager::fnIsItemInAutoLoadedTable(pParam->guidItem, 7);
        return 1;
    });
    ASSERT_EQ(Manager::fnAddItemAsync(m_hMedia, {"Clips"}, NewItem("Rain"), 0), 1);
    Settle();
    EXPECT_GE(nKnown, 1);
}

}  // namespace
