#include "db/CachePayload.h"
#include "db/Columns.h"
#include "db/DBTools.h"
#include "items/CQItem.h"
#include "items/ItemRows.h"
#include "items/ItemTypes.h"
#include "items/LackOfMemory.h"
#include "items/RowReader.h"

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

// One row as it was found: kNoRow, kEmpty, kNoBytes, or kLoaded when there are bytes to unpack. The bytes are the
// query's.
struct FoundRow {
    CppSQLite3Query query;
    Stored outcome = Stored::kNoRow;
    qfc::StoredPayload stored;
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
    return qfc::UnlessMemoryEnds([&] { return qfc::UnpackPayload(stored, block.bytes()); });
}

// `nDefaultSize` stands for an announced size that is missing.
void Find(DBTools& tools, const GUID& item, int nKind, int nDefaultSize, FoundRow& found) {
    if (!tools.QueryCacheData(item, nKind, found.query)) return;
    const qfc::RowReader row(found.query);
    if (row.AtEnd()) return;
    found.stored.rawSize = row.Int(column::kPreCompressedSize, nDefaultSize);
    found.outcome = Stored::kEmpty;
    if (found.stored.rawSize == 0) return;
    found.stored.compressedSize = row.Int(column::kCompressedSize, 0);
    found.stored.bytes = row.Blob(column::kCompressedData);
    found.outcome = found.stored.bytes.empty() ? Stored::kNoBytes : Stored::kLoaded;
}

template <class Block>
LoadedPayload Take(const FoundRow& found, Block& block) {
    if (found.outcome == Stored::kEmpty) block = Block(block.release(), 0);
    if (found.outcome == Stored::kLoaded && !Unpack(found.stored, block)) {
        block.reset();
        return {Stored::kCorrupt, 0};
    }
    return {found.outcome, static_cast<unsigned>(found.stored.rawSize)};
}

int Succeeded(Stored outcome) { return outcome == Stored::kLoaded || outcome == Stored::kEmpty ? 1 : 0; }

// Into a buffer of the caller.
template <class Block>
int LoadIntoBuffer(DBTools& tools, const GUID& item, int nKind, int nDefaultSize, unsigned& nSize, void** ppData) {
    FoundRow found;
    Find(tools, item, nKind, nDefaultSize, found);
    Block block(*ppData, nSize);  // Not before the row was read: that may throw, and the buffer is the caller's.
    const bool bHadBuffer = static_cast<bool>(block);
    const LoadedPayload loaded = Take(found, block);
    *ppData = block.release();
    // The size is announced even when the row has no bytes for it, unless it tells the size of a buffer that stays.
    const bool bSizeStays = loaded.outcome == Stored::kNoRow || (loaded.outcome == Stored::kNoBytes && bHadBuffer);
    if (!bSizeStays) nSize = loaded.nAnnounced;
    return Succeeded(loaded.outcome);
}

// Into a payload of the item itself: without bytes its size stays what it was.
template <class Block>
int TakeIntoMember(const FoundRow& found, Block& block, DWORD& dwSize) {
    const LoadedPayload loaded = Take(found, block);
    if (loaded.outcome != Stored::kNoRow && loaded.outcome != Stored::kNoBytes) dwSize = loaded.nAnnounced;
    return Succeeded(loaded.outcome);
}

template <class Block>
int LoadIntoMember(DBTools& tools, const GUID& item, int nKind, int nDefaultSize, Block& block, DWORD& dwSize) {
    FoundRow found;
    Find(tools, item, nKind, nDefaultSize, found);
    return TakeIntoMember(found, block, dwSize);
}

// What a column does not say stays as it is in the item, but for the timestamp.
qfc::ItemRow FieldsOf(const qfc::RowReader& row, const CQItem& item) {
    qfc::ItemRow fields = qfc::RowOf(item);
    const auto number = [&](const char* pszColumn, int& nField) { nField = row.Int(pszColumn, nField); };
    number(column::kCurThumbFrameNum, fields.currentThumbFrame);
    number(column::kOrgThumbFrameNum, fields.originalThumbFrame);
    number(column::kBbid, fields.bbid);
    number(column::kItemType, fields.itemType);
    fields.name = row.NameText(column::kItemName, fields.name);
    // Kept: names and paths are converted from UTF-8, description and annotation are taken as stored.
    fields.description = row.Text(column::kDescription, fields.description);
    fields.annotation = row.Text(column::kAnnotation, fields.annotation);
    fields.fileName = row.NameText(column::kFileName, fields.fileName);
    number(column::kAttrib, fields.attributes);
    fields.timestamp = row.Int(column::kTimestamp, 0);
    number(column::kFilmSize, fields.filmSize);
    number(column::kFrameSize, fields.frameSize);
    number(column::kDeletable, fields.deletable);
    return fields;
}

}  // namespace

int CQItem::fnLoadItemFromDb() {
    CppSQLite3Query query;
    if (m_pDBTools == nullptr || !m_pDBTools->QueryItem(m_guid, query)) return 0;
    const qfc::RowReader row(query);
    if (row.AtEnd()) return 0;
    return qfc::UnlessMemoryEnds([&] {
        qfc::FillFromRow(*this, FieldsOf(row, *this));
        return 1;
    });
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
    FoundRow found;
    Find(*m_pDBTools, m_guid, qfc::kFilm, nDefaultSize, found);
    // A film that does not consist of frames is refused here, so that nobody divides by its frame size.
    if (m_dwFrameSize == 0 && found.outcome != Stored::kEmpty) return 0;
    const int bLoaded = TakeIntoMember(found, m_film, m_dwFilmSize);
    if (bLoaded == 0 || !m_film || m_film.size() >= m_dwFrameSize || m_film.size() == 0) return bLoaded;
    m_film.reset();
    m_dwFilmSize = 0;
    return 0;
}

int CQItem::LoadLibTagFromDB() {
    CppSQLite3Query query;
    if (m_pDBTools == nullptr || !m_pDBTools->QueryItemTags(m_guid, query)) return 0;
    return qfc::UnlessMemoryEnds([&] {
        std::vector<GUID> tags;
        for (qfc::RowReader row(query); !row.AtEnd(); row.Next()) {
            if (const auto tag = row.Guid(column::kTagsGuid)) tags.push_back(*tag);
        }
        m_tags.reserve(m_tags.size() + tags.size());  // All of them or none.
        for (const GUID& tag : tags) AddLibTag(tag);
        return 1;
    });
}
