// Operations that read before they write take a writer's turn first. Whatever the library holds, that changes no result
// and no row.
#include "tests/db/EffectLibrary.h"
#include "tests/db/TagLibrary.h"
#include "tests/support/SqlTrace.h"

#include <filesystem>
#include <functional>
#include <ostream>
#include <sqlite3.h>
#include <vector>

namespace {

using namespace qfc::test;

struct Turn {
    const char* name;
    std::function<bool(DBTools&)> run;
};
void PrintTo(const Turn& turn, std::ostream* stream) { *stream << turn.name; }

Turn DeleteTrees(const char* name, std::vector<int> galleries) {
    return {name, [galleries](DBTools& tools) { return tools.DeleteFolderTrees(galleries); }};
}
Turn Merge(const char* name, const GUID& target, std::vector<GUID> sources) {
    return {name, [target, sources](DBTools& tools) { return tools.MergeTags(sources, target); }};
}

const Turn kTurns[] = {
    DeleteTrees("NoGallery", {}),
    DeleteTrees("AnUnknownGallery", {99}),
    DeleteTrees("AGallery", {1}),
    DeleteTrees("BothGalleries", {2, 1}),
    DeleteTrees("AGalleryAndAnUnknownOne", {1, 99}),
    Merge("NoTag", kBeach, {}),
    Merge("ATagIntoItself", kBeach, {kBeach}),
    Merge("ATagIntoAnother", kBeach, {kSunset}),
    Merge("AnUnknownTag", kBeach, {MakeGuid(500)}),
    Merge("ATagIntoAnUnknownOne", MakeGuid(500), {kSunset, kBeach}),
    {"Effects", [](DBTools& tools) { return tools.ClearFiltersAndTransitions(); }},
};

class DBToolsTurns : public LibraryTest, public testing::WithParamInterface<Turn> {
protected:
    struct Outcome {
        bool bResult = false;
        std::string contents;
        bool operator==(const Outcome&) const = default;
    };

    void Fill() {
        const int root = AddGallery(1);
        ASSERT_TRUE(AddItem(1, AddFolder("below", AddFolder("a", root))));
        ASSERT_TRUE(AddItem(2, AddFolder("b", AddGallery(2))));
        ASSERT_TRUE(m_tools->SaveCategoriesAndTags({MakePlaces()}));
        for (const GUID& tag : {kBeach, kSunset}) ASSERT_TRUE(m_tools->InsertTag2Item(kItem, tag));
        ASSERT_TRUE(m_tools->InsertTag2Item(kOther, kSunset));
        ASSERT_TRUE(m_tools->SaveFilterFile(MakeFile("a.so", {1})));
        ASSERT_TRUE(m_tools->SaveTransition(MakeTransition("b.so", 2)));
    }
    // On a library made anew; the texts of what is made do not differ from time to time.
    Outcome Run(bool bShortcuts, bool bFilled, bool bReadOnly) {
        m_tools.reset();
        std::filesystem::remove(m_path);
        Outcome outcome;
        {
            const SqlTrace trace;
            Open();
            if (bFilled) Fill();
            if (bReadOnly) sqlite3_exec(trace.Connection(), "pragma query_only = 1", nullptr, nullptr, nullptr);
            m_tools->SetShortcuts(bShortcuts);
            outcome.bResult = GetParam().run(*m_tools);
            m_tools.reset();
        }
        outcome.contents = DumpOf(m_path);
        return outcome;
    }
};

TEST_P(DBToolsTurns, ChangeNoResultAndNoRow) {
    for (const bool bFilled : {true, false}) {
        for (const bool bReadOnly : {false, true}) {
            SCOPED_TRACE(std::string(bFilled ? "filled" : "empty") + (bReadOnly ? ", to be read only" : ""));
            const Outcome plain = Run(false, bFilled, bReadOnly);
            const Outcome turned = Run(true, bFilled, bReadOnly);
            EXPECT_EQ(turned.bResult, plain.bResult);
            EXPECT_EQ(turned.contents, plain.contents);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Operations, DBToolsTurns, testing::ValuesIn(kTurns),
                         [](const auto& turn) { return std::string(turn.param.name); });

}  // namespace
