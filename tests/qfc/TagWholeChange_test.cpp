#include "hosts/qfc/library/TagWholeChange.h"

#include "hosts/qfc/cli/Exit.h"
#include "tests/support/RawDb.h"
#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace qfc::test {
namespace {

using host::Failure;

const std::string kRows =
    "select hex(TAG_GUID), TAG_NAME, TAG_CHECKED, hex(TAG_PICTURE_DATA), hex(CATEGORY_GUID) from LIB_TAG_TABLE order "
    "by 1";
const std::string kLinks = "select hex(ITEM_GUID), hex(TAGS_GUID) from TAG_ITEM_RELATION_TABLE order by 1, 2";
const std::string kCategories = "select * from LIB_TAG_CATEGORY_TABLE order by CATEGORY_NAME";

// Changes of tags on a running library, without a command around them. The path of the library is one for the process.
class TagWholeChange : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        setenv("QFCLIB_HOST_DIR", "/nowhere", 1);
        s_folder = new TempFolder;
        host::UseDataFolder(s_folder->Path());
    }
    static void TearDownTestSuite() {
        delete s_folder;
        s_folder = nullptr;
    }
    // "Own" of gallery 100 holds Sea, checked, with picture and link, and Shore.
    void SetUp() override {
        Exec("delete from LIB_TAG_TABLE; delete from LIB_TAG_CATEGORY_TABLE; delete from TAG_ITEM_RELATION_TABLE");
        Exec("insert into LIB_TAG_CATEGORY_TABLE values ('Own', 100, 1, 0, X'00000000000000000000000000000001')");
        Exec(
            "insert into LIB_TAG_TABLE values ('Sea', X'00000000000000000000000000000001', 0, 1, 1, 3, X'010203', "
            "X'00000000000000000000000000000011'), ('Shore', X'00000000000000000000000000000001', 0, 0, 1, 0, null, "
            "X'00000000000000000000000000000012')");
        Exec(
            "insert into TAG_ITEM_RELATION_TABLE values (X'00112233445566778899AABBCCDDEEFF', "
            "X'00000000000000000000000000000011')");
        m_before = Rows();
        m_tags.Reload();
    }

    // Through a connection of its own, so that nobody is told.
    static void Exec(const std::string& sql) { RawDb(host::LibraryPath()).Exec(sql); }
    static std::vector<RawDb::Row> Rows() {
        RawDb db(host::LibraryPath());
        std::vector<RawDb::Row> all;
        for (const std::string& query : {kRows, kLinks, kCategories}) {
            const auto rows = db.Rows(query);
            all.insert(all.end(), rows.begin(), rows.end());
        }
        return all;
    }
    CTagCategory Own() const { return m_tags.Categories().front(); }
    std::string ReasonOf(const host::TagBackup& before, const std::function<void()>& change,
                         const std::function<bool()>& isDone) {
        try {
            host::ChangeOrAsBefore(m_tags, before, change, isDone);
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "done";
    }

    static TempFolder* s_folder;
    host::Session m_session;
    host::Galleries m_galleries{m_session};
    host::Tags m_tags{m_session};
    host::TagChanges m_changes{m_tags, m_galleries};
    std::vector<RawDb::Row> m_before;
};

TempFolder* TagWholeChange::s_folder = nullptr;

TEST_F(TagWholeChange, WhatWentWithoutAWord_IsPutBackAsItWas) {
    host::TagBackup backup;
    backup.Keep(m_tags, 100, Own().m_tags);
    Exec("delete from LIB_TAG_TABLE where TAG_NAME = 'Sea'; delete from TAG_ITEM_RELATION_TABLE");
    EXPECT_EQ(backup.PutBack(m_tags), "");
    EXPECT_EQ(Rows(), m_before);
}

TEST_F(TagWholeChange, ACategoryComesBackWithItsTags) {
    host::TagBackup backup;
    backup.Keep(m_tags, Own());
    Exec("delete from LIB_TAG_TABLE; delete from LIB_TAG_CATEGORY_TABLE; delete from TAG_ITEM_RELATION_TABLE");
    EXPECT_EQ(backup.PutBack(m_tags), "");
    EXPECT_EQ(Rows(), m_before);
}

TEST_F(TagWholeChange, WhatDoesNotComeBackIsNamed) {
    host::TagBackup backup;
    backup.Keep(m_tags, Own());
    Exec("delete from LIB_TAG_CATEGORY_TABLE; delete from TAG_ITEM_RELATION_TABLE");
    for (const char* table : {"LIB_TAG_CATEGORY_TABLE", "TAG_ITEM_RELATION_TABLE"}) {
        Exec(std::string("create trigger keep_") + table + " before insert on " + table +
             " begin select raise(abort, 'kept'); end");
    }
    EXPECT_EQ(backup.PutBack(m_tags), "; changed are 100:Own, 100:Own/Sea, 100:Own/Shore");
    for (const char* table : {"LIB_TAG_CATEGORY_TABLE", "TAG_ITEM_RELATION_TABLE"}) {
        Exec(std::string("drop trigger keep_") + table);
    }
}

TEST_F(TagWholeChange, AChangeThatFailsHalfWay_IsUndone) {
    host::TagBackup before;
    before.Keep(m_tags, Own());
    const auto change = [&] {
        m_changes.DeleteTags(100, Own().m_tags, "not this");
        throw Failure("half way");
    };
    EXPECT_EQ(ReasonOf(before, change, [&] { return m_tags.Categories().empty(); }), "half way");
    EXPECT_EQ(Rows(), m_before);
    EXPECT_TRUE(host::IsStoredAs(m_tags, Own().m_tags.front()));
}

// It is not undone: the tags would come back without a category, and nobody would see them.
TEST_F(TagWholeChange, AChangeThatFailsWhenAllIsDone_IsDone) {
    const CTagCategory own = Own();
    host::TagBackup before;
    before.Keep(m_tags, own);
    const auto change = [&] {
        Exec("delete from LIB_TAG_TABLE; delete from LIB_TAG_CATEGORY_TABLE; delete from TAG_ITEM_RELATION_TABLE");
        throw Failure("cannot look");
    };
    const auto isDone = [&] { return m_tags.CategoryByGuid(own.m_guid) == nullptr; };
    EXPECT_EQ(ReasonOf(before, change, isDone), "done");
    EXPECT_EQ(Rows(), std::vector<RawDb::Row>{});
}

TEST_F(TagWholeChange, WhetherItIsDoneCannotBeRead_SoItIsUndone) {
    host::TagBackup before;
    before.Keep(m_tags, 100, Own().m_tags);
    const auto change = [&] {
        m_changes.DeleteTags(100, Own().m_tags, "not this");
        throw Failure("half way");
    };
    EXPECT_EQ(ReasonOf(before, change, [&]() -> bool { throw Failure("cannot look"); }), "half way");
    EXPECT_EQ(Rows(), m_before);
}

TEST_F(TagWholeChange, ACategoryGoesWithItsTagsAndLinks) {
    EXPECT_TRUE(host::DeleteWithTags(m_tags, m_changes, m_galleries, Own(), "tags", "category").empty());
    EXPECT_EQ(Rows(), std::vector<RawDb::Row>{});
}

TEST_F(TagWholeChange, WhatCannotBeReadShowsWhatItShowed) {
    Exec("alter table GALLERY_TABLE rename to KEPT");
    EXPECT_FALSE(m_tags.TryReload());
    EXPECT_EQ(m_tags.Categories().size(), 1U);
    EXPECT_EQ(m_tags.Find("Sea", 100).category, "Own");
    Exec("alter table KEPT rename to GALLERY_TABLE");
    EXPECT_TRUE(m_tags.TryReload());
}

}  // namespace
}  // namespace qfc::test
