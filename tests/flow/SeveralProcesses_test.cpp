// Several hosts on one library, and a host on a library that it may not write. Every host is a process of its own.
#include "tests/support/LibraryFixture.h"
#include "tests/support/RawDb.h"

#include <gtest/gtest.h>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Manager = QFCLibraryManager;
using qfc::AsGallery;

class SeveralProcesses : public qfc::test::StoppedServiceFixture {
protected:
    // Runs the host in a process of its own, which starts without threads and never returns from here.
    template <typename Host>
    static pid_t Spawn(Host host) {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            host();
            std::fflush(nullptr);
            _exit(HasFailure() ? 1 : 0);
        }
        return child;
    }
    static void AwaitSuccess(pid_t child) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "a host failed, status " << status;
    }
    static void AddToOwnGallery(int nGalleryId, int nItems) {
        ASSERT_EQ(Manager::fnStartService(), 1);
        const ULONGLONG hGallery = Manager::fnCreateGallery(nGalleryId, "Own", 0, 0, 0);
        ASSERT_NE(hGallery, 0u);
        CQFolder* const pFolder = Manager::fnCreateFolder(hGallery, "", "Folder", 0, 0, 0, 0);
        ASSERT_NE(pFolder, nullptr);
        for (int i = 0; i < nItems; ++i) {
            auto* const pItem = new CQItem("item");
            ASSERT_EQ(Manager::fnAddItem(hGallery, {"Folder"}, pItem), 1);
            ASSERT_EQ(pFolder->HasItem(pItem->GetUniqueID(), 0), 1) << "item " << i;
        }
        qfc::test::CloseAllGalleries();
        ASSERT_EQ(Manager::fnStopService(), 1);
    }
};

TEST_F(SeveralProcesses, ThatStartAtOnceOnANewLibrary_AllKeepWhatTheyAdded) {
    fs::create_directories(TemplateFile().parent_path());
    qfc::test::RawDb(TemplateFile()).Exec("create table SEED(N); insert into SEED values(42)");
    constexpr int kHosts = 4;
    constexpr int kItems = 15;
    std::vector<pid_t> hosts;
    for (int host = 0; host < kHosts; ++host) hosts.push_back(Spawn([=] { AddToOwnGallery(100 + host, kItems); }));
    for (const pid_t host : hosts) AwaitSuccess(host);
    EXPECT_EQ(CountRows("SEED"), 1);
    EXPECT_EQ(CountRows("GALLERY_TABLE"), kHosts);
    EXPECT_EQ(CountRows("ITEM_TABLE"), kHosts * kItems);
    EXPECT_EQ(CountRows("RELATION_TABLE"), kHosts * kItems);
}

// What a host that may only read can do, and what it is told about the rest.
void UseReadOnlyLibrary() {
    ASSERT_EQ(Manager::fnStartService(), 1);
    const ULONGLONG hMedia = Manager::fnLoadGallery(1);
    ASSERT_NE(hMedia, 0u);
    CQFolder* const pClips = AsGallery(hMedia)->GetFolderByPath("Clips");
    ASSERT_NE(pClips, nullptr);
    ASSERT_EQ(pClips->GetItemArray()->GetSize(), 1);
    CQItem* const pStored = pClips->GetItemArray()->GetAt(0);

    const std::unique_ptr<CQItem> item(new CQItem("New"));
    EXPECT_EQ(Manager::fnAddItem(hMedia, {"Clips"}, item.get()), 1);
    EXPECT_EQ(pClips->HasItem(item->GetUniqueID(), 0), 0);
    EXPECT_EQ(Manager::fnCreateFolder(hMedia, "", "New", 0, 0, 0, 0), nullptr);
    EXPECT_EQ(Manager::fnCreateGallery(2, "New", 0, 0, 0), 0u);
    EXPECT_EQ(Manager::fnUpdateFolder(qfc::ToHandle(pClips), "New", 0, 0, 0), 0);
    EXPECT_EQ(Manager::fnDeleteGallery({1}), 0);
    CQItem changed("Changed");
    EXPECT_EQ(Manager::fnUpdateItem(hMedia, &changed, pStored->GetUniqueID(), 1), 1);
    CQItem fresh;
    fresh.SetUniqueID(pStored->GetUniqueID());
    fresh.fnSetDbTools(pStored->fnGetDbTools());
    ASSERT_EQ(fresh.fnLoadItemFromDb(), 1);
    EXPECT_EQ(fresh.GetItemName(), "Sunrise");
    qfc::test::CloseAllGalleries();
    EXPECT_EQ(Manager::fnStopService(), 1);
}

TEST_F(SeveralProcesses, AHostThatMayOnlyRead_ReadsEverythingAndChangesNothing) {
    AwaitSuccess(Spawn([] {
        ASSERT_EQ(Manager::fnStartService(), 1);
        const ULONGLONG hMedia = Manager::fnCreateGallery(1, "Media", 0, 0, 0);
        ASSERT_NE(Manager::fnCreateFolder(hMedia, "", "Clips", 0, 0, 0, 0), nullptr);
        Manager::fnAddItem(hMedia, {"Clips"}, new CQItem("Sunrise"));
        qfc::test::CloseAllGalleries();
        Manager::fnStopService();
    }));
    const std::string before = qfc::test::DumpOf(DatabaseFile());
    fs::permissions(DataFolder().parent_path(), fs::perms{0755});
    fs::permissions(DataFolder(), fs::perms{0555});
    fs::permissions(DatabaseFile(), fs::perms{0444});
    AwaitSuccess(Spawn([] {
        // To the superuser everything is writable.
        constexpr uid_t kNobody = 65534;
        if (geteuid() == 0 && setuid(kNobody) != 0) FAIL() << "cannot become another user";
        UseReadOnlyLibrary();
    }));
    fs::permissions(DataFolder(), fs::perms::owner_all);
    EXPECT_EQ(qfc::test::DumpOf(DatabaseFile()), before);
}

}  // namespace
