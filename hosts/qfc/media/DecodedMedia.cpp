#include "hosts/qfc/media/DecodedMedia.h"

#include "hosts/qfc/media/FfmpegHandles.h"
#include "hosts/qfc/media/ItemTexts.h"
#include "hosts/qfc/media/MediaFile.h"

#include <exception>
#include <new>

namespace qfc::host {

namespace {

void Decode(DecodedMedia& media, TimeLimit limit) {
    MediaFile file(media.path, limit);
    media.facts = file.Facts();
    media.thumbnails = MakeThumbnails(file, media.facts);
    media.type = TypeOf(media.facts.kind);
    media.description = DescriptionOf(media.facts);
    media.blackBox = BlackBoxOf(media.facts);
}

}  // namespace

DecodedMedia DecodeMedia(const std::string& path, TimeLimit limit) {
    DecodedMedia media;
    media.path = path;
    try {
        Decode(media, limit);
        if (limit.IsCancelled()) media.error = "cancelled";
    } catch (const NoMediaError& error) {
        media.error = error.what();
        media.isMedia = false;
    } catch (const std::bad_alloc&) {
        media.error = "too large for the memory there is";
    } catch (const std::exception& error) {
        media.error = error.what();
    }
    return media;
}

}  // namespace qfc::host
