#include "CommandsTest.h"

namespace qfc::test {
namespace {

class CommandsGalleries : public CommandsTest {
protected:
    std::string Count(const std::string& table) { return RawDb(Database()).Cell("select count(*) from " + table); }
};

TEST_F(CommandsGalleries, OwnGalleriesGetTheNextFreeIdFrom100) {
    EXPECT_EQ(Done({"gallery", "create", "Holidays"})["id"], 100);
    EXPECT_EQ(Done({"gallery", "create", "Work"})["id"], 101);
    Done({"gallery", "rm", "Holidays"});
    EXPECT_EQ(Done({"gallery", "create", "Home"})["id"], 100);
}

TEST_F(CommandsGalleries, APredefinedNameGetsItsOwnId) {
    EXPECT_EQ(Done({"gallery", "create", "AR Stickers"})["id"], 16);
    Refused({"gallery", "create", "AR Stickers"});
}

TEST_F(CommandsGalleries, ANameIsTakenOnce) {
    Done({"gallery", "create", "Holidays"});
    Refused({"gallery", "create", "Holidays"});
    EXPECT_EQ(Done({"gallery", "list"}).size(), 1u);
}

TEST_F(CommandsGalleries, EveryPredefinedGalleryIsKnownByIdAndName) {
    const std::vector<std::pair<int, std::string>> predefined = {
        {1, "Media"},         {2, "Sounds"},     {3, "Templates"},    {4, "Transitions"}, {5, "Titles"},
        {6, "Filters"},       {8, "Overlays"},   {9, "Motion Paths"}, {10, "Media H5"},   {11, "Sounds H5"},
        {12, "Templates H5"}, {13, "Titles H5"}, {14, "Overlays H5"}, {15, "Speed"},      {16, "AR Stickers"}};
    for (const auto& [id, name] : predefined) {
        EXPECT_EQ(Done({"tree", "--gallery", std::to_string(id)})["name"], name);
        EXPECT_EQ(Done({"tree", "--gallery", name})["id"], id);
    }
    Refused({"tree", "--gallery", "7"});
    Refused({"tree", "--gallery", "17"});
    Refused({"tree", "--gallery", "media"});
}

TEST_F(CommandsGalleries, ListGivesTheStoredOnes) {
    Refused({"gallery", "list"});
    Done({"mkdir", "A", "--gallery", "Titles"});
    Done({"gallery", "create", "Holidays"});
    EXPECT_EQ(Done({"gallery", "list"}), (Json{{{"id", 5}, {"name", "Titles"}}, {{"id", 100}, {"name", "Holidays"}}}));
}

TEST_F(CommandsGalleries, AnOwnGalleryIsNamedByIdOrName) {
    Done({"gallery", "create", "Holidays"});
    Done({"import", Image("a.ppm"), "--gallery", "Holidays"});
    EXPECT_EQ(ItemsOf("Imported", {"--gallery", "100"}), Names{"a.ppm"});
}

TEST_F(CommandsGalleries, RemovingAGalleryTakesItemsAndPayloadsAlong) {
    Done({"import", Video("v.mp4"), "--folder", "A\\B"});
    Done({"gallery", "rm", "Media"});
    for (const char* table : {"GALLERY_TABLE", "FOLDER_TABLE", "ITEM_TABLE", "RELATION_TABLE", "CACHE_DATA_TABLE"}) {
        EXPECT_EQ(Count(table), "0") << table;
    }
    ExpectSound();
}

TEST_F(CommandsGalleries, RemovingOneGalleryLeavesTheOthers) {
    Done({"import", Image("a.ppm")});
    Done({"gallery", "create", "Holidays"});
    Done({"import", Image("b.ppm", 1), "--gallery", "Holidays"});
    Done({"gallery", "rm", "Holidays"});
    EXPECT_EQ(ItemsOf("Imported"), Names{"a.ppm"});
    EXPECT_EQ(Count("ITEM_TABLE"), "1");
}

TEST_F(CommandsGalleries, RemovingAGalleryThatIsNotStored_Fails) {
    Refused({"gallery", "rm", "Media"});
    Refused({"gallery", "rm", "Nowhere"});
}

TEST_F(CommandsGalleries, AnEmptyTextIsNoGallery_AndNothingIsRemoved) {
    Done({"import", Image("a.ppm"), "--folder", "A"});
    const std::string before = DumpOf(Database());
    Refused({"gallery", "rm", ""}, 2);
    Refused({"rmdir", "A", "--recursive", "--gallery", ""}, 2);
    Refused({"mkdir", "B", "--gallery", ""}, 2);
    EXPECT_EQ(DumpOf(Database()), before);
}

TEST_F(CommandsGalleries, ARemovedPredefinedGalleryIsMadeAgainOnUse) {
    Done({"mkdir", "A"});
    Done({"gallery", "rm", "1"});
    Done({"mkdir", "B"});
    EXPECT_EQ(FoldersOf("\\"), Names{"B"});
}

}  // namespace
}  // namespace qfc::test
