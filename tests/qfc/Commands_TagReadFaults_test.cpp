#include "ReadFaultsTest.h"
#include "TagReadFaults.h"

namespace qfc::test {
namespace {

// What was changed cannot be read: a command cannot know what came of it, and leaves everything as it was.
class CommandsTagReadFaults : public ReadFaultsTest {
protected:
    // Sea of Media, with check mark and picture, on a and on d; Mine of Own, on d, which is Own's.
    void SetUp() override {
        TagCommandsTest::SetUp();
        ImportAbc();
        Done({"gallery", "create", "Own"});
        Done({"import", Image("d.ppm", 4), "--gallery", "Own", "--folder", "X"});
        Done({"tag", "create", "Sea"});
        Done({"tag", "create", "Mine", "--gallery", "Own"});
        Done({"tag", "add", "Sea", "F\\a.ppm"});
        Done({"tag", "add", "Sea", "Mine", "--gallery", "Own", "--", "X\\d.ppm"});
        Exec("update LIB_TAG_TABLE set TAG_CHECKED = 1, TAG_PICTURE_SIZE = 3, TAG_PICTURE_DATA = X'010203'");
    }
    // All rows about tags, in no order.
    std::vector<RawDb::Row> TagRows(const char* tags = "KEPT_TAGS") const {
        std::vector<RawDb::Row> all;
        RawDb db(Database());
        for (const char* table : {tags, "LIB_TAG_CATEGORY_TABLE", "TAG_ITEM_RELATION_TABLE"}) {
            const auto rows = db.Rows(std::string("select * from ") + table + " order by 1, 2");
            all.insert(all.end(), rows.begin(), rows.end());
        }
        return all;
    }
    std::string ExpectAsBefore(const Args& change) const {
        const auto before = TagRows();
        const std::string error = Refused(change);
        EXPECT_EQ(TagRows(), before) << error;
        return error;
    }
    void RefuseReads(const std::string& whileTrue) const { RefuseReadsOfTags(Database(), whileTrue); }
};

const std::string kFewer = "(select count(*) from KEPT_TAGS) < 2";
const std::string kUnread = ": the tags that are stored cannot be read\n";

TEST_F(CommandsTagReadFaults, DeletedTagsOfTwoGalleriesComeBack) {
    RefuseReads(kFewer);
    EXPECT_EQ(ExpectAsBefore({"tag", "delete", "Sea", "Mine"}), "qfc: cannot delete Media:My tags/Sea" + kUnread);
    EXPECT_EQ(ExpectAsBefore({"tag", "delete", "Mine"}), "qfc: cannot delete Own:My tags/Mine" + kUnread);
    AllowReadsOfTags(Database());
    Done({"tag", "delete", "Sea", "Mine"});
}

TEST_F(CommandsTagReadFaults, UncheckedTagsAreCheckedAgain) {
    RefuseReads("exists (select 1 from KEPT_TAGS where TAG_CHECKED = 0)");
    EXPECT_EQ(ExpectAsBefore({"tag", "uncheck", "Sea", "Mine"}), "qfc: cannot uncheck Media:My tags/Sea" + kUnread);
}

TEST_F(CommandsTagReadFaults, TheTagsOfACategoryComeBack) {
    RefuseReads(kFewer);
    EXPECT_EQ(ExpectAsBefore({"tag", "category", "delete", "Media:My tags"}),
              "qfc: cannot delete the tags of Media:My tags" + kUnread);
}

TEST_F(CommandsTagReadFaults, TheCategoryComesBackAsWell) {
    RefuseReads("(select count(*) from LIB_TAG_CATEGORY_TABLE) < 2");
    EXPECT_EQ(ExpectAsBefore({"tag", "category", "delete", "Media:My tags"}),
              "qfc: cannot delete Media:My tags" + kUnread);
}

TEST_F(CommandsTagReadFaults, AGalleryKeepsItsTags_AndSaysSo) {
    RefuseReads(kFewer);
    const auto before = RawDb(Database()).Rows("select * from KEPT_TAGS order by TAG_NAME");
    const Json report = Document({"gallery", "rm", "Own"}, 1);
    EXPECT_EQ(report["kept"]["tags"], Json{"My tags"});
    EXPECT_EQ(report["removed"], (Json{{"folders", {"X"}}, {"tags", Json::array()}}));
    EXPECT_EQ(RawDb(Database()).Rows("select * from KEPT_TAGS order by TAG_NAME"), before);
    AllowReadsOfTags(Database());
    EXPECT_EQ(Done({"gallery", "rm", "Own"})["removed"]["tags"], 1);
    ExpectSound();
}

// --- What cannot be told as done -----------------------------------------------------------------------------------

TEST_F(CommandsTagReadFaults, ANewTagThatCannotBeSeen_IsNotDone) {
    RefuseReads("(select count(*) from KEPT_TAGS) > 2");
    EXPECT_EQ(Refused({"tag", "create", "Shore"}), "qfc: cannot make the tag Shore" + kUnread);
}

// Nothing was read is not the same as nothing is there.
TEST_F(CommandsTagReadFaults, TagsThatCannotBeReadAreNotTakenForNone) {
    WriteHost("Default_Libtag.ini", "[TW_DEFAULT_TAGS_MEDIA_CATEGORY]\r\nPlaces=String@Hill\r\n");
    RefuseReads("1");
    const auto before = TagRows();
    for (const Args& arguments :
         {Args{"tag", "defaults"}, Args{"tag", "list"}, Args{"tag", "create", "New"}, Args{"gallery", "create", "Next"},
          Args{"import", Image("e.ppm", 5)}, Args{"clear", "--yes"}}) {
        const QfcResult result = Qfc(arguments);
        EXPECT_TRUE(result.exit == 1 || arguments[0] == "import") << arguments[0] << result.out;
        if (arguments[0] == "clear") break;  // Takes the links.
        EXPECT_EQ(TagRows(), before) << arguments[0];
    }
    EXPECT_EQ(Sql("select count(*) from KEPT_TAGS"), "2");
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "2");
}

// --- Each read alone fails -----------------------------------------------------------------------------------------

class CommandsTagReadFault : public CommandsTagReadFaults {
protected:
    void SetUp() override {
        CommandsTagReadFaults::SetUp();
        KeepLibrary();
    }
    std::string CountOf(const std::string& what) const { return Sql("select count(*) from " + what); }
};

TEST_F(CommandsTagReadFault, TagsOfTwoGalleriesGoOrStayTogether) {
    const auto before = TagRows("LIB_TAG_TABLE");
    WithEachFailingRead({"tag", "delete", "Sea", "Mine"}, [&](const QfcResult& result) {
        if (result.exit == 0) {
            EXPECT_EQ(CountOf("LIB_TAG_TABLE"), "0");
        } else {
            EXPECT_EQ(TagRows("LIB_TAG_TABLE"), before);
        }
    });
}

TEST_F(CommandsTagReadFault, ACategoryGoesOrStaysWithItsTags) {
    const auto before = TagRows("LIB_TAG_TABLE");
    WithEachFailingRead({"tag", "category", "delete", "Media:My tags"}, [&](const QfcResult& result) {
        if (result.exit == 0) {
            EXPECT_EQ(CountOf("LIB_TAG_CATEGORY_TABLE"), "1");
            EXPECT_EQ(CountOf("LIB_TAG_TABLE"), "1");
        } else {
            EXPECT_EQ(TagRows("LIB_TAG_TABLE"), before);
        }
    });
}

TEST_F(CommandsTagReadFault, AGalleryIsGoneOrHasTheTagsThatItIsSaidToHave) {
    WithEachFailingRead({"--json", "gallery", "rm", "Own"}, [&](const QfcResult& result) {
        const Json report = Json::parse(result.out, nullptr, false);
        // Before anything went there is no more than the reason.
        const bool isKept = report.contains("error") && (!report.contains("kept") || !report["kept"]["tags"].empty());
        EXPECT_EQ(CountOf("LIB_TAG_TABLE where TAG_NAME = 'Mine'"), isKept ? "1" : "0");
        EXPECT_EQ(CountOf("LIB_TAG_CATEGORY_TABLE"), isKept ? "2" : "1");
        if (CountOf("GALLERY_TABLE where GALLERY_FOLDER_ID >= 100") == "0") {
            EXPECT_EQ(result.err.find("still there: the gallery"), std::string::npos);
        }
    });
}

TEST_F(CommandsTagReadFault, ClearLosesNoTagOfAPredefinedGallery_AndSaysThatItCleared) {
    Exec("insert into TAG_ITEM_RELATION_TABLE select X'0011', TAG_GUID from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    KeepLibrary();
    WithEachFailingRead(
        {"clear", "--yes"},
        [&](const QfcResult& result) {
            EXPECT_EQ(CountOf("LIB_TAG_TABLE where TAG_NAME = 'Sea' and TAG_CHECKED = 1"), "1");
            if (CountOf("sqlite_master where name = 'ITEM_TABLE'") == "0" || CountOf("ITEM_TABLE") == "0") {
                EXPECT_NE((result.out + result.err).find("cleared "), std::string::npos);
            }
            if (result.exit == 0) {
                EXPECT_EQ(CountOf("TAG_ITEM_RELATION_TABLE"), "0");
            }
        },
        3);  // There are very many; what belongs together takes more reads than that.
}

// --- clear ---------------------------------------------------------------------------------------------------------

TEST_F(CommandsTagReadFaults, ClearSaysWhatItDid_WhenTheTagsCannotBeRead) {
    RefuseReads("1");
    const Json report = Document({"clear", "--yes"}, 1);
    EXPECT_EQ(report["cleared"], Database());
    EXPECT_EQ(report["failed"],
              Json{"tags and links that could not be looked at: cannot read the tags of " + Database()});
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    EXPECT_EQ(Refused({"clear", "--yes"}),
              "qfc: cleared " + Database() + ", except: " + report["failed"][0].get<std::string>() + "\n");
    AllowReadsOfTags(Database());
    EXPECT_EQ(Done({"clear", "--yes"})["categories"], Json{"100:My tags"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
    ExpectSound();
}

TEST_F(CommandsTagReadFaults, ClearSaysWhatWentBeforeTheTagsCouldNotBeReadAnyMore) {
    RefuseReads(kFewer);
    const Json report = Document({"clear", "--yes"}, 1);
    ASSERT_GE(report["failed"].size(), 1U);
    EXPECT_EQ(report["failed"][0], "the tags of 100:My tags, which cannot be read");
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
}

// Their tag is away for a moment.
TEST_F(CommandsTagReadFaults, ClearPutsATagBackThatItCannotRead) {
    Exec("insert into TAG_ITEM_RELATION_TABLE select X'0011', TAG_GUID from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    RefuseReads("(select count(*) from KEPT_TAGS where TAG_NAME = 'Sea') = 0");
    const std::string rows = "select * from KEPT_TAGS where TAG_NAME = 'Sea'";
    const auto before = RawDb(Database()).Rows(rows);
    Qfc({"clear", "--yes"});
    EXPECT_EQ(RawDb(Database()).Rows(rows), before);
}

}  // namespace
}  // namespace qfc::test
