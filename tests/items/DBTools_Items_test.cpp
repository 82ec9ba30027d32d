#include "folders/GalleryFile.h"
#include "items/CQItem.h"
#include "items/ItemRows.h"
#include "items/ItemTypes.h"
#include "platform/compress/Compression.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/SqlTrace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>

namespace {

using namespace qfc::test;

TEST(ItemRows, RowTakesEveryStoredField) {
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    const qfc::ItemRow row = qfc::RowOf(*pItem);
    EXPECT_EQ(row.currentThumbFrame, 4);
    EXPECT_EQ(row.originalThumbFrame, 5);
    EXPECT_EQ(row.bbid, 77);
    EXPECT_EQ(row.itemType, 1);
    EXPECT_EQ(row.name, "Item 1");
    EXPECT_EQ(row.description, "2020 1 2 3 4 5 2020 1 2 3 4 6");
    EXPECT_EQ(row.annotation, "a note");
    EXPECT_EQ(row.fileName, "C:\\media\\clip.avi");
    EXPECT_EQ(row.attributes, 1);
    EXPECT_EQ(row.templatePath, "C:\\templates\\one");
    EXPECT_EQ(row.timestamp, 1'600'000'000);
    EXPECT_EQ(row.filmSize, 900);
    EXPECT_EQ(row.frameSize, 300);
    EXPECT_EQ(row.deletable, 1);
    EXPECT_TRUE(row.itemId == GuidOf(1));
}

TEST(ItemRows, PayloadsComeInTheirOrderOfWriting) {
    const LibraryFile library;
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    const auto payloads = qfc::PayloadsOf(*pItem, *library.Tools());
    ASSERT_EQ(payloads.size(), 3u);
    EXPECT_EQ(payloads[0].kind, qfc::kBlackBox);
    EXPECT_EQ(payloads[1].kind, qfc::kFilm);
    EXPECT_EQ(payloads[2].kind, qfc::kBitmapCache);
    EXPECT_EQ(payloads[0].rawSize, 3000);
    EXPECT_EQ(payloads[1].rawSize, 900);
}

class DBTools_Items : public testing::Test {
protected:
    std::string Cell(const std::string& sql) { return m_library.Raw().Cell(sql); }
    std::string Kinds(LibraryFile& library, unsigned nItem = 1) {
        return library.Raw().Cell(
            "select group_concat(CACHE_DATA_TYPE) from (select CACHE_DATA_TYPE from CACHE_DATA_TABLE where ITEM_ID = " +
            BlobLiteral(GuidOf(nItem)) + " order by 1)");
    }
    CurrentLibrary m_library;
};

TEST_F(DBTools_Items, AddedItem_HasRowPlacementAndPayloads) {
    StoredTree tree(m_library.Tools());
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    ASSERT_TRUE(m_library.Tools()->AddItemDb(pItem.get(), tree.pA, 6));
    EXPECT_EQ(Cell("select ITEM_NAME from ITEM_TABLE"), "'Item 1'");
    EXPECT_EQ(Cell("select FILM_SIZE from ITEM_TABLE"), "900");
    EXPECT_EQ(Cell("select FRAME_SIZE from ITEM_TABLE"), "300");
    EXPECT_EQ(Cell("select PARENT_ID from RELATION_TABLE"), std::to_string(tree.pA->GetDBId()));
    EXPECT_EQ(Cell("select ITEM_INDEX from RELATION_TABLE"), "6");
    EXPECT_EQ(Kinds(m_library), "'0,1,2'");
}

TEST_F(DBTools_Items, NullArguments_AreRefused) {
    CQItem item;
    CQFolder folder;
    EXPECT_FALSE(m_library.Tools()->AddItemDb(nullptr, &folder, 0));
    EXPECT_FALSE(m_library.Tools()->AddItemDb(&item, nullptr, 0));
    EXPECT_FALSE(m_library.Tools()->UpdateItemDB(nullptr));
    EXPECT_FALSE(m_library.Tools()->ReOrderItemsDb(nullptr, &folder, 0));
    EXPECT_FALSE(m_library.Tools()->ReOrderItemsDb(&item, nullptr, 0));
    EXPECT_FALSE(m_library.Tools()->UpdateCacheData(nullptr, 0));
}

TEST_F(DBTools_Items, UpdatedItem_HasRowAndPayloadsButNoPlacement) {
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    ASSERT_TRUE(m_library.Tools()->UpdateItemDB(pItem.get()));
    EXPECT_EQ(Cell("select count(*) from ITEM_TABLE"), "1");
    EXPECT_EQ(Cell("select count(*) from RELATION_TABLE"), "0");
    EXPECT_EQ(Kinds(m_library), "'0,1,2'");
}

TEST_F(DBTools_Items, ReorderedItem_MovesWithinTheFolder) {
    StoredTree tree(m_library.Tools());
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    ASSERT_TRUE(m_library.Tools()->AddItemDb(pItem.get(), tree.pA, 6));
    ASSERT_TRUE(m_library.Tools()->ReOrderItemsDb(pItem.get(), tree.pA, 2));
    EXPECT_EQ(Cell("select group_concat(ITEM_INDEX) from RELATION_TABLE"), "'2'");
}

TEST_F(DBTools_Items, OneKindUpdated_WritesThatKindOnly) {
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    EXPECT_TRUE(m_library.Tools()->UpdateCacheData(pItem.get(), 2, 0));
    EXPECT_EQ(Kinds(m_library), "'2'");
}

TEST_F(DBTools_Items, UnknownKindUpdated_IsFalse) {
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    EXPECT_FALSE(m_library.Tools()->UpdateCacheData(pItem.get(), 3));
    EXPECT_FALSE(m_library.Tools()->UpdateCacheData(pItem.get(), -1));
}

TEST_F(DBTools_Items, KindWithoutPayload_WritesNothingAndIsTrue) {
    CQItem item;
    item.fnSetDbTools(m_library.Tools());
    EXPECT_TRUE(m_library.Tools()->UpdateCacheData(&item, 1));
    EXPECT_EQ(Cell("select count(*) from CACHE_DATA_TABLE"), "0");
}

TEST_F(DBTools_Items, PayloadWrittenTwice_HasOneRow) {
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    ASSERT_TRUE(m_library.Tools()->UpdateItemDB(pItem.get()));
    GiveBlackBox(*pItem, Pattern(50));
    ASSERT_TRUE(m_library.Tools()->UpdateItemDB(pItem.get()));
    EXPECT_EQ(Kinds(m_library), "'0,1,2'");
    EXPECT_EQ(Cell("select PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 1"), "50");
}

TEST_F(DBTools_Items, PayloadTakenAway_KeepsItsStoredRow) {
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    pItem->fnSetDbTools(m_library.Tools());
    ASSERT_EQ(pItem->UpdateItemDB(), 1);
    pItem->ChangeBlackBox(nullptr, 0);
    ASSERT_EQ(pItem->UpdateItemDB(), 1);
    EXPECT_EQ(Kinds(m_library), "'0,1,2'");
}

TEST_F(DBTools_Items, FailedWrite_ReportsFalseAndChangesNothing) {
    StoredTree tree(m_library.Tools());
    m_library.Raw().Exec("drop table RELATION_TABLE");
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    EXPECT_FALSE(m_library.Tools()->AddItemDb(pItem.get(), tree.pA, 0));
    EXPECT_EQ(Cell("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Cell("select count(*) from CACHE_DATA_TABLE"), "0");
}

// --- Payloads that are not in memory ---------------------------------------------------------------------------------

class DBTools_UnloadedItems : public DBTools_Items {
protected:
    DBTools_UnloadedItems() {
        StoredTree tree(m_library.Tools());
        EXPECT_EQ(tree.pA->AddItemDb(NewFilledItem(1), 1), 1);
    }
    std::string StoredPayloads(LibraryFile& library) {
        std::string text;
        for (const auto& row : library.Raw().Rows("select * from CACHE_DATA_TABLE order by CACHE_DATA_TYPE, ITEM_ID")) {
            for (const auto& cell : row) text += cell + "|";
        }
        return text;
    }
};

TEST_F(DBTools_UnloadedItems, AddedToASecondFolder_IsOneTransactionAndFetchesNothing) {
    m_library.Close();
    qfc::SetCurrentDBTools(nullptr);
    SqlTrace trace;
    m_library.Open();
    qfc::SetCurrentDBTools(m_library.Tools());
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    ASSERT_NE(pItem, nullptr);
    trace.Clear();
    ASSERT_EQ(tree.pB->AddItemDb(pItem, 1), 1);
    EXPECT_EQ(trace.CountStartingWith("BEGIN"), 1);
    EXPECT_EQ(trace.CountStartingWith("END"), 1);
    EXPECT_EQ(trace.CountStartingWith("ROLLBACK"), 0);
    EXPECT_EQ(trace.CountStartingWith("REPLACE into CACHE_DATA_TABLE"), 0);
    EXPECT_EQ(trace.CountStartingWith("Select * from CACHE_DATA_TABLE"), 0);
    for (const int nKind : {0, 1, 2}) EXPECT_TRUE(pItem->PayloadInMemory(nKind).empty());
}

// Compresses nothing, but looks whether a transaction has begun.
class CompressorThatLooks {
public:
    explicit CompressorThatLooks(const SqlTrace& trace)
        : m_before(qfc::SetCompressionBinding({&Compress, nullptr, nullptr})) {
        s_pTrace = &trace;
        s_nCalls = s_nCallsInside = 0;
    }
    ~CompressorThatLooks() { qfc::SetCompressionBinding(m_before); }

    static inline int s_nCalls = 0;
    static inline int s_nCallsInside = 0;

private:
    static int Compress(unsigned, const void*, unsigned*, void*) {
        ++s_nCalls;
        s_nCallsInside += s_pTrace->CountStartingWith("BEGIN") - s_pTrace->CountStartingWith("END");
        return qfc::kCompressionMissing;
    }

    static inline const SqlTrace* s_pTrace = nullptr;
    qfc::CompressionBinding m_before;
};

TEST_F(DBTools_Items, PayloadsAreCompressedBeforeTheTransactionBegins) {
    m_library.Close();
    qfc::SetCurrentDBTools(nullptr);
    const SqlTrace trace;
    m_library.Open();
    qfc::SetCurrentDBTools(m_library.Tools());
    StoredTree tree(m_library.Tools());
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    const CompressorThatLooks compressor(trace);
    ASSERT_TRUE(m_library.Tools()->AddItemDb(pItem.get(), tree.pA, 0));
    EXPECT_EQ(compressor.s_nCalls, 3);
    ASSERT_TRUE(m_library.Tools()->UpdateItemDB(pItem.get()));
    EXPECT_EQ(compressor.s_nCalls, 6);
    ASSERT_TRUE(m_library.Tools()->UpdateCacheData(pItem.get(), qfc::kFilm));
    EXPECT_EQ(compressor.s_nCalls, 7);
    EXPECT_EQ(compressor.s_nCallsInside, 0);
    EXPECT_EQ(trace.CountStartingWith("REPLACE into CACHE_DATA_TABLE"), 7);
}

// Both databases are traced: the loads are over before the other one's transaction begins.
TEST_F(DBTools_UnloadedItems, WrittenToAnotherLibrary_AreFetchedBeforeItsTransactionBegins) {
    m_library.Close();
    qfc::SetCurrentDBTools(nullptr);
    SqlTrace trace;
    m_library.Open();
    qfc::SetCurrentDBTools(m_library.Tools());
    LibraryFile other("other.db");
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    trace.Clear();
    ASSERT_TRUE(other.Tools()->UpdateItemDB(pItem));
    std::string order;
    for (const std::string& sql : trace.Statements()) {
        if (sql.starts_with("BEGIN")) order += 'b';
        if (sql.starts_with("END")) order += 'e';
        if (sql.starts_with("Select * from CACHE_DATA_TABLE")) order += 'l';
        if (sql.starts_with("REPLACE into CACHE_DATA_TABLE")) order += 'w';
    }
    EXPECT_EQ(order, "blebleblebwwwe");
}

TEST_F(DBTools_UnloadedItems, AddedToASecondFolder_KeepsItsPayloads) {
    const std::string before = StoredPayloads(m_library);
    {
        LoadedTree tree(m_library.Tools());
        ASSERT_EQ(tree.pB->AddItemDb(tree.Item(1), 1), 1);
    }
    EXPECT_EQ(StoredPayloads(m_library), before);
    EXPECT_EQ(Cell("select FILM_SIZE from ITEM_TABLE"), "900");
    EXPECT_EQ(Cell("select count(*) from RELATION_TABLE"), "2");
}

TEST_F(DBTools_UnloadedItems, RenamedAfterARestart_KeepsItsFilm) {
    {
        LoadedTree tree(m_library.Tools());
        CQItem* const pItem = tree.Item(1);
        ASSERT_EQ(pItem->SetItemName("renamed"), 1);
        ASSERT_EQ(pItem->UpdateItemDB(), 1);
    }
    LoadedTree tree(m_library.Tools());
    CQItem* const pItem = tree.Item(1);
    EXPECT_EQ(pItem->GetItemName(), "renamed");
    EXPECT_EQ(pItem->GetFilmSize(), 900u);
    EXPECT_EQ(pItem->GetTotalFilmFrame(), 3u);
    EXPECT_EQ(InMemory(*pItem, qfc::kFilm), Pattern(900, 2));
    EXPECT_NE(pItem->GetBlackBox(), nullptr);
}

TEST_F(DBTools_UnloadedItems, RenamedThroughTheGallery_KeepsItsFilm) {
    {
        LoadedTree tree(m_library.Tools());
        CQItem changed(*tree.Item(1));
        changed.SetItemName("renamed");
        ASSERT_EQ(tree.Gallery().UpdateItemDB(&changed, GuidOf(1), qfc::copy_mask::kFields), 1);
    }
    LoadedTree tree(m_library.Tools());
    EXPECT_EQ(tree.Item(1)->GetItemName(), "renamed");
    EXPECT_EQ(tree.Item(1)->GetTotalFilmFrame(), 3u);
}

TEST_F(DBTools_UnloadedItems, WrittenToAnotherLibrary_IsLoadedFromItsOwnFirst) {
    LibraryFile other("other.db");
    LoadedTree tree(m_library.Tools());
    ASSERT_TRUE(other.Tools()->UpdateItemDB(tree.Item(1)));
    EXPECT_EQ(Kinds(other), "'0,1,2'");
    EXPECT_EQ(StoredPayloads(other), StoredPayloads(m_library));
    EXPECT_EQ(other.Raw().Cell("select FILM_SIZE from ITEM_TABLE"), "900");
}

TEST_F(DBTools_UnloadedItems, WrittenToAnotherLibraryWithoutItsRows_WritesNoPayload) {
    m_library.Raw().Exec("delete from CACHE_DATA_TABLE where CACHE_DATA_TYPE <> 0");
    LibraryFile other("other.db");
    LoadedTree tree(m_library.Tools());
    ASSERT_TRUE(other.Tools()->UpdateItemDB(tree.Item(1)));
    EXPECT_EQ(Kinds(other), "'0'");
}

TEST_F(DBTools_UnloadedItems, PayloadThatCannotBeLoaded_LeavesTheOtherLibrarysRow) {
    LibraryFile other("other.db");
    {
        const std::unique_ptr<CQItem> pOlder(NewFilledItem(1));
        ASSERT_TRUE(other.Tools()->UpdateItemDB(pOlder.get()));
    }
    const std::string before = StoredPayloads(other);
    m_library.Raw().Exec("update CACHE_DATA_TABLE set PRE_COMPRESSED_SIZE = 1");
    LoadedTree tree(m_library.Tools());
    ASSERT_TRUE(other.Tools()->UpdateItemDB(tree.Item(1)));
    EXPECT_EQ(StoredPayloads(other), before);
}

// A gallery file that brings a fresh black box with every load.
class FreshBlackBoxes : public qfc::GalleryFile {
public:
    FreshBlackBoxes() {
        s_current = this;
        qfc::SetGalleryFileSource([](const CQFolder&) -> qfc::GalleryFile* { return s_current; });
    }
    ~FreshBlackBoxes() override { qfc::SetGalleryFileSource(nullptr); }
    int OpenFolderStorage(CQFolder&) override { return 1; }
    int CloseFolderStorage(CQFolder&) override { return 1; }
    int DeleteFolderStorage(CQFolder&) override { return 1; }
    int FlushFolder(CQFolder&) override { return 1; }
    int SaveTreeAndClose(CQFolder&) override { return 1; }
    int DeleteItemStreams(CQFolder&, CQItem&) override { return 1; }
    int LoadBlackBox(CQItem& item) override {
        GiveBlackBox(item, Pattern(5000, 3));
        return 1;
    }
    int LoadFilm(CQItem&) override { return 0; }

private:
    static inline FreshBlackBoxes* s_current = nullptr;
};

class FolderWithPath : public CQFolder {
public:
    FolderWithPath() { m_strFilePath = "lib.gal"; }
};

TEST_F(DBTools_UnloadedItems, LoadOfOneKindThatReplacesAnother_LeavesNothingDangling) {
    FreshBlackBoxes file;
    FolderWithPath folder;
    CQItem item("in a file");
    item.SetParentFolder(&folder);
    GiveBlackBox(item, Pattern(4000));
    item.SetModified(0);
    LibraryFile other("other.db");
    ASSERT_TRUE(other.Tools()->UpdateItemDB(&item));
    CQItem stored;
    stored.SetUniqueID(item.GetUniqueID());
    stored.fnSetDbTools(other.Tools());
    ASSERT_EQ(stored.LoadCacheDataFromDb(1), 1);
    EXPECT_EQ(InMemory(stored, qfc::kBlackBox), Pattern(5000, 3));
}

TEST_F(DBTools_UnloadedItems, GivenStraightToAnotherLibrary_BringsItsPayloads) {
    LibraryFile other("other.db");
    const std::string before = StoredPayloads(m_library);
    std::unique_ptr<CQItem> pItem(new CQItem);
    pItem->SetUniqueID(GuidOf(1));
    pItem->fnSetDbTools(m_library.Tools());
    ASSERT_EQ(pItem->fnLoadItemFromDb(), 1);
    StoredTree tree(other.Tools());
    CQItem* const pGiven = pItem.release();
    ASSERT_EQ(tree.pA->AddItemDb(pGiven, 1), 1);
    EXPECT_EQ(pGiven->fnGetDbTools(), other.Tools());
    EXPECT_EQ(StoredPayloads(other), before);
}

TEST_F(DBTools_UnloadedItems, ItemWithoutTools_WritesItsRowOnly) {
    LibraryFile other("other.db");
    CQItem item("bare");
    ASSERT_TRUE(other.Tools()->UpdateItemDB(&item));
    EXPECT_EQ(other.Raw().Cell("select count(*) from ITEM_TABLE"), "1");
    EXPECT_EQ(other.Raw().Cell("select count(*) from CACHE_DATA_TABLE"), "0");
}

// --- The end of a loaded tree --------------------------------------------------------------------------------------

TEST_F(DBTools_UnloadedItems, TreeClosedAfterTheLibraryWasWithdrawn_FreesItsItems) {
    // Under the leak sanitizer this fails when nobody frees them.
    LoadedTree tree(m_library.Tools());
    ASSERT_NE(tree.Item(1), nullptr);
    qfc::SetCurrentDBTools(nullptr);
}

}  // namespace
