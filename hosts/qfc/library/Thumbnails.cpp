#include "hosts/qfc/library/Thumbnails.h"

#include "api/QFCLib.h"
#include "db/DbRecords.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/library/ReadSession.h"
#include "hosts/qfc/library/Session.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <iterator>
#include <set>

namespace qfc::host {
namespace {

// False when it cannot be read now either.
bool LookAtBitmap(DBTools& tools, _DS_LibItemTunmbnailInfo_& thumbnail) {
    if (thumbnail.sizeBitmapCache.cx != -1) return true;
    CQItem item;
    item.SetUniqueID(thumbnail.guidItem);
    item.fnSetDbTools(&tools);
    const bool isRead = item.LoadCacheDataFromDb(kBitmapCache) != 0;
    thumbnail.sizeBitmapCache = item.GetBitmapCacheSize();
    return isRead;
}

// The same of the path, and of the type with it.
bool LookAtItem(DBTools& tools, _DS_LibItemTunmbnailInfo_& thumbnail) {
    if (!thumbnail.strPath.IsEmpty()) return true;
    const auto item = LoadFresh(tools, thumbnail.guidItem);
    if (!item) return IsItemGone(tools, thumbnail.guidItem);
    thumbnail.strPath = item->GetFileName();
    thumbnail.dwItemType = item->GetItemType();
    return true;
}

// The library's own list ends without a word where it cannot go on: what was there before and is there now is in it, or
// it is not whole.
std::vector<StoredThumbnail> List(DBTools& tools) {
    const auto before = ItemsWithPayload(tools, kBitmapCache);
    std::vector<_DS_LibItemTunmbnailInfo_> listed;
    const bool isListed = QFCLibraryManager::fnQueryLibItemThumbnailInfo(listed) != 0;
    const auto after = ItemsWithPayload(tools, kBitmapCache);
    if (!before || !isListed || !after) throw Failure("cannot list the thumbnails");
    std::set<GUID> missing;
    std::set_intersection(before->begin(), before->end(), after->begin(), after->end(),
                          std::inserter(missing, missing.end()));
    std::vector<StoredThumbnail> thumbnails;
    for (const auto& thumbnail : listed) {
        missing.erase(thumbnail.guidItem);
        thumbnails.push_back({thumbnail});
    }
    if (!missing.empty()) throw Failure("cannot list every thumbnail");
    return thumbnails;
}

// One look at all, the way the library lists them: a damaged index may hide from a look by key what is there.
void LeaveOutWhatWent(DBTools& tools, std::vector<StoredThumbnail>& thumbnails) {
    const auto mayBeGone = [](const StoredThumbnail& thumbnail) {
        return !thumbnail.isReadable || thumbnail.info.strPath.IsEmpty();
    };
    if (std::ranges::none_of(thumbnails, mayBeGone)) return;
    const auto stored = ItemsWithPayload(tools, kBitmapCache);
    if (!stored) return;
    std::erase_if(thumbnails, [&](const StoredThumbnail& thumbnail) {
        return mayBeGone(thumbnail) && !stored->contains(thumbnail.info.guidItem);
    });
}

}  // namespace

std::vector<StoredThumbnail> StoredThumbnails() {
    const ReadSession reader(LibraryPath());
    if (!reader.IsOpen()) throw Failure("cannot read " + LibraryPath());
    std::vector<StoredThumbnail> thumbnails = List(reader.Tools());
    for (StoredThumbnail& thumbnail : thumbnails) {
        thumbnail.isReadable =
            LookAtBitmap(reader.Tools(), thumbnail.info) && LookAtItem(reader.Tools(), thumbnail.info);
    }
    LeaveOutWhatWent(reader.Tools(), thumbnails);
    return thumbnails;
}

}  // namespace qfc::host
