#include "folders/FolderRows.h"

#include "db/TreeRows.h"
#include "folders/FolderNumbers.h"
#include "tests/folders/FolderBuilders.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/SqlTrace.h"

#include <gtest/gtest.h>
#include <memory>
#include <sstream>

namespace qfc::test {
namespace {

std::string Described(CQItem& item) {
    std::ostringstream text;
    std::list<GUID> tags;
    item.CopyTagVec(tags);
    text << GuidToText(item.GetUniqueID()) << ' ' << item.GetItemName().View() << '|' << item.GetDescription().View()
         << '|' << item.GetAnnotation().View() << '|' << item.GetFileName().View() << '|' << item.GetItemType() << ' '
         << item.GetAttrib() << ' ' << item.fnGetTimeStamp() << ' ' << item.GetDBID() << ' '
         << item.GetCurThumbFrameNum() << ' ' << item.GetOrgThumbFrameNum() << ' ' << item.GetFilmSize() << ' '
         << item.GetFrameSize() << ' ' << item.GetIsDeletable() << ' ' << item.IsModified() << ' ' << item.GetNumber()
         << " in " << (item.GetParentFolder() != nullptr ? item.GetParentFolder()->GetDBId() : -7);
    for (const GUID& tag : tags) text << ' ' << GuidToText(tag);
    return text.str();
}

void Describe(CQFolder& folder, std::ostringstream& text) {
    text << folder.GetDBId() << ' ' << folder.GetFolderName().View() << ' ' << folder.GetFolderID() << ' '
         << folder.GetAdopt() << ' ' << folder.GetTrusty() << ' ' << folder.GetExtra() << ' '
         << folder.GetExpandStatus() << ' ' << folder.GetIndex() << ' ' << FolderInside::Version(folder).View() << ' '
         << FolderInside::StorageNumber(folder) << ' ' << FolderInside::NextItemNumber(folder) << '\n';
    if (folder.GetItemArray() != nullptr) {
        for (CQItem* item : *folder.GetItemArray()) text << "  " << Described(*item) << '\n';
    }
    if (folder.GetFolderList() == nullptr) return;
    for (CQFolder* child : *folder.GetFolderList()) Describe(*child, text);
    text << "end of " << folder.GetDBId() << '\n';
}

class LoadedBothWays : public testing::Test {
protected:
    // Everything that a load of the gallery brings, in one text.
    std::string Loaded(int gallery, bool shortcuts) {
        library.Tools()->SetShortcuts(shortcuts);
        CQGallery root;
        root.SetFolderID(static_cast<DWORD>(gallery));
        root.SetDBTools(library.Tools());
        std::ostringstream text;
        text << root.LoadTreeFromDb() << '\n';
        Describe(root, text);
        library.Tools()->SetShortcuts(true);
        return text.str();
    }
    void Sql(const std::string& text) { library.Raw().Exec(text); }
    std::string Number(unsigned bound) { return std::to_string(random() % bound); }
    // Now and then something that is no number.
    std::string OddNumber(unsigned bound) {
        const char* odd[] = {"NULL", "'text'", "X'0102'", "2.5", "5000000000", "-3"};
        return random() % 5 == 0 ? odd[random() % 6] : Number(bound);
    }
    std::string OddText() {
        const char* texts[] = {"NULL", "''", "'clip'", "'Gr\xC3\xBC\xC3\x9F'", "5", "X'41'", "'a--b'", "X'FFFE'"};
        return texts[random() % 8];
    }
    std::string OddGuid(unsigned bound) {
        const char* odd[] = {"NULL", "X'00'", "'sixteen bytes ok'", "7", "zeroblob(17)"};
        return random() % 12 == 0 ? odd[random() % 5] : BlobLiteral(GuidOf(static_cast<unsigned>(random() % bound)));
    }

    void FillAtRandom() {
        std::string rows = "begin; insert or ignore into GALLERY_TABLE values(1, 1), (2, 2);";
        rows += "insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME) values(1, -1, 'one'), (2, -1, 'two');";
        const unsigned folders = 3 + static_cast<unsigned>(random() % 25);
        for (unsigned id = 3; id < folders; ++id) {
            const std::string parent = random() % 9 == 0 ? Number(folders) : Number(id);
            rows += "insert into FOLDER_TABLE values(" + OddText() + ", " + OddNumber(4) + ", " + OddText() + ", " +
                    OddNumber(9) + ", " + OddNumber(9) + ", " + OddNumber(9) + ", " +
                    (random() % 30 == 0 ? "NULL" : parent) + ", " + OddNumber(2) + ", " + OddNumber(4) + ", " +
                    std::to_string(id) + ");";
        }
        for (unsigned item = 0; item < 40; ++item) {
            rows += "insert or ignore into ITEM_TABLE values(" + OddNumber(9) + ", " + OddNumber(9) + ", " +
                    OddNumber(9) + ", " + OddNumber(9) + ", " + OddText() + ", " + OddText() + ", " + OddText() + ", " +
                    OddText() + ", " + OddNumber(2) + ", " + OddText() + ", " + OddNumber(3000) + ", " + OddNumber(9) +
                    ", " + OddNumber(9) + ", " + OddNumber(2) + ", " + OddGuid(30) + ");";
        }
        for (unsigned i = 0; i < 80; ++i) {
            const std::string guid = random() % 12 == 0 ? "X'0011'" : BlobLiteral(GuidOf(random() % 30));
            rows += "insert or ignore into RELATION_TABLE values(" + Number(folders) + ", " + guid + ", " +
                    (random() % 8 == 0 ? "'text'" : Number(5)) + ");";
            rows += "insert or ignore into TAG_ITEM_RELATION_TABLE values(" + OddGuid(30) + ", " + OddGuid(20) + ");";
        }
        Sql(rows + "commit;");
    }

    std::mt19937 random{20240521};
    CurrentLibrary library;
};

TEST_F(LoadedBothWays, RandomRowsGiveTheSameTree) {
    for (int round = 0; round < 25; ++round) {
        for (const char* table :
             {"GALLERY_TABLE", "FOLDER_TABLE", "ITEM_TABLE", "RELATION_TABLE", "TAG_ITEM_RELATION_TABLE"}) {
            Sql(std::string("delete from ") + table);
        }
        FillAtRandom();
        for (const int gallery : {1, 2}) EXPECT_EQ(Loaded(gallery, true), Loaded(gallery, false)) << round;
    }
}

TEST_F(LoadedBothWays, ASmallGalleryInALargeFileGivesTheSameTree) {
    std::string rows =
        "begin; insert into GALLERY_TABLE values(1, 1); insert into FOLDER_TABLE(ID, PARENT_ID) values"
        "(1, -1), (2, 1), (3, 2), (4, -1);";
    for (unsigned i = 0; i < 400; ++i) {
        const std::string guid = BlobLiteral(GuidOf(i));
        rows += "insert into ITEM_TABLE(ITEM_ID, ITEM_NAME) values(" + guid + ", 'n" + std::to_string(i) + "');";
        rows += "insert into RELATION_TABLE values(" + std::string(i % 40 == 0 ? "3" : "4") + ", " + guid + ", 0);";
        rows += "insert into TAG_ITEM_RELATION_TABLE values(" + guid + ", " + BlobLiteral(GuidOf(i + 1000)) + ");";
    }
    Sql(rows + "commit;");
    const std::string loaded = Loaded(1, true);
    EXPECT_EQ(loaded, Loaded(1, false));
    EXPECT_NE(loaded.find("n360"), std::string::npos);
    EXPECT_EQ(loaded.find("n361"), std::string::npos);
}

TEST_F(LoadedBothWays, TablesWithoutTheirKeysAreReadRowByRow) {
    Sql("drop table RELATION_TABLE; create table RELATION_TABLE(PARENT_ID, ITEM_ID, ITEM_INDEX)");
    FillAtRandom();
    TreeRows rows;
    EXPECT_FALSE(library.Tools()->QueryTree(1, rows));
    EXPECT_EQ(Loaded(1, true), Loaded(1, false));
}

TEST_F(LoadedBothWays, FolderNumbersThatAreNoIntegersAreReadRowByRow) {
    FillAtRandom();
    Sql("insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME) values(8589934595, 1, 'beyond 32 bits')");
    TreeRows rows;
    EXPECT_FALSE(library.Tools()->QueryTree(1, rows));
    EXPECT_EQ(Loaded(1, true), Loaded(1, false));
}

TEST_F(LoadedBothWays, WithoutShortcutsNothingIsReadAtOnce) {
    FillAtRandom();
    TreeRows rows;
    EXPECT_TRUE(library.Tools()->QueryTree(1, rows));
    library.Tools()->SetShortcuts(false);
    EXPECT_FALSE(library.Tools()->QueryTree(1, rows));
}

TEST(FolderRowsCost, TheNumberOfStatementsDoesNotGrowWithTheTree) {
    const SqlTrace trace;
    const CurrentLibrary library;
    StoredTree tree(library.Tools());
    for (unsigned i = 0; i < 20; ++i) {
        CQFolder* folder = AddSub(tree.Gallery(), "F");
        folder->InsertOrUpdateFolder();
        for (unsigned k = 0; k < 3; ++k) folder->AddItemDb(NewItem(i * 3 + k + 1), 1);
    }
    const std::size_t before = trace.Statements().size();
    LoadedTree loaded(library.Tools());
    EXPECT_LT(trace.Statements().size() - before, 20u);
    EXPECT_NE(loaded.Item(60), nullptr);
}

TEST_F(LoadedBothWays, RowNumbersBeyond32Bits_AreNotTakenForOthers) {
    Sql("insert into GALLERY_TABLE values(1, 1)");
    Sql("insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME) values(1, -1, 'root'), (2, 1, 'two'), "
        "(4294967299, 1, 'beyond'), (3, 2, 'three')");
    for (const bool shortcuts : {false, true}) {
        library.Tools()->SetShortcuts(shortcuts);
        CQGallery root;
        root.SetFolderID(1);
        root.SetDBTools(library.Tools());
        ASSERT_EQ(root.LoadTreeFromDb(), 1);
        EXPECT_EQ(Names(root.GetFolderList()), std::vector<std::string>{"two"}) << shortcuts;
        EXPECT_EQ(Names(root.GetFirstSubFolder()->GetFolderList()), std::vector<std::string>{"three"}) << shortcuts;
    }
    library.Tools()->SetShortcuts(true);
}

// Sub-folders stand against the order of their index, so every one of the lists is put in order.
TEST_F(LoadedBothWays, LoadOfAWideTree_LooksAtEachFolderAFewTimes) {
    constexpr int kFolders = 20000;
    Sql("begin; insert into GALLERY_TABLE values(1, 1);"
        "with recursive n(i) as (select 1 union all select i + 1 from n where i < " +
        std::to_string(kFolders) +
        ") insert into FOLDER_TABLE(ID, PARENT_ID, FOLDER_NAME, ORDER_INDEX) "
        "select i, case i when 1 then -1 else i / 2 end, 'f', -i from n; commit");
    CQGallery root;
    root.SetFolderID(1);
    root.SetDBTools(library.Tools());
    const std::uint64_t before = FolderNumbers::VisitsSoFar();
    ASSERT_EQ(root.LoadTreeFromDb(), 1);
    EXPECT_LE(FolderNumbers::VisitsSoFar() - before, 3u * kFolders);
    EXPECT_EQ(root.GetFolderList()->GetHead()->GetDBId(), 3);
    // Numbers given afterwards are free all the same.
    CQFolder* added = AddSub(root, "added");
    root.GetFolderList()->GetHead()->AddFolder(new CQFolder("last", 0, 0, 0), 1, 1);
    EXPECT_EQ(FolderInside::StorageNumber(*added), 0u);
    EXPECT_EQ(FolderInside::StorageNumber(*root.GetFolderList()->GetHead()->GetFolderList()->GetTail()),
              static_cast<DWORD>(kFolders));
}

}  // namespace
}  // namespace qfc::test
