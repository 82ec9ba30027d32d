// The tag operations by themselves: their results, and that database, store and items change together or not at all.
#include "service/operations/TagsOperation_Categories.h"
#include "service/operations/TagsOperation_Items.h"
#include "service/operations/TagsOperation_Store.h"
#include "service/operations/TagsOperation_Tags.h"
#include "tests/support/FaultVfs.h"
#include "tests/support/RawDb.h"
#include "tests/support/SqlTrace.h"
#include "tests/support/TagFixture.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>

namespace {

using qfc::test::DumpOf;
using qfc::test::FaultVfs;

// A library, its tags and two tagged items, on a disk that can be told to fail. The service is stopped: the operations
// run here, on a database of their own.
class TagsOperations : public qfc::test::TagFixture {
protected:
    static constexpr const char* kDefaults =
        "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nScene=String@Day;String@Night\nPeople=String@Carl\n"
        "[TW_DEFAULT_TAGS_SPEED_CATEGORY]\nPace=String@Slow\n";

    void SetUp() override {
        TagFixture::SetUp();
        qfc::test::CloseAllGalleries();
        ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
        WriteDefaults(kDefaults);
        Open();
        MakeTags();
    }
    void TearDown() override {
        m_tools.reset();
        TagFixture::TearDown();
    }
    void Open() {
        bool bOpened = true;
        m_tools = std::make_unique<DBTools>(DatabaseFile().c_str(), bOpened);
        ASSERT_TRUE(bOpened);
    }
    void MakeTags() {
        const std::vector<CTagCategory> categories{Category(10, "Places", {{1, "Beach"}, {2, "Sunset"}}),
                                                   Category(20, "People", {{3, "Anna"}, {4, "Ben"}})};
        ASSERT_EQ(CLibTagsOperation_UpdateCategory(Database(), categories, kMedia).execute(), 1);
        ASSERT_EQ(CLibTagsOperation_InsertTag2Item(Database(), {&m_first}, {TagGuid(1), TagGuid(3)}).execute(), 1);
        ASSERT_EQ(CLibTagsOperation_InsertTag2Item(Database(), {&m_second}, {TagGuid(4), TagGuid(1)}).execute(), 1);
    }
    // Back to what SetUp made.
    void StartOver() {
        qfc::test::RawDb(DatabaseFile())
            .Exec("delete from LIB_TAG_CATEGORY_TABLE; delete from LIB_TAG_TABLE; delete from TAG_ITEM_RELATION_TABLE");
        EmptyStore();
        for (CQItem* const pItem : {&m_first, &m_second}) {
            std::list<GUID> tags;
            pItem->CopyTagVec(tags);
            for (const GUID& tag : tags) pItem->RemoveLibTag(tag);
        }
        MakeTags();
    }

    struct State {
        std::string database;
        std::string memory;  // Store and items.
        bool operator==(const State&) const = default;
    };
    State Seen() const {
        std::string memory;
        for (const DWORD dwGallery : {kMedia, 15}) memory += StoreText(dwGallery) + "| ";
        return {DumpOf(DatabaseFile()), memory + TagsOf(m_first) + "| " + TagsOf(m_second)};
    }
    DBTools* Database() const { return m_tools.get(); }

    FaultVfs m_disk;
    std::unique_ptr<DBTools> m_tools;
    CQItem m_first;
    CQItem m_second;
};

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

TEST_F(TagsOperations, DefaultsWithoutAnyCategory_Fail) {
    WriteDefaults("[Unknown]\nScene=String@Day\n");
    EXPECT_EQ(CLibTagsOperation_CreateDefaultTags(Database()).execute(), 0);
}

// --- All or nothing ----------------------------------------------------------------------------------------------

struct Change {
    const char* name;
    std::function<int(DBTools*, CQItem*, CQItem*)> run;
};

std::ostream& operator<<(std::ostream& stream, const Change& change) { return stream << change.name; }

class TagsOperationFaults : public TagsOperations, public testing::WithParamInterface<Change> {
public:
    static std::vector<Change> Changes();

protected:
    int Run() { return GetParam().run(Database(), &m_first, &m_second); }

    // Lets the n-th call of the disk fail for n = 1, 2, ... until none is left that could.
    void FailEveryCall(bool sticky) {
        const State before = Seen();
        ASSERT_EQ(Run(), 1);
        const State behind = Seen();
        ASSERT_NE(behind.database, before.database);
        ASSERT_NE(behind.memory, before.memory);
        StartOver();
        ASSERT_EQ(Seen(), before);
        for (int n = 1, failed = 1; failed != 0; ++n) {
            SCOPED_TRACE("call " + std::to_string(n));
            m_disk.FailAt(n, sticky);
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

std::vector<Change> TagsOperationFaults::Changes() {
    return {
        {"CreateDefaultTags",
         [](DBTools* pDBTools, CQItem*, CQItem*) { return CLibTagsOperation_CreateDefaultTags(pDBTools).execute(); }},
        {"UpdateCategory",
         [](DBTools* pDBTools, CQItem*, CQItem*) {
             return CLibTagsOperation_UpdateCategory(
                        pDBTools, {Category(10, "Spots", {{2, "Dusk"}}), Category(30, "Weather", {{5, "Rain"}})},
                        kMedia)
                 .execute();
         }},
        {"DeleteCategory",
         [](DBTools* pDBTools, CQItem*, CQItem*) {
             return CLibTagsOperation_DeleteCategory(pDBTools, {Category(10, ""), Category(20, "")}, kMedia).execute();
         }},
        {"UpdateTag",
         [](DBTools* pDBTools, CQItem*, CQItem*) {
             return CLibTagsOperation_UpdateTag(pDBTools, {Tag(1, "Shore", 10), Tag(5, "Hill", 10)}, kMedia).execute();
         }},
        {"DeleteTag",
         [](DBTools* pDBTools, CQItem*, CQItem*) {
             return CLibTagsOperation_DeleteTag(pDBTools, {Tag(1, "", 10), Tag(4, "", 20)}, kMedia).execute();
         }},
        {"InsertTag2Item",
         [](DBTools* pDBTools, CQItem* pFirst, CQItem* pSecond) {
             return CLibTagsOperation_InsertTag2Item(pDBTools, {pFirst, pSecond}, {TagGuid(2), TagGuid(4)}).execute();
         }},
        {"DeleteTagFromItem",
         [](DBTools* pDBTools, CQItem* pFirst, CQItem* pSecond) {
             return CLibTagsOperation_DeleteTagFromItem(pDBTools, {pFirst, pSecond}, {TagGuid(1), TagGuid(3)})
                 .execute();
         }},
        {"MergeTag",
         [](DBTools* pDBTools, CQItem*, CQItem*) {
             return CLibTagsOperation_MergeTag(pDBTools, TagGuid(2), {TagGuid(1), TagGuid(2), TagGuid(4)}, kMedia)
                 .execute();
         }},
    };
}

INSTANTIATE_TEST_SUITE_P(Changes, TagsOperationFaults, testing::ValuesIn(TagsOperationFaults::Changes()),
                         [](const auto& change) { return std::string(change.param.name); });

TEST_P(TagsOperationFaults, FailingOnceAtAnyCall_DatabaseStoreAndItemsAreAllOldOrAllNew) { FailEveryCall(false); }

TEST_P(TagsOperationFaults, FailingFromAnyCallOn_DatabaseStoreAndItemsAreAllOldOrAllNew) { FailEveryCall(true); }

TEST_P(TagsOperationFaults, IsOneTransaction) {
    m_tools.reset();
    const qfc::test::SqlTrace trace;
    Open();
    const int nBefore = trace.CountStartingWith("BEGIN");
    ASSERT_EQ(Run(), 1);
    EXPECT_EQ(trace.CountStartingWith("BEGIN"), nBefore + 1);
    m_tools.reset();
}

}  // namespace
