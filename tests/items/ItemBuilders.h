#pragma once

#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "platform/media/PackedDib.h"
#include "platform/os/Memory.h"

#include <cstring>
#include <string>
#include <vector>

// Items, payload buffers and small trees for the tests of the model.
namespace qfc::test {

using ByteVector = std::vector<BYTE>;

inline GUID GuidOf(unsigned nNumber) {
    GUID guid{};
    guid.Data1 = nNumber;
    guid.Data4[7] = 0x5A;
    return guid;
}

// Bytes that tell their place, so that a shifted or cut copy shows.
inline ByteVector Pattern(std::size_t nSize, unsigned nSeed = 1) {
    ByteVector bytes(nSize);
    for (std::size_t i = 0; i < nSize; ++i) bytes[i] = static_cast<BYTE>(i * 31 + nSeed * 17 + i / 251);
    return bytes;
}

inline void* GlobalCopy(const ByteVector& bytes) {
    void* const pBlock = AllocGlobalBlock(bytes.size());
    std::memcpy(pBlock, bytes.data(), bytes.size());
    return pBlock;
}

inline void* PlainCopy(const ByteVector& bytes) {
    void* const pBlock = AllocPlainBlock(bytes.size());
    std::memcpy(pBlock, bytes.data(), bytes.size());
    return pBlock;
}

// A packed bitmap of exactly `nSize` bytes, whatever its header says.
inline ByteVector DibOfSize(int nWidth, int nHeight, int nBits, std::size_t nSize) {
    ByteVector bytes = Pattern(nSize, 7);
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = nWidth;
    header.biHeight = nHeight;
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(nBits);
    std::memcpy(bytes.data(), &header, sizeof(header));
    return bytes;
}

inline ByteVector Dib24(int nWidth, int nHeight) {
    const int nRow = (nWidth * 24 / 8 + 3) / 4 * 4;
    return DibOfSize(nWidth, nHeight, 24, static_cast<std::size_t>(40 + nRow * nHeight));
}

inline void GiveBlackBox(CQItem& item, const ByteVector& bytes) {
    item.ChangeBlackBox(PlainCopy(bytes), static_cast<unsigned>(bytes.size()));
}

inline void GiveCache(CQItem& item, const ByteVector& dib) {
    item.ChangeCache(GlobalCopy(dib), static_cast<unsigned>(dib.size()));
}

// Sets attribute bit 0 as well: a film without it is never handed out.
inline void GiveFilm(CQItem& item, const ByteVector& bytes, unsigned nFrameSize) {
    item.GetAttrib() |= 1;
    item.ChangeFilm(static_cast<unsigned char*>(GlobalCopy(bytes)), static_cast<unsigned>(bytes.size()), nFrameSize);
}

inline ByteVector InMemory(const CQItem& item, int nKind) {
    const auto bytes = item.PayloadInMemory(nKind);
    const auto* const pFirst = reinterpret_cast<const BYTE*>(bytes.data());
    return bytes.empty() ? ByteVector{} : ByteVector(pFirst, pFirst + bytes.size());
}

// An item with all three payloads and every stored field set.
inline CQItem* NewFilledItem(unsigned nNumber) {
    auto* const pItem = new CQItem("Item " + CString(std::to_string(nNumber).c_str()));
    pItem->SetUniqueID(GuidOf(nNumber));
    pItem->SetFileName("C:\\media\\clip.avi");
    pItem->GetDescription() = "2020 1 2 3 4 5 2020 1 2 3 4 6";
    pItem->GetAnnotation() = "a note";
    pItem->SetTemplatePath("C:\\templates\\one");
    pItem->SetItemType(1);
    pItem->fnSetTimeStamp(1'600'000'000);
    pItem->fnSetDeletable(1);
    pItem->SetDBID(77);
    pItem->GetCurThumbFrameNum() = 4;
    pItem->GetOrgThumbFrameNum() = 5;
    GiveBlackBox(*pItem, Pattern(3000, nNumber));
    GiveCache(*pItem, Dib24(10, 10));
    GiveFilm(*pItem, Pattern(900, nNumber + 1), 300);
    return pItem;
}

// The parent owns the new folder.
inline CQFolder* AddSub(CQFolder& parent, const char* pszName, DWORD dwTrusty = 0) {
    auto* const pFolder = new CQFolder(pszName, dwTrusty, 0, 0);
    parent.AddFolder(pFolder, 0, 1);
    return pFolder;
}

// Counts its own end.
class CountedItem : public CQItem {
public:
    explicit CountedItem(int& nDestroyed) : m_nDestroyed(nDestroyed) {}
    ~CountedItem() override { ++m_nDestroyed; }

private:
    int& m_nDestroyed;
};

}  // namespace qfc::test
