#include "db/CachePayload.h"
#include "db/Columns.h"
#include "db/DBTools.h"
#include "items/CQItem.h"
#include "items/ItemTypes.h"
#include "items/RowReader.h"

#include <cstdint>
#include <type_traits>

namespace column = qfc::column;

namespace {

// What became of one stored payload.
enum class Stored {
    kNoRow,    // Nothing was touched.
    kEmpty,    // A row that announces no bytes.
    kNoBytes,  // Announced, but the row holds none; the buffer was not touched.
    kCorrupt,  // The bytes do not give the announced size; the buffer is gone.
    kLoaded,
};

struct LoadedPayload {
    Stored outcome = Stored::kNoRow;
    unsigned nAnnounced = 0;
};

// Brings the payload into the buffer, which is kept when it is large enough and replaced when it is not.
template <class Block>
bool Unpack(const qfc::StoredPayload& stored, Block& block) {
    if (!qfc::PayloadIsSound(stored)) return false;
    const auto nSize = static_cast<std::size_t>(stored.rawSize);
    if (block.size() < nSize) {
        block = Block(nSize);
        if (!block) return false;
    } else {
        block = Block(block.release(), nSize);
    }
    return qfc::UnpackPayload(stored, block.bytes());
}

// `nDefaultSize` stands for an announced size that is missing.
template <class Block>
LoadedPayload Load(DBTools& tools, const GUID& item, int nKind, int nDefaultSize, Block& block) {
    CppSQLite3Query query;
    if (!tools.QueryCacheData(item, nKind, query)) return {};
    const qfc::RowReader row(query);
    if (row.AtEnd()) return {};

    qfc::StoredPayload stored;
    stored.rawSize = row.Int(column::kPreCompressedSize, nDefaultSize);
    const auto nAnnounced = static_cast<unsigned>(stored.rawSize);
    if (stored.rawSize == 0) {
        block = Block(block.release(), 0);
        return {Stored::kEmpty, 0};
    }
    stored.compressedSize = row.Int(column::kCompressedSize, 0);
    stored.bytes = row.Blob(column::kCompressedData);
    if (stored.bytes.empty()) return {Stored::kNoBytes, nAnnounced};
    if (!Unpack(stored, block)) {
        block.reset();
        return {Stored::kCorrupt, 0};
    }
    return {Stored::kLoaded, nAnnounced};
}

int Succeeded(Stored outcome) { return outcome == Stored::kLoaded || outcome == Stored::kEmpty ? 1 : 0; }

// Into a buffer of the caller.
template <class Block>
int LoadIntoBuffer(DBTools& tools, const GUID& item, int nKind, int nDefaultSize, unsigned& nSize, void** ppData) {
    Block block(*ppData, nSize);
    const bool bHadBuffer = static_cast<bool>(block);
    const LoadedPayload loaded = Load(tools, item, nKind, nDefaultSize, block);
    *ppData = block.release();
    // The size is announced even when the row has no bytes for it, unless it tells the size of a buffer that stays.
    const bool bSizeStays = loaded.outcome == Stored::kNoRow || (loaded.outcome == Stored::kNoBytes && bHadBuffer);
    if (!bSizeStays) nSize = loaded.nAnnounced;
    return Succeeded(loaded.outcome);
}

// Into a payload of the item itself: without bytes its size stays what it was.
template <class Block>
int LoadIntoMember(DBTools& tools, const GUID& item, int nKind, int nDefaultSize, Block& block, DWORD& dwSize) {
    const LoadedPayload loaded = Load(tools, item, nKind, nDefaultSize, block);
    if (loaded.outcome != Stored::kNoRow && loaded.outcome != Stored::kNoBytes) dwSize = loaded.nAnnounced;
    return Succeeded(loaded.outcome);
}

}  // namespace

int CQItem::fnLoadItemFromDb() {
    CppSQLite3Query query;
    if (m_pDBTools == nullptr || !m_pDBTools->QueryItem(m_guid, query)) return 0;
    const qfc::RowReader row(query);
    if (row.AtEnd()) return 0;

    const auto number = [&](const char* pszColumn, auto& member) {
        using Member = std::remove_reference_t<decltype(member)>;
        member = static_cast<Member>(row.Int(pszColumn, static_cast<int>(member)));
    };
    number(column::kCurThumbFrameNum, m_dwCurThumbFrameNum);
    number(column::kOrgThumbFrameNum, m_dwOrgThumbFrameNum);
    number(column::kBbid, m_nDBId);
    number(column::kItemType, m_dwItemType);
    m_strItemName = row.NameText(column::kItemName, m_strItemName);
    // Kept: names and paths are converted from UTF-8, description and annotation are taken as stored.
    m_strDescription = row.Text(column::kDescription, m_strDescription);
    m_strAnnotation = row.Text(column::kAnnotation, m_strAnnotation);
    m_strFileName = row.NameText(column::kFileName, m_strFileName);
    number(column::kAttrib, m_dwAttrib);
    // Kept: the timestamp passes through 32 signed bits.
    m_ullTimeStamp = static_cast<ULONGLONG>(std::int64_t{row.Int(column::kTimestamp, 0)});
    number(column::kFilmSize, m_dwFilmSize);
    number(column::kFrameSize, m_dwFrameSize);
    number(column::kDeletable, m_bDeletable);
    // Once the film is in memory, its bytes tell its size, whatever the row says.
    if (m_film) m_dwFilmSize = static_cast<DWORD>(m_film.size());
    return 1;
}

int CQItem::UpdateItemDB() { return m_pDBTools != nullptr && m_pDBTools->UpdateItemDB(this) ? 1 : 0; }

int CQItem::IsItemInSql() const {
    CppSQLite3Query query;
    if (m_pDBTools == nullptr || !m_pDBTools->QueryItemByName(m_strItemName, query)) return 0;
    return query.eof() ? 0 : 1;
}

int CQItem::DeleteItemDataFromDb() { return m_pDBTools != nullptr && m_pDBTools->DeleteItemRow(m_guid) ? 1 : 0; }

int CQItem::DeleteRelationFromDb(int nParentId) {
    return m_pDBTools != nullptr && m_pDBTools->DeleteRelation(m_guid, nParentId) ? 1 : 0;
}

int CQItem::DeleteCacheDataFromDb(int nKind) {
    if (m_pDBTools == nullptr) return 0;
    // Kept: the one kind goes first, then every kind goes.
    if (nKind == qfc::kBitmapCache || nKind == qfc::kBlackBox || nKind == qfc::kFilm) {
        m_pDBTools->DeleteCacheData(m_guid, nKind);
    }
    return m_pDBTools->DeleteAllCacheData(m_guid) ? 1 : 0;
}

int CQItem::DeleteItemDb(int nParentId) {
    DeleteRelationFromDb(nParentId);
    DeleteCacheDataFromDb(-1);
    DeleteItemDataFromDb();
    return 1;
}

int CQItem::LoadCacheDataFromDb(unsigned& nSize, void** ppData, DWORD dwKind) {
    if (m_pDBTools == nullptr || ppData == nullptr) return 0;
    const int nKind = static_cast<int>(dwKind);
    // Kept: a missing size counts as that of the black box, whatever the kind.
    const int nDefaultSize = static_cast<int>(m_dwBlackBoxSize);
    const auto load = nKind == qfc::kBitmapCache || nKind == qfc::kFilm ? &LoadIntoBuffer<qfc::GlobalBlock>
                                                                        : &LoadIntoBuffer<qfc::PlainBlock>;
    return load(*m_pDBTools, m_guid, nKind, nDefaultSize, nSize, ppData);
}

int CQItem::LoadCacheDataFromDb(DWORD dwKind) {
    if (m_pDBTools == nullptr) return 0;
    const int nKind = static_cast<int>(dwKind);
    const int nDefaultSize = static_cast<int>(m_dwBlackBoxSize);
    switch (nKind) {
        case qfc::kBitmapCache:
            return LoadIntoMember(*m_pDBTools, m_guid, nKind, nDefaultSize, m_cache, m_dwCacheSize);
        case qfc::kBlackBox:
            return LoadIntoMember(*m_pDBTools, m_guid, nKind, nDefaultSize, m_blackBox, m_dwBlackBoxSize);
        case qfc::kFilm:
            return LoadFilmFromDb(nDefaultSize);
        default:
            return 0;
    }
}

int CQItem::LoadFilmFromDb(int nDefaultSize) {
    // A film that does not consist of frames is refused here, so that nobody divides by its frame size.
    if (m_dwFrameSize == 0) return 0;
    const int bLoaded = LoadIntoMember(*m_pDBTools, m_guid, qfc::kFilm, nDefaultSize, m_film, m_dwFilmSize);
    if (!m_film || m_film.size() >= m_dwFrameSize) return bLoaded;
    m_film.reset();
    return 0;
}

int CQItem::LoadLibTagFromDB() {
    CppSQLite3Query query;
    if (m_pDBTools == nullptr || !m_pDBTools->QueryItemTags(m_guid, query)) return 0;
    for (qfc::RowReader row(query); !row.AtEnd(); row.Next()) {
        if (const auto tag = row.Guid(column::kTagsGuid)) AddLibTag(*tag);
    }
    return 1;
}
