// Filters and transitions through the exported interface, as a host uses them: added from files, listed without opening
// one, changed, moved and removed.
#include "tests/support/EffectFixture.h"

#include <algorithm>
#include <csignal>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace qfc::test;
using Manager = QFCLibraryManager;

class EffectStory : public EffectFixture {
protected:
    // The items of the gallery and those of the records, both as texts in one order.
    std::string ItemsSeen() const {
        std::set<std::string> seen;
        for (const CQItem* const pItem : *qfc::AsGallery(m_hMedia)->GetAllSubItemArray()) {
            seen.insert(qfc::GuidToText(pItem->GetUniqueID()));
        }
        return Joined(seen);
    }
    static std::string ItemsOfRecords() {
        std::set<std::string> seen;
        for (const auto& file : FilterFiles()) {
            for (const auto& filter : file.filters) seen.insert(qfc::GuidToText(filter.guidItem));
        }
        for (const auto& transition : TransitionRecords()) seen.insert(qfc::GuidToText(transition.guidItem));
        return Joined(seen);
    }
    static void AwaitAll() {
        CQItem dummy("dummy");
        EXPECT_EQ(Manager::fnUpdateTransitionAsync(0, &dummy, dummy.GetUniqueID(), {}), 0);
    }

private:
    static std::string Joined(const std::set<std::string>& texts) {
        std::string joined;
        for (const std::string& text : texts) joined += text + " ";
        return joined;
    }
};

TEST_F(EffectStory, AFileOfSeveralFilters_IsListedChangedAndRemoved) {
    qfc::FilterTableBlock table;
    table.name = "Tint";
    qfc::FilterDescriptorBlock descriptor;
    std::vector<GUID> guids;
    for (std::uint16_t index = 0; index < 3; ++index) {
        CQItem* const pItem = NewItem(("Tint " + std::to_string(index)).c_str(), kFilterType);
        guids.push_back(pItem->GetUniqueID());
        descriptor.index = index;
        DS_Filter_File_Record file;
        file.strFileName = "/fx/tint.so";
        file.nFilterCount = 3;
        file.filters = {{qfc::WriteFilterDescriptor(descriptor), qfc::WriteFilterTable(table), GUID_NULL}};
        ASSERT_EQ(Manager::fnAddItemAsync_Filter(file, 0, m_hMedia, {"Clips"}, pItem, 0), 1);
    }
    AwaitAll();
    Restart();
    auto files = FilterFiles();
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].nFilterCount, 3);
    ASSERT_EQ(files[0].filters.size(), 3u);
    for (std::size_t index = 0; index < 3; ++index) {
        EXPECT_EQ(files[0].filters[index].guidItem, guids[index]);
        EXPECT_EQ(qfc::ReadFilterDescriptor(files[0].filters[index].descriptor)->index, index);
        EXPECT_EQ(qfc::ReadFilterTable(files[0].filters[index].table)->name, "Tint");
    }

    // The file moves: its filters follow, and the stale row goes.
    files[0].strFileName = "/new/tint.so";
    ASSERT_TRUE(SaveFilterRecord(files[0]));
    EXPECT_EQ(FilterFiles().size(), 2u);
    std::vector<DS_Filter_File_Record> stale(1);
    stale[0].strFileName = "/fx/tint.so";
    ASSERT_TRUE(DeleteFilter(stale));
    ASSERT_EQ(FilterFiles().size(), 1u);
    EXPECT_EQ(FilterFiles()[0].filters.size(), 3u);

    CQItem change("Hue");
    EXPECT_EQ(Manager::fnUpdateFilterOptionAsync(m_hMedia, &change, guids[1], files[0], 0), 1);
    EXPECT_EQ(m_pClips->GetItemByGUID(guids[1])->GetItemName(), "Hue");

    EXPECT_EQ(Manager::fnDeleteFilter(FilterFiles(), m_hMedia), 1);
    EXPECT_EQ(Folder("Clips"), nullptr);
    for (const char* table_ : {"ITEM_TABLE", "RELATION_TABLE", "FLT_TABLE", "FLT_FILE_TABLE"}) {
        EXPECT_EQ(CountRows(table_), 0) << table_;
    }
}

TEST_F(EffectStory, AddingManyTransitions_KeepsTheFolderSorted) {
    constexpr int kMany = 300;
    for (int number = 0; number < kMany; ++number) {
        const std::string name = "t" + std::to_string(number * 7919 % 101);  // With ties.
        ASSERT_EQ(Manager::fnAddItemAsync_Transition(MakeTransitionRecord("many.so"), m_hMedia, {"Clips"},
                                                     NewItem(name.c_str(), kTransitionType), 0),
                  1);
    }
    AwaitAll();
    const CQFolder::ItemArray& items = *m_pClips->GetItemArray();
    ASSERT_EQ(items.GetSize(), kMany);
    EXPECT_TRUE(std::is_sorted(items.begin(), items.end(), [](const CQItem* pLeft, const CQItem* pRight) {
        return pLeft->GetItemName().Compare(pRight->GetItemName()) < 0;
    }));
    EXPECT_EQ(ItemsSeen(), ItemsOfRecords());
    EXPECT_EQ(Manager::fnDeleteTransition(TransitionRecords(), m_hMedia), 1);
    EXPECT_EQ(CountRows("ITEM_TABLE"), 0);
}

// What a killed host leaves can be mended: what was told stored is there, and looking shows what lacks its other half.
TEST_F(EffectStory, AKilledHost_LeavesWhatItWasToldIsStored) {
    CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    int told[2];
    ASSERT_EQ(pipe(told), 0);
    const pid_t child = fork();
    if (child == 0) {
        if (Manager::fnStartService() != 1) _exit(1);
        const ULONGLONG hMedia = Manager::fnLoadGallery(kMedia);
        Manager::fnRegister_QFCLibCallBack("told", [&](QFCLibCallbackParam* pParam) {
            return write(told[1], &pParam->guidItem, sizeof(GUID)) == static_cast<ssize_t>(sizeof(GUID)) ? 1 : 0;
        });
        for (int number = 0;; ++number) {
            const std::string name = "f" + std::to_string(number);
            CQItem* const pItem = NewItem(name.c_str(), kFilterType);
            const auto file = MakeFilterFile(name.c_str(), {pItem->GetUniqueID()});
            Manager::fnAddItemAsync_Filter(file, 0, hMedia, {"Clips"}, pItem, 0);
            if (number % 50 == 49) AwaitAll();
        }
    }
    close(told[1]);
    std::set<std::string> stored;
    GUID guid;
    while (stored.size() < 60 && read(told[0], &guid, sizeof guid) == static_cast<ssize_t>(sizeof guid)) {
        stored.insert(qfc::GuidToText(guid));
    }
    kill(child, SIGKILL);
    ASSERT_EQ(waitpid(child, nullptr, 0), child);
    while (read(told[0], &guid, sizeof guid) == static_cast<ssize_t>(sizeof guid)) {
        stored.insert(qfc::GuidToText(guid));
    }
    close(told[0]);
    ASSERT_GE(stored.size(), 60u);
    ASSERT_EQ(Manager::fnStartService(), 1);
    m_hMedia = Manager::fnLoadGallery(kMedia);
    ASSERT_NE(m_hMedia, 0u);
    const std::string items = ItemsSeen();
    const std::string records = ItemsOfRecords();
    for (const std::string& text : stored) {
        EXPECT_NE(items.find(text), std::string::npos);
        EXPECT_NE(records.find(text), std::string::npos);
    }
    // The item comes first: at most the last one lacks its record, none lacks its item.
    EXPECT_LE(records.size(), items.size());
    EXPECT_LE(items.size() - records.size(), 37u);
}

}  // namespace
