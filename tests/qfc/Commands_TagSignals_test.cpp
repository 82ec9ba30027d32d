#include "TagCommandsTest.h"

#include <csignal>

namespace qfc::test {
namespace {

// Ctrl-C and its like while tags are changed in several steps.
class CommandsTagSignals : public TagCommandsTest, public ::testing::WithParamInterface<int> {
protected:
    // Sea of Media on a, Mine of Own on d, which is Own's.
    void SetUp() override {
        TagCommandsTest::SetUp();
        ImportAbc();
        Done({"gallery", "create", "Own"});
        Done({"import", Image("d.ppm", 4), "--gallery", "Own"});
        Done({"tag", "create", "Sea"});
        Done({"tag", "create", "Mine", "--gallery", "Own"});
        Done({"tag", "add", "Sea", "F\\a.ppm"});
        Done({"tag", "add", "Mine", "--gallery", "Own", "--", "Imported\\d.ppm"});
    }
    QfcResult Interrupted(const Args& arguments) const { return QfcInterrupted(arguments, GetParam()); }
};

TEST_P(CommandsTagSignals, TagsOfTwoGalleriesGoTogether) {
    EXPECT_EQ(Interrupted({"tag", "delete", "Sea", "Mine"}).exit, 0);
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "0");
}

TEST_P(CommandsTagSignals, TagsOfTwoGalleriesAreCheckedTogether) {
    EXPECT_EQ(Interrupted({"tag", "check", "Sea", "Mine"}).exit, 0);
    EXPECT_EQ(Sql("select sum(TAG_CHECKED) from LIB_TAG_TABLE"), "2");
}

TEST_P(CommandsTagSignals, ACategoryGoesWithItsTags) {
    EXPECT_EQ(Interrupted({"tag", "category", "delete", "Media:My tags"}).exit, 0);
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "1");
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
    ExpectSound();
}

TEST_P(CommandsTagSignals, ItemsOfTwoGalleriesAreTaggedTogether) {
    Done({"tag", "create", "Sea", "--gallery", "Own"});
    const std::string guid = Done({"show", "Imported\\d.ppm", "--gallery", "Own"})["guid"];
    EXPECT_EQ(Interrupted({"tag", "add", "Sea", "F\\b.ppm", guid}).exit, 0);
    EXPECT_EQ(TagsOf("F\\b.ppm"), Names{"Sea"});
    EXPECT_EQ(TagsOf(guid), (Names{"Mine", "Sea"}));
}

TEST_P(CommandsTagSignals, AClearThatIsBegunGoesAsAWhole) {
    Exec("insert into TAG_ITEM_RELATION_TABLE select X'0011', TAG_GUID from LIB_TAG_TABLE where TAG_NAME = 'Sea'");
    const QfcResult result = Interrupted({"clear", "--yes"});
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_EQ(Sql("select group_concat(TAG_NAME) from LIB_TAG_TABLE"), "'Sea'");
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "0");
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "0");
    ExpectSound();
}

INSTANTIATE_TEST_SUITE_P(Signals, CommandsTagSignals, ::testing::Values(SIGINT, SIGTERM, SIGHUP));

// --- import-library ------------------------------------------------------------------------------------------------

// The other library has a gallery with so much to say that a reader who waits holds the program up.
class CommandsTagImportSignals : public TagCommandsTest {
protected:
    void SetUp() override {
        TagCommandsTest::SetUp();
        Other({"import", Image("a.ppm", 1), Image("b.ppm", 2), Image("c.ppm", 3), Image("d.ppm", 4), Image("e.ppm", 5),
               "--folder", "F"});
        RawDb(OtherDatabase()).Exec("update ITEM_TABLE set ITEM_NAME = substr(ITEM_NAME, 1, 1) || hex(zeroblob(2000))");
        Other({"gallery", "create", "Zoo"});
        Other({"import", Image("z.ppm", 6), "--gallery", "Zoo"});
        for (const char* category : {"One", "Two", "Three"}) {
            Other({"tag", "create", std::string("Tag of ") + category, "--category", category});
        }
        Other({"tag", "create", "Lion", "--gallery", "Zoo"});
    }
    void Other(const Args& arguments) const {
        const QfcResult result = QfcProcess(Joined({"--data-dir", m_folder / "other"}, arguments), {}).Wait();
        EXPECT_EQ(result.exit, 0) << result.err;
    }
    std::string OtherDatabase() const { return m_folder / "other/CinelumeDatabase.db"; }
    static constexpr QfcWorld kNarrow{.unprivileged = false, .largestFile = std::nullopt, .narrowPipe = true};
};

TEST_F(CommandsTagImportSignals, NoGalleryAndNoTagIsBegunAfterTheSignal) {
    QfcProcess process(WithLibrary({"import-library", OtherDatabase()}), kNarrow);
    ASSERT_TRUE(process.ReadLine().has_value());
    process.Signal(SIGTERM);
    const QfcResult result = process.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_EQ(result.err,
              "qfc: interrupted: 5 items added, 0 there already, 1 folder made, 0 tags made, 0 items tagged\n");
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "5");
    EXPECT_EQ(Done({"gallery", "list"}).size(), 1U);
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE"), "0");
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "4");
    EXPECT_EQ(Sql("select count(*) from ITEM_TABLE"), "6");
    ExpectSound();
}

TEST_F(CommandsTagImportSignals, TagsStopBetweenCategories) {
    Done({"import-library", OtherDatabase()});
    Exec("delete from LIB_TAG_TABLE; delete from LIB_TAG_CATEGORY_TABLE");
    RawDb writer(Database());
    writer.Exec("begin immediate");
    QfcProcess process(WithLibrary({"import-library", OtherDatabase()}), {});
    // All is there but the tags.
    for (int i = 0; i < 6; ++i) ASSERT_TRUE(process.ReadLine().has_value());
    process.Signal(SIGTERM);
    writer.Exec("rollback");
    const QfcResult result = process.Wait();
    EXPECT_EQ(result.exit, 1);
    EXPECT_NE(result.err.find("qfc: interrupted: "), std::string::npos) << result.err;
    // The one that was begun, at most.
    EXPECT_LE(std::stoi(Sql("select count(*) from LIB_TAG_CATEGORY_TABLE")), 1);
    Done({"import-library", OtherDatabase()});
    EXPECT_EQ(Sql("select count(*) from LIB_TAG_TABLE"), "4");
}

}  // namespace
}  // namespace qfc::test
