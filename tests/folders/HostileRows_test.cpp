#include "folders/FolderConstants.h"
#include "folders/FolderDisplay.h"
#include "tests/folders/LoadFixture.h"

#include <gtest/gtest.h>
#include <vector>

// Rows that contradict themselves, and rows that cannot be read: what is loaded of the rest.
namespace qfc::test {
namespace {

using Texts = std::vector<std::string>;

class HostileRows : public LoadFixture {};

TEST_P(HostileRows, AFolderThatIsItsOwnParent_IsNeverReached) {
    AddFolderRow(2, 2, "own parent");
    AddFolderRow(3, kRoot, "A");
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), Texts{"A"});
}

TEST_P(HostileRows, ARootThatIsItsOwnParent_IsNotItsOwnChild) {
    Sql("update FOLDER_TABLE set PARENT_ID = 1 where ID = 1");
    AddFolderRow(2, kRoot, "A");
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), Texts{"A"});
}

TEST_P(HostileRows, ACycleThroughTheRoot_EndsWhereItCloses) {
    AddFolderRow(2, kRoot, "A");
    AddFolderRow(3, 2, "B");
    Sql("update FOLDER_TABLE set PARENT_ID = 3 where ID = 1");
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), Texts{"A"});
    EXPECT_EQ(gallery.GetFolderByPath("A\\B")->GetFirstSubFolder(), nullptr);
}

TEST_P(HostileRows, LoadingBelowAnInnerFolder_NeverMeetsItsAncestors) {
    AddFolderRow(2, kRoot, "A");
    AddFolderRow(3, 2, "B");
    Load();
    Sql("update FOLDER_TABLE set PARENT_ID = 3 where ID in (1, 2)");
    CQFolder* inner = gallery.GetFolderByPath("A\\B");
    EXPECT_EQ(inner->LoadSubFoldersFromDb(), 1);
    EXPECT_EQ(inner->GetFirstSubFolder(), nullptr);
}

TEST_P(HostileRows, RowsWithoutAUsableNumber_AreLeftOut) {
    Sql("drop table FOLDER_TABLE");
    Sql("create table FOLDER_TABLE(FOLDER_NAME TEXT, PARENT_ID INTEGER, ID)");
    Sql("insert into FOLDER_TABLE values('Root', -1, 1), ('null', 1, NULL), ('minus one', 1, -1), ('minus', 1, -5), "
        "('text', 1, 'x'), ('beyond', 1, 4294967299), ('good', 1, 2), ('same number', 1, 2)");
    ASSERT_EQ(Load(), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), Texts{"good"});
}

TEST_P(HostileRows, GuidsOfAWrongLengthOrType_AreSkipped) {
    AddFolderRow(2, kRoot, "A");
    Sql("drop table RELATION_TABLE");
    Sql("create table RELATION_TABLE(PARENT_ID INTEGER, ITEM_ID BLOB, ITEM_INDEX INTEGER)");
    Sql("insert into RELATION_TABLE values(2, NULL, 0), (2, X'', 1), (2, X'0102', 2), (2, 'text', 3), (2, 5, 4)");
    Sql("insert into RELATION_TABLE values(2, zeroblob(17), 5)");
    Place(7, 2, 6);
    Place(7, 2, 7);
    ASSERT_EQ(Load(), 1);
    CQFolder* folder = gallery.GetFolderByName("A");
    EXPECT_EQ(folder->GetItemsCount(), 1);
    EXPECT_TRUE(folder->HasItem(GuidOf(7), 0));
}

// Encoded names that lie about their lengths: what they show is found again, and every look ends.
TEST_P(HostileRows, NamesThatLieAboutTheirLengths_AreShownAndFound) {
    const Texts names = {"||-4||x",
                         "||0||",
                         "||99||short",
                         "||2147483647||a||-2147483648||b",
                         "||99999999999999999999||x",
                         "||3||abc||-1||d",
                         "--||5||",
                         std::string(1 << 20, '|')};
    for (std::size_t i = 0; i < names.size(); ++i) AddFolderRow(static_cast<int>(i) + 2, kRoot, names[i]);
    ASSERT_EQ(Load(), 1);
    EXPECT_TRUE(Names(gallery.GetFolderList()) == names);
    for (CQFolder* folder : *gallery.GetFolderList()) {
        const CString shown = FolderDisplayName(folder, nullptr);
        SCOPED_TRACE(std::string(shown.View().substr(0, 80)));
        EXPECT_TRUE(FolderDisplayPath(folder, nullptr) == shown);
        CQFolder* found = gallery.GetSubFolderByDisplayPath(shown, nullptr);
        ASSERT_NE(found, nullptr);
        EXPECT_TRUE(FolderDisplayName(found, nullptr) == shown);
    }
}

TEST_P(HostileRows, RowsBelowTheDepthBound_AreLeftOutOfTheTree) {
    std::string rows = "begin; ";
    for (int id = 2; id <= kMaxLoadDepth + 50; ++id) {
        rows += "insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME) values(" + std::to_string(id) + ", " +
                std::to_string(id - 1) + ", 'd'); ";
    }
    Sql(rows + "commit;");
    ASSERT_EQ(Load(), 1);
    std::vector<CQFolder*> loaded;
    ListBelow(gallery, loaded);
    EXPECT_EQ(loaded.size(), static_cast<std::size_t>(kMaxLoadDepth));
    EXPECT_EQ(loaded.back()->GetDBId(), kMaxLoadDepth + 1);
}

// Refuses one question about one folder.
class RefusingTools : public DBTools {
public:
    using DBTools::DBTools;
    bool QueryFolder(int folder, CppSQLite3Query& query) override {
        return folder != refusedRow && DBTools::QueryFolder(folder, query);
    }
    bool QueryChildFolders(int parent, CppSQLite3Query& query) override {
        return parent != refused && DBTools::QueryChildFolders(parent, query);
    }
    bool QueryFolderItems(int folder, CppSQLite3Query& query) override {
        return folder != refusedItems && DBTools::QueryFolderItems(folder, query);
    }
    int refusedRow = -1;
    int refused = -1;
    int refusedItems = -1;
};

class RefusedRows : public LoadFixture {
protected:
    RefusedRows() : tools(library.Path().c_str(), ok) {
        tools.SetShortcuts(false);
        SetCurrentDBTools(&tools);
        AddFolderRow(2, kRoot, "A", 2);
        AddFolderRow(3, kRoot, "B", 1);
        AddFolderRow(4, 2, "below A");
        AddItemRow(1, "in A");
        AddItemRow(2, "in B");
        AddItemRow(3, "below A");
        Place(1, 2, 0);
        Place(2, 3, 0);
        Place(3, 4, 0);
    }
    ~RefusedRows() override {
        gallery.Clear();
        SetCurrentDBTools(library.Tools());
    }
    // Loaded through rows alone, from the folder of a row number.
    CQFolder* Row(int id) {
        std::vector<CQFolder*> folders;
        ListBelow(gallery, folders);
        for (CQFolder* folder : folders) {
            if (folder->GetDBId() == id) return folder;
        }
        return nullptr;
    }
    int Items(int id) { return Row(id) != nullptr ? Row(id)->GetItemsCount() : -1; }

    bool ok = false;
    RefusingTools tools;
};

TEST_P(RefusedRows, ASubFolderWhoseFieldsCannotBeRead_KeepsItsDefaultsAndIsLoadedOn) {
    tools.refusedRow = 2;
    EXPECT_EQ(Load(&tools), 1);
    ASSERT_NE(Row(2), nullptr);
    EXPECT_STREQ(Row(2)->GetFolderName(), "");
    EXPECT_EQ(Row(2)->GetIndex(), -1);
    EXPECT_EQ(Row(2)->GetParent(), &gallery);
    EXPECT_EQ(Items(2), 1);
    EXPECT_EQ(Items(4), 1);
    EXPECT_EQ(Items(3), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), (Texts{"", "B"})) << "by the indexes as far as they were read";
}

TEST_P(RefusedRows, ASubFolderWhoseItemsCannotBeRead_HasNoneAndIsLoadedOn) {
    tools.refusedItems = 2;
    EXPECT_EQ(Load(&tools), 1);
    EXPECT_EQ(Names(gallery.GetFolderList()), (Texts{"B", "A"}));
    EXPECT_EQ(Items(2), 0);
    EXPECT_EQ(Items(4), 1);
    EXPECT_EQ(Items(3), 1);
    EXPECT_EQ(Row(2)->LoadSubItemsFromDb(), 0);
    tools.refusedItems = -1;
    EXPECT_EQ(Row(2)->LoadSubItemsFromDb(), 0);
    EXPECT_EQ(Items(2), 1);
}

TEST_P(RefusedRows, ARootWhoseFieldsCannotBeRead_IsNotLoaded) {
    tools.refusedRow = kRoot;
    EXPECT_EQ(Load(&tools), 0);
    EXPECT_EQ(gallery.GetDBId(), kRoot);
    EXPECT_EQ(gallery.GetFolderList(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(RowByRow, RefusedRows, testing::Values(false));

TEST_P(HostileRows, ASubFolderThatCannotBeRead_DoesNotStopTheLoad) {
    AddFolderRow(2, kRoot, "A");
    AddFolderRow(3, kRoot, "B");
    AddFolderRow(4, 2, "below A");
    AddFolderRow(5, 3, "below B");
    bool ok = false;
    RefusingTools tools(library.Path().c_str(), ok);
    tools.SetShortcuts(false);
    tools.refused = 2;
    EXPECT_EQ(Load(&tools), 1);
    EXPECT_EQ(gallery.GetFolderByPath("A\\below A"), nullptr);
    EXPECT_NE(gallery.GetFolderByPath("B\\below B"), nullptr);
    CQGallery other;
    other.SetFolderID(kGallery);
    other.SetDBTools(&tools);
    tools.refused = kRoot;
    EXPECT_EQ(other.LoadTreeFromDb(), 0);
    EXPECT_TRUE(other.GetFolderName() == "Root");
}

INSTANTIATE_TEST_SUITE_P(Shortcuts, HostileRows, testing::Bool());

}  // namespace
}  // namespace qfc::test
