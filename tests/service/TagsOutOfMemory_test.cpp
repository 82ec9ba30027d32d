// Tag operations and presets when memory ends somewhere in the middle.
#include "items/CQItem.h"
#include "service/operations/AddItem.h"
#include "service/operations/LoadGallery.h"
#include "tests/service/TagOperationsTest.h"
#include "tests/support/MemoryFaults.h"

#include <new>

namespace {

using namespace qfc::test;

// Runs the work with the n-th allocation failing. -1: it threw.
struct Outcome {
    int result = -1;
    bool hasFailed = false;
};

template <typename Work>
Outcome RunWithFault(int n, bool sticky, Work&& work) {
    Outcome outcome;
    const MemoryFaults faults(n, sticky);
    try {
        outcome.result = work();
    } catch (const std::bad_alloc&) {
    }
    outcome.hasFailed = faults.HasFailed();
    return outcome;
}

class TagsOutOfMemory : public TagsOperations, public testing::WithParamInterface<Change> {
protected:
    int Run() { return GetParam().run(Database(), &m_first, &m_second); }

    void EndMemoryEverywhere(bool sticky) {
        const State before = Seen();
        ASSERT_EQ(Run(), 1);
        const State behind = Seen();
        StartOver();
        bool bFailed = true;
        for (int n = 1; bFailed; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            const Outcome outcome = RunWithFault(n, sticky, [&] { return Run(); });
            bFailed = outcome.hasFailed;
            const State seen = Seen();
            ASSERT_TRUE(seen.database == before.database || seen.database == behind.database);
            if (outcome.result == 1) {
                ASSERT_EQ(seen, behind);
            } else if (outcome.result == 0 || seen.database == before.database) {
                ASSERT_EQ(seen, before);
            }
            ASSERT_TRUE(bFailed || (outcome.result == 1 && n > 10)) << "hardly any allocation was seen";
            if (seen != before) StartOver();
        }
    }
};

INSTANTIATE_TEST_SUITE_P(Changes, TagsOutOfMemory, testing::ValuesIn(TagsOperations::Changes()),
                         [](const auto& change) { return std::string(change.param.name); });

// Behind a write that took, the steps in memory may end with it.
TEST_P(TagsOutOfMemory, OnceAnywhere_TheDatabaseIsAllOldOrAllNew_AndWithAnOldOneEverything) {
    EndMemoryEverywhere(false);
}

TEST_P(TagsOutOfMemory, FromAnywhereOn_TheDatabaseIsAllOldOrAllNew_AndWithAnOldOneEverything) {
    EndMemoryEverywhere(true);
}

class PresetsOutOfMemory : public TagsOperations {
protected:
    void SetUp() override {
        TagsOperations::SetUp();
        LibraryOperation_LoadGallery load(kMedia, Database());
        ASSERT_EQ(load.execute(), 1);
        m_hMedia = load.Loaded();
        m_pClips = Folder("Clips");
        WritePresets("[p]\nItemName=Fragile\nFilePath=fragile.wav\nGalleryID=1\nTagList=String@Beach;String@Anna\n");
        Store().GeneratePresetTagData();
    }
    void TearDown() override {
        EXPECT_EQ(QFCLibraryManager::fnCloseSessionGallery(m_hMedia), 1);
        TagsOperations::TearDown();
    }

    // The item is the gallery's when a folder has it afterwards.
    void AddWithFault(int n, bool sticky, bool& bFailed) {
        auto item = std::make_unique<CQItem>("Fragile");
        item->SetFileName("fragile.wav");
        CQItem* const pItem = item.get();
        LibraryOperation_AddItem add(m_hMedia, {"Clips"}, pItem);
        const Outcome outcome = RunWithFault(n, sticky, [&] { return add.execute(); });
        bFailed = outcome.hasFailed;
        const bool bHeld = m_pClips->HasItem(pItem->GetUniqueID(), 0) != 0;
        if (bHeld) static_cast<void>(item.release());
        const std::string tags = TagsOf(*pItem);
        const int nLinks = CountLinks(*pItem);
        ASSERT_TRUE(nLinks == 0 || (nLinks == 2 && bHeld));
        if (nLinks == 0 || !bHeld) {
            ASSERT_EQ(tags, "");
        } else if (outcome.result == 1) {
            ASSERT_EQ(tags, "1 3 ");
        }
        ASSERT_TRUE(bFailed || tags == "1 3 ");
    }
};

TEST_F(PresetsOutOfMemory, LinksAreAllOrNone_AndTheItemHasNoOthers) {
    for (const bool sticky : {false, true}) {
        bool bFailed = true;
        for (int n = 1; bFailed; ++n) {
            SCOPED_TRACE("allocation " + std::to_string(n));
            ASSERT_NO_FATAL_FAILURE(AddWithFault(n, sticky, bFailed));
            ASSERT_TRUE(bFailed || n > 20) << "hardly any allocation was seen";
        }
    }
}

}  // namespace
