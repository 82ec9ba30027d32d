// The tag operations by themselves: their results, and that database, store and items change together or not at all.
#include "tests/service/TagOperationsTest.h"
#include "tests/support/SqlTrace.h"

namespace {

using namespace qfc::test;

// --- Results -----------------------------------------------------------------------------------------------------

TEST_F(TagsOperations, WithoutDatabase_EveryOneFailsAndChangesNothing) {
    const State before = Seen();
    const std::vector<CTagCategory> categories{Category(10, "New")};
    const std::list<CLibTag> tags{Tag(1, "New", 10)};
    EXPECT_EQ(CLibTagsOperation_CreateDefaultTags(nullptr).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_Load(nullptr).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_UpdateCategory(nullptr, categories, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_DeleteCategory(nullptr, categories, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_UpdateTag(nullptr, tags, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_DeleteTag(nullptr, tags, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_InsertTag2Item(nullptr, {&m_first}, {TagGuid(2)}).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_DeleteTagFromItem(nullptr, {&m_first}, {TagGuid(1)}).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_MergeTag(nullptr, TagGuid(1), {TagGuid(2)}, kMedia).execute(), 0);
    EXPECT_EQ(Seen(), before);
}

TEST_F(TagsOperations, LoadAnswersWhetherAllCouldBeRead) {
    const std::string tags = StoreText(kMedia);
    EmptyStore();
    EXPECT_EQ(CLibTagsOperation_Load(Database()).execute(), 1);
    EXPECT_EQ(StoreText(kMedia), tags);
    RawDb(DatabaseFile()).Exec("alter table LIB_TAG_TABLE rename to AWAY");
    EXPECT_EQ(CLibTagsOperation_Load(Database()).execute(), 0);
    EXPECT_EQ(StoreText(kMedia), tags);
    RawDb(DatabaseFile())
        .Exec(
            "alter table AWAY rename to LIB_TAG_TABLE; delete from LIB_TAG_TABLE;"
            " delete from LIB_TAG_CATEGORY_TABLE");
    EmptyStore();
    EXPECT_EQ(CLibTagsOperation_Load(Database()).execute(), 1);
    EXPECT_EQ(StoreText(kMedia), "");
}

TEST_F(TagsOperations, WithoutAnythingToDo_EveryOneFails) {
    const State before = Seen();
    EXPECT_EQ(CLibTagsOperation_UpdateCategory(Database(), {}, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_DeleteCategory(Database(), {}, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_UpdateTag(Database(), {}, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_DeleteTag(Database(), {}, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_InsertTag2Item(Database(), {}, {TagGuid(2)}).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_InsertTag2Item(Database(), {&m_first}, {}).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_DeleteTagFromItem(Database(), {}, {TagGuid(1)}).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_DeleteTagFromItem(Database(), {&m_first}, {}).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_MergeTag(Database(), TagGuid(1), {}, kMedia).execute(), 0);
    EXPECT_EQ(CLibTagsOperation_MergeTag(Database(), TagGuid(1), {TagGuid(1)}, kMedia).execute(), 0);
    EXPECT_EQ(Seen(), before);
}

TEST_F(TagsOperations, ItemsThatAreAllNull_AreASuccess) {
    const State before = Seen();
    EXPECT_EQ(CLibTagsOperation_InsertTag2Item(Database(), {nullptr}, {TagGuid(2)}).execute(), 1);
    EXPECT_EQ(CLibTagsOperation_DeleteTagFromItem(Database(), {nullptr}, {TagGuid(1)}).execute(), 1);
    EXPECT_EQ(Seen(), before);
}

TEST_F(TagsOperations, AreSynchronousAndTellCallbacksNothing) {
    CLibTagsOperation_Load operation(Database());
    EXPECT_FALSE(operation.IsAsync());
    QFCLibCallbackParam param{1, TagGuid(1), 1};
    operation.FillCallbackParam(param);
    EXPECT_EQ(param.hGallery, 0u);
    EXPECT_EQ(param.guidItem, GUID_NULL);
    EXPECT_EQ(param.nFolderId, -1);
}

TEST_F(TagsOperations, DefaultsWithoutAnyCategory_FailAndChangeNothing) {
    WriteDefaults("[Unknown]\nScene=String@Day\n");
    const State before = Seen();
    EXPECT_EQ(CLibTagsOperation_CreateDefaultTags(Database()).execute(), 0);
    EXPECT_EQ(Seen(), before);
}

TEST_F(TagsOperations, DefaultsThatFail_LeaveTheTemplateAndThePresetsOfBefore) {
    ASSERT_EQ(CLibTagsOperation_CreateDefaultTags(Database()).execute(), 1);
    const State before = Seen();
    WriteDefaults("[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nWeather=String@Wet\nLight=\nMore=\n");
    m_disk.FailAt(1, true);
    EXPECT_EQ(CLibTagsOperation_CreateDefaultTags(Database()).execute(), 0);
    m_disk.Heal();
    EXPECT_EQ(Seen(), before);
}

// --- All or nothing ----------------------------------------------------------------------------------------------

class TagsOperationFaults : public TagsOperations, public testing::WithParamInterface<Change> {
protected:
    int Run() { return GetParam().run(Database(), &m_first, &m_second); }

    // Lets the n-th call of the disk fail for n = 1, 2, ... until none is left that could.
    void FailEveryCall(bool sticky, FaultVfs::Counted counted = FaultVfs::Counted::kChanges) {
        const State before = Seen();
        ASSERT_EQ(Run(), 1);
        const State behind = Seen();
        ASSERT_NE(behind.database, before.database);
        ASSERT_NE(behind.memory, before.memory);
        StartOver();
        ASSERT_EQ(Seen(), before);
        for (int n = 1, failed = 1; failed != 0; ++n) {
            SCOPED_TRACE("call " + std::to_string(n));
            ForgetPages();
            m_disk.FailAt(n, sticky, counted);
            const int result = Run();
            failed = m_disk.HasFailed() ? 1 : 0;
            m_disk.Heal();
            const State seen = Seen();
            ASSERT_EQ(seen.database, result != 0 ? behind.database : before.database);
            ASSERT_EQ(seen.memory, result != 0 ? behind.memory : before.memory);
            if (result != 0) StartOver();
            ASSERT_TRUE(failed != 0 || (result == 1 && n > 4)) << "hardly any call was seen";
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Changes, TagsOperationFaults, testing::ValuesIn(TagsOperations::Changes()),
                         [](const auto& change) { return std::string(change.param.name); });

TEST_P(TagsOperationFaults, FailingOnceAtAnyCall_DatabaseStoreAndItemsAreAllOldOrAllNew) { FailEveryCall(false); }

TEST_P(TagsOperationFaults, FailingFromAnyCallOn_DatabaseStoreAndItemsAreAllOldOrAllNew) { FailEveryCall(true); }

TEST_P(TagsOperationFaults, FailingOnceAtAnyCallThatReadsToo_DatabaseStoreAndItemsAreAllOldOrAllNew) {
    FailEveryCall(false, FaultVfs::Counted::kEverything);
}

TEST_P(TagsOperationFaults, FailingFromAnyCallThatReadsTooOn_DatabaseStoreAndItemsAreAllOldOrAllNew) {
    FailEveryCall(true, FaultVfs::Counted::kEverything);
}

TEST_P(TagsOperationFaults, IsOneTransaction) {
    m_tools.reset();
    const qfc::test::SqlTrace trace;
    Open();
    const int nBefore = trace.CountStartingWith("BEGIN");
    ASSERT_EQ(Run(), 1);
    EXPECT_EQ(trace.CountStartingWith("BEGIN"), nBefore + 1);
    m_tools.reset();
}

// Loading changes the store alone.
TEST_F(TagsOperations, Load_FailingAtAnyCallThatReads_TheStoreIsAllOldOrAllNew) {
    EmptyStore();
    Store().AddTag({Category(40, "Held", {{7, "Mine"}}, 15)});
    const State before = Seen();
    ASSERT_EQ(CLibTagsOperation_Load(Database()).execute(), 1);
    const State behind = Seen();
    ASSERT_NE(behind.memory, before.memory);
    for (const bool sticky : {false, true}) {
        bool bFailed = true;
        for (int n = 1; bFailed; ++n) {
            SCOPED_TRACE((sticky ? "from call " : "call ") + std::to_string(n));
            EmptyStore();
            Store().AddTag({Category(40, "Held", {{7, "Mine"}}, 15)});
            ForgetPages();
            m_disk.FailAt(n, sticky, FaultVfs::Counted::kEverything);
            const int result = CLibTagsOperation_Load(Database()).execute();
            bFailed = m_disk.HasFailed();
            m_disk.Heal();
            ASSERT_EQ(Seen(), result != 0 ? behind : before);
            ASSERT_TRUE(bFailed || (result == 1 && n > 4)) << "hardly any call was seen";
        }
    }
}

}  // namespace
