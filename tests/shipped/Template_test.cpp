// The shipped library, and what a host sees that starts from it.
#include "ShippedTest.h"
#include "tests/support/TempFolder.h"

#include <cstdlib>
#include <set>

namespace {

using qfc::test::RawDb;
using qfc::test::ShippedTest;

class ShippedTemplate : public ShippedTest {
protected:
    // What the maker of templates ends with, on a host folder of the test's own.
    static int Make(const std::filesystem::path& host, const std::filesystem::path& target) {
        const std::string work = (Scratch() / "work").string();
        const std::string command = std::string(MAKE_TEMPLATE) + " '" + host.string() + "' '" + work + "' '" +
                                    target.string() + "' 2>/dev/null";
        return std::system(command.c_str());
    }
};

TEST_F(ShippedTemplate, KeepsItsTextsAsUtf8AndIsWhole) {
    RawDb db(TemplateFile());
    EXPECT_EQ(db.Cell("pragma encoding"), "'UTF-8'");
    EXPECT_EQ(db.Cell("pragma integrity_check"), "'ok'");
    EXPECT_EQ(db.Cell("select count(*) from sqlite_master where name = 'BEGINNING'"), "0");
    EXPECT_EQ(db.Cell("select count(*) from sqlite_master where type = 'table' and name like '%_TABLE'"), "13");
}

TEST_F(ShippedTemplate, IsTheSameFileWhenItIsMadeAgain) {
    ASSERT_EQ(Make(HostFolder(), Scratch() / "again.db"), 0);
    EXPECT_EQ(qfc::test::ReadFile(Scratch() / "again.db"), qfc::test::ReadFile(TemplateFile()));
    EXPECT_FALSE(std::filesystem::exists(Scratch() / "work"));
}

TEST_F(ShippedTemplate, IsNotMadeWithoutDefaultTags) {
    std::filesystem::remove(Tags());
    std::filesystem::copy(TemplateFile(), Scratch() / "again.db");
    EXPECT_NE(Make(HostFolder(), Scratch() / "again.db"), 0);
    EXPECT_FALSE(std::filesystem::exists(Scratch() / "again.db"));
}

TEST_F(ShippedTemplate, GivesANewLibraryThePredefinedGalleries) {
    StartHost();
    std::vector<qfc::StoredGallery> stored;
    ASSERT_EQ(QFCLibraryManager::fnListGalleries(stored), 1);
    auto next = stored.begin();
    for (const qfc::PredefinedGallery& gallery : qfc::kPredefinedGalleries) {
        if (gallery.name == nullptr) continue;
        ASSERT_NE(next, stored.end());
        EXPECT_EQ(next->galleryId, gallery.id);
        EXPECT_STREQ(next->name, gallery.name);
        EXPECT_NE(QFCLibraryManager::fnLoadGallery(gallery.id), 0U) << gallery.name;
        ++next;
    }
    EXPECT_EQ(next, stored.end());
}

TEST_F(ShippedTemplate, GivesEachGalleryItsCategoriesAndTags) {
    StartHost();
    for (const qfc::PredefinedGallery& gallery : qfc::kPredefinedGalleries) {
        if (gallery.name == nullptr) continue;
        std::size_t tags = 0;
        std::set<std::string> categories;
        for (const CTagCategory& category : Store().GetTagsData(static_cast<DWORD>(gallery.id))) {
            categories.insert(category.m_strName.GetString());
            tags += category.m_tags.size();
        }
        std::size_t written = 0;
        std::set<std::string> names;
        for (const std::string& key : Keys(Tags(), gallery.section)) {
            names.insert(g_GetTagTranslateName(key.c_str()).GetString());
            written += TagNames(Value(Tags(), gallery.section, key)).size();
        }
        EXPECT_EQ(categories, names) << gallery.name;
        EXPECT_EQ(tags, written) << gallery.name;
    }
}

TEST_F(ShippedTemplate, GivesEachGalleryATagOnlyOnce) {
    StartHost();
    for (const qfc::PredefinedGallery& gallery : qfc::kPredefinedGalleries) {
        std::list<CLibTag> tags;
        Store().GetCurGalleryAllTag(static_cast<DWORD>(gallery.id), tags);
        std::set<std::string> names;
        for (const CLibTag& tag : tags) {
            CString name = tag.m_strName;
            EXPECT_TRUE(names.insert(name.MakeLower().GetString()).second) << gallery.section << ": " << tag.m_strName;
        }
    }
}

TEST_F(ShippedTemplate, KnowsTheSpecialCategories) {
    StartHost();
    std::vector<int> types;
    for (const CTagCategory& category : Store().GetTagsData(qfc::kGalleryMedia)) {
        if (category.m_nType != 0) types.push_back(category.m_nType);
        EXPECT_EQ(category.m_bDeletable, category.m_nType == 0) << category.m_strName;
    }
    std::ranges::sort(types);
    EXPECT_EQ(types, (std::vector<int>{1, 2, 3}));
}

TEST_F(ShippedTemplate, DefaultsMadeAgainAddNothing) {
    StartHost();
    const int categories = CountRows("LIB_TAG_CATEGORY_TABLE");
    const int tags = CountRows("LIB_TAG_TABLE");
    EXPECT_GT(tags, categories);
    ASSERT_EQ(QFCLibraryManager::fnCreateDefaultTag(), 1);
    EXPECT_EQ(CountRows("LIB_TAG_CATEGORY_TABLE"), categories);
    EXPECT_EQ(CountRows("LIB_TAG_TABLE"), tags);
}

TEST_F(ShippedTemplate, AKnownSoundGetsItsTags) {
    StartHost();
    const Texts tags = TagsOfAnImport(qfc::kGalleryMedia, "loop_tabla.flac", "/media/Loops/loop_tabla.flac");
    EXPECT_EQ(tags, (Texts{g_GetTagTranslateName("Loop").GetString(), g_GetTagTranslateName("Drums").GetString()}));
}

TEST_F(ShippedTemplate, AnUnknownSoundGetsNone) {
    StartHost();
    EXPECT_EQ(TagsOfAnImport(qfc::kGalleryMedia, "tabla.flac", "/media/Loops/tabla.flac"), Texts());
}

TEST_F(ShippedTemplate, AKnownStickerGetsItsTagsUnderItsDisplayName) {
    StartHost();
    const Texts tags = TagsOfAnImport(qfc::kGalleryArStickers, "rose.png", "/media/Stickers/rose.png");
    EXPECT_EQ(tags, (Texts{g_GetTagTranslateName("Symbols").GetString()}));
    EXPECT_EQ(TagsOfAnImport(qfc::kGalleryArStickers, "AR_COMPASS_ROSE", "/media/Stickers/rose.png"), Texts());
}

}  // namespace
