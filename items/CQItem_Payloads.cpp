#include "folders/CQFolder.h"
#include "folders/GalleryFile.h"
#include "items/CQGallery.h"
#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "platform/media/PackedDib.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <utility>

namespace {

// Frees the buffer, unless it is the very one that is to be taken now.
template <class Block>
void MakeRoom(Block& block, const void* pNew) {
    if (block.data() == pNew) static_cast<void>(block.release());
    block.reset();
}

template <class Block>
void Adopt(Block& block, void* pData, unsigned nSize) {
    MakeRoom(block, pData);
    block = Block(pData, nSize);
}

// Holds a payload back from a load and puts it in its place afterwards, also when the load throws.
template <class Block>
class Kept {
public:
    Kept(bool bKeep, Block& block, DWORD& dwSize) : m_block(block), m_dwSize(dwSize) {
        if (bKeep) m_kept = std::move(block);
    }
    ~Kept() {
        if (!m_kept) return;
        m_dwSize = static_cast<DWORD>(m_kept.size());
        m_block = std::move(m_kept);
    }
    Kept(const Kept&) = delete;
    Kept& operator=(const Kept&) = delete;

private:
    Block& m_block;
    DWORD& m_dwSize;
    Block m_kept;
};

// Bytes that a packed bitmap of this header takes; empty for a width that is none. A bitmap stored from the top has a
// negative height and the same rows.
std::optional<std::int64_t> RequiredDibSize(const BITMAPINFOHEADER& header) {
    constexpr std::int64_t kHeaderBytes = 40;
    constexpr std::int64_t kHeaderAndPaletteBytes = 1064;
    if (header.biWidth < 0) return std::nullopt;
    // Kept: bits that do not fill a byte are left out, so a bitmap may be taken that is shorter than its drawn rows.
    const std::int64_t nRowBytes = (std::int64_t{header.biBitCount} * header.biWidth / 8 + 3) / 4 * 4;
    const std::int64_t nRows = std::abs(std::int64_t{header.biHeight});
    constexpr std::int64_t kNoBuffer = std::int64_t{1} << 32;  // More than any size can announce.
    if (nRows > 0 && nRowBytes > kNoBuffer / nRows) return std::nullopt;
    return nRowBytes * nRows + (header.biBitCount == 8 ? kHeaderAndPaletteBytes : kHeaderBytes);
}

bool HoldsItsBitmap(const void* pDib, unsigned nSize) {
    const auto header = qfc::ReadDibHeader(pDib, nSize);
    if (!header) return false;
    const auto required = RequiredDibSize(*header);
    return required && std::int64_t{nSize} >= *required;
}

}  // namespace

int CQItem::ChangeBlackBox(void* pData, unsigned nSize) {
    Adopt(m_blackBox, pData, nSize);
    m_dwBlackBoxSize = nSize;
    if (pData != nullptr) m_bModified = 1;
    return 1;
}

void* CQItem::DetachBlackBox() {
    GetBlackBox();
    m_dwBlackBoxSize = 0;
    m_bModified = 1;
    return m_blackBox.release();
}

void* CQItem::GetBlackBox() {
    if (!m_blackBox) TryLoadBB();
    return m_blackBox.data();
}

int CQItem::ChangeCache(void* pDib, unsigned nSize) {
    MakeRoom(m_cache, pDib);
    m_dwCacheSize = nSize;
    if (pDib == nullptr) return 1;
    // Kept: a refused bitmap marks the item modified all the same, and stays the caller's.
    m_bModified = 1;
    if (!HoldsItsBitmap(pDib, nSize)) {
        m_dwCacheSize = 0;
        return 0;
    }
    m_cache = qfc::GlobalBlock(pDib, nSize);
    return 1;
}

void CQItem::ChangeDataBlock(void* pData, unsigned nSize) {
    Adopt(m_dataBlock, pData, nSize);
    m_dwDataBlockSize = nSize;
}

SIZE CQItem::GetBitmapCacheSize() const {
    const auto header = qfc::ReadDibHeader(m_cache.data(), m_cache.size());
    return header ? SIZE{header->biWidth, header->biHeight} : SIZE{-1, -1};
}

int CQItem::ChangeFilm(unsigned char* pFilm, unsigned nFilmSize, unsigned nFrameSize) {
    Adopt(m_film, pFilm, nFilmSize);
    m_dwFilmSize = nFilmSize;
    m_dwFrameSize = nFrameSize;
    if (pFilm != nullptr) m_bModified = 1;
    return 1;
}

// Kept: with attribute bit 0 clear nothing is loaded, and the sizes of the row are counted all the same.
unsigned CQItem::GetTotalFilmFrame() {
    if (TryLoadFilm() == 0 || m_dwFilmSize == 0 || m_dwFrameSize == 0) return 0;
    return m_dwFilmSize / m_dwFrameSize;
}

unsigned char* CQItem::GetFilmFrame(unsigned nIndex) {
    if (TryLoadFilm() == 0 || !m_film || m_dwFrameSize == 0) return nullptr;
    if ((m_dwAttrib & qfc::kAttribHasFilm) == 0) return nullptr;
    // Kept: the bound is the frame count itself, so the index of the end gives the address just past the last frame.
    const auto nFrame = std::min(nIndex, m_dwFilmSize / m_dwFrameSize);
    return m_film.data() + std::size_t{m_dwFrameSize} * nFrame;
}

int CQItem::TryLoadBB() {
    // Kept: a bitmap cache in memory is enough, also when the black box is not there.
    if (m_cache) return 1;
    if (IsExistInGalleryItemMap() == 0) return LoadFromGalleryFile(qfc::kBitmapCache);
    const int bBlackBox = ReloadBlackBox();
    const int bCache = LoadCacheDataFromDb(static_cast<DWORD>(qfc::kBitmapCache));
    return bBlackBox & bCache;
}

// What was given to the item and not stored yet is not loaded over, and a row that cannot be read takes no good bytes.
int CQItem::ReloadBlackBox() {
    if (m_blackBox && m_bModified != 0) return 1;
    qfc::PlainBlock kept(m_blackBox.size());
    if (kept) std::memcpy(kept.data(), m_blackBox.data(), kept.size());
    const int bLoaded = LoadCacheDataFromDb(static_cast<DWORD>(qfc::kBlackBox));
    if (bLoaded == 0 && !m_blackBox && kept) {
        m_dwBlackBoxSize = static_cast<DWORD>(kept.size());
        m_blackBox = std::move(kept);
    }
    return bLoaded;
}

int CQItem::TryLoadFilm() {
    if (m_film || (m_dwAttrib & qfc::kAttribHasFilm) == 0) return 1;
    if (IsExistInGalleryItemMap() == 0) return LoadFromGalleryFile(qfc::kFilm);
    return LoadCacheDataFromDb(static_cast<DWORD>(qfc::kFilm));
}

int CQItem::IsExistInGalleryItemMap() const {
    const CQFolder* const pParent = GetParentFolder();
    if (pParent == nullptr) return 0;
    const auto* pGallery = DYNAMIC_DOWNCAST(CQGallery, pParent->GetRoot());
    CQItem* pCanonical = nullptr;
    return pGallery != nullptr ? pGallery->IsItemHasParentByGuid(m_guid, pCanonical) : 0;
}

std::span<const std::byte> CQItem::PayloadInMemory(int nKind) const {
    switch (nKind) {
        case qfc::kBitmapCache:
            return m_cache.bytes();
        case qfc::kBlackBox:
            return m_blackBox.bytes();
        case qfc::kFilm:
            return m_film.bytes();
        default:
            return {};
    }
}

int CQItem::LoadFromGalleryFile(int nKind) {
    const CQFolder* const pParent = GetParentFolder();
    auto* const pFile = pParent != nullptr ? qfc::GalleryFileOf(*pParent) : nullptr;
    if (pFile == nullptr) return 0;
    if (nKind == qfc::kFilm) return pFile->LoadFilm(*this);
    // One load brings both. What was given to the item and not stored yet is not loaded over.
    const Kept blackBox(m_bModified != 0, m_blackBox, m_dwBlackBoxSize);
    const Kept cache(m_bModified != 0, m_cache, m_dwCacheSize);
    return pFile->LoadBlackBox(*this);
}
