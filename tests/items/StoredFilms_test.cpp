#include "items/ItemTypes.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <new>

// Sizes, bytes and rows of payloads that do not agree, and deletions that fail.
namespace qfc::test {
namespace {

class StoredFilms : public ItemRowFixture {
protected:
    // Stored with 900 bytes in frames of 300, and in memory as a load leaves it.
    void LoadFilm() {
        const std::unique_ptr<CQItem> item(NewFilledItem(1));
        ASSERT_TRUE(m_library.Tools()->UpdateItemDB(item.get()));
        ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
        ASSERT_EQ(m_item.LoadCacheDataFromDb(kFilm), 1);
        ASSERT_EQ(m_item.IsModified(), 0);
    }
    // As another process stores it.
    void StoreOtherFilm() {
        const std::unique_ptr<CQItem> other(NewFilledItem(1));
        GiveFilm(*other, Pattern(1200, 9), 400);
        ASSERT_TRUE(m_library.Tools()->UpdateItemDB(other.get()));
    }
};

TEST_F(StoredFilms, LoadedFilm_GoesWhenTheRowTellsOfAnother) {
    LoadFilm();
    StoreOtherFilm();
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.GetFilm(), nullptr);
    EXPECT_EQ(m_item.GetFilmSize(), 1200u);
    EXPECT_EQ(m_item.GetFrameSize(), 400u);
    ASSERT_EQ(m_item.UpdateItemDB(), 1);
    ASSERT_EQ(m_item.LoadCacheDataFromDb(kFilm), 1);
    EXPECT_EQ(InMemory(m_item, kFilm), Pattern(1200, 9));
}

TEST_F(StoredFilms, LoadedFilm_StaysWhileTheRowTellsOfIt) {
    LoadFilm();
    const unsigned char* const film = m_item.GetFilm();
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(m_item.GetFilm(), film);
}

TEST_F(StoredFilms, FilmThatWasNotStored_KeepsBothItsSizes) {
    StoreOtherFilm();
    GiveFilm(m_item, Pattern(900, 2), 300);
    ASSERT_EQ(m_item.fnLoadItemFromDb(), 1);
    EXPECT_EQ(InMemory(m_item, kFilm), Pattern(900, 2));
    EXPECT_EQ(m_item.GetFilmSize(), 900u);
    EXPECT_EQ(m_item.GetFrameSize(), 300u);
}

TEST_F(StoredFilms, MissingCompressedSize_IsThatOfRawBytes) {
    Sql("drop table CACHE_DATA_TABLE");
    Sql("create table CACHE_DATA_TABLE(PRE_COMPRESSED_SIZE, COMPRESSED_SIZE, COMPRESSED_DATA, CACHE_DATA_TYPE, "
        "ITEM_ID)");
    InsertPayload(1, "4", "NULL", "X'01020304'");
    EXPECT_EQ(m_item.LoadCacheDataFromDb(1), 1);
    EXPECT_EQ(InMemory(m_item, kBlackBox), (ByteVector{1, 2, 3, 4}));
}

TEST_F(StoredFilms, SizesWithoutBytes_AreStoredInTheItem) {
    CQItem item;
    EXPECT_EQ(item.ChangeBlackBox(nullptr, 30), 1);
    EXPECT_EQ(item.GetBlackBoxSize(), 30u);
    EXPECT_EQ(item.ChangeCache(nullptr, 40), 1);
    EXPECT_EQ(item.GetCacheSize(), 40u);
    EXPECT_EQ(item.IsModified(), 0);
}

TEST_F(StoredFilms, Deletions_GiveTheResultOfTheStatement) {
    EXPECT_EQ(m_item.DeleteItemDataFromDb(), 1);  // Also when there was no row.
    EXPECT_EQ(m_item.DeleteRelationFromDb(5), 1);
    EXPECT_EQ(m_item.DeleteCacheDataFromDb(1), 1);
    Sql("drop table ITEM_TABLE; drop table RELATION_TABLE; drop table CACHE_DATA_TABLE");
    EXPECT_EQ(m_item.DeleteItemDataFromDb(), 0);
    EXPECT_EQ(m_item.DeleteRelationFromDb(5), 0);
    EXPECT_EQ(m_item.DeleteCacheDataFromDb(1), 0);
    EXPECT_EQ(m_item.DeleteItemDb(5), 1);
}

// --- Lazy loads ----------------------------------------------------------------------------------------------------

class LazyLoads : public testing::Test {
protected:
    LazyLoads() {
        StoredTree stored(library.Tools());
        EXPECT_EQ(stored.pA->AddItemDb(NewFilledItem(1), 1), 1);
        tree = std::make_unique<LoadedTree>(library.Tools());
        item = tree->Item(1);
    }
    CurrentLibrary library;
    std::unique_ptr<LoadedTree> tree;
    CQItem* item = nullptr;
};

TEST_F(LazyLoads, BlackBoxWithoutBitmap_IsLoadedAndTheAnswerIs0) {
    library.Raw().Exec("delete from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 0");
    EXPECT_EQ(item->TryLoadBB(), 0);
    EXPECT_FALSE(item->PayloadInMemory(kBlackBox).empty());
}

TEST_F(LazyLoads, BlackBox_IsAskedForBeforeTheBitmap) {
    bool ok = false;
    AskedTools asked(library.Path().c_str(), ok);
    ASSERT_TRUE(ok);
    item->fnSetDbTools(&asked);
    EXPECT_EQ(item->TryLoadBB(), 1);
    EXPECT_EQ(asked.kinds, (std::vector<int>{kBlackBox, kBitmapCache}));
    item->fnSetDbTools(library.Tools());
}

TEST_F(LazyLoads, FilmThatIsGone_HasNoFramesWhateverTheRowAnnounces) {
    library.Raw().Exec("delete from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 2");
    ASSERT_EQ(item->GetFilmSize(), 900u);
    EXPECT_EQ(item->GetTotalFilmFrame(), 0u);
}

TEST_F(LazyLoads, OneKindWrittenToAnotherLibrary_IsFetchedFirst) {
    LibraryFile other("other.db");
    ASSERT_TRUE(other.Tools()->UpdateCacheData(item, kFilm));
    EXPECT_EQ(other.Raw().Cell("select PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 2"), "900");
}

class FilmFile : public RecordedFile {
public:
    int LoadFilm(CQItem& filmed) override {
        GiveFilm(filmed, Pattern(900), 300);
        return 1;
    }
};

class BlackBoxFile : public RecordedFile {
public:
    int LoadBlackBox(CQItem& boxed) override {
        auto bytes = std::make_unique<BYTE[]>(30);
        std::fill_n(bytes.get(), 30, BYTE{7});
        return boxed.ChangeBlackBox(bytes.release(), 30);
    }
};

TEST_F(LazyLoads, BlackBoxThatIsOnlyInTheGalleryFile_IsFetchedAlsoBesideABitmapInMemory) {
    for (const bool taken : {false, true}) {
        BlackBoxFile file;
        OpenFolder fileRoot;
        fileRoot.m_strFilePath = "lib.gal";
        std::unique_ptr<CQItem> boxed(NewFilledItem(taken ? 9u : 8u));
        boxed->ChangeBlackBox(nullptr, 30);
        boxed->SetModified(0);
        ASSERT_NE(boxed->GetCache(), nullptr);
        boxed->SetParentFolder(&fileRoot);
        LibraryFile other("other.db");
        StoredTree target(other.Tools());
        if (taken) {
            ASSERT_EQ(target.pA->AddItemDb(boxed.release(), 1), 1);
        } else {
            ASSERT_TRUE(other.Tools()->UpdateItemDB(boxed.get()));
        }
        EXPECT_EQ(other.Raw().Cell("select PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 1"), "30");
        fileRoot.m_strFilePath.Empty();
    }
}

// Brings both, as a gallery file does.
class PairFile : public RecordedFile {
public:
    int LoadBlackBox(CQItem& boxed) override {
        ++asked;
        if (hasNoMemory) throw std::bad_alloc();
        GiveBlackBox(boxed, Pattern(30, 5));
        GiveCache(boxed, Dib24(2, 2));
        return 1;
    }
    int asked = 0;
    bool hasNoMemory = false;
};

class ModifiedItemOfAGalleryFile : public testing::Test {
protected:
    ModifiedItemOfAGalleryFile() {
        fileRoot.m_strFilePath = "lib.gal";
        item.SetParentFolder(&fileRoot);
    }
    ~ModifiedItemOfAGalleryFile() override { fileRoot.m_strFilePath.Empty(); }

    PairFile file;
    OpenFolder fileRoot;
    CQItem item{"changed"};
};

TEST_F(ModifiedItemOfAGalleryFile, KeepsItsBlackBoxWhenTheBitmapIsLoaded) {
    GiveBlackBox(item, Pattern(50, 9));
    EXPECT_EQ(item.TryLoadBB(), 1);
    EXPECT_EQ(file.asked, 1);
    EXPECT_EQ(InMemory(item, kBlackBox), Pattern(50, 9));
    EXPECT_EQ(item.GetBlackBoxSize(), 50u);
    EXPECT_EQ(InMemory(item, kBitmapCache), Dib24(2, 2));
}

TEST_F(ModifiedItemOfAGalleryFile, KeepsItsBitmapWhenTheBlackBoxIsFetched) {
    GiveCache(item, Dib24(10, 10));
    item.ChangeBlackBox(nullptr, 30);
    ASSERT_NE(item.IsModified(), 0);
    LibraryFile other("other.db");
    ASSERT_TRUE(other.Tools()->UpdateItemDB(&item));
    EXPECT_EQ(file.asked, 1);
    EXPECT_EQ(InMemory(item, kBlackBox), Pattern(30, 5));
    EXPECT_EQ(InMemory(item, kBitmapCache), Dib24(10, 10));
    EXPECT_EQ(item.GetCacheSize(), Dib24(10, 10).size());
    EXPECT_EQ(other.Raw().Cell("select PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 1"), "30");
}

TEST_F(ModifiedItemOfAGalleryFile, KeepsBothWhenTheLoadThrows) {
    file.hasNoMemory = true;
    GiveBlackBox(item, Pattern(50, 9));
    EXPECT_THROW(item.TryLoadBB(), std::bad_alloc);
    EXPECT_EQ(InMemory(item, kBlackBox), Pattern(50, 9));
    EXPECT_EQ(item.GetBlackBoxSize(), 50u);
    file.hasNoMemory = false;
    LibraryFile other("other.db");
    ASSERT_TRUE(other.Tools()->UpdateItemDB(&item));
    EXPECT_EQ(other.Raw().Cell("select PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 1"), "50");
}

TEST_F(ModifiedItemOfAGalleryFile, KeepsItsBitmapWhenTheFetchOfTheBlackBoxThrows) {
    file.hasNoMemory = true;
    GiveCache(item, Dib24(10, 10));
    item.ChangeBlackBox(nullptr, 30);
    LibraryFile other("other.db");
    EXPECT_FALSE(other.Tools()->UpdateItemDB(&item));
    EXPECT_EQ(file.asked, 1);
    EXPECT_EQ(InMemory(item, kBitmapCache), Dib24(10, 10));
    EXPECT_EQ(item.GetCacheSize(), Dib24(10, 10).size());
    EXPECT_EQ(item.GetBlackBoxSize(), 30u);
    file.hasNoMemory = false;
    ASSERT_TRUE(other.Tools()->UpdateItemDB(&item));
    const auto rows = [&](const std::string& kindAndSize) {
        return other.Raw().Cell("select count(*) from CACHE_DATA_TABLE where " + kindAndSize);
    };
    EXPECT_EQ(rows("CACHE_DATA_TYPE = 1 and PRE_COMPRESSED_SIZE = 30"), "1");
    EXPECT_EQ(rows("CACHE_DATA_TYPE = 0 and PRE_COMPRESSED_SIZE = " + std::to_string(Dib24(10, 10).size())), "1");
}

TEST_F(ModifiedItemOfAGalleryFile, UnmodifiedOneTakesBoth) {
    GiveBlackBox(item, Pattern(50, 9));
    item.SetModified(0);
    EXPECT_EQ(item.TryLoadBB(), 1);
    EXPECT_EQ(InMemory(item, kBlackBox), Pattern(30, 5));
    EXPECT_EQ(InMemory(item, kBitmapCache), Dib24(2, 2));
}

TEST_F(LazyLoads, FilmOfAGalleryFile_IsFetchedBeforeTheItemIsWritten) {
    FilmFile file;
    OpenFolder fileRoot;
    fileRoot.m_strFilePath = "lib.gal";
    CQItem filmed("in a file");
    filmed.GetAttrib() = kAttribHasFilm;
    filmed.SetParentFolder(&fileRoot);
    LibraryFile other("other.db");
    ASSERT_TRUE(other.Tools()->UpdateItemDB(&filmed));
    EXPECT_EQ(other.Raw().Cell("select PRE_COMPRESSED_SIZE from CACHE_DATA_TABLE where CACHE_DATA_TYPE = 2"), "900");
    fileRoot.m_strFilePath.Empty();
}

}  // namespace
}  // namespace qfc::test
