#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "platform/os/GuidSource.h"

#include <cstring>

namespace {

// A block of its own with the same bytes; empty, with size 0, when the source has none.
template <class Block>
Block Cloned(const Block& source) {
    Block copy(source.size());
    if (copy) std::memcpy(copy.data(), source.data(), copy.size());
    return copy;
}

template <class Block>
void TakeCopy(Block& target, DWORD& dwTargetSize, const Block& source) {
    target = Cloned(source);
    dwTargetSize = static_cast<DWORD>(target.size());
}

template <class Block>
bool SameBytes(const Block& a, const Block& b) {
    if (a.size() != b.size()) return false;
    return a.size() == 0 || std::memcmp(a.data(), b.data(), a.size()) == 0;
}

}  // namespace

// What a copy takes along            | what it leaves
// -----------------------------------+---------------------------------------------
// name, file, description,           | GUID (a fresh one), translated name, number,
// annotation, template path,         | database id, attached flag, parent folder,
// attributes, type, timestamp,       | tags, deletable flag, modified flag (1)
// tools, frame size, thumbnail       |
// frames, own copies of all payloads |
CQItem::CQItem(const CQItem& source)
    : CObject(source),
      m_dwAttrib(source.m_dwAttrib),
      m_ullTimeStamp(source.m_ullTimeStamp),
      m_dwFrameSize(source.m_dwFrameSize),
      m_pDBTools(source.m_pDBTools),
      m_dwItemType(source.m_dwItemType),
      m_strItemName(source.m_strItemName),
      m_strDescription(source.m_strDescription),
      m_strAnnotation(source.m_strAnnotation),
      m_strFileName(source.m_strFileName),
      m_strTemplatePath(source.m_strTemplatePath),
      m_bModified(1),
      m_guid{},
      m_dwCurThumbFrameNum(source.m_dwCurThumbFrameNum),
      m_dwOrgThumbFrameNum(source.m_dwOrgThumbFrameNum) {
    CoCreateGuid(&m_guid);
    TakeCopy(m_blackBox, m_dwBlackBoxSize, source.m_blackBox);
    TakeCopy(m_dataBlock, m_dwDataBlockSize, source.m_dataBlock);
    TakeCopy(m_cache, m_dwCacheSize, source.m_cache);
    TakeCopy(m_film, m_dwFilmSize, source.m_film);
}

void CQItem::Copy(const CQItem* pSource, DWORD dwMask) {
    if (pSource == nullptr) return;
    if (pSource != this) CopyGroups(*pSource, dwMask);
    m_bModified = 1;
}

void CQItem::CopyGroups(const CQItem& source, DWORD dwMask) {
    if (dwMask & qfc::copy_mask::kFields) {
        m_strItemName = source.m_strItemName;
        m_strFileName = source.m_strFileName;
        m_strDescription = source.m_strDescription;
        m_strAnnotation = source.m_strAnnotation;
        m_dwAttrib = source.m_dwAttrib;
        m_dwItemType = source.m_dwItemType;
        m_dwFrameSize = source.m_dwFrameSize;
        m_ullTimeStamp = source.m_ullTimeStamp;
    }
    if (dwMask & qfc::copy_mask::kBlackBox) TakeCopy(m_blackBox, m_dwBlackBoxSize, source.m_blackBox);
    if (dwMask & qfc::copy_mask::kDataBlock) TakeCopy(m_dataBlock, m_dwDataBlockSize, source.m_dataBlock);
    if (dwMask & qfc::copy_mask::kCache) {
        TakeCopy(m_cache, m_dwCacheSize, source.m_cache);
        m_dwCurThumbFrameNum = source.m_dwCurThumbFrameNum;
        m_dwOrgThumbFrameNum = source.m_dwOrgThumbFrameNum;
    }
    // Kept: the frame size travels with the fields, not with the film.
    if (dwMask & qfc::copy_mask::kFilm) TakeCopy(m_film, m_dwFilmSize, source.m_film);
}

int CQItem::Equals(CQItem* pOther) {
    if (pOther == nullptr) return 0;
    if (m_strItemName != pOther->m_strItemName || m_dwItemType != pOther->m_dwItemType) return 0;
    if (m_dwDataBlockSize != pOther->m_dwDataBlockSize || m_dwFilmSize != pOther->m_dwFilmSize) return 0;
    if (!SameBytes(m_dataBlock, pOther->m_dataBlock)) return 0;
    if (m_dwFilmSize == 0) return 1;
    // The sizes come with the row, the bytes only on demand.
    TryLoadFilm();
    pOther->TryLoadFilm();
    return m_film && SameBytes(m_film, pOther->m_film) ? 1 : 0;
}

int CQItem::IsSameItem(const CQItem* pOther) const { return pOther != nullptr && m_guid == pOther->m_guid ? 1 : 0; }
