#include "db/EffectRecords.h"
#include "db/TreeRows.h"
#include "tags/TagRecords.h"
#include "tests/db/DbTestSupport.h"

#include <filesystem>
#include <functional>

// A disk that fails while the library is read, exported and opened.

namespace {

using namespace qfc::test;

const GUID kHeldOnce = MakeGuid(1);
const GUID kTag = MakeGuid(201);

CTagCategory MakeCategory() {
    CTagCategory category;
    category.m_guid = MakeGuid(200);
    category.m_strName = "people";
    CLibTag& tag = category.m_tags.emplace_back();
    tag.m_guid = kTag;
    tag.m_guidCategory = category.m_guid;
    return category;
}

// What is read, as text: all of it, or nothing behind a false.
struct Reading {
    const char* name;
    std::function<bool(DBTools&, std::string&)> run;
};

std::ostream& operator<<(std::ostream& stream, const Reading& reading) { return stream << reading.name; }

template <typename Ask>
auto Rows(Ask ask) {
    return [ask](DBTools& tools, std::string& seen) {
        CppSQLite3Query query;
        if (!ask(tools, query)) return false;
        for (; !query.eof(); query.nextRow()) {
            int length = 0;
            const unsigned char* bytes = query.getBlobField(0, length);
            seen += std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)) + ";";
        }
        return true;
    };
}

const Reading kReadings[] = {
    {"Folder", Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryFolder(2, query); })},
    {"ChildFolders", Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryChildFolders(1, query); })},
    {"FolderItems", Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryFolderItems(2, query); })},
    {"Item", Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryItem(kHeldOnce, query); })},
    {"ItemTags", Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryItemTags(kHeldOnce, query); })},
    {"ItemByName", Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryItemByName("clip", query); })},
    {"CacheData",
     Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryCacheData(kHeldOnce, 1, query); })},
    {"CacheDataByType",
     Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryCacheDataByType(1, query); })},
    {"TagItems", Rows([](DBTools& tools, CppSQLite3Query& query) { return tools.QueryTagItems(kTag, query); })},
    {"Galleries",
     [](DBTools& tools, std::string& seen) {
         std::vector<qfc::StoredGallery> galleries;
         const bool read = tools.QueryGalleries(galleries);
         for (const auto& gallery : galleries) seen += std::to_string(gallery.galleryId) + gallery.name.GetString();
         return read;
     }},
    {"CacheSizes",
     [](DBTools& tools, std::string& seen) {
         std::vector<qfc::PayloadSize> sizes;
         const bool read = tools.QueryCacheSizes(1, sizes);
         for (const auto& size : sizes) seen += std::to_string(size.compressedSize) + ";";
         return read;
     }},
    {"Tree",
     [](DBTools& tools, std::string& seen) {
         qfc::TreeRows rows;
         const bool read = tools.QueryTree(1, rows);
         for (const auto& folder : rows.folders) seen += std::to_string(folder.id) + ";";
         for (const auto& item : rows.items) seen += qfc::GuidToText(item.itemId) + ";";
         seen += std::to_string(rows.placements.size()) + ";" + std::to_string(rows.tags.size());
         return read;
     }},
    {"FilterFiles",
     [](DBTools& tools, std::string& seen) {
         std::vector<DS_Filter_File_Record> files;
         const bool read = tools.LoadFilterFiles(files);
         for (const auto& file : files) seen += file.strFileName.GetString() + std::to_string(file.filters.size());
         return read;
     }},
    {"Transitions",
     [](DBTools& tools, std::string& seen) {
         std::vector<DS_Transition_Record> transitions;
         const bool read = tools.LoadTransitions(transitions);
         for (const auto& transition : transitions) seen += std::to_string(transition.descriptor.size()) + ";";
         return read;
     }},
    {"Tags",
     [](DBTools& tools, std::string& seen) {
         std::vector<CTagCategory> categories;
         const bool read = tools.LoadTags(categories);
         for (const auto& category : categories) seen += std::to_string(category.m_tags.size()) + ";";
         return read;
     }},
};

class DBToolsReadFaults : public LibraryTest, public testing::WithParamInterface<Reading> {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        const int folder = AddFolder("a", AddGallery(1));
        ASSERT_TRUE(AddItem(1, folder, 0, Noise(30000)));
        ASSERT_TRUE(AddItem(2, folder, 1, Noise(5000)));
        ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakeCategory()}));
        ASSERT_TRUE(m_tools->InsertTag2Item(kHeldOnce, kTag));
        DS_Filter_File_Record file{"fx.so", 1, {{{1}, {2}, kHeldOnce}}, 1};
        ASSERT_TRUE(m_tools->SaveFilterFile(file));
        file.strFileName = "other.so";
        file.filters[0].guidItem = kTag;
        ASSERT_TRUE(m_tools->SaveFilterFile(file));
        for (const GUID& guid : {kHeldOnce, kTag}) {
            ASSERT_TRUE(m_tools->SaveTransition({"mix.so", std::vector<BYTE>(9000, 3), guid, 1}));
        }
        ASSERT_TRUE(GetParam().run(*m_tools, m_whole));
        ASSERT_FALSE(m_whole.empty());
    }

    void FailEveryCall(bool sticky) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE("call " + std::to_string(n));
            Open();
            m_disk.FailAt(n, sticky, FaultVfs::Counted::kEverything);
            std::string seen;
            const bool result = GetParam().run(*m_tools, seen);
            const bool failed = m_disk.HasFailed();
            m_disk.Heal();
            EXPECT_TRUE(!result || seen == m_whole) << seen;
            std::string again;
            EXPECT_TRUE(GetParam().run(*m_tools, again)) << "does not recover";
            EXPECT_EQ(again, m_whole);
            if (HasFailure()) return;
            if (failed) continue;
            EXPECT_TRUE(result);
            EXPECT_GT(n, 2) << "hardly any call was seen";
            return;
        }
    }

    std::string m_whole;
};

INSTANTIATE_TEST_SUITE_P(Readings, DBToolsReadFaults, testing::ValuesIn(kReadings),
                         [](const auto& reading) { return std::string(reading.param.name); });

TEST_P(DBToolsReadFaults, FailingOnceAtAnyCallIsAllOrNothing) { FailEveryCall(false); }

TEST_P(DBToolsReadFaults, FailingFromAnyCallOnIsAllOrNothing) { FailEveryCall(true); }

// A number has no false: what cannot be read is no gallery.
TEST(DBToolsNumberFaults, GalleryIsTheRightOneOrNone) {
    FaultVfs disk;
    const TempFolder folder;
    for (int n = 1;; ++n) {
        bool ok = false;
        DBTools tools(CString((folder / "library.db").c_str()), ok);
        ASSERT_TRUE(ok);
        ASSERT_TRUE(n > 1 || tools.InsertGallery(6, 11));
        disk.FailAt(n, false, FaultVfs::Counted::kEverything);
        const int root = tools.GetGalleryIdByFolder(6);
        const bool failed = disk.HasFailed();
        disk.Heal();
        EXPECT_TRUE(root == 11 || (root == -1 && failed)) << "call " << n << ": " << root;
        if (HasFailure() || !failed) break;
    }
}

using DBToolsFileFaults = LibraryTest;

// A false leaves what was there and was copied so far; a true is the whole library. The source is never touched.
TEST_F(DBToolsFileFaults, ExportIsWholeOrFalse) {
    ASSERT_TRUE(AddItem(1, AddGallery(1), 0, Noise(30000)));
    const std::string whole = DumpOf(m_path);
    const std::string target = m_folder / "export.db";
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE("call " + std::to_string(n));
            std::filesystem::remove(target);
            std::filesystem::remove(target + "-journal");
            m_disk.FailAt(n, sticky, FaultVfs::Counted::kEverything);
            const bool result = m_tools->ExportDatabase(target.c_str());
            const bool failed = m_disk.HasFailed();
            m_disk.Heal();
            EXPECT_TRUE(result || failed);
            EXPECT_TRUE(!result || DumpOf(target) == whole);
            EXPECT_EQ(DumpOf(m_path), whole);
            if (HasFailure() || !failed) break;
        }
    }
    EXPECT_TRUE(m_tools->ExportDatabase(target.c_str()));
}

// A library that could not be opened is none; the next start completes what was made of it.
TEST_F(DBToolsFileFaults, OpeningANewLibraryIsWholeOrFalse) {
    const std::string whole = DumpOf(m_path);
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE("call " + std::to_string(n));
            const std::string path = m_folder / "other.db";
            std::filesystem::remove(path);
            std::filesystem::remove(path + "-journal");
            m_disk.FailAt(n, sticky, FaultVfs::Counted::kEverything);
            bool ok = true;
            { const DBTools tools(CString(path.c_str()), ok); }
            const bool failed = m_disk.HasFailed();
            m_disk.Heal();
            EXPECT_TRUE(ok || failed);
            bool again = false;
            { const DBTools tools(CString(path.c_str()), again); }
            EXPECT_TRUE(again) << "does not recover";
            EXPECT_EQ(DumpOf(path), whole);
            if (HasFailure() || !failed) break;
        }
    }
}

}  // namespace
