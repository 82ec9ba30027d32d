#include "items/CQItem.h"

#include "folders/CQFolder.h"
#include "folders/FolderLife.h"
#include "folders/HeldGuids.h"
#include "platform/os/GuidSource.h"

#include <algorithm>

IMPLEMENT_SERIAL(CQItem, CObject, 1)

namespace {

GUID FreshGuid() {
    GUID guid{};
    CoCreateGuid(&guid);
    return guid;
}

int AssignUnlessEmpty(CString& strField, const CString& strValue) {
    if (strValue.IsEmpty()) return 0;
    strField = strValue;
    return 1;
}

CString UpperCased(CString strText) {
    strText.MakeUpper();
    return strText;
}

}  // namespace

CQItem::CQItem() : m_guid(FreshGuid()) {}

CQItem::CQItem(const CString& strName) : m_strItemName(strName), m_guid(FreshGuid()) {}

CQItem::CQItem(const GUID& guid) : m_guid(guid) {}

CQItem::~CQItem() = default;

CQFolder* CQItem::GetParentFolder() const {
    return m_parentFolder != nullptr ? m_parentFolder->folder.load() : nullptr;
}

void CQItem::SetParentFolder(CQFolder* pFolder) { m_parentFolder = pFolder != nullptr ? pFolder->m_life : nullptr; }

int CQItem::fnSetDbTools(DBTools* pTools) {
    m_pDBTools = pTools;
    return 1;
}

int CQItem::SetItemName(const CString& strName) { return AssignUnlessEmpty(m_strItemName, strName); }

int CQItem::SetFileName(const CString& strPath) { return AssignUnlessEmpty(m_strFileName, strPath); }

GUID& CQItem::GetUniqueID() {
    if (m_guidPlace.load() != GuidPlace::kHandedOut &&
        m_guidPlace.exchange(GuidPlace::kHandedOut) == GuidPlace::kWatched) {
        qfc::HeldGuids::NoteGuidChanged();
    }
    return m_guid;
}

void CQItem::SetUniqueID(const GUID& guid) {
    m_guid = guid;
    if (m_guidPlace.load() == GuidPlace::kWatched) qfc::HeldGuids::NoteGuidChanged();
}

bool CQItem::WatchGuid() {
    GuidPlace place = GuidPlace::kOwn;
    m_guidPlace.compare_exchange_strong(place, GuidPlace::kWatched);
    return place != GuidPlace::kHandedOut;
}

int CQItem::FindSomeThing(const CString& strText, int bInDescription, int bInAnnotation, int /*nUnused1*/,
                          int /*nUnused2*/) const {
    const CString strWanted = UpperCased(strText);
    const auto occursIn = [&](const CString& strField) { return UpperCased(strField).Find(strWanted) >= 0; };
    if (occursIn(m_strItemName)) return 1;
    if (bInAnnotation != 0 && occursIn(m_strAnnotation)) return 1;
    if (bInDescription != 0 && occursIn(m_strDescription)) return 1;
    return 0;
}

void CQItem::AddLibTag(const GUID& tag) {
    if (IsTagExist(tag) == 0) m_tags.push_back(tag);
}

void CQItem::RemoveLibTag(const GUID& tag) {
    const auto found = std::find(m_tags.begin(), m_tags.end(), tag);
    if (found != m_tags.end()) m_tags.erase(found);
}

int CQItem::IsTagExist(const GUID& tag) const {
    return std::find(m_tags.begin(), m_tags.end(), tag) != m_tags.end() ? 1 : 0;
}

void CQItem::CopyTagVec(std::list<GUID>& out) const { out.insert(out.end(), m_tags.begin(), m_tags.end()); }
