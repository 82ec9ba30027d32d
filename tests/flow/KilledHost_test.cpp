// A host process is killed in the middle of its work. What it was told is stored must be there.
#include "tests/support/LibraryFixture.h"

#include <csignal>
#include <cstdio>
#include <gtest/gtest.h>
#include <random>
#include <set>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Manager = QFCLibraryManager;
using qfc::AsGallery;

// The host process: adds items without end and writes the GUID of every acknowledged one to the pipe.
[[noreturn]] void AddUntilKilled(int pipe) {
    Manager::fnStartService();
    ULONGLONG hMedia = Manager::fnLoadGallery(1);
    if (hMedia == 0) hMedia = Manager::fnCreateGallery(1, "Media", 0, 0, 0);
    CQFolder* pClips = AsGallery(hMedia)->GetFolderByPath("Clips");
    if (pClips == nullptr) pClips = Manager::fnCreateFolder(hMedia, "", "Clips", 0, 0, 0, 0);
    if (pClips == nullptr) _exit(1);
    Manager::fnRegister_QFCLibCallBack("acknowledge", [&](QFCLibCallbackParam* pParam) {
        const bool bStored = pClips->HasItem(pParam->guidItem, 0) != 0;
        return bStored && write(pipe, &pParam->guidItem, sizeof(GUID)) == sizeof(GUID) ? 1 : 0;
    });
    for (unsigned number = 0;; ++number) {
        auto* const pItem = new CQItem("item");
        qfc::test::GiveBlackBox(*pItem, 100 + number % 5000);
        // Now and then a synchronous call keeps the queue from growing without bound.
        if (number % 16 == 0) {
            Manager::fnAddItem(hMedia, {"Clips"}, pItem);
        } else {
            Manager::fnAddItemAsync(hMedia, {"Clips"}, pItem, number % 5 == 0);
        }
    }
}

class KilledHost : public qfc::test::StoppedServiceFixture {
protected:
    // Starts a host, reads so many acknowledgements, kills it and takes in what it had still written.
    void RunAndKill(int nAcknowledgements) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t host = fork();
        ASSERT_GE(host, 0);
        if (host == 0) {
            close(ends[0]);
            AddUntilKilled(ends[1]);
        }
        close(ends[1]);
        GUID guid;
        for (int count = 0; read(ends[0], &guid, sizeof guid) == sizeof guid; ++count) {
            m_acknowledged.insert(guid);
            if (count == nAcknowledgements) kill(host, SIGKILL);
        }
        close(ends[0]);
        int status = 0;
        ASSERT_EQ(waitpid(host, &status, 0), host);
        EXPECT_TRUE(WIFSIGNALED(status)) << "the host ended by itself";
    }

    int CountLost() const {
        CQFolder* const pClips = AsGallery(Manager::fnLoadGallery(1))->GetFolderByPath("Clips");
        if (pClips == nullptr) return static_cast<int>(m_acknowledged.size());
        int lost = 0;
        for (const GUID& guid : m_acknowledged) {
            CQItem* const pItem = pClips->GetItemByGUID(guid);
            const bool bWhole = pItem != nullptr &&
                                qfc::test::HoldsPattern(pItem->GetBlackBox(), pItem->GetBlackBoxSize()) &&
                                pItem->GetBlackBoxSize() >= 100;
            lost += bWhole ? 0 : 1;
        }
        return lost;
    }

    std::set<GUID> m_acknowledged;
};

TEST_F(KilledHost, LosesNothingThatWasAcknowledged) {
    constexpr int kKills = 8;
    constexpr unsigned kSeed = 20261121;
    std::mt19937 random(kSeed);
    for (int round = 0; round < kKills; ++round) RunAndKill(static_cast<int>(random() % 40));

    ASSERT_EQ(Manager::fnStartService(), 1);
    const int lost = CountLost();
    std::printf("kill -9 during adds: %d runs, %d lost of %zu, seed %u\n", kKills, lost, m_acknowledged.size(), kSeed);
    EXPECT_EQ(lost, 0);
    qfc::test::CloseAllGalleries();
    ASSERT_EQ(Manager::fnStopService(), 1);
    std::vector<qfc::LibraryFinding> findings;
    EXPECT_EQ(fnCheckLibrary(Manager::GetDatabasePath(), findings), 1);
    for (const auto& finding : findings) ADD_FAILURE() << finding.sentence;
}

}  // namespace
