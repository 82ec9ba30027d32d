#pragma once

#include "api/QFCLib.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace qfc::test {

// A data folder and a host folder of the test's own, both empty; the service is stopped. The data folder is fixed once
// per process, so tests that run in one process share the path and find it emptied.
class StoppedServiceFixture : public testing::Test {
protected:
    void SetUp() override;
    // Closes the galleries still open, stops the service, withdraws the callbacks of these names.
    void TearDown() override;

    static std::filesystem::path DataFolder();
    static std::filesystem::path HostFolder();
    static std::filesystem::path DatabaseFile();
    // Where a new library is seeded from.
    static std::filesystem::path TemplateFile();
    // A scratch folder beside the two.
    static std::filesystem::path Scratch();
    // Rows of the library file, read past the library: "ITEM_TABLE where ...".
    static int CountRows(const std::string& tableAndCondition);
    // What is stored of the only item: name, thumbnail frame, sizes of film and frame, sizes by kinds of payload.
    static std::string StoredItem();

    static int Start() { return QFCLibraryManager::fnStartService(); }
    static int Stop() { return QFCLibraryManager::fnStopService(); }
    // A template that can be told from an empty library: its table SEED has one row, N = 42.
    static void MakeTemplate();

    // Registers the callback until the end of the test.
    void Listen(const CString& strName, std::function<int(QFCLibCallbackParam*)> fn);

private:
    std::vector<CString> m_callbackNames;
};

// The same with the service started and one gallery, "Media", with one folder, "Clips".
class LibraryFixture : public StoppedServiceFixture {
protected:
    static constexpr int kMedia = 1;

    void SetUp() override;

    // Closes every gallery, stops and starts the service, loads the gallery again: what is seen then was stored.
    void Restart();
    // Waits until the worker has done everything queued before, asynchronous work included.
    static void Settle();

    CQFolder* Folder(const char* pszPath) const { return AsGallery(m_hMedia)->GetFolderByPath(pszPath); }
    CQFolder* MakeFolder(const char* pszParentPath, const char* pszName);
    // A new item that the caller owns until a folder holds it.
    static CQItem* NewItem(const char* pszName, DWORD dwType = 1);
    // Adds a new item through the service and checks that the folders hold it.
    CQItem* AddItem(const char* pszName, const std::vector<CString>& paths = {"Clips"});

    ULONGLONG m_hMedia = 0;
    CQFolder* m_pClips = nullptr;
};

void CloseAllGalleries();
std::vector<int> IdsOf(const std::vector<qfc::StoredGallery>& galleries);

// Payloads as the library wants them: filled with a pattern that tells byte for byte whether it survived.
void GiveBlackBox(CQItem& item, unsigned nSize);
void GiveBitmapCache(CQItem& item, int nWidth, int nHeight);
// Frames of equal size; sets attribute bit 0.
void GiveFilm(CQItem& item, unsigned nFrames, unsigned nFrameSize);
bool HoldsPattern(const void* pBytes, unsigned nSize);

}  // namespace qfc::test
