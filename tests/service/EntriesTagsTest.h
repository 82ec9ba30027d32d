#pragma once

#include "tests/support/RawDb.h"
#include "tests/support/TagFixture.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

// The entry functions on tags, in a library with two items, two categories and four tags.
namespace qfc::test {

class EntriesTags : public qfc::test::TagFixture {
protected:
    static constexpr int kSounds = 2;

    // Everything that tags may change, in one text.
    std::string Everything() const {
        return DumpOf(DatabaseFile()) + StoreText() + "|" + StoreText(kSounds) + "|" + TagsOf(*m_pFirst) + "|" +
               TagsOf(*m_pSecond);
    }
    void SetUp() override {
        TagFixture::SetUp();
        m_pFirst = AddItem("First");
        m_pSecond = AddItem("Second");
        ASSERT_EQ(QFCLibraryManager::fnUpdateTagCategory(kMedia, {Category(10, "Places", {{1, "Beach"}, {2, "Sunset"}}),
                                                                  Category(20, "People", {{3, "Anna"}, {4, "Ben"}})}),
                  1);
        ASSERT_EQ(StoreText(), "Places(Beach Sunset) People(Anna Ben) ");
    }

    // One call of each of the nine functions that would change something.
    std::vector<std::pair<const char*, std::function<int()>>> EveryFunction() const {
        return {
            {"fnCreateDefaultTag", [] { return QFCLibraryManager::fnCreateDefaultTag(); }},
            {"fnLoadLibTag", [] { return QFCLibraryManager::fnLoadLibTag(); }},
            {"fnUpdateTagCategory",
             [] {
                 return QFCLibraryManager::fnUpdateTagCategory(kMedia, {Category(30, "Weather", {{5, "Rain"}})});
             }},
            {"fnDeleteTagCategory", [] { return QFCLibraryManager::fnDeleteTagCategory(kMedia, {Category(10, "")}); }},
            {"fnUpdateTag", [] { return QFCLibraryManager::fnUpdateTag(kMedia, {Tag(1, "Shore", 10)}); }},
            {"fnDeleteTag", [] { return QFCLibraryManager::fnDeleteTag(kMedia, {Tag(1, "", 10)}); }},
            {"fnInsertLibTag2Item", [&] { return QFCLibraryManager::fnInsertLibTag2Item({m_pFirst}, {TagGuid(1)}); }},
            {"fnDeleteLibTagFromItem",
             [&] { return QFCLibraryManager::fnDeleteLibTagFromItem({m_pFirst}, {TagGuid(3)}); }},
            {"fnMergeFaceTag", [] { return QFCLibraryManager::fnMergeFaceTag(kMedia, TagGuid(3), {TagGuid(4)}); }},
        };
    }

    CQItem* m_pFirst = nullptr;
    CQItem* m_pSecond = nullptr;
};

}  // namespace qfc::test
