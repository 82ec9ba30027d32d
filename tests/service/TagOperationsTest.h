#pragma once

#include "service/operations/TagsOperation_Categories.h"
#include "service/operations/TagsOperation_Items.h"
#include "service/operations/TagsOperation_Store.h"
#include "service/operations/TagsOperation_Tags.h"
#include "tests/support/FaultVfs.h"
#include "tests/support/RawDb.h"
#include "tests/support/TagFixture.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

// The tag operations by themselves.
namespace qfc::test {

struct Change {
    const char* name;
    std::function<int(DBTools*, CQItem*, CQItem*)> run;
};

inline std::ostream& operator<<(std::ostream& stream, const Change& change) { return stream << change.name; }

// A library, its tags and two tagged items, on a disk that can be told to fail. The service is stopped: the operations
// run here, on a database of their own.
class TagsOperations : public TagFixture {
public:
    // Each operation that writes, with something to do for it.
    static std::vector<Change> Changes();

protected:
    static constexpr const char* kDefaults =
        "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\nScene=String@Day;String@Night\nPeople=String@Carl\n"
        "[TW_DEFAULT_TAGS_SPEED_CATEGORY]\nPace=String@Slow\n";
    static constexpr const char* kPresets =
        "[rain.wav@Rain]\nItemName=Rain\nFilePath=rain.wav\nGalleryID=1\nTagList=String@Day\n";

    void SetUp() override {
        TagFixture::SetUp();
        CloseAllGalleries();
        ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
        WriteDefaults(kDefaults);
        WritePresets(kPresets);
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
        RawDb(DatabaseFile())
            .Exec("delete from LIB_TAG_CATEGORY_TABLE; delete from LIB_TAG_TABLE; delete from TAG_ITEM_RELATION_TABLE");
        EmptyStore();
        TagStorePeer::ForgetFiles(Store());
        for (CQItem* const pItem : {&m_first, &m_second}) {
            std::list<GUID> tags;
            pItem->CopyTagVec(tags);
            for (const GUID& tag : tags) pItem->RemoveLibTag(tag);
        }
        MakeTags();
    }

    struct State {
        std::string database;
        std::string memory;  // Store, what it read of files, and items.
        bool operator==(const State&) const = default;
    };
    State Seen() const {
        std::string memory;
        for (const DWORD dwGallery : {kMedia, 15}) memory += StoreText(dwGallery) + "| ";
        for (const CPresetItemTag& preset : Store().GetPresetTagData()) memory += preset.m_strItemName + " ";
        for (const auto& [dwGallery, content] : Store().GetCategoryTemplate()) {
            memory += std::to_string(dwGallery) + content.first + std::to_string(content.second.size()) + " ";
        }
        return {DumpOf(DatabaseFile()), memory + TagsOf(m_first) + "| " + TagsOf(m_second)};
    }
    DBTools* Database() const { return m_tools.get(); }

    FaultVfs m_disk;
    std::unique_ptr<DBTools> m_tools;
    CQItem m_first;
    CQItem m_second;
};

inline std::vector<Change> TagsOperations::Changes() {
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

}  // namespace qfc::test
