#include "tests/db/DbTestSupport.h"

#include <filesystem>
#include <functional>

namespace {

using namespace qfc::test;

struct Operation {
    const char* name;
    std::function<bool(DBTools&)> run;
};

std::ostream& operator<<(std::ostream& stream, const Operation& operation) { return stream << operation.name; }

const GUID kHeldOnce = MakeGuid(1);
const GUID kHeldTwice = MakeGuid(2);

const Operation kOperations[] = {
    {"AddItem",
     [](DBTools& tools) {
         const Bytes bytes = Noise(40000);
         const qfc::PayloadWrite payload = qfc::PackPayload(qfc::kBitmapCache, bytes);
         return tools.AddItemDb(MakeItem(50), {&payload, 1}, 2, 9);
     }},
    {"UpdateItem",
     [](DBTools& tools) {
         const Bytes bytes = Noise(9000, 7);
         const qfc::PayloadWrite payload = qfc::PackPayload(qfc::kBlackBox, bytes);
         return tools.UpdateItemDB(MakeItem(1, "renamed"), {&payload, 1});
     }},
    {"InsertFolder",
     [](DBTools& tools) {
         int number = -1;
         return tools.InsertOrUpdateFolder("1", 0, "new", 0, 0, 0, 1, 0, 0, number);
     }},
    {"ReorderItem", [](DBTools& tools) { return tools.ReOrderItemsDb(kHeldOnce, 2, 77); }},
    {"RemoveItemWithPayload", [](DBTools& tools) { return tools.DeleteItemFromFolder(kHeldOnce, 2); }},
    {"RemovePlacement", [](DBTools& tools) { return tools.DeleteItemFromFolder(kHeldTwice, 2); }},
    {"DeleteTrees",
     [](DBTools& tools) {
         const int galleries[] = {1, 2};
         return tools.DeleteFolderTrees(galleries);
     }},
    {"Clear", [](DBTools& tools) { return tools.ClearDatabase(); }},
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
        m_tools.reset();
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

    // The old state or the new one, never a mixture; true only for the new one. And nothing hangs over: the same
    // object works again once the disk does.
    void ExpectWhole(bool result) {
        const std::string seen = DumpOf(m_path);
        if (result) {
            EXPECT_EQ(seen, m_behind) << "reported as done, but not stored";
        } else {
            EXPECT_TRUE(seen == m_before || seen == m_behind) << "a mixture of old and new state";
        }
        if (seen != m_before) return;
        EXPECT_TRUE(GetParam().run(*m_tools)) << "does not recover";
        EXPECT_EQ(DumpOf(m_path), m_behind);
    }

    // Fails the n-th call for n = 1, 2, ... until nothing fails any more.
    void FailEveryCall(bool sticky) {
        constexpr int kEnough = 400;
        for (int n = 1; n < kEnough; ++n) {
            SCOPED_TRACE("call " + std::to_string(n));
            StartOver();
            m_disk.FailAt(n, sticky);
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
        EXPECT_TRUE(seen == m_behind || (!result && seen == m_before));
        if (HasFailure() || !failed) return;
    }
}

using DBToolsFullDisk = LibraryTest;

// What was acknowledged while the disk filled up is there, and nothing else; with space back it goes on.
TEST_F(DBToolsFullDisk, EveryAcknowledgedAddIsStored) {
    const int folder = AddFolder("a", AddGallery(1));
    m_disk.LimitSpace(300000);
    int acknowledged = 0;
    int refused = 0;
    for (int number = 1; number <= 60; ++number) {
        (AddItem(number, folder, number, Noise(12000, static_cast<unsigned>(number))) ? acknowledged : refused) += 1;
    }
    EXPECT_GT(acknowledged, 5);
    EXPECT_GT(refused, 5);
    EXPECT_EQ(Count("ITEM_TABLE"), std::to_string(acknowledged));
    EXPECT_EQ(Count("RELATION_TABLE"), std::to_string(acknowledged));
    EXPECT_EQ(Count("CACHE_DATA_TABLE"), std::to_string(acknowledged));
    m_disk.Heal();
    EXPECT_TRUE(AddItem(99, folder, 99, Noise(12000)));
    EXPECT_EQ(Count("ITEM_TABLE"), std::to_string(acknowledged + 1));
}

TEST_F(DBToolsFullDisk, ExportThatDoesNotFitIsFalse) {
    ASSERT_TRUE(AddItem(1, AddGallery(1), 0, Noise(100000)));
    const std::string before = DumpOf(m_path);
    m_disk.LimitSpace(50000);
    EXPECT_FALSE(m_tools->ExportDatabase((m_folder / "export.db").c_str()));
    m_disk.Heal();
    EXPECT_EQ(DumpOf(m_path), before);
    EXPECT_TRUE(m_tools->ExportDatabase((m_folder / "export.db").c_str()));
}

TEST_F(DBToolsFullDisk, NewLibraryThatDoesNotFitIsNotOpened) {
    m_disk.LimitSpace(20000);
    bool ok = true;
    const DBTools tools(CString((m_folder / "other.db").c_str()), ok);
    EXPECT_FALSE(ok);
    EXPECT_TRUE(m_disk.HasFailed());
}

}  // namespace
