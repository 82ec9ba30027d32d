#include "db/LibraryCheck.h"
#include "db/LibrarySnapshot.h"
#include "platform/os/Files.h"
#include "platform/text/CodePages.h"
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

// Bytes that are no UTF-8 name a file to the operating system, but none that can be opened by a wide path: SQLite would
// open another one, in which the bytes are replaced.
using NameThatIsNoText = SpecialFileNames;
constexpr char kNoText[] = "caf\xE9.db";

TEST_F(NameThatIsNoText, FailsWithCantOpenEverywhere) {
    std::filesystem::copy_file(m_path, kNoText);
    const std::string before = ReadFile(kNoText);
    bool ok = true;
    DBTools tools(kNoText, ok);
    EXPECT_FALSE(ok);
    EXPECT_FALSE(tools.InsertGallery(1, 1));
    CppSQLite3DB db;
    for (const auto open : {&CppSQLite3DB::open, &CppSQLite3DB::openReadOnly}) {
        try {
            (db.*open)(kNoText);
            ADD_FAILURE() << "opened";
        } catch (const CppSQLite3Exception& error) {
            EXPECT_EQ(error.errorCode(), 14);
        }
    }
    db.open("library.db");
    EXPECT_EQ(db.backupTo(kNoText), 14);
    EXPECT_FALSE(m_tools->ExportDatabase(kNoText));
    std::vector<qfc::LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(kNoText, findings), 0);
    EXPECT_EQ(fnSnapshotLibrary(kNoText, "copy.db"), 0);
    EXPECT_EQ(fnSnapshotLibrary("library.db", kNoText), 0);
    EXPECT_EQ(ReadFile(kNoText), before);
    EXPECT_EQ(m_folder.Entries().size(), 2U);
}

class NameInAnotherCodePage : public SpecialFileNames {
protected:
    void SetUp() override {
        SpecialFileNames::SetUp();
        ASSERT_TRUE(qfc::SetAnsiCodePage("CP1252"));
    }
    void TearDown() override {
        qfc::SetAnsiCodePage("UTF-8");
        SpecialFileNames::TearDown();
    }
};

TEST_F(NameInAnotherCodePage, IsTheFileOfTheNameInUtf8) {
    bool ok = false;
    {
        DBTools tools(kNoText, ok);
        EXPECT_TRUE(ok);
        EXPECT_TRUE(tools.InsertGallery(7, 1));
    }
    EXPECT_TRUE(std::filesystem::exists("caf\xC3\xA9.db"));
    CppSQLite3DB db;
    EXPECT_NO_THROW(db.openReadOnly(kNoText));
    std::vector<qfc::LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(kNoText, findings), 1);
    EXPECT_EQ(fnSnapshotLibrary(kNoText, "th\xE9.db"), 1);
    EXPECT_EQ(DumpOf(m_folder / "th\xC3\xA9.db"), DumpOf(m_folder / "caf\xC3\xA9.db"));
    EXPECT_EQ(m_folder.Entries().size(), 3U);
}

// Two bytes each in UTF-8, one unit each in UTF-16: units are what counts.
TEST_F(NameInAnotherCodePage, OfMoreBytesThanUnitsMayHave260Units) {
    const std::string folder = std::string(100, '\xE4') + "/" + std::string(100, '\xF6');
    std::filesystem::create_directories(qfc::NativePath(folder.c_str()));
    const std::string longest = folder + "/" + std::string(260 - folder.size() - 1, 'u');
    ASSERT_EQ(longest.size(), 260U);
    CppSQLite3DB db;
    EXPECT_NO_THROW(db.open(longest.c_str()));
    EXPECT_TRUE(std::filesystem::exists(qfc::NativePath(longest.c_str())));
    EXPECT_THROW(db.open((longest + "u").c_str()), CppSQLite3Exception);
}

// Of three bytes each in UTF-8 a path has too many bytes long before it has too many units.
TEST_F(NameInAnotherCodePage, MayHave504BytesWithItsFolders) {
    ASSERT_TRUE(qfc::SetAnsiCodePage("CP874"));
    const std::string folder(82, '\xA1');
    const std::size_t before = std::filesystem::current_path().string().size() + 1 + 3 * folder.size() + 1;
    ASSERT_LT(before, 504U);
    std::filesystem::create_directories(qfc::NativePath(folder.c_str()));
    const std::size_t left = 504 - before;
    const std::string longest = folder + "/" + std::string(left / 3, '\xA1') + std::string(left % 3, 'u');
    EXPECT_TRUE(CppSQLite3DB::takesPath(longest.c_str()));
    bool ok = false;
    DBTools tools(CString(longest.c_str()), ok);
    EXPECT_TRUE(ok);
    EXPECT_TRUE(tools.InsertGallery(7, 1));
    const std::string longer = longest + "u";
    EXPECT_FALSE(CppSQLite3DB::takesPath(longer.c_str()));
    CppSQLite3DB db;
    try {
        db.open(longer.c_str());
        ADD_FAILURE() << "opened";
    } catch (const CppSQLite3Exception& error) {
        EXPECT_EQ(error.errorCode(), 14);
    }
    EXPECT_FALSE(m_tools->ExportDatabase(longer.c_str()));
}

}  // namespace
