// A look at the library that fails after something was changed: what is there is told, and nothing is lost.
#include "ReadFaultsTest.h"

namespace qfc::test {
namespace {

class CommandsReadFaults : public ReadFaultsTest {
protected:
    void SetUp() override {
        TagCommandsTest::SetUp();
        ImportAbc();
        Done({"mkdir", "G"});
        Done({"tag", "create", "Sea"});
        Done({"tag", "add", "Sea", "F\\a.ppm"});
        KeepLibrary();
    }
    // The folders that place the item in the database.
    std::string PlacesOf(const std::string& item) const {
        return Sql(
            "select group_concat(FOLDER_NAME) from (select FOLDER_NAME from RELATION_TABLE join FOLDER_TABLE on "
            "FOLDER_TABLE.ID = RELATION_TABLE.PARENT_ID join ITEM_TABLE on ITEM_TABLE.ITEM_ID = RELATION_TABLE.ITEM_ID "
            "where ITEM_NAME = '" +
            item + "' order by FOLDER_NAME)");
    }
    std::string Links() const { return Sql("select count(*) from TAG_ITEM_RELATION_TABLE"); }
};

TEST_F(CommandsReadFaults, AMovedItemIsNeverLost_AndStandsWhereItIsSaidToStand) {
    WithEachFailingRead({"mv", "F\\a.ppm", "G"}, [&](const QfcResult& result) {
        const std::string places = PlacesOf("a.ppm");
        if (result.exit == 0) {
            EXPECT_EQ(places, "'G'");
        }
        if (places == "'F,G'") {
            EXPECT_NE(result.err.find("it may now also be in G"), std::string::npos);
        }
        if (places == "'G'" && result.exit != 0) {
            EXPECT_NE(result.err.find(" in G"), std::string::npos);
        }
        EXPECT_NE(places, "NULL");
        EXPECT_EQ(Sql("select count(*) from CACHE_DATA_TABLE"), "6");
        EXPECT_EQ(Links(), "1");
    });
}

TEST_F(CommandsReadFaults, AnItemThatStaysKeepsItsTags_AndLinksThatStayAreTold) {
    WithEachFailingRead({"rm", "F\\a.ppm"}, [&](const QfcResult& result) {
        if (result.exit == 0) {
            EXPECT_EQ(PlacesOf("a.ppm"), "NULL");
        }
        if (result.exit == 0) {
            EXPECT_EQ(Links(), "0");
        }
        if (PlacesOf("a.ppm") == "NULL" && Links() != "0") {
            EXPECT_NE(result.err.find("links of tags"), std::string::npos);
        }
        if (PlacesOf("a.ppm") != "NULL" && Links() == "0") {
            EXPECT_NE(result.err.find("lost"), std::string::npos);
        }
    });
}

TEST_F(CommandsReadFaults, LinksThatStayBehindAFolderAreTold) {
    WithEachFailingRead({"rmdir", "F", "--recursive"}, [&](const QfcResult& result) {
        if (result.exit == 0) {
            EXPECT_EQ(Links(), "0");
        }
        if (Sql("select count(*) from ITEM_TABLE") == "3") {
            EXPECT_EQ(Links(), "1");
        }
    });
}

}  // namespace
}  // namespace qfc::test
