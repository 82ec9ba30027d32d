#include "service/operations/PresetTags.h"

#include "api/names/PathRules.h"
#include "api/names/Translation.h"
#include "db/DBTools.h"
#include "folders/CQFolder.h"
#include "items/CQItem.h"
#include "items/ItemGuid.h"
#include "platform/os/IniFile.h"
#include "platform/text/AnsiText.h"
#include "platform/text/CodePages.h"
#include "tags/CLibTagsMgr.h"
#include "tags/PredefinedGalleries.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

namespace {

// Stickers are presented under names of their own. Their file is UTF-8, names of sections too.
CString NameInGallery(const CPresetItemTag& preset, const CQFolder& gallery) {
    if (gallery.GetFolderID() != qfc::kGalleryArStickers) return preset.m_strItemName;
    const CString strDisplayName(qfc::ReadProfileText(qfc::AnsiToUtf8(preset.m_strItemName.GetString()), "displayname",
                                                      "", qfc::ArFilterFilePath().GetString(),
                                                      qfc::ProfileTexts::Utf8));
    return strDisplayName.IsEmpty() ? preset.m_strItemName : CDBStringHelper::UTF_82ASCII(strDisplayName);
}

bool Contains(const CString& strText, const CString& strPart) {
    return strPart.IsEmpty() || qfc::FindInAnsi(strText.View(), strPart.View()) != std::string_view::npos;
}

// The word before the at-sign says the tag's type, which does not matter here.
CString TagNameOf(const CString& strSpecifier) {
    const std::size_t at = qfc::FindLastInAnsi(strSpecifier.View(), '@');
    return at == std::string_view::npos ? strSpecifier : CString(strSpecifier.View().substr(at + 1));
}

// Default tags are stored under their translated names, other ones as they were written.
std::optional<GUID> FindTag(const CLibTagsMgr& store, DWORD dwGallery, const CString& strName) {
    CLibTag tag;
    if (store.GetTagByName(dwGallery, g_GetTagTranslateName(strName), tag) == 0 &&
        store.GetTagByName(dwGallery, strName, tag) == 0) {
        return std::nullopt;
    }
    return tag.m_guid;
}

// A number that does not fit is the nearest one that does: cut, it would name another gallery.
DWORD GalleryOf(const CPresetItemTag& preset) {
    const long nGallery = std::strtol(preset.m_strGalleryId, nullptr, 10);
    return static_cast<DWORD>(std::clamp<long>(nGallery, INT32_MIN, INT32_MAX));
}

void CollectTags(const CLibTagsMgr& store, const CPresetItemTag& preset, const CQItem& item, std::vector<GUID>& tags) {
    const DWORD dwGallery = GalleryOf(preset);
    for (const CString& strSpecifier : preset.m_tagList) {
        const auto tag = FindTag(store, dwGallery, TagNameOf(strSpecifier));
        if (!tag || item.IsTagExist(*tag) != 0 || std::ranges::find(tags, *tag) != tags.end()) continue;
        tags.push_back(*tag);
    }
}

}  // namespace

namespace qfc {

void ApplyPresetTags(const CLibTagsMgr& store, const CQFolder& gallery, CQItem& item) {
    DBTools* const pDBTools = item.fnGetDbTools();
    if (store.GetPresetTagData().empty() || pDBTools == nullptr) return;
    const CString strFileName = qfc::FileNameOf(item.GetFileName());
    std::vector<GUID> tags;
    for (const CPresetItemTag& preset : store.GetPresetTagData()) {
        if (!Contains(preset.m_strFilePath, strFileName)) continue;
        if (NameInGallery(preset, gallery) == item.GetItemName()) CollectTags(store, preset, item, tags);
    }
    if (tags.empty() || !pDBTools->InsertTags2Items({&GuidOfItem(item), 1}, tags)) return;
    for (const GUID& tag : tags) item.AddLibTag(tag);
}

}  // namespace qfc
