#include "hosts/qfc/library/ItemPictures.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/ItemPayloads.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/media/ItemTexts.h"
#include "hosts/qfc/pictures/Dib.h"
#include "hosts/qfc/pictures/Exif.h"

#include <span>
#include <string_view>

namespace qfc::host {
namespace {

constexpr DWORD kImage = 4;

}  // namespace

Picture LoadThumbnail(CQItem& item) {
    item.TryLoadBB();
    const auto* bytes = static_cast<const std::uint8_t*>(item.GetCache());
    if (bytes == nullptr) return {};
    const auto picture = ReadDib(std::span(bytes, item.GetCacheSize()));
    ReleasePayloads(item);
    if (!picture) return {};
    const int rotation = item.GetItemType() == kImage ? ReadExif(ToText(item.GetFileName())).rotation : 0;
    return Turned(*picture, Turn::Clockwise(rotation));
}

std::vector<Picture> LoadFilm(CQItem& item) {
    std::vector<Picture> frames;
    const unsigned count = item.GetTotalFilmFrame();
    for (unsigned i = 0; i < count; ++i) {
        const unsigned char* frame = item.GetFilmFrame(i);
        if (frame == nullptr) break;
        if (auto picture = ReadDib(std::span(frame, item.GetFrameSize()))) frames.push_back(std::move(*picture));
    }
    ReleasePayloads(item);
    return frames;
}

MediaFacts LoadFacts(CQItem& item) {
    const auto* text = static_cast<const char*>(item.GetBlackBox());
    MediaFacts facts;
    if (text != nullptr) facts = FactsOf(std::string_view(text, item.GetBlackBoxSize()));
    ReleasePayloads(item);
    return facts;
}

}  // namespace qfc::host
