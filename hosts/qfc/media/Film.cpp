#include "hosts/qfc/media/Film.h"

#include "hosts/qfc/media/FrameScaler.h"
#include "hosts/qfc/media/StreamDecoder.h"

#include <algorithm>
#include <cmath>
#include <optional>

extern "C" {
#include <libavformat/avformat.h>
}

namespace qfc::host {

namespace {

constexpr double kShortClip = 3;         // seconds; up to here every frame is read
constexpr double kLongSection = 2;       // seconds; from here on not every frame is needed to be near a place
constexpr double kFirstOfSection = 0.3;  // a picture is taken from this part of its section on ...
constexpr double kJumpInSection = 0.9;   // ... and the key frame before this part is jumped to
constexpr std::size_t kMaxKept = 64;     // pictures held while reading a clip of unknown length
constexpr double kVariedEnough = 14;     // standard deviation of the brightness, of 255
constexpr auto kRereading = std::chrono::seconds(20);

// Scales frames to the one size that the first of them gets, and turns them.
class FramePainter {
public:
    FramePainter(const MediaFile& file, int longestSide)
        : m_file(file), m_turn(file.DisplayTurn()), m_longestSide(longestSide) {}

    Picture Paint(const AVFrame& frame) {
        if (!m_size) m_size = ThumbnailSize(m_file.SquarePixels({frame.width, frame.height}), m_longestSide);
        return Turned(m_scaler.Scaled(frame, *m_size), m_turn);
    }

private:
    const MediaFile& m_file;
    const Turn m_turn;
    const int m_longestSide;
    FrameScaler m_scaler;
    std::optional<PictureSize> m_size;
};

// Pictures for all places from those there are, in their order.
std::vector<Picture> Spread(const std::vector<Picture>& pictures, std::size_t places) {
    std::vector<Picture> spread;
    if (pictures.empty()) return spread;
    spread.reserve(places);
    for (std::size_t i = 0; i < places; ++i) {
        // The middle of each place's share; with few pictures the first and the last one are both shown.
        const std::size_t at = (2 * i + 1) * pictures.size() / (2 * places);
        spread.push_back(pictures[std::min(at, pictures.size() - 1)]);
    }
    return spread;
}

// Reads all frames and keeps every n-th, where n doubles whenever too many are kept.
Film ReadThrough(MediaFile& file, const FilmSettings& settings) {
    StreamDecoder decoder(file, *file.PictureStream());
    FramePainter painter(file, settings.longestSide);
    std::vector<Picture> kept;
    std::size_t step = 1;
    std::size_t number = 0;
    while (const AVFrame* frame = decoder.Next()) {
        if (number++ % step != 0) continue;
        kept.push_back(painter.Paint(*frame));
        if (kept.size() < kMaxKept) continue;
        for (std::size_t i = 0; i < kMaxKept / 2; ++i) kept[i] = std::move(kept[2 * i]);
        kept.resize(kMaxKept / 2);
        step *= 2;
    }
    return {Spread(kept, settings.frames), file.Limit().IsOver() ? 0 : number};
}

// Walks the sections of a clip of known length, taking one picture from each.
class SectionReader {
public:
    SectionReader(MediaFile& file, const FilmSettings& settings)
        : m_stream(*file.PictureStream()),
          m_section(file.Facts().duration / static_cast<double>(settings.frames)),
          m_sections(settings.frames),
          m_decoder(file, m_stream),
          m_painter(file, settings.longestSide),
          m_start(m_stream.start_time == AV_NOPTS_VALUE ? 0 : m_stream.start_time) {
        if (m_section > kLongSection) m_decoder.LeaveOutUnreferenced();
    }

    std::vector<Picture> Read() {
        std::vector<Picture> pictures;
        for (std::size_t i = 0; i < m_sections; ++i) {
            const double begin = static_cast<double>(i);
            GoTowards(MomentAt(begin + kJumpInSection));
            const AVFrame* frame = FrameFrom(MomentAt(begin + kFirstOfSection));
            if (!frame) break;
            pictures.push_back(m_painter.Paint(*frame));
        }
        return pictures;
    }

private:
    std::int64_t MomentAt(double section) const {
        return m_start + static_cast<std::int64_t>(section * m_section / av_q2d(m_stream.time_base));
    }

    // Jumps unless the way there is decoded anyway.
    void GoTowards(std::int64_t moment) {
        const AVIndexEntry* key = avformat_index_get_entry_from_timestamp(&m_stream, moment, AVSEEK_FLAG_BACKWARD);
        if (m_last && key && key->timestamp <= *m_last) return;
        m_decoder.SeekBefore(moment);
    }

    // The first frame at or after the moment that comes after the one before.
    const AVFrame* FrameFrom(std::int64_t moment) {
        while (const AVFrame* frame = m_decoder.Next()) {
            const std::int64_t at = frame->best_effort_timestamp;
            if (at == AV_NOPTS_VALUE || (at >= moment && (!m_last || at > *m_last))) {
                m_last = at == AV_NOPTS_VALUE ? moment : at;
                return frame;
            }
        }
        return nullptr;
    }

    AVStream& m_stream;
    const double m_section;  // seconds
    const std::size_t m_sections;
    StreamDecoder m_decoder;
    FramePainter m_painter;
    const std::int64_t m_start;
    std::optional<std::int64_t> m_last;
};

double BrightnessDeviation(const Picture& picture) {
    double sum = 0;
    double squares = 0;
    for (const std::uint32_t pixel : picture.pixels) {
        const double light = 0.299 * (pixel >> 16 & 0xFF) + 0.587 * (pixel >> 8 & 0xFF) + 0.114 * (pixel & 0xFF);
        sum += light;
        squares += light * light;
    }
    const double count = static_cast<double>(picture.pixels.size());
    return std::sqrt(std::max(0.0, squares / count - sum / count * (sum / count)));
}

}  // namespace

Film ReadFilm(MediaFile& file, const FilmSettings& settings) {
    if (file.IsDurationGuessed() || file.Facts().duration < kShortClip) return ReadThrough(file, settings);
    std::vector<Picture> pictures = SectionReader(file, settings).Read();
    if (pictures.size() == settings.frames || file.Limit().IsCancelled()) return {std::move(pictures)};
    // The length was announced wrongly or the file breaks off: what can be decoded is shared out instead.
    MediaFile again(file.Path(), file.Limit().Part(kRereading));
    Film all = ReadThrough(again, settings);
    if (all.pictures.empty()) all.pictures = Spread(pictures, settings.frames);
    return all;
}

std::size_t MostTelling(const std::vector<Picture>& film) {
    std::size_t best = 0;
    double most = -1;
    for (std::size_t i = 0; i < film.size(); ++i) {
        const double deviation = BrightnessDeviation(film[i]);
        if (deviation >= kVariedEnough) return i;
        if (deviation > most) {
            most = deviation;
            best = i;
        }
    }
    return best;
}

}  // namespace qfc::host
