#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/Session.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/library/Thumbnails.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// What compressing would have made larger is kept as it was, and has no compressed size.
std::string StoredAs(const _DS_LibItemTunmbnailInfo_& thumbnail) {
    return thumbnail.nCompressedSize == 0 ? "uncompressed" : std::to_string(thumbnail.nCompressedSize) + " bytes";
}

bool IsPicture(const _DS_LibItemTunmbnailInfo_& thumbnail) { return thumbnail.sizeBitmapCache.cx != -1; }

std::string SizeText(const StoredThumbnail& thumbnail) {
    if (!thumbnail.isReadable) return "unreadable";
    const auto [width, height] = thumbnail.info.sizeBitmapCache;
    return IsPicture(thumbnail.info) ? fmt::format("{:>4} x {}", width, height) : "no picture";
}

Json AsJson(const StoredThumbnail& thumbnail) {
    const auto [width, height] = thumbnail.info.sizeBitmapCache;
    return {{"guid", GuidToText(thumbnail.info.guidItem)},
            {"type", thumbnail.info.dwItemType},
            {"compressedBytes", thumbnail.info.nCompressedSize},
            {"width", IsPicture(thumbnail.info) ? Json(width) : Json(nullptr)},
            {"height", IsPicture(thumbnail.info) ? Json(height) : Json(nullptr)},
            {"readable", thumbnail.isReadable},
            {"file", ToText(thumbnail.info.strPath)}};
}

}  // namespace

int Run(const ThumbsOptions&, const Console& console) {
    const Session session;
    const std::vector<StoredThumbnail> thumbnails = StoredThumbnails();
    Json json = Json::array();
    for (const StoredThumbnail& thumbnail : thumbnails) {
        json.push_back(AsJson(thumbnail));
        console.Show(fmt::format("{}  {:<11}  {:>13}  {}", GuidToText(thumbnail.info.guidItem), SizeText(thumbnail),
                                 StoredAs(thumbnail.info), ToText(thumbnail.info.strPath)));
    }
    console.ShowJson(json);
    if (thumbnails.empty()) throw Failure("no thumbnails");
    int exit = kDone;
    for (const StoredThumbnail& thumbnail : thumbnails) {
        if (thumbnail.isReadable) continue;
        console.Complain("cannot read the thumbnail of the item " + GuidToText(thumbnail.info.guidItem));
        exit = kFailed;
    }
    return exit;
}

}  // namespace qfc::host
