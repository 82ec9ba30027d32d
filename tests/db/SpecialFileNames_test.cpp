#include "db/LibraryCheck.h"
#include "db/LibrarySnapshot.h"
#include "tests/db/DbTestSupport.h"

#include <filesystem>

namespace {

using namespace qfc::test;

// Names that mean something else than a file to SQLite. They are relative, so the working folder is the test's own.
class SpecialFileNames : public LibraryTest, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override {
        std::filesystem::current_path(m_folder.Path());
        LibraryTest::SetUp();
        AddGallery(1);
    }
    void TearDown() override { std::filesystem::current_path(m_before); }

    std::filesystem::path m_before = std::filesystem::current_path();
};

INSTANTIATE_TEST_SUITE_P(Names, SpecialFileNames,
                         testing::Values(":memory:", "file:other.db", "file::memory:?cache=shared", "plain.db"));

TEST_P(SpecialFileNames, OpeningMakesAFileOfThatName) {
    bool ok = false;
    const DBTools tools(CString(GetParam()), ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(GetParam())));
    EXPECT_EQ(m_folder.Entries().size(), 2U);
}

TEST_P(SpecialFileNames, ExportMakesAFileOfThatName) {
    EXPECT_TRUE(m_tools->ExportDatabase(GetParam()));
    EXPECT_TRUE(std::filesystem::exists(std::filesystem::path(GetParam())));
    EXPECT_EQ(DumpOf(m_folder / GetParam()), DumpOf(m_path));
}

TEST_P(SpecialFileNames, SourceThatIsNoFileIsNotCopied) {
    m_folder.Write("target.db", "something else");
    EXPECT_EQ(fnSnapshotLibrary(GetParam(), "target.db"), 0);
    EXPECT_EQ(ReadFile(m_folder / "target.db"), "something else");
    EXPECT_EQ(fnSnapshotLibrary("library.db", GetParam()), 1);
    EXPECT_EQ(DumpOf(m_folder / GetParam()), DumpOf(m_path));
    EXPECT_EQ(m_folder.Entries().size(), 3U);
}

TEST_P(SpecialFileNames, NameThatIsNoFileIsNotExamined) {
    std::vector<qfc::LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(GetParam(), findings), 0);
    EXPECT_EQ(m_folder.Entries().size(), 1U);
}

using EmptyFileName = SpecialFileNames;

TEST_F(EmptyFileName, IsNoFile) {
    bool ok = true;
    DBTools tools("", ok);
    EXPECT_FALSE(ok);
    EXPECT_FALSE(tools.InsertGallery(1, 1));
    EXPECT_FALSE(m_tools->ExportDatabase(""));
    std::vector<qfc::LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary("", findings), 0);
    EXPECT_EQ(fnSnapshotLibrary("", "copy.db"), 0);
    EXPECT_EQ(fnSnapshotLibrary("library.db", ""), 0);
    EXPECT_EQ(m_folder.Entries().size(), 1U);
}

}  // namespace
