#include "TagCommandsTest.h"

namespace qfc::test {
namespace {

class CommandsTagItems : public TagCommandsTest {};

// --- add, remove ---------------------------------------------------------------------------------------------------

TEST_F(CommandsTagItems, AddTakesManyTagsAndManyItems) {
    ImportAbc();
    Done({"tag", "create", "Beach"});
    const std::string sea = Done({"tag", "create", "Sea"})["guid"];
    Done({"tag", "add", "Beach", sea, "--", "F\\a.ppm", "F\\b.ppm"});
    for (const char* item : {"F\\a.ppm", "F\\b.ppm"}) EXPECT_EQ(TagsOf(item), (Names{"Beach", "Sea"}));
    EXPECT_EQ(TagsOf("F\\c.ppm"), Names{});
    Done({"tag", "remove", "Beach", "Sea", "--", "F\\a.ppm"});
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{});
    EXPECT_EQ(TagsOf("F\\b.ppm"), (Names{"Beach", "Sea"}));
    ExpectSound();
}

TEST_F(CommandsTagItems, WhatIsSoAlready_IsNotCountedAsChanged) {
    ImportAbc();
    for (const char* tag : {"Beach", "Sea"}) Done({"tag", "create", tag});
    Done({"tag", "add", "Beach", "F\\a.ppm"});
    const Json added = Done({"tag", "add", "Beach", "F\\a.ppm", "F\\b.ppm"});
    EXPECT_EQ(NamesIn(added["items"]), Names{"b.ppm"});
    EXPECT_EQ(NamesIn(added["unchanged"]), Names{"a.ppm"});
    EXPECT_EQ(Qfc({"tag", "add", "Beach", "F\\a.ppm"}).out, "tagged already: a.ppm\n");
    const Json removed = Done({"tag", "remove", "Beach", "Sea", "--", "F\\a.ppm", "F\\c.ppm"});
    EXPECT_EQ(NamesIn(removed["items"]), Names{"a.ppm"});
    EXPECT_EQ(NamesIn(removed["unchanged"]), Names{"c.ppm"});
}

TEST_F(CommandsTagItems, RemovingWhatNoItemHas_Fails) {
    ImportAbc();
    Done({"tag", "create", "Beach"});
    EXPECT_EQ(Refused({"tag", "remove", "Beach", "F\\a.ppm"}), "qfc: nothing to remove: no item has Beach\n");
}

TEST_F(CommandsTagItems, AddingTwiceLinksOnce) {
    ImportAbc();
    Done({"tag", "create", "Beach"});
    for (int i = 0; i < 2; ++i) Done({"tag", "add", "Beach", "F\\a.ppm", "F\\a.ppm"});
    EXPECT_EQ(TagsOf("F\\a.ppm"), Names{"Beach"});
    EXPECT_EQ(Sql("select count(*) from TAG_ITEM_RELATION_TABLE"), "1");
}

TEST_F(CommandsTagItems, AddWithoutTagsOrItems_IsWrongUsage) {
    Refused({"tag", "add", "Beach"}, 2);
    Refused({"tag", "add", "Beach", "--"}, 2);
    Refused({"tag", "add", "--", "F\\a.ppm"}, 2);
    Refused({"tag", "add"}, 2);
}

}  // namespace
}  // namespace qfc::test
