#include "hosts/qfc/library/MediaItem.h"

#include "api/QFCLib.h"
#include "hosts/qfc/library/ItemPayloads.h"
#include "hosts/qfc/library/Text.h"
#include "hosts/qfc/media/DecodedMedia.h"

namespace qfc::host {

std::unique_ptr<CQItem> MakeItem(const DecodedMedia& media, const std::string& name) {
    auto item = std::make_unique<CQItem>(ToCString(name));
    item->SetFileName(ToCString(media.path));
    item->SetItemType(media.type);
    item->fnSetTimeStamp(static_cast<ULONGLONG>(media.facts.modified));
    item->fnSetDeletable(1);
    item->GetDescription() = ToCString(media.description);
    const Thumbnails& pictures = media.thumbnails;
    const bool given = GiveBlackBox(*item, media.blackBox) && GiveCache(*item, pictures.cache) &&
                       GiveFilm(*item, pictures.film, pictures.frameSize, pictures.shownFrame);
    return given ? std::move(item) : nullptr;
}

}  // namespace qfc::host
