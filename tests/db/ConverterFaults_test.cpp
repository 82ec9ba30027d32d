// Names that cannot be converted for a lack of memory are not stored, and payloads that cannot be unpacked for it are
// not called damaged.
#include "tests/support/ConverterFaults.h"

#include "db/LibrarySnapshot.h"
#include "platform/text/CodePages.h"
#include "tests/db/LibraryCheckTest.h"

#include <set>

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

// A path that cannot be converted names no file: another one would be opened, or made, in its place.
class PathsThatCannotBeConverted : public NamesThatCannotBeConverted {
protected:
    void SetUp() override {
        m_path = m_folder / "caf\xE9.db";
        Open();
        EXPECT_TRUE(AddGallery(1) >= 0);
        m_tools.reset();
    }
    std::set<std::string> Files() const {
        const auto names = m_folder.Entries();
        return {names.begin(), names.end()};
    }
    const std::string m_other = m_folder / "autre\xE9.db";
};

TEST_F(PathsThatCannotBeConverted, NoLibraryIsOpenedOrMade) {
    const auto open = [](const std::string& path) {
        bool ok = true;
        const DBTools tools(CString(path.c_str()), ok);
        return ok;
    };
    const auto before = Files();
    OnNewThread([&] {
        {
            const ConverterFaults faults;
            EXPECT_FALSE(open(m_path));
            EXPECT_FALSE(open(m_other));
            EXPECT_GT(faults.Refused(), 0);
        }
        EXPECT_EQ(Files(), before);
        EXPECT_TRUE(open(m_path));
    });
}

TEST_F(PathsThatCannotBeConverted, NothingIsExported) {
    Open();
    const auto before = Files();
    OnNewThread([&] {
        {
            const ConverterFaults faults;
            EXPECT_FALSE(m_tools->ExportDatabase(CString(m_other.c_str())));
            EXPECT_GT(faults.Refused(), 0);
        }
        EXPECT_EQ(Files(), before);
        EXPECT_TRUE(m_tools->ExportDatabase(CString(m_other.c_str())));
    });
    EXPECT_EQ(RawDb(m_folder / "autre\xC3\xA9.db").Cell("select GALLERY_ID from GALLERY_TABLE"), "1");
}

TEST_F(PathsThatCannotBeConverted, NothingIsCheckedOrCopied) {
    const auto before = Files();
    OnNewThread([&] {
        std::vector<qfc::LibraryFinding> findings;
        {
            const ConverterFaults faults;
            EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 0);
            EXPECT_EQ(fnSnapshotLibrary(m_path.c_str(), m_other.c_str()), 0);
            EXPECT_GT(faults.Refused(), 0);
        }
        EXPECT_TRUE(findings.empty());
        EXPECT_EQ(Files(), before);
        EXPECT_EQ(fnCheckLibrary(m_path.c_str(), findings), 1);
        EXPECT_EQ(fnSnapshotLibrary(m_path.c_str(), m_other.c_str()), 1);
    });
    EXPECT_EQ(RawDb(m_folder / "autre\xC3\xA9.db").Cell("select GALLERY_ID from GALLERY_TABLE"), "1");
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
