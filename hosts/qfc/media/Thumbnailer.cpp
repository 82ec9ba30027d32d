#include "hosts/qfc/media/Thumbnailer.h"

#include "hosts/qfc/media/Film.h"
#include "hosts/qfc/media/FrameScaler.h"
#include "hosts/qfc/media/StreamDecoder.h"
#include "hosts/qfc/media/Waveform.h"
#include "hosts/qfc/pictures/Dib.h"
#include "hosts/qfc/pictures/Exif.h"

#include <utility>

extern "C" {
#include <libavutil/frame.h>
}

namespace qfc::host {

namespace {

constexpr int kLongestSide = 160;
constexpr PictureSize kWaveform = {160, 90};

Thumbnails OfImage(MediaFile& file, MediaFacts& facts) {
    StreamDecoder decoder(file, *file.PictureStream());
    const AVFrame* frame = decoder.Next();
    if (!frame) throw MediaError(file.Limit().IsOver() ? "decoding it takes too long" : "no picture can be decoded");
    const ExifFacts exif = ReadExif(file.Path());
    facts.rotation = exif.rotation;
    facts.width = frame->width;
    facts.height = frame->height;
    if (Turn::Clockwise(exif.rotation).SwapsSides()) std::swap(facts.width, facts.height);
    if (exif.recorded) facts.recorded = exif.recorded;

    Thumbnails result;
    FrameScaler scaler;
    result.cache = PackDib(scaler.Scaled(*frame, ThumbnailSize({frame->width, frame->height}, kLongestSide)));
    return result;
}

Thumbnails OfVideo(MediaFile& file, MediaFacts& facts) {
    const Film read = ReadFilm(file, {.frames = 10, .longestSide = kLongestSide});
    const std::vector<Picture>& film = read.pictures;
    if (file.IsDurationGuessed() && facts.frameRate > 0)
        facts.duration = static_cast<double>(read.framesRead) / facts.frameRate;
    if (film.empty())
        throw MediaError(file.Limit().IsOver() ? "decoding it takes too long" : "no picture can be decoded");
    Thumbnails result;
    const std::size_t shown = MostTelling(film);
    result.shownFrame = static_cast<std::uint32_t>(shown);
    result.cache = PackDib(film[shown]);
    result.frameSize = static_cast<std::uint32_t>(result.cache.size());
    result.film.reserve(film.size() * result.cache.size());
    for (const Picture& picture : film) {
        const std::vector<std::uint8_t> dib = PackDib(picture);
        result.film.insert(result.film.end(), dib.begin(), dib.end());
    }
    return result;
}

Thumbnails OfSound(MediaFile& file, MediaFacts& facts) {
    double exactSeconds = 0;
    const SoundEnvelope envelope = ReadEnvelope(file, exactSeconds);
    if (exactSeconds > 0 && !file.Limit().IsOver()) facts.duration = exactSeconds;
    Thumbnails result;
    result.cache = PackDib(DrawWaveform(envelope, kWaveform));
    return result;
}

}  // namespace

Thumbnails MakeThumbnails(MediaFile& file, MediaFacts& facts) {
    switch (facts.kind) {
        case MediaKind::Image:
            return OfImage(file, facts);
        case MediaKind::Video:
            return OfVideo(file, facts);
        case MediaKind::Audio:
            break;
    }
    return OfSound(file, facts);
}

}  // namespace qfc::host
