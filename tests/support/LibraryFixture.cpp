#include "tests/support/LibraryFixture.h"

#include "tests/support/RawDb.h"
#include "tests/support/TempFolder.h"

#include <cstring>
#include <future>
#include <memory>
#include <utility>

namespace qfc::test {

namespace fs = std::filesystem;

namespace {

// Made with the first test of the process and removed when the process ends.
fs::path Root() {
    static const TempFolder root;
    return root.Path();
}

void MakeEmpty(const fs::path& folder) {
    fs::remove_all(folder);
    fs::create_directories(folder);
}

}  // namespace

fs::path StoppedServiceFixture::DataFolder() { return Root() / "data"; }
fs::path StoppedServiceFixture::HostFolder() { return Root() / "host"; }
fs::path StoppedServiceFixture::DatabaseFile() { return DataFolder() / "CinelumeDatabase.db"; }
fs::path StoppedServiceFixture::TemplateFile() { return HostFolder() / "Orvel.dat" / "CinelumeDatabase.db"; }
fs::path StoppedServiceFixture::Scratch() { return Root() / "scratch"; }

std::string StoppedServiceFixture::StoredItem() {
    return RawDb(DatabaseFile())
        .Cell(
            "select ITEM_NAME || ' ' || CUR_THUMB_FRAME_NUM || ' ' || FILM_SIZE || ' ' || FRAME_SIZE || ':' ||"
            " (select coalesce(group_concat(' ' || CACHE_DATA_TYPE || '=' || PRE_COMPRESSED_SIZE, ''), '') from"
            " (select * from CACHE_DATA_TABLE order by CACHE_DATA_TYPE)) from ITEM_TABLE");
}

int StoppedServiceFixture::CountRows(const std::string& tableAndCondition) {
    return std::stoi(RawDb(DatabaseFile()).Cell("select count(*) from " + tableAndCondition));
}

void StoppedServiceFixture::MakeTemplate() {
    fs::create_directories(TemplateFile().parent_path());
    RawDb(TemplateFile()).Exec("create table SEED(N); insert into SEED values(42)");
}

void StoppedServiceFixture::SetUp() {
    for (const fs::path& folder : {DataFolder(), HostFolder(), Scratch()}) MakeEmpty(folder);
    SetDataFolder(DataFolder().c_str());
    SetHostFolder(HostFolder().c_str());
}

void StoppedServiceFixture::TearDown() {
    CloseAllGalleries();
    QFCLibraryManager::fnStopService();
    for (const CString& strName : m_callbackNames) QFCLibraryManager::fnUnRegister_QFCLibCallBack(strName);
}

void StoppedServiceFixture::Listen(const CString& strName, std::function<int(QFCLibCallbackParam*)> fn) {
    ASSERT_EQ(QFCLibraryManager::fnRegister_QFCLibCallBack(strName, std::move(fn)), 1);
    m_callbackNames.push_back(strName);
}

void LibraryFixture::SetUp() {
    StoppedServiceFixture::SetUp();
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    m_hMedia = QFCLibraryManager::fnCreateGallery(kMedia, "Media", 0, 0, 0);
    ASSERT_NE(m_hMedia, 0u);
    m_pClips = MakeFolder("", "Clips");
    ASSERT_NE(m_pClips, nullptr);
}

void LibraryFixture::Restart() {
    CloseAllGalleries();
    ASSERT_EQ(QFCLibraryManager::fnStopService(), 1);
    ASSERT_EQ(QFCLibraryManager::fnStartService(), 1);
    m_hMedia = QFCLibraryManager::fnLoadGallery(kMedia);
    ASSERT_NE(m_hMedia, 0u);
    m_pClips = Folder("Clips");
}

// The last operation of either kind of asynchronous work: both lists are served in order of arrival.
void LibraryFixture::Settle() {
    CQGallery nowhere;
    CQItem items[2];
    std::promise<void> settled[2];
    QFCLibraryManager::fnRegister_QFCLibCallBack("settle", [&](QFCLibCallbackParam* pParam) {
        for (int kind : {0, 1}) {
            if (pParam->guidItem == items[kind].GetUniqueID()) settled[kind].set_value();
        }
        return 1;
    });
    for (int kind : {0, 1}) QFCLibraryManager::fnAddItemAsync(ToHandle(&nowhere), {"nowhere"}, &items[kind], kind);
    for (std::promise<void>& done : settled) done.get_future().wait();
    QFCLibraryManager::fnUnRegister_QFCLibCallBack("settle");
}

CQFolder* LibraryFixture::MakeFolder(const char* pszParentPath, const char* pszName) {
    return QFCLibraryManager::fnCreateFolder(m_hMedia, pszParentPath, pszName, 0, 0, 0, 0);
}

CQItem* LibraryFixture::NewItem(const char* pszName, DWORD dwType) {
    auto item = std::make_unique<CQItem>(pszName);
    item->SetItemType(dwType);
    item->SetFileName(CString("C:\\media\\") + pszName + ".avi");
    return item.release();
}

CQItem* LibraryFixture::AddItem(const char* pszName, const std::vector<CString>& paths) {
    CQItem* const pItem = NewItem(pszName);
    EXPECT_EQ(QFCLibraryManager::fnAddItem(m_hMedia, paths, pItem), 1);
    for (const CString& strPath : paths) EXPECT_TRUE(Folder(strPath)->HasItem(pItem->GetUniqueID(), 0)) << strPath;
    return pItem;
}

std::vector<int> IdsOf(const std::vector<qfc::StoredGallery>& galleries) {
    std::vector<int> ids;
    for (const auto& gallery : galleries) ids.push_back(gallery.galleryId);
    return ids;
}

void CloseAllGalleries() {
    CQGalleryDoc* const pDocument = GetGalleryDoc();
    while (!pDocument->GetGalleryList().IsEmpty()) pDocument->CloseGallery(pDocument->GetGalleryList().GetHead());
}

namespace {

BYTE PatternAt(unsigned position) { return static_cast<BYTE>(position * 7 + position / 251); }

void FillPattern(BYTE* pBytes, unsigned nSize) {
    for (unsigned position = 0; position < nSize; ++position) pBytes[position] = PatternAt(position);
}

}  // namespace

void GiveBlackBox(CQItem& item, unsigned nSize) {
    PlainBlock bytes(nSize);
    FillPattern(bytes.data(), nSize);
    item.ChangeBlackBox(bytes.release(), nSize);
}

void GiveBitmapCache(CQItem& item, int nWidth, int nHeight) {
    constexpr unsigned kHeader = 40;
    const unsigned nSize = kHeader + static_cast<unsigned>((nWidth * 3 + 3) / 4 * 4 * nHeight);
    GlobalBlock bytes(nSize);
    const std::int32_t head[3] = {static_cast<std::int32_t>(kHeader), nWidth, nHeight};
    const std::uint16_t planesAndBits[2] = {1, 24};
    std::memcpy(bytes.data(), head, sizeof head);
    std::memcpy(bytes.data() + sizeof head, planesAndBits, sizeof planesAndBits);
    FillPattern(bytes.data() + kHeader, nSize - kHeader);
    ASSERT_EQ(item.ChangeCache(bytes.release(), nSize), 1);
}

void GiveFilm(CQItem& item, unsigned nFrames, unsigned nFrameSize) {
    GlobalBlock bytes(nFrames * nFrameSize);
    FillPattern(bytes.data(), nFrames * nFrameSize);
    item.ChangeFilm(static_cast<unsigned char*>(bytes.release()), nFrames * nFrameSize, nFrameSize);
    item.GetAttrib() |= 1;
}

bool HoldsPattern(const void* pBytes, unsigned nSize) {
    if (pBytes == nullptr) return false;
    const auto* const bytes = static_cast<const BYTE*>(pBytes);
    for (unsigned position = 0; position < nSize; ++position) {
        if (bytes[position] != PatternAt(position)) return false;
    }
    return true;
}

}  // namespace qfc::test
