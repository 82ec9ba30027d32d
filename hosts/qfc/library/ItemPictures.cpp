#include "hosts/qfc/library/ItemPictures.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/media/ItemTexts.h"
#include "hosts/qfc/pictures/Dib.h"
#include "hosts/qfc/pictures/Exif.h"

#include <span>
#include <string_view>

namespace qfc::host {
namespace {

constexpr DWORD kImage = 4;

void ReleaseStill(CQItem& item) {
    item.ChangeBlackBox(nullptr, 0);
    item.ChangeCache(nullptr, 0);
}

}  // namespace

Picture LoadThumbnail(CQItem& item) {
    item.TryLoadBB();
    const auto* bytes = static_cast<const std::uint8_t*>(item.GetCache());
    if (bytes == nullptr) return {};
    const auto picture = ReadDib(std::span(bytes, item.GetCacheSize()));
    ReleaseStill(item);
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
    item.ChangeFilm(nullptr, item.GetFilmSize(), item.GetFrameSize());
    return frames;
}

MediaFacts LoadFacts(CQItem& item) {
    const auto* text = static_cast<const char*>(item.GetBlackBox());
    MediaFacts facts;
    if (text != nullptr) facts = FactsOf(std::string_view(text, item.GetBlackBoxSize()));
    ReleaseStill(item);
    return facts;
}

}  // namespace qfc::host
