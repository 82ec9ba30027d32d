#include "folders/ImportPort.h"
#include "tests/folders/StoredItemsFixture.h"
#include "tests/support/SqlTrace.h"

#include <gtest/gtest.h>
#include <memory>

namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

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

class ImportFromLibrary : public StoredItemsFixture {
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

    // The item with all payloads, stored there alone.
    static void StoreFilled(LibraryFile& other) {
        const std::unique_ptr<CQItem> stored(NewFilledItem(1));
        stored->fnSetDbTools(other.Tools());
        ASSERT_EQ(stored->UpdateItemDB(), 1);
    }

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

TEST_F(ImportFromLibrary, Payloads_AreFetchedInTheOrderBlackBoxBitmapFilm) {
    LibraryFile other("other.db");
    StoreFilled(other);
    bool ok = false;
    AskedTools asked(other.Path().c_str(), ok);
    foreign.fnSetDbTools(&asked);
    ASSERT_EQ(foreign.fnLoadItemFromDb(), 1);
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 1);
    EXPECT_EQ(asked.kinds, (std::vector<int>{1, 0, 2}));
}

TEST_F(ImportFromLibrary, PayloadsInMemory_AreNotFetchedOverByStoredOnes) {
    LibraryFile other("other.db");
    StoreFilled(other);
    bool ok = false;
    AskedTools asked(other.Path().c_str(), ok);
    foreign.fnSetDbTools(&asked);
    ASSERT_EQ(foreign.fnLoadItemFromDb(), 1);
    GiveBlackBox(foreign, Pattern(4321));
    EXPECT_EQ(a.AddItemFromImportLib(&foreign), 1);
    EXPECT_EQ(asked.kinds, (std::vector<int>{0, 2}));
    ASSERT_EQ(g_requests.size(), 1u);
    EXPECT_EQ(g_requests[0].blackBox, 4321u);
}

TEST_F(ImportFromLibrary, AllPayloads_AreFetchedInOrderAndLandInTheTargetsRows) {
    SqlTrace trace;
    LibraryFile other("other.db");
    StoreFilled(other);
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
