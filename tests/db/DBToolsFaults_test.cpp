#include "db/EffectRecords.h"
#include "tags/TagRecords.h"
#include "tests/db/DbTestSupport.h"
#include "tests/support/MemoryFaults.h"

#include <filesystem>
#include <functional>
#include <optional>

namespace {

using namespace qfc::test;

struct Operation {
    const char* name;
    std::function<bool(DBTools&)> run;
    const char* prepare = "";
};

std::ostream& operator<<(std::ostream& stream, const Operation& operation) { return stream << operation.name; }

const GUID kHeldOnce = MakeGuid(1);
const GUID kHeldTwice = MakeGuid(2);
const GUID kCategory = MakeGuid(200);
const GUID kTags[] = {MakeGuid(201), MakeGuid(202), MakeGuid(203)};  // Of the category; the first two are linked.

// A category of three tags, the first with a picture.
CTagCategory MakeCategory(const char* name) {
    CTagCategory category;
    category.m_guid = kCategory;
    category.m_strName = name;
    for (const GUID& guid : kTags) {
        CLibTag& tag = category.m_tags.emplace_back();
        tag.m_guid = guid;
        tag.m_guidCategory = kCategory;
        tag.m_strName = name;
    }
    category.m_tags.front().m_nPictureSize = 9000;
    category.m_tags.front().m_pPicture = std::make_shared<const std::vector<BYTE>>(9000, BYTE{7});
    return category;
}

// A file of two filters, of the items that are held.
DS_Filter_File_Record MakeFilterFile(const char* name, BYTE fill) {
    DS_Filter_File_Record file;
    file.strFileName = name;
    file.nFilterCount = 2;
    for (const GUID& guid : {kHeldOnce, kHeldTwice}) {
        file.filters.push_back({std::vector<BYTE>(8, fill), std::vector<BYTE>(456, fill), guid});
    }
    return file;
}

DS_Transition_Record MakeTransition(int number, BYTE fill) {
    DS_Transition_Record transition;
    transition.strFileName = "mix.so";
    transition.descriptor.assign(3000, fill);
    transition.guidItem = MakeGuid(number);
    return transition;
}

// What the operations are given, made once, so that a lack of memory strikes inside them only.
struct Given {
    Bytes large = Noise(40000);
    Bytes small = Noise(9000, 7);
    qfc::PayloadWrite cache = qfc::PackPayload(qfc::kBitmapCache, large);
    qfc::PayloadWrite blackBox = qfc::PackPayload(qfc::kBlackBox, small);
    qfc::ItemRow added = MakeItem(50);
    qfc::ItemRow renamed = MakeItem(1, "renamed");
    CString version = "1";
    CString name = "new";
    std::vector<CTagCategory> categories{MakeCategory("new")};
    std::list<CTagCategory> categoryList{MakeCategory("new")};
    DS_Filter_File_Record filterFile = MakeFilterFile("new.so", 2);
    DS_Transition_Record transition = MakeTransition(50, 2);
    CString filterName = "old.so";
    CString transitionName = "mix.so";
    std::vector<DS_Filter_File_Record> filterFiles{MakeFilterFile("none.so", 1), MakeFilterFile("old.so", 1)};
    std::vector<DS_Transition_Record> transitions{{"none.so", {}, {}, 1}, MakeTransition(2, 1)};
    std::vector<GUID> items{MakeGuid(1), MakeGuid(2), MakeGuid(3)};
};

const Given& TheGiven() {
    static const Given given;
    return given;
}

bool WriteFolder(DBTools& tools, int number) {
    return tools.InsertOrUpdateFolder(TheGiven().version, 0, TheGiven().name, 0, 0, 0, 1, 0, 0, number);
}

const Operation kOperations[] = {
    {"AddItem",
     [](DBTools& tools) {
         return tools.AddItemDb(TheGiven().added, {&TheGiven().cache, 1}, 2, 9);
     }},
    {"UpdateItem",
     [](DBTools& tools) {
         return tools.UpdateItemDB(TheGiven().renamed, {&TheGiven().blackBox, 1});
     }},
    {"UpdateCacheData", [](DBTools& tools) { return tools.UpdateCacheData(kHeldTwice, TheGiven().cache); }},
    {"InsertGallery", [](DBTools& tools) { return tools.InsertGallery(7, 70); }},
    {"InsertFolder", [](DBTools& tools) { return WriteFolder(tools, -1); }},
    {"UpdateFolder", [](DBTools& tools) { return WriteFolder(tools, 2); }},
    {"ReorderItem", [](DBTools& tools) { return tools.ReOrderItemsDb(kHeldOnce, 2, 77); }},
    {"RemoveItemWithPayload", [](DBTools& tools) { return tools.DeleteItemFromFolder(kHeldOnce, 2); }},
    {"RemovePlacement", [](DBTools& tools) { return tools.DeleteItemFromFolder(kHeldTwice, 2); }},
    {"DeleteCacheData", [](DBTools& tools) { return tools.DeleteCacheData(kHeldOnce, qfc::kBlackBox); }},
    {"DeleteAllCacheData", [](DBTools& tools) { return tools.DeleteAllCacheData(kHeldOnce); }},
    {"DeleteItemRow", [](DBTools& tools) { return tools.DeleteItemRow(kHeldOnce); }},
    {"DeleteRelation", [](DBTools& tools) { return tools.DeleteRelation(kHeldOnce, 2); }},
    {"DeleteFolderRow", [](DBTools& tools) { return tools.DeleteFolderRow(2); }},
    {"InsertAutoLoadedItem", [](DBTools& tools) { return tools.InsertAutoLoadedItem(kHeldOnce, 2); }},
    {"InsertAutoLoadedFile", [](DBTools& tools) { return tools.InsertAutoLoadedFile(TheGiven().name, 2); }},
    {"DeleteTrees",
     [](DBTools& tools) {
         const int galleries[] = {1, 2};
         return tools.DeleteFolderTrees(galleries);
     }},
    {"SaveCategoriesAndTags", [](DBTools& tools) { return tools.SaveCategoriesAndTags(TheGiven().categoryList); }},
    {"UpdateCategories", [](DBTools& tools) { return tools.UpdateCategories(TheGiven().categories); }},
    {"UpdateTags", [](DBTools& tools) { return tools.UpdateTags(TheGiven().categories.front().m_tags); }},
    {"DeleteCategories",
     [](DBTools& tools) {
         return tools.DeleteCategories({&kCategory, 1});
     }},
    {"DeleteTags", [](DBTools& tools) { return tools.DeleteTags(kTags); }},
    {"InsertTags2Items", [](DBTools& tools) { return tools.InsertTags2Items(TheGiven().items, kTags); }},
    {"DeleteTagsFromItems", [](DBTools& tools) { return tools.DeleteTagsFromItems(TheGiven().items, kTags); }},
    {"MergeTags", [](DBTools& tools) { return tools.MergeTags(kTags, kTags[2]); }},
    {"SaveFilterFile", [](DBTools& tools) { return tools.SaveFilterFile(TheGiven().filterFile); }},
    {"DeleteFilterFile", [](DBTools& tools) { return tools.DeleteFilterFile(TheGiven().filterName); }},
    {"SaveTransition", [](DBTools& tools) { return tools.SaveTransition(TheGiven().transition); }},
    {"DeleteTransitionFile", [](DBTools& tools) { return tools.DeleteTransitionFile(TheGiven().transitionName); }},
    {"DeleteFilterFiles", [](DBTools& tools) { return tools.DeleteFilterFiles(TheGiven().filterFiles); }},
    {"DeleteTransitionFiles", [](DBTools& tools) { return tools.DeleteTransitionFiles(TheGiven().transitions); }},
    {"ClearFiltersAndTransitions", [](DBTools& tools) { return tools.ClearFiltersAndTransitions(); }},
    {"Clear", [](DBTools& tools) { return tools.ClearDatabase(); }},
    {"AddFolderOrder", [](DBTools& tools) { return tools.AddFolderOrderIndexColumn() != 0; },
     "ALTER TABLE FOLDER_TABLE DROP COLUMN ORDER_INDEX"},
};

// One library, one operation, and a disk that fails somewhere on its way.
class DBToolsFaults : public LibraryTest, public testing::WithParamInterface<Operation> {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        const int root = AddGallery(1);
        const int folder = AddFolder("a", root);
        const int other = AddFolder("b", AddGallery(2));
        ASSERT_TRUE(AddItem(1, folder, 0, Noise(30000)));
        ASSERT_TRUE(AddItem(2, folder, 1, Noise(5000)));
        ASSERT_TRUE(AddItem(2, other));
        ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakeCategory("old")}));
        ASSERT_TRUE(m_tools->InsertTags2Items({&kHeldOnce, 1}, {kTags, 2}));
        ASSERT_TRUE(m_tools->InsertTag2Item(kHeldTwice, kTags[0]));
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFilterFile("old.so", 1)));
        ASSERT_TRUE(m_tools->SaveTransition(MakeTransition(2, 1)));
        m_tools.reset();
        Exec(GetParam().prepare);
        m_before = DumpOf(m_path);
        std::filesystem::copy_file(m_path, m_kept);
        Open();
        ASSERT_TRUE(GetParam().run(*m_tools));
        m_tools.reset();
        m_behind = DumpOf(m_path);
        ASSERT_NE(m_before, m_behind);
    }

    void StartOver() {
        m_tools.reset();
        std::filesystem::copy_file(m_kept, m_path, std::filesystem::copy_options::overwrite_existing);
        Open();
    }

    // True and the new state, or false and the old one. And nothing hangs over: the same object works again once the
    // disk does.
    void ExpectWhole(bool result) {
        const std::string seen = DumpOf(m_path);
        EXPECT_EQ(seen, result ? m_behind : m_before) << "reported as " << result;
        if (seen != m_before) return;
        EXPECT_TRUE(GetParam().run(*m_tools)) << "does not recover";
        EXPECT_EQ(DumpOf(m_path), m_behind);
    }

    // Fails the n-th call for n = 1, 2, ... until nothing fails any more.
    void FailEveryCall(bool sticky, FaultVfs::Counted counted = FaultVfs::Counted::kChanges) {
        constexpr int kEnough = 400;
        for (int n = 1; n < kEnough; ++n) {
            SCOPED_TRACE("call " + std::to_string(n));
            StartOver();
            m_disk.FailAt(n, sticky, counted);
            const bool result = GetParam().run(*m_tools);
            const bool failed = m_disk.HasFailed();
            m_disk.Heal();
            ExpectWhole(result);
            if (HasFailure()) return;
            if (failed) continue;
            EXPECT_TRUE(result);
            EXPECT_GT(n, 4) << "hardly any call was seen";
            return;
        }
        FAIL() << "still failing after " << kEnough << " calls";
    }

    std::string m_kept = m_folder / "kept.db";
    std::string m_before;
    std::string m_behind;
};

INSTANTIATE_TEST_SUITE_P(Operations, DBToolsFaults, testing::ValuesIn(kOperations),
                         [](const auto& operation) { return std::string(operation.param.name); });

TEST_P(DBToolsFaults, FailingOnceAtAnyCallIsAllOrNothing) { FailEveryCall(false); }

TEST_P(DBToolsFaults, FailingFromAnyCallOnIsAllOrNothing) { FailEveryCall(true); }

TEST_P(DBToolsFaults, FailingOnceAtAnyCallThatReadsToo) { FailEveryCall(false, FaultVfs::Counted::kEverything); }

TEST_P(DBToolsFaults, FailingFromAnyCallThatReadsTooOn) { FailEveryCall(true, FaultVfs::Counted::kEverything); }

// No exception and no half of it, wherever the memory ends: in the operation's own values or inside SQLite.
TEST_P(DBToolsFaults, WithoutMemoryAtAnyCallIsAllOrNothing) {
    for (const bool sticky : {false, true}) {
        StartOver();
        for (int n = 1;; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            bool result = false;
            bool failed = false;
            {
                const MemoryFaults faults(n, sticky);
                EXPECT_NO_THROW(result = GetParam().run(*m_tools));
                failed = faults.HasFailed();
            }
            // A rollback takes memory, too: the next operation makes up for it.
            EXPECT_EQ(m_tools->GetGalleryIdByFolder(99), -1);
            EXPECT_EQ(DumpOf(m_path), result ? m_behind : m_before) << "reported as " << result;
            if (HasFailure()) return;
            if (!failed) {
                EXPECT_TRUE(result);
                EXPECT_GT(n, 10) << "hardly any allocation was seen";
                break;
            }
            if (result) StartOver();
        }
    }
}

TEST_P(DBToolsFaults, FullDiskIsAllOrNothing) {
    for (std::int64_t space = 0;; space += space < 4096 ? 512 : 4096) {
        SCOPED_TRACE(std::to_string(space) + " bytes left");
        StartOver();
        m_disk.LimitSpace(space);
        const bool result = GetParam().run(*m_tools);
        const bool failed = m_disk.HasFailed();
        m_disk.Heal();
        ExpectWhole(result);
        if (HasFailure()) return;
        if (failed) continue;
        EXPECT_TRUE(result);
        EXPECT_GT(space, 0);
        return;
    }
}

TEST_P(DBToolsFaults, CrashOfTheDiskThroughTheCloseIsAllOrNothing) {
    for (int n = 1;; ++n) {
        SCOPED_TRACE("call " + std::to_string(n));
        StartOver();
        m_disk.FailAt(n, true);
        const bool result = GetParam().run(*m_tools);
        const bool failed = m_disk.HasFailed();
        m_tools.reset();
        m_disk.Heal();
        const std::string seen = DumpOf(m_path);
        EXPECT_EQ(seen, result ? m_behind : m_before) << "reported as " << result;
        if (HasFailure() || !failed) return;
    }
}

using DBToolsOutOfMemory = LibraryTest;

TEST_F(DBToolsOutOfMemory, OpeningEitherWorksOrSaysThatItDoesNot) {
    for (const bool sticky : {false, true}) {
        for (int n = 1;; n += n < 100 ? 1 : 17) {
            std::filesystem::remove(m_folder / "new.db");
            const CString path((m_folder / "new.db").c_str());
            std::optional<DBTools> tools;
            bool ok = true;
            bool failed = false;
            {
                const MemoryFaults faults(n, sticky);
                ASSERT_NO_THROW(tools.emplace(path, ok)) << "allocation " << n;
                failed = faults.HasFailed();
            }
            EXPECT_EQ(tools->InsertGallery(1, n), ok) << "allocation " << n;
            if (!failed) {
                EXPECT_TRUE(ok);
                break;
            }
        }
    }
}

TEST_F(DBToolsOutOfMemory, QueriesGiveAllRowsOrNone) {
    const int folder = AddFolder("a", AddGallery(1));
    for (int number = 1; number <= 3; ++number) ASSERT_TRUE(AddItem(number, folder, number, Noise(3000)));
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            CppSQLite3Query rows;
            std::vector<qfc::StoredGallery> galleries;
            std::vector<qfc::PayloadSize> sizes;
            bool results[3] = {};
            bool failed = false;
            {
                const MemoryFaults faults(n, sticky);
                results[0] = m_tools->QueryFolderItems(folder, rows);
                results[1] = m_tools->QueryGalleries(galleries);
                results[2] = m_tools->QueryCacheSizes(qfc::kBlackBox, sizes);
                failed = faults.HasFailed();
            }
            int count = 0;
            for (; !rows.eof(); rows.nextRow()) ++count;
            EXPECT_EQ(count, results[0] ? 3 : 0) << "allocation " << n;
            EXPECT_EQ(galleries.size(), results[1] ? 1U : 0U) << "allocation " << n;
            EXPECT_TRUE(!results[1] || galleries[0].name == CString("root")) << "allocation " << n;
            EXPECT_EQ(sizes.size(), results[2] ? 3U : 0U) << "allocation " << n;
            if (HasFailure() || !failed) break;
        }
    }
}

// What a load leaves behind a false is what it had read; what it calls whole is whole.
TEST_F(DBToolsOutOfMemory, LoadsOfEffectsAreWholeOrFalse) {
    for (const char* name : {"a.so", "b.so"}) {
        DS_Filter_File_Record file = MakeFilterFile(name, 1);
        for (auto& filter : file.filters) filter.guidItem.Data2 = static_cast<std::uint16_t>(name[0]);
        ASSERT_TRUE(m_tools->SaveFilterFile(file));
    }
    for (const int number : {1, 2}) ASSERT_TRUE(m_tools->SaveTransition(MakeTransition(number, 1)));
    for (const bool sticky : {false, true}) {
        for (int n = 1;; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            std::vector<DS_Filter_File_Record> files;
            std::vector<DS_Transition_Record> transitions;
            bool results[2] = {};
            bool failed = false;
            {
                const MemoryFaults faults(n, sticky);
                results[0] = m_tools->LoadFilterFiles(files);
                results[1] = m_tools->LoadTransitions(transitions);
                failed = faults.HasFailed();
            }
            EXPECT_LE(files.size(), 2u);
            EXPECT_TRUE(!results[0] || files.size() == 2);
            for (const auto& file : files) {
                EXPECT_LE(file.filters.size(), 2u);
                EXPECT_TRUE(!results[0] || file.filters.size() == 2);
            }
            EXPECT_TRUE(!results[1] || transitions.size() == 2);
            if (HasFailure()) return;
            if (!failed) {
                EXPECT_TRUE(results[0] && results[1]);
                break;
            }
        }
    }
}

TEST_F(DBToolsOutOfMemory, PayloadIsPackedRawWithoutMemoryForTheCompressor) {
    const Bytes bytes = Repeated(1000, 1);
    ASSERT_GT(qfc::PackPayload(qfc::kFilm, bytes).compressedSize, 0);
    const MemoryFaults faults(1, true);
    const qfc::PayloadWrite payload = qfc::PackPayload(qfc::kFilm, bytes);
    EXPECT_TRUE(faults.HasFailed());
    EXPECT_EQ(payload.rawSize, 1000);
    EXPECT_EQ(payload.compressedSize, 0);
    EXPECT_EQ(payload.Stored().data(), bytes.data());
}

}  // namespace
