#pragma once

#include "platform/Export.h"
#include "platform/framework/CObject.h"
#include "platform/framework/CString.h"
#include "platform/framework/Guid.h"
#include "platform/framework/Types.h"
#include "platform/os/Memory.h"

#include <atomic>
#include <cstddef>
#include <list>
#include <memory>
#include <span>
#include <vector>

class CQFolder;
class CQItem;
class DBTools;

namespace qfc {
class HeldGuids;
class Teardown;
struct FolderLife;
struct ItemRow;
void FetchPayload(CQItem& item, int nKind);
void FillFromRow(CQItem& item, ItemRow row);
}  // namespace qfc

// One entry of the library: identity, names, type bits, three payloads (black box, bitmap cache, film) and tags.
// Payloads are loaded lazily: from the database when the item's gallery knows its GUID, else from the gallery file.
// The item owns its buffers; folders, tools and parents are borrowed. int results are 1 and 0.
//
// Threads: unguarded. An item in a tree belongs to the thread that works on the tree (the worker, while adds run).
class QFCLIB_API CQItem : public CObject {
    DECLARE_SERIAL(CQItem)

public:
    // The first two give the item a fresh GUID.
    CQItem();
    explicit CQItem(const CString& strName);
    // With that GUID: of an item that is stored and to be loaded.
    explicit CQItem(const GUID& guid);
    // Own copies of all payloads and of the descriptive fields; marked modified. The copy gets a fresh GUID and takes
    // along neither tags, parent, number, database id, deletable flag nor translated name. Sizes of absent payloads: 0.
    CQItem(const CQItem& source);
    CQItem& operator=(const CQItem&) = delete;
    ~CQItem() override;

    // --- Fields -------------------------------------------------------------------------------------------------
    int GetDBID() const { return m_nDBId; }
    void SetDBID(int nId) { m_nDBId = nId; }  // Otherwise filled by the row alone.

    // Null also once that folder was destroyed.
    CQFolder* GetParentFolder() const;
    void SetParentFolder(CQFolder* pFolder);

    DWORD& GetAttrib() { return m_dwAttrib; }
    DWORD GetAttrib() const { return m_dwAttrib; }
    int fn_GetAttrib_ReadOnly() const { return 1; }
    int fn_SetAttrib_ReadOnly(int /*bReadOnly*/ = 1) { return 1; }  // Kept: changes nothing.

    ULONGLONG fnGetTimeStamp() const { return m_ullTimeStamp; }
    void fnSetTimeStamp(ULONGLONG ullTimeStamp) { m_ullTimeStamp = ullTimeStamp; }

    DBTools* fnGetDbTools() const { return m_pDBTools; }
    int fnSetDbTools(DBTools* pTools);

    DWORD& GetItemType() { return m_dwItemType; }
    DWORD GetItemType() const { return m_dwItemType; }
    void SetItemType(DWORD dwType) { m_dwItemType = dwType; }

    // The setters refuse an empty text (0, nothing changed). They do not mark the item modified.
    const CString& GetItemName() const { return m_strItemName; }
    int SetItemName(const CString& strName);
    const CString& GetFileName() const { return m_strFileName; }
    int SetFileName(const CString& strPath);
    // While translation is on and the type is a translated one: looks the name up and, when it is found, makes the
    // translation the item's name and answers 1. Where names are collected instead, writes the name down.
    int fnTranslateItemName();
    const CString& GetTranslateItemName() const { return m_strTranslateName; }  // What the last look-up found.

    CString& GetDescription() { return m_strDescription; }
    const CString& GetDescription() const { return m_strDescription; }
    CString& GetAnnotation() { return m_strAnnotation; }
    const CString& GetAnnotation() const { return m_strAnnotation; }
    CString GetTemplatePath() const { return m_strTemplatePath; }
    // Stored with the row, but never read back from it.
    void SetTemplatePath(const CString& strPath) { m_strTemplatePath = strPath; }
    DWORD GetNumber() const { return m_dwNumber; }  // Of its streams in a gallery file; given by the folder.
    int IsModified() const { return m_bModified; }
    void SetModified(int bModified) { m_bModified = bModified; }
    // The writable reference may be kept and written at any time, so folders look at such an item whenever they look
    // for a GUID. Ask a const item to read, and set with SetUniqueID: then they need not.
    GUID& GetUniqueID();
    const GUID& GetUniqueID() const { return m_guid; }
    void SetUniqueID(const GUID& guid);
    int GetIsDeletable() const { return m_bDeletable; }
    void fnSetDeletable(int bDeletable) { m_bDeletable = bDeletable; }
    DWORD& GetCurThumbFrameNum() { return m_dwCurThumbFrameNum; }
    DWORD GetCurThumbFrameNum() const { return m_dwCurThumbFrameNum; }
    DWORD& GetOrgThumbFrameNum() { return m_dwOrgThumbFrameNum; }
    DWORD GetOrgThumbFrameNum() const { return m_dwOrgThumbFrameNum; }

    // --- Payloads -----------------------------------------------------------------------------------------------
    // Loads lazily; null when nothing is found. The buffer stays the item's.
    void* GetBlackBox();
    // Takes `pData` (from new[] of bytes, may be null) and frees the old buffer. Always 1.
    int ChangeBlackBox(void* pData, unsigned nSize);
    // Loads lazily, then hands the buffer to the caller, who frees it with delete[] of bytes.
    void* DetachBlackBox();
    unsigned GetBlackBoxSize() const { return m_dwBlackBoxSize; }

    void* GetCache() const { return m_cache.data(); }  // Never loads.
    // Frees the old cache and takes `pDib`, a locked global block holding a packed bitmap, or null (1).
    // 0 when `nSize` is too small for the bitmap's own header: no cache is left, the item is marked modified all the
    // same, and the block stays the caller's.
    int ChangeCache(void* pDib, unsigned nSize);
    unsigned GetCacheSize() const { return m_dwCacheSize; }
    // (-1, -1) without a cache in memory. Never loads.
    SIZE GetBitmapCacheSize() const;

    unsigned char* GetFilm() const { return m_film.data(); }  // Never loads.
    // Takes `pFilm`, a locked global block of nFilmSize / nFrameSize frames, or null. Always 1.
    int ChangeFilm(unsigned char* pFilm, unsigned nFilmSize, unsigned nFrameSize);
    unsigned GetFilmSize() const { return m_dwFilmSize; }
    unsigned GetFrameSize() const { return m_dwFrameSize; }
    // Loads lazily; 0 without a film.
    unsigned GetTotalFilmFrame();
    // Loads lazily; null without a film or with attribute bit 0 clear. An index at or past the end gives the address
    // just past the last frame, which must not be read.
    unsigned char* GetFilmFrame(unsigned nIndex);

    // 1 when the payload is (or, for the film, need not be) in memory afterwards. TryLoadBB brings black box and
    // bitmap cache; a cache in memory is enough for it, and a black box in memory of a modified item is kept.
    int TryLoadBB();
    int TryLoadFilm();
    int IsExistInGalleryItemMap() const;
    // The bytes of a cache kind that are in memory; empty when there are none. Never loads.
    std::span<const std::byte> PayloadInMemory(int nKind) const;

    // --- Comparing, copying, searching --------------------------------------------------------------------------
    // Copies the groups named by the mask (items/ItemTypes.h), then marks this item modified whatever the mask.
    // A null source does nothing; the item itself as source only marks it modified.
    void Copy(const CQItem* pSource, DWORD dwMask);
    // Same name, type, data block and film (loaded first where only its size is known; films whose bytes cannot be
    // had are not equal). GUID, file and black box are not compared.
    int Equals(CQItem* pOther);
    int IsSameItem(const CQItem* pOther) const;
    // Case-insensitive search in the name, then the annotation, then the description, as asked.
    int FindSomeThing(const CString& strText, int bInDescription, int bInAnnotation, int nUnused1, int nUnused2) const;

    void AddLibTag(const GUID& tag);
    void RemoveLibTag(const GUID& tag);
    int IsTagExist(const GUID& tag) const;
    // Appends to `out`, without clearing it.
    void CopyTagVec(std::list<GUID>& out) const;
    // The names of its tags, in the item's order, as "Beach, Sunset"; tags that the store does not know are left out.
    CString GetTagTooltip() const;

    // --- Database, always through the item's own DBTools; 0 without one ------------------------------------------
    int fnLoadItemFromDb();
    // Writes the row and the payloads in memory, in one transaction.
    int UpdateItemDB();
    int IsItemInSql() const;  // Looks by name, not by GUID.
    int DeleteItemDataFromDb();
    int DeleteRelationFromDb(int nParentId);
    // Removes the cache data of every kind, whatever `nKind` says.
    int DeleteCacheDataFromDb(int nKind);
    int DeleteItemDb(int nParentId);  // Takes row, payloads and the one relation. Always 1.
    // Loads one stored payload into `*ppData`, whose size is `nSize` on entry. A missing or too small buffer is
    // allocated anew: kinds 0 and 2 as global blocks, others with new[] of bytes; the caller frees it. 1 with nothing
    // allocated when the stored size is 0. 0 and nothing touched without a row; 0, buffer freed and null when the
    // stored bytes do not give the announced size.
    int LoadCacheDataFromDb(unsigned& nSize, void** ppData, DWORD dwKind);
    // The same into the item's own payload. 0 for an unknown kind, and for a film that its frame size does not fit.
    int LoadCacheDataFromDb(DWORD dwKind);
    int LoadLibTagFromDB();

protected:
    // The data block: owned, copied and compared here, filled by derived classes alone. Taken like a black box.
    void ChangeDataBlock(void* pData, unsigned nSize);
    std::span<const std::byte> GetDataBlock() const { return m_dataBlock.bytes(); }

private:
    friend void qfc::FetchPayload(CQItem& item, int nKind);
    friend void qfc::FillFromRow(CQItem& item, qfc::ItemRow row);
    friend class CQFolder;  // Attaches items: the attached flag and the number.
    friend class qfc::HeldGuids;
    friend class qfc::Teardown;  // Chains what is to end.

    enum class GuidPlace : unsigned char {
        kOwn,        // Changed by SetUniqueID alone.
        kWatched,    // The same, and a folder relies on being told.
        kHandedOut,  // Somebody may hold a reference.
    };
    // False when the GUID may change unnoticed.
    bool WatchGuid();

    void CopyGroups(const CQItem& source, DWORD dwMask);
    int ReloadBlackBox();
    int LoadFilmFromDb(int nDefaultSize);
    // The kind bitmap cache loads the black box as well.
    int LoadFromGalleryFile(int nKind);

    int m_nDBId = 0;
    int m_bAttached = 0;      // Set by the folder that took the item; neither copied nor stored.
    bool m_bCounted = false;  // Its number is among those a folder has counted; see folders/FolderNumbers.h.
    std::shared_ptr<const qfc::FolderLife> m_parentFolder;
    DWORD m_dwAttrib = 0;
    ULONGLONG m_ullTimeStamp = 0;
    qfc::PlainBlock m_blackBox;
    DWORD m_dwBlackBoxSize = 0;
    qfc::PlainBlock m_dataBlock;
    DWORD m_dwDataBlockSize = 0;
    qfc::GlobalBlock m_cache;
    DWORD m_dwCacheSize = 0;
    qfc::GlobalBlock m_film;
    DWORD m_dwFilmSize = 0;  // As announced by the row; the bytes may not be in memory.
    DWORD m_dwFrameSize = 0;
    DBTools* m_pDBTools = nullptr;
    DWORD m_dwItemType = 0;
    CString m_strTranslateName;
    CString m_strItemName;
    CString m_strDescription;
    CString m_strAnnotation;
    CString m_strFileName;
    CString m_strTemplatePath;
    DWORD m_dwNumber = 0;
    int m_bModified = 0;
    GUID m_guid;
    std::atomic<GuidPlace> m_guidPlace = GuidPlace::kOwn;  // A host may read the GUID while the worker adds the item.
    int m_bDeletable = 0;
    DWORD m_dwCurThumbFrameNum = 0;
    DWORD m_dwOrgThumbFrameNum = 0;
    std::vector<GUID> m_tags;
    bool m_bEnding = false;
    CQItem* m_pNextEnding = nullptr;
};
