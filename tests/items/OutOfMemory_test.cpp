#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "items/RowReader.h"
#include "tests/items/ItemLibrary.h"
#include "tests/support/MemoryFaults.h"

#include <functional>
#include <gtest/gtest.h>
#include <list>
#include <memory>
#include <string>

// Items while memory runs out: 0 with nothing changed, or 1 with everything done, and no exception.
namespace {

using namespace qfc::test;

const char* const kLongName = "a name that is longer than what a string holds in itself, so that it needs memory";

class ItemWithoutMemory : public ItemRowFixture {
protected:
    // Lets the n-th allocation fail, alone or with all behind it, for every n until none fails any more.
    void FailEach(const std::function<int()>& run, const std::function<void(int nResult)>& check) {
        for (const bool bSticky : {false, true}) {
            for (int n = 1;; ++n) {
                SCOPED_TRACE("allocation " + std::to_string(n));
                int nResult = -1;
                bool bFailed = false;
                {
                    const MemoryFaults faults(n, bSticky);
                    ASSERT_NO_THROW(nResult = run());
                    bFailed = faults.HasFailed();
                }
                check(nResult);
                if (HasFailure()) return;
                if (bFailed) continue;
                EXPECT_EQ(nResult, 1);
                EXPECT_GT(n, 3) << "hardly any allocation was seen";
                break;
            }
        }
    }
};

TEST_F(ItemWithoutMemory, Loading_FillsAllFieldsOrNone) {
    InsertItem("ITEM_NAME, DESCRIPTION, ITEM_TYPE, TIMESTAMP",
               std::string("'") + kLongName + "', '" + kLongName + "', 8, 9");
    FailEach([&] { return m_item.fnLoadItemFromDb(); },
             [&](int nResult) {
                 EXPECT_STREQ(m_item.GetItemName(), nResult != 0 ? kLongName : "");
                 EXPECT_STREQ(m_item.GetDescription(), nResult != 0 ? kLongName : "");
                 EXPECT_EQ(m_item.GetItemType(), nResult != 0 ? 8u : 0u);
                 EXPECT_EQ(m_item.fnGetTimeStamp(), nResult != 0 ? 9u : 0u);
                 m_item.Copy(std::make_unique<CQItem>().get(), qfc::copy_mask::kFields);
             });
}

TEST_F(ItemWithoutMemory, TagsAreAllTakenOrNone) {
    for (const unsigned nTag : {20u, 21u, 22u}) {
        Sql("insert into TAG_ITEM_RELATION_TABLE values(" + BlobLiteral(GuidOf(1)) + ", " + BlobLiteral(GuidOf(nTag)) +
            ")");
    }
    FailEach([&] { return m_item.LoadLibTagFromDB(); },
             [&](int nResult) {
                 std::list<GUID> tags;
                 m_item.CopyTagVec(tags);
                 EXPECT_EQ(tags.size(), nResult != 0 ? 3u : 0u);
                 for (const GUID& tag : tags) m_item.RemoveLibTag(tag);
             });
}

TEST_F(ItemWithoutMemory, APayloadIsLoadedWholeOrNotAtAll) {
    const std::unique_ptr<CQItem> pStored(NewFilledItem(1));
    ASSERT_TRUE(m_library.Tools()->UpdateItemDB(pStored.get()));
    ASSERT_EQ(CountOf("CACHE_DATA_TABLE where COMPRESSED_SIZE > 0 and CACHE_DATA_TYPE = 1"), "1");
    FailEach([&] { return m_item.LoadCacheDataFromDb(1); },
             [&](int nResult) {
                 EXPECT_EQ(InMemory(m_item, qfc::kBlackBox), nResult != 0 ? Pattern(3000, 1) : ByteVector{});
                 EXPECT_EQ(m_item.GetBlackBoxSize(), nResult != 0 ? 3000u : 0u);
                 m_item.ChangeBlackBox(nullptr, 0);
             });
}

TEST_F(ItemWithoutMemory, TheCallersBuffer_IsNeverLost) {
    InsertPayload(1, "4", "0", "X'01020304'");
    const qfc::PlainBlock buffer(4);
    FailEach(
        [&] {
            unsigned nSize = 4;
            void* pData = buffer.data();
            const int nResult = m_item.LoadCacheDataFromDb(nSize, &pData, 1);
            EXPECT_EQ(pData, buffer.data());
            EXPECT_EQ(nSize, 4u);
            return nResult;
        },
        [](int) {});
}

TEST_F(ItemWithoutMemory, AskingByName_AnswersOneOrZero) {
    InsertItem("ITEM_NAME", std::string("'") + kLongName + "'");
    m_item.SetItemName(kLongName);
    FailEach([&] { return m_item.IsItemInSql(); }, [](int) {});
}

TEST_F(ItemWithoutMemory, Updating_StoresAllOrNothing) {
    const std::unique_ptr<CQItem> pItem(NewFilledItem(1));
    pItem->fnSetDbTools(m_library.Tools());
    pItem->SetItemName(kLongName);
    FailEach([&] { return pItem->UpdateItemDB(); },
             [&](int nResult) {
                 // A rollback takes memory, too: the next operation makes up for it.
                 EXPECT_EQ(m_library.Tools()->GetGalleryIdByFolder(99), -1);
                 EXPECT_EQ(CountOf("ITEM_TABLE"), nResult != 0 ? "1" : "0");
                 EXPECT_EQ(CountOf("CACHE_DATA_TABLE"), nResult != 0 ? "3" : "0");
                 Sql("delete from ITEM_TABLE; delete from CACHE_DATA_TABLE");
             });
}

TEST_F(ItemWithoutMemory, AddingToAFolder_StoresAllOrNothing) {
    StoredTree tree(m_library.Tools());
    auto pItem = std::unique_ptr<CQItem>(NewFilledItem(1));
    pItem->fnSetDbTools(m_library.Tools());
    FailEach([&] { return m_library.Tools()->AddItemDb(pItem.get(), tree.pA, 0) ? 1 : 0; },
             [&](int nResult) {
                 EXPECT_EQ(m_library.Tools()->GetGalleryIdByFolder(99), -1);
                 for (const char* pszTable : {"ITEM_TABLE", "RELATION_TABLE"}) {
                     EXPECT_EQ(CountOf(pszTable), nResult != 0 ? "1" : "0") << pszTable;
                 }
                 EXPECT_EQ(CountOf("CACHE_DATA_TABLE"), nResult != 0 ? "3" : "0");
                 Sql("delete from ITEM_TABLE; delete from CACHE_DATA_TABLE; delete from RELATION_TABLE");
             });
}

// What the access layer reports as lack of memory gives the default, like everything it reports; what our own strings
// need is for the caller to catch. Either way the row is there afterwards.
TEST(RowReaderWithoutMemory, GivesTheValueTheDefaultOrBadAlloc_AndReadsOnAfterwards) {
    LibraryFile library;
    library.Raw().Exec(std::string("insert into FOLDER_TABLE(ID, FOLDER_NAME, VERSION, ADOPT_TYPE) values(4, '") +
                       kLongName + "', '" + kLongName + "', 1234567890)");
    CppSQLite3Query query;
    ASSERT_TRUE(library.Tools()->QueryFolder(4, query));
    qfc::RowReader row(query);
    const CString strNumber("1234567890");
    const CString strDefault("default");
    int nBadAllocs = 0;
    int nDefaults = 0;
    for (const bool bSticky : {false, true}) {
        for (int n = 1; n < 30; ++n) {
            CString strName(kLongName);
            CString strNumberText(strNumber);
            int nNumber = 1234567890;
            try {
                const MemoryFaults faults(n, bSticky);
                strName = row.NameText("FOLDER_NAME", strDefault);
                nNumber = row.Int("ADOPT_TYPE", -1);
                strNumberText = row.Text("ADOPT_TYPE", strDefault);
            } catch (const std::bad_alloc&) {
                ++nBadAllocs;
            }
            EXPECT_STREQ(strName, kLongName) << n;
            EXPECT_EQ(nNumber, 1234567890) << n;
            if (strNumberText == strDefault) ++nDefaults;
            EXPECT_TRUE(strNumberText == strDefault || strNumberText == strNumber) << strNumberText.GetString();
            EXPECT_STREQ(row.Text("VERSION", strDefault), kLongName) << n;
            EXPECT_FALSE(row.AtEnd());
        }
    }
    EXPECT_GE(nBadAllocs, 2);
    EXPECT_GE(nDefaults, 1);
    const MemoryFaults faults(1, true);
    row.Next();
    EXPECT_TRUE(row.AtEnd());
}

}  // namespace
