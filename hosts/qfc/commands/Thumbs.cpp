#include "api/QFCLib.h"
#include "db/DbRecords.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/ReadSession.h"
#include "hosts/qfc/library/Session.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Verify.h"

#include <algorithm>
#include <fmt/format.h>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <utility>

namespace qfc::host {
namespace {

// What compressing would have made larger is kept as it was, and has no compressed size.
std::string StoredAs(const _DS_LibItemTunmbnailInfo_& thumbnail) {
    return thumbnail.nCompressedSize == 0 ? "uncompressed" : std::to_string(thumbnail.nCompressedSize) + " bytes";
}

using Thumbnails = std::vector<_DS_LibItemTunmbnailInfo_>;

// The library lists a bitmap without sizes when it cannot read it, and when it is no picture. False when it cannot be
// read now either.
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

// The library's list ends without a word where it cannot go on: nothing when it lacks something that was there before
// and is there now.
std::optional<Thumbnails> List(const ReadSession& reader) {
    const auto before = ItemsWithPayload(reader.Tools(), kBitmapCache);
    Thumbnails thumbnails;
    if (!QFCLibraryManager::fnQueryLibItemThumbnailInfo(thumbnails)) return std::nullopt;
    const auto after = ItemsWithPayload(reader.Tools(), kBitmapCache);
    if (!before || !after) return std::nullopt;
    std::set<GUID> missing;
    std::set_intersection(before->begin(), before->end(), after->begin(), after->end(),
                          std::inserter(missing, missing.end()));
    for (const auto& thumbnail : thumbnails) missing.erase(thumbnail.guidItem);
    return missing.empty() ? std::optional(std::move(thumbnails)) : std::nullopt;
}

}  // namespace

int Run(const ThumbsOptions&, const Console& console) {
    const Session session;
    const ReadSession reader(LibraryPath());
    auto thumbnails = reader.IsOpen() ? List(reader) : std::nullopt;
    if (!thumbnails) throw Failure("cannot list the thumbnails");
    Json json = Json::array();
    std::vector<std::string> unreadable;
    for (auto& thumbnail : *thumbnails) {
        const std::string guid = GuidToText(thumbnail.guidItem);
        const bool isReadable = LookAtBitmap(reader.Tools(), thumbnail) && LookAtItem(reader.Tools(), thumbnail);
        // Another program may take it away at any moment.
        const bool mayBeGone = !isReadable || thumbnail.strPath.IsEmpty();
        if (mayBeGone && IsPayloadGone(reader.Tools(), thumbnail.guidItem, kBitmapCache)) continue;
        const auto [width, height] = thumbnail.sizeBitmapCache;
        json.push_back({{"guid", guid},
                        {"type", thumbnail.dwItemType},
                        {"compressedBytes", thumbnail.nCompressedSize},
                        {"width", width == -1 ? Json(nullptr) : Json(width)},
                        {"height", width == -1 ? Json(nullptr) : Json(height)},
                        {"readable", isReadable},
                        {"file", ToText(thumbnail.strPath)}});
        const std::string size = width == -1 ? "no picture" : fmt::format("{:>4} x {}", width, height);
        console.Show(fmt::format("{}  {:<11}  {:>13}  {}", guid, isReadable ? size : "unreadable", StoredAs(thumbnail),
                                 ToText(thumbnail.strPath)));
        if (!isReadable) unreadable.push_back(guid);
    }
    console.ShowJson(json);
    for (const std::string& guid : unreadable) console.Complain("cannot read the thumbnail of the item " + guid);
    if (json.empty()) throw Failure("no thumbnails");
    return unreadable.empty() ? kDone : kFailed;
}

}  // namespace qfc::host
