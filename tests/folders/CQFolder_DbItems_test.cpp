#include "folders/ImportPort.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/SqlTrace.h"

#include <gtest/gtest.h>
#include <memory>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;
using Row = RawDb::Row;

class CQFolder_DbItems : public testing::Test {
protected:
    CQItem* NewCounted(unsigned number, DWORD type = 1) {
        auto* item = new CountedItem(destroyed);
        item->SetUniqueID(GuidOf(number));
        item->SetItemType(type);
        item->SetItemName(("i" + std::to_string(number)).c_str());
        return item;
    }
    CQItem* StoredItem(CQFolder& folder, unsigned number) {
        CQItem* item = NewCounted(number);
        EXPECT_EQ(folder.AddItemDb(item, 1), 1);
        return item;
    }
    std::string Count(const std::string& tableAndCondition) {
        return library.Raw().Cell("select count(*) from " + tableAndCondition);
    }
    // Item number and index of the folder's placements, by index.
    std::vector<Row> Placements(const CQFolder& folder) {
        return library.Raw().Rows(
            "select ITEM_NAME, ITEM_INDEX from RELATION_TABLE join ITEM_TABLE using (ITEM_ID) "
            "where PARENT_ID = " +
            std::to_string(folder.GetDBId()) + " order by ITEM_INDEX, ITEM_NAME");
    }
    void RefuseInserts(const char* table) {
        library.Raw().Exec(std::string("create trigger refuse before insert on ") + table +
                           " begin select raise(abort, 'no'); end");
    }
    void RefuseDeletes(const char* table) {
        library.Raw().Exec(std::string("create trigger refuse before delete on ") + table +
                           " begin select raise(abort, 'no'); end");
    }

    int destroyed = 0;
    CurrentLibrary library;
    StoredTree tree{library.Tools()};
    CQGallery& gallery = tree.Gallery();
    CQFolder& a = *tree.pA;
    CQFolder& b = *tree.pB;
};

// --- Adding ------------------------------------------------------------------------------------------------------

TEST_F(CQFolder_DbItems, AddItemDb_StoresTheItemAndItsPlaceAndTakesIt) {
    StoredItem(a, 1);
    CQItem* item = NewCounted(2, 8);
    GiveBlackBox(*item, Pattern(100));
    EXPECT_EQ(a.AddItemDb(item, 1), 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i1'", "0"}, {"'i2'", "1"}}));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(item->GetParentFolder(), &a);
    EXPECT_EQ(item->fnGetDbTools(), library.Tools());
    EXPECT_EQ(a.GetAdopt() & 8u, 8u);
    EXPECT_EQ(gallery.GetItemParentList(GuidOf(2)), std::list<ULONGLONG>{reinterpret_cast<std::uintptr_t>(&a)});
}

TEST_F(CQFolder_DbItems, AddItemDb_RefusesNullAndATreeWithoutGallery) {
    EXPECT_EQ(a.AddItemDb(nullptr, 1), 0);
    CQFolder plain;
    CQItem item;
    EXPECT_EQ(plain.AddItemDb(&item, 0), 0);
    EXPECT_EQ(plain.GetItemArray(), nullptr);
}

TEST_F(CQFolder_DbItems, AddItemDb_OfAGuidTheFolderHoldsWritesNothing) {
    StoredItem(a, 1);
    const std::unique_ptr<CQItem> same(NewCounted(1));
    same->SetItemName("other name");
    const std::string before = library.Raw().Dump();
    EXPECT_EQ(a.AddItemDb(same.get(), 1), 0);
    EXPECT_EQ(library.Raw().Dump(), before);
    EXPECT_EQ(same->fnGetDbTools(), nullptr);
    EXPECT_EQ(a.GetItemsCount(), 1);
}

TEST_F(CQFolder_DbItems, AddItemDb_ThatTheDatabaseRefusesChangesNothingButTheItemsTools) {
    RefuseInserts("RELATION_TABLE");
    const std::unique_ptr<CQItem> item(NewCounted(1, 8));
    EXPECT_EQ(a.AddItemDb(item.get(), 1), 0);
    EXPECT_EQ(a.GetItemsCount(), 0);
    EXPECT_EQ(item->GetParentFolder(), nullptr);
    EXPECT_EQ(a.GetAdopt(), 0u);
    EXPECT_TRUE(gallery.GetItemParentList(GuidOf(1)).empty());
    EXPECT_EQ(item->fnGetDbTools(), library.Tools());
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(CQFolder_DbItems, AddItemDb_WithoutWritingOnlyAppends) {
    CQItem* item = NewCounted(1, 8);
    EXPECT_EQ(a.AddItemDb(item, 0), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(item->GetParentFolder(), &a);
    EXPECT_EQ(a.GetAdopt(), 8u);
    EXPECT_TRUE(gallery.GetItemParentList(GuidOf(1)).empty());
}

TEST_F(CQFolder_DbItems, AddItemDb_ToAFolderWithoutRowWritesNothing) {
    CQFolder* unstored = AddSub(gallery, "unstored");
    const std::unique_ptr<CQItem> item(NewCounted(1));
    EXPECT_EQ(unstored->AddItemDb(item.get(), 1), 0);
    EXPECT_EQ(Count("RELATION_TABLE"), "0");
    EXPECT_EQ(unstored->GetItemsCount(), 0);
}

TEST_F(CQFolder_DbItems, AddItemDb_OfAStoredItemToASecondFolderSharesIt) {
    CQItem* item = StoredItem(a, 1);
    EXPECT_EQ(b.AddItemDb(item, 1), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "2");
    EXPECT_EQ(item->GetParentFolder(), &b);
    EXPECT_EQ(gallery.GetItemParentList(GuidOf(1)).size(), 2u);
}

// --- Removing ----------------------------------------------------------------------------------------------------

TEST_F(CQFolder_DbItems, RemoveItemDB_TakesThePlacementAndWithTheLastOneTheItem) {
    CQItem* item = StoredItem(a, 1);
    b.AddItemDb(item, 1);
    EXPECT_EQ(b.RemoveItemDB(GuidOf(1), 0), 1);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(item->GetParentFolder(), &a);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(a.RemoveItemDB(GuidOf(1), 0), 1);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
}

TEST_F(CQFolder_DbItems, RemoveItemDB_OfAGuidTheFolderDoesNotHoldFails) {
    EXPECT_EQ(a.RemoveItemDB(GuidOf(1), 0), 0);
    StoredItem(a, 1);
    EXPECT_EQ(a.RemoveItemDB(GuidOf(2), 0), 0);
    EXPECT_EQ(b.RemoveItemDB(GuidOf(1), 0), 0);
    EXPECT_EQ(a.GetItemsCount(), 1);
}

TEST_F(CQFolder_DbItems, RemoveItemDB_NeedsARowToolsAndAGallery) {
    CQFolder* unstored = AddSub(gallery, "unstored");
    AddNew(*unstored, 1);
    EXPECT_EQ(unstored->RemoveItemDB(GuidOf(1), 0), 0);
    CQFolder plain;
    AddNew(plain, 1);
    FolderInside::DbId(plain) = 5;
    EXPECT_EQ(plain.RemoveItemDB(GuidOf(1), 0), 0);
    plain.SetDBTools(library.Tools());
    EXPECT_EQ(plain.RemoveItemDB(GuidOf(1), 0), 0);
    EXPECT_EQ(plain.RemoveItemDB(GuidOf(1), 1), 0);
}

TEST_F(CQFolder_DbItems, RemoveItemDB_RecursiveTakesItFromEveryFolderWhereverItIsCalled) {
    CQFolder* below = AddSub(b, "below");
    below->InsertOrUpdateFolder();
    CQItem* item = StoredItem(a, 1);
    b.AddItemDb(item, 1);
    below->AddItemDb(item, 1);
    StoredItem(a, 2);
    EXPECT_EQ(below->RemoveItemDB(GuidOf(1), 1), 1);
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(a.RemoveItemDB(GuidOf(77), 1), 1);
}

TEST_F(CQFolder_DbItems, RemoveItemDB_GivesTheResultOfTheDatabase) {
    StoredItem(a, 1);
    RefuseDeletes("RELATION_TABLE");
    EXPECT_EQ(a.RemoveItemDB(GuidOf(1), 0), 0);
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
}

TEST_F(CQFolder_DbItems, RemoveItemDB_OfAnItemTheGalleryDoesNotKnowLeavesTheObject) {
    const std::unique_ptr<CQItem> item(NewCounted(1));
    a.AddItemDb(item.get(), 0);
    a.RemoveItemDB(GuidOf(1), 0);
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(a.GetItemsCount(), 0);
}

TEST_F(CQFolder_DbItems, DeletingRemoval_KeepsTheRowAndPayloadsOfAnItemThatOthersHold) {
    CQItem* item = NewCounted(1);
    GiveBlackBox(*item, Pattern(500));
    a.AddItemDb(item, 1);
    b.AddItemDb(item, 1);
    EXPECT_EQ(a.RemoveItem(GuidOf(1), 1), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "1");
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(destroyed, 0);
    EXPECT_EQ(b.RemoveItem(GuidOf(1), 1), 1);
    EXPECT_EQ(Count("ITEM_TABLE"), "0");
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "0");
    EXPECT_EQ(destroyed, 1);
}

TEST_F(CQFolder_DbItems, DeletingRemoval_OfARefusedPlacementGives0) {
    StoredItem(a, 1);
    RefuseDeletes("RELATION_TABLE");
    EXPECT_EQ(a.RemoveItem(GuidOf(1), 1), 0);
}

TEST_F(CQFolder_DbItems, RemovalByIdAndNumber_RenumbersWhatStoodBehind_ByGuidDoesNot) {
    for (unsigned number = 1; number <= 5; ++number) StoredItem(a, number)->SetDBID(static_cast<int>(number));
    a.RemoveItem(GuidOf(1), 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i2'", "1"}, {"'i3'", "2"}, {"'i4'", "3"}, {"'i5'", "4"}}));
    a.RemoveItem(3, 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i2'", "1"}, {"'i4'", "1"}, {"'i5'", "2"}}));
    a.RemoveItem2(0, 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i4'", "0"}, {"'i5'", "1"}}));
}

TEST_F(CQFolder_DbItems, RemovalWithoutDeleting_LeavesTheDatabaseAlone) {
    for (unsigned number = 1; number <= 3; ++number) StoredItem(a, number)->SetDBID(static_cast<int>(number));
    const std::string before = library.Raw().Dump();
    CQItem* item = a.GetItemArray()->GetAt(0);
    a.RemoveItem(1, 0);
    EXPECT_EQ(library.Raw().Dump(), before);
    EXPECT_TRUE(item->GetItemName() == "i1");
    gallery.RemoveItemFromMap(item, reinterpret_cast<std::uintptr_t>(&a));
}

TEST_F(CQFolder_DbItems, RemoveAllItems_EmptiesTheFolderInTheDatabase) {
    for (unsigned number = 1; number <= 4; ++number) StoredItem(a, number);
    StoredItem(b, 9);
    EXPECT_EQ(a.RemoveAllItems(1), 1);
    EXPECT_EQ(destroyed, 4);
    EXPECT_EQ(Count("RELATION_TABLE"), "1");
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

// --- Updating ----------------------------------------------------------------------------------------------------

TEST_F(CQFolder_DbItems, UpdateItemDB_CopiesTheGroupsAndStoresTheFirstMatch) {
    CQItem* item = StoredItem(a, 1);
    CQItem source("renamed");
    source.GetDescription() = "described";
    EXPECT_EQ(gallery.UpdateItemDB(&source, GuidOf(1), 1), 1);
    EXPECT_TRUE(item->GetItemName() == "renamed");
    EXPECT_EQ(library.Raw().Cell("select ITEM_NAME from ITEM_TABLE"), "'renamed'");
    EXPECT_EQ(library.Raw().Cell("select DESCRIPTION from ITEM_TABLE"), "'described'");
}

TEST_F(CQFolder_DbItems, UpdateItemDB_Gives1WithoutAMatchAndLeavesOutTheFoldersOwnItems) {
    CQItem* own = NewItem(5, "own");
    gallery.AddItem(own, 1);
    CQItem source("renamed");
    EXPECT_EQ(gallery.UpdateItemDB(&source, GuidOf(5), 1), 1);
    EXPECT_TRUE(own->GetItemName() == "own");
    EXPECT_EQ(gallery.UpdateItemDB(nullptr, GuidOf(5), 1), 0);
}

TEST_F(CQFolder_DbItems, UpdateItemDB_GivesTheResultOfTheDatabase) {
    StoredItem(a, 1);
    RefuseInserts("ITEM_TABLE");
    CQItem source("renamed");
    EXPECT_EQ(gallery.UpdateItemDB(&source, GuidOf(1), 1), 0);
}

TEST_F(CQFolder_DbItems, ReOrder_StoresThePositionsOfTheRange) {
    for (unsigned number = 1; number <= 5; ++number) StoredItem(a, number);
    const auto scramble = [&] { library.Raw().Exec("update RELATION_TABLE set ITEM_INDEX = 90"); };
    const auto indexes = [&] {
        Texts texts;
        for (const Row& row : library.Raw().Rows("select ITEM_INDEX from RELATION_TABLE join ITEM_TABLE using "
                                                 "(ITEM_ID) order by ITEM_NAME")) {
            texts.push_back(row.at(0));
        }
        return texts;
    };
    const struct {
        int first;
        int count;
        Texts expected;
    } rows[] = {
        {2, -1, {"90", "90", "2", "3", "4"}},    {0, -1, {"0", "1", "2", "3", "4"}},
        {1, 3, {"90", "1", "2", "90", "90"}},    {3, 100, {"90", "90", "90", "3", "4"}},
        {5, -1, {"90", "90", "90", "90", "90"}}, {9, 12, {"90", "90", "90", "90", "90"}},
        {-3, 1, {"0", "90", "90", "90", "90"}},
    };
    for (const auto& row : rows) {
        scramble();
        EXPECT_EQ(a.ReOrderItemsDb(row.first, row.count), 1);
        EXPECT_EQ(indexes(), row.expected) << row.first << " " << row.count;
    }
}

TEST_F(CQFolder_DbItems, ReOrder_NeedsAnItemArrayAndPassesOverNulls) {
    EXPECT_EQ(a.ReOrderItemsDb(0, -1), 0);
    StoredItem(a, 1);
    a.GetItemArray()->InsertAt(0, nullptr);
    EXPECT_EQ(a.ReOrderItemsDb(0, -1), 1);
    EXPECT_EQ(Placements(a), (std::vector<Row>{{"'i1'", "1"}}));
}

TEST_F(CQFolder_DbItems, ReOrder_InAFolderWithoutRowWritesNothing) {
    CQItem* item = StoredItem(a, 1);
    CQFolder* unstored = AddSub(gallery, "unstored");
    unstored->AddItem(item, 0);
    library.Raw().Exec(
        "insert into RELATION_TABLE(PARENT_ID, ITEM_ID, ITEM_INDEX) select -1, ITEM_ID, 90 from "
        "RELATION_TABLE");
    const std::string before = library.Raw().Dump();
    EXPECT_EQ(unstored->ReOrderItemsDb(0, -1), 1);
    EXPECT_EQ(library.Raw().Dump(), before);
}

// --- Importing ---------------------------------------------------------------------------------------------------

struct Request {
    ULONGLONG gallery = 0;
    Texts paths;
    CQItem* item = nullptr;
    GUID guid{};
    std::string name;
    std::size_t blackBox = 0;
    CQFolder* parent = nullptr;
};
std::vector<Request> g_requests;
int g_answer = 1;

int RecordAdd(ULONGLONG gallery, std::vector<CString> paths, CQItem* item) {
    Request request{gallery,
                    {},
                    item,
                    item->GetUniqueID(),
                    std::string(item->GetItemName().View()),
                    item->PayloadInMemory(kBlackBox).size(),
                    item->GetParentFolder()};
    for (const CString& path : paths) request.paths.emplace_back(path.View());
    g_requests.push_back(request);
    return g_answer;
}

// Adds as the service does.
int ReallyAdd(ULONGLONG gallery, std::vector<CString> paths, CQItem* item) {
    auto* root = reinterpret_cast<CQFolder*>(static_cast<std::uintptr_t>(gallery));
    for (const CString& path : paths) root->GetFolderByPath(path)->AddItemDb(item, 1);
    return 1;
}

class ImportFromLibrary : public CQFolder_DbItems {
protected:
    ImportFromLibrary() {
        g_requests.clear();
        g_answer = 1;
        SetImportPort(RecordAdd);
        foreign.SetUniqueID(GuidOf(1));
        foreign.SetItemName("foreign");
        foreign.SetFileName("C:\\media\\clip.avi");
    }
    ~ImportFromLibrary() override { SetImportPort(nullptr); }

    CQItem foreign;
};

TEST_F(ImportFromLibrary, ANewItem_IsAddedAsAFullCopyWithItsGuid) {
    CQFolder* below = AddSub(a, "below");
    below->InsertOrUpdateFolder();
    EXPECT_EQ(below->AddItemFromImportLib(&foreign), 1);
    ASSERT_EQ(g_requests.size(), 1u);
    EXPECT_EQ(g_requests[0].gallery, reinterpret_cast<std::uintptr_t>(static_cast<CQFolder*>(&gallery)));
    EXPECT_EQ(g_requests[0].paths, Texts{"\\A\\below"});
    EXPECT_NE(g_requests[0].item, &foreign);
    EXPECT_TRUE(g_requests[0].guid == GuidOf(1));
    EXPECT_EQ(g_requests[0].name, "foreign");
    EXPECT_EQ(g_requests[0].parent, below);
}

TEST_F(ImportFromLibrary, TheAddedCopy_BelongsToTheFolder) {
    SetImportPort(ReallyAdd);
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 1);
    ASSERT_EQ(a.GetItemsCount(), 1);
    EXPECT_NE(a.GetItemArray()->GetAt(0), &foreign);
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(ImportFromLibrary, AFailedAdd_GivesItsResultAndKeepsNoCopy) {
    g_answer = 0;
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 0);
    EXPECT_EQ(a.GetItemsCount(), 0);
}

TEST_F(ImportFromLibrary, AnItemTheGalleryHasElsewhere_IsAddedItself) {
    CQItem* existing = StoredItem(b, 9);
    existing->SetFileName("C:\\media\\clip.avi");
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 1);
    ASSERT_EQ(g_requests.size(), 1u);
    EXPECT_EQ(g_requests[0].item, existing);
    EXPECT_EQ(g_requests[0].paths, Texts{"\\A"});
}

TEST_F(ImportFromLibrary, AnItemTheFolderHas_IsNotAdded) {
    StoredItem(a, 9)->SetFileName("C:\\media\\clip.avi");
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 0);
    EXPECT_TRUE(g_requests.empty());
}

TEST_F(ImportFromLibrary, FolderWhosePathLeadsToAnotherOfItsName_TakesNothing) {
    CQFolder* namesake = AddSub(gallery, "A");
    namesake->InsertOrUpdateFolder();
    EXPECT_EQ(namesake->AddItemFromImportLib(&foreign), 0);
    EXPECT_TRUE(g_requests.empty());
}

TEST_F(ImportFromLibrary, NeedsAnItemAGalleryAndSomebodyWhoAdds) {
    EXPECT_EQ(a.AddItemFromImportLib(nullptr), 0);
    CQFolder plain;
    EXPECT_EQ(plain.AddItemFromImportLib(&foreign), 0);
    SetImportPort(nullptr);
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 0);
    EXPECT_TRUE(g_requests.empty());
}

TEST_F(ImportFromLibrary, PayloadsLeftInTheItemsOwnLibrary_AreFetchedFirst) {
    LibraryFile other("other.db");
    {
        CQItem stored("foreign");
        stored.SetUniqueID(GuidOf(1));
        GiveBlackBox(stored, Pattern(700));
        stored.fnSetDbTools(other.Tools());
        ASSERT_EQ(stored.UpdateItemDB(), 1);
    }
    foreign.fnSetDbTools(other.Tools());
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 1);
    ASSERT_EQ(g_requests.size(), 1u);
    EXPECT_EQ(g_requests[0].blackBox, 700u);
}

// Writes down which kinds are asked for.
class AskedTools : public DBTools {
public:
    using DBTools::DBTools;
    bool QueryCacheData(const GUID& item, int kind, CppSQLite3Query& query) override {
        kinds.push_back(kind);
        return DBTools::QueryCacheData(item, kind, query);
    }
    std::vector<int> kinds;
};

TEST_F(ImportFromLibrary, Payloads_AreFetchedInTheOrderBlackBoxBitmapFilm) {
    LibraryFile other("other.db");
    const std::unique_ptr<CQItem> stored(NewFilledItem(1));
    stored->fnSetDbTools(other.Tools());
    ASSERT_EQ(stored->UpdateItemDB(), 1);
    bool ok = false;
    AskedTools asked(other.Path().c_str(), ok);
    foreign.fnSetDbTools(&asked);
    ASSERT_EQ(foreign.fnLoadItemFromDb(), 1);
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 1);
    EXPECT_EQ(asked.kinds, (std::vector<int>{1, 0, 2}));
}

TEST_F(ImportFromLibrary, AllPayloads_AreFetchedInOrderAndLandInTheTargetsRows) {
    SqlTrace trace;
    LibraryFile other("other.db");
    const std::unique_ptr<CQItem> stored(NewFilledItem(1));
    stored->fnSetDbTools(other.Tools());
    ASSERT_EQ(stored->UpdateItemDB(), 1);
    foreign.fnSetDbTools(other.Tools());
    ASSERT_EQ(foreign.fnLoadItemFromDb(), 1);
    SetImportPort(ReallyAdd);
    trace.Clear();
    ASSERT_EQ(a.AddItemFromImportLib(&foreign), 1);
    EXPECT_EQ(trace.Count("Select * from CACHE_DATA_TABLE where ITEM_ID = ? AND CACHE_DATA_TYPE = ?"), 3);
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), "3");
    const auto payloads = "select * from CACHE_DATA_TABLE order by CACHE_DATA_TYPE";
    EXPECT_EQ(library.Raw().Rows(payloads), other.Raw().Rows(payloads));
}

}  // namespace
}  // namespace qfc::test
