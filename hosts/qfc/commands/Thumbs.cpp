#include "api/QFCLib.h"
#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/commands/Commands.h"
#include "hosts/qfc/library/Session.h"
#include "hosts/qfc/library/Text.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace qfc::host {
namespace {

// What compressing would have made larger is kept as it was, and has no compressed size.
std::string StoredAs(const _DS_LibItemTunmbnailInfo_& thumbnail) {
    return thumbnail.nCompressedSize == 0 ? "uncompressed" : std::to_string(thumbnail.nCompressedSize) + " bytes";
}

}  // namespace

int Run(const ThumbsOptions&, const Console& console) {
    const Session session;
    std::vector<_DS_LibItemTunmbnailInfo_> thumbnails;
    if (!QFCLibraryManager::fnQueryLibItemThumbnailInfo(thumbnails)) throw Failure("cannot list the thumbnails");
    Json json = Json::array();
    for (const auto& thumbnail : thumbnails) {
        const std::string guid = GuidToText(thumbnail.guidItem);
        const auto [width, height] = thumbnail.sizeBitmapCache;
        json.push_back({{"guid", guid},
                        {"type", thumbnail.dwItemType},
                        {"compressedBytes", thumbnail.nCompressedSize},
                        {"width", width},
                        {"height", height},
                        {"file", ToText(thumbnail.strPath)}});
        console.Show(fmt::format("{}  {:>4} x {:<4}  {:>13}  {}", guid, width, height, StoredAs(thumbnail),
                                 ToText(thumbnail.strPath)));
    }
    console.ShowJson(json);
    if (json.empty()) throw Failure("no thumbnails");
    return kDone;
}

}  // namespace qfc::host
