#include "hosts/qfc/library/MediaItem.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/media/DecodedMedia.h"

#include <algorithm>
#include <cstring>

namespace qfc::host {
namespace {

constexpr DWORD kHasFilm = 1;  // Attribute bit 0.

// The library frees payloads with its own allocators, so they have to come from there.
template <class Block, class Bytes>
Block CopyOf(const Bytes& bytes) {
    Block block(bytes.size());
    if (block) std::memcpy(block.data(), bytes.data(), bytes.size());
    return block;
}

bool GiveBlackBox(CQItem& item, const std::string& text) {
    auto block = CopyOf<PlainBlock>(text);
    const auto size = static_cast<unsigned>(block.size());
    item.ChangeBlackBox(block.release(), size);
    return size == text.size();
}

bool GiveCache(CQItem& item, const std::vector<std::uint8_t>& dib) {
    auto block = CopyOf<GlobalBlock>(dib);
    const auto size = static_cast<unsigned>(block.size());
    if (size != dib.size()) return false;
    // A bitmap that the item refuses stays ours.
    if (!block || item.ChangeCache(block.data(), size)) {
        static_cast<void>(block.release());
        return true;
    }
    return false;
}

bool GiveFilm(CQItem& item, const Thumbnails& thumbnails) {
    if (thumbnails.film.empty()) return true;
    auto block = CopyOf<GlobalBlock>(thumbnails.film);
    const auto size = static_cast<unsigned>(block.size());
    item.ChangeFilm(static_cast<unsigned char*>(block.release()), size, thumbnails.frameSize);
    item.GetAttrib() |= kHasFilm;
    item.GetCurThumbFrameNum() = thumbnails.shownFrame;
    item.GetOrgThumbFrameNum() = thumbnails.shownFrame;
    return size == thumbnails.film.size();
}

}  // namespace

std::unique_ptr<CQItem> MakeItem(const DecodedMedia& media, const std::string& name) {
    auto item = std::make_unique<CQItem>(ToCString(name));
    item->SetFileName(ToCString(media.path));
    item->SetItemType(media.type);
    item->fnSetTimeStamp(static_cast<ULONGLONG>(media.facts.modified));
    item->fnSetDeletable(1);
    item->GetDescription() = ToCString(media.description);
    const bool given = GiveBlackBox(*item, media.blackBox) && GiveCache(*item, media.thumbnails.cache) &&
                       GiveFilm(*item, media.thumbnails);
    return given ? std::move(item) : nullptr;
}

}  // namespace qfc::host
