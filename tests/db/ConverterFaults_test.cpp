// Names that cannot be converted for a lack of memory are not stored, and payloads that cannot be unpacked for it are
// not called damaged.
#include "tests/support/ConverterFaults.h"

#include "platform/text/CodePages.h"
#include "tests/db/LibraryCheckTest.h"

namespace {

using namespace qfc::test;

class NamesThatCannotBeConverted : public LibraryTest {
protected:
    NamesThatCannotBeConverted() { EXPECT_TRUE(qfc::SetAnsiCodePage("CP1252")); }
    ~NamesThatCannotBeConverted() override { qfc::SetAnsiCodePage("UTF-8"); }
};

TEST_F(NamesThatCannotBeConverted, FoldersAndItemsStayAsTheyAre) {
    const int root = AddGallery(1);
    const int folder = AddFolder("Rome \xE9", root);
    ASSERT_TRUE(AddItem(1, folder));
    const std::string before = DumpOf(m_path);
    OnNewThread([&] {
        {
            const ConverterFaults faults;
            EXPECT_EQ(AddFolder("Paris", root), -1);
            int row = folder;
            EXPECT_FALSE(m_tools->InsertOrUpdateFolder("1.0", 0, "Paris", -1, -1, 0, root, 0, -1, row));
            EXPECT_FALSE(AddItem(2, folder));
            EXPECT_FALSE(m_tools->UpdateItemDB(MakeItem(1, "Paris"), {}));
            EXPECT_GT(faults.Refused(), 0);
        }
        EXPECT_EQ(DumpOf(m_path), before);
        int row = folder;
        EXPECT_TRUE(m_tools->InsertOrUpdateFolder("1.0", 0, "Paris \xE9", -1, -1, 0, root, 0, -1, row));
        EXPECT_TRUE(m_tools->UpdateItemDB(MakeItem(1, "Paris"), {}));
    });
    EXPECT_EQ(RawDb(m_path).Cell("select FOLDER_NAME from FOLDER_TABLE where ID = " + std::to_string(folder)),
              "'Paris \xC3\xA9'");
    EXPECT_EQ(RawDb(m_path).Cell("select ITEM_NAME from ITEM_TABLE"), "'Paris'");
}

using PayloadsThatCannotBeUnpacked = LibraryCheckTest;

TEST_F(PayloadsThatCannotBeUnpacked, AreNotCalledDamaged) {
    OnNewThread([&] {
        std::vector<qfc::LibraryFinding> findings;
        {
            const ConverterFaults faults;
            EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 0);
            EXPECT_GT(faults.Refused(), 0);
        }
        EXPECT_TRUE(findings.empty());
        EXPECT_TRUE(Check().empty());
    });
}

}  // namespace
