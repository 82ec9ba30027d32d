#include "hosts/qfc/media/Waveform.h"

#include "hosts/qfc/media/StreamDecoder.h"

#include <algorithm>
#include <array>
#include <cmath>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

namespace qfc::host {

namespace {

constexpr double kLongSound = 15 * 60;  // seconds
constexpr int kLooks = 320;             // into a long sound
constexpr double kLookSeconds = 0.25;
constexpr int kMaxChannels = 64;

// Decoded frames as interleaved floats, whatever the codec gives.
class SampleReader {
public:
    explicit SampleReader(const AVFrame& first) : m_format(first.format), m_rate(first.sample_rate) {
        if (av_channel_layout_copy(&m_layout, &first.ch_layout) < 0) throw std::bad_alloc();
        SwrContext* resampler = nullptr;
        swr_alloc_set_opts2(&resampler, &m_layout, AV_SAMPLE_FMT_FLT, m_rate, &m_layout,
                            static_cast<AVSampleFormat>(m_format), m_rate, 0, nullptr);
        m_resampler.reset(resampler);
        if (!m_resampler || swr_init(m_resampler.get()) < 0) {
            av_channel_layout_uninit(&m_layout);
            throw MediaError("its samples cannot be converted");
        }
    }
    ~SampleReader() { av_channel_layout_uninit(&m_layout); }
    SampleReader(const SampleReader&) = delete;
    SampleReader& operator=(const SampleReader&) = delete;

    bool Fits(const AVFrame& frame) const {
        return frame.format == m_format && frame.sample_rate == m_rate &&
               av_channel_layout_compare(&frame.ch_layout, &m_layout) == 0;
    }

    std::span<const float> Read(const AVFrame& frame) {
        const std::size_t channels = static_cast<std::size_t>(m_layout.nb_channels);
        m_samples.resize(static_cast<std::size_t>(frame.nb_samples) * channels);
        std::array<std::uint8_t*, 1> out = {reinterpret_cast<std::uint8_t*>(m_samples.data())};
        std::vector<const std::uint8_t*> in(frame.extended_data, frame.extended_data + Planes());
        const int got = swr_convert(m_resampler.get(), out.data(), frame.nb_samples, in.data(), frame.nb_samples);
        return std::span(m_samples).first(static_cast<std::size_t>(std::max(0, got)) * channels);
    }

private:
    int Planes() const {
        return av_sample_fmt_is_planar(static_cast<AVSampleFormat>(m_format)) ? m_layout.nb_channels : 1;
    }

    int m_format;
    int m_rate;
    AVChannelLayout m_layout{};
    ResamplerPtr m_resampler;
    std::vector<float> m_samples;
};

// Feeds an envelope from a decoder. A stream that changes its format midway gets a new reader.
class Listener {
public:
    Listener(StreamDecoder& decoder, SoundEnvelope& envelope) : m_decoder(decoder), m_envelope(envelope) {}

    // Decodes `seconds` of sound. False when the sound ended before.
    bool Listen(double seconds) {
        for (double heard = 0; heard < seconds;) {
            const AVFrame* frame = m_decoder.Next();
            if (!frame) return false;
            const int channels = frame->ch_layout.nb_channels;
            if (frame->nb_samples < 1 || frame->sample_rate < 1 || channels < 1 || channels > kMaxChannels) continue;
            if (!m_reader || !m_reader->Fits(*frame)) m_reader = std::make_unique<SampleReader>(*frame);
            m_envelope.Add(m_reader->Read(*frame), channels);
            heard += static_cast<double>(frame->nb_samples) / frame->sample_rate;
            m_total += static_cast<double>(frame->nb_samples) / frame->sample_rate;
        }
        return true;
    }

    double Total() const { return m_total; }

private:
    StreamDecoder& m_decoder;
    SoundEnvelope& m_envelope;
    std::unique_ptr<SampleReader> m_reader;
    double m_total = 0;
};

void LookInto(StreamDecoder& decoder, Listener& listener, const AVStream& stream, double duration) {
    const std::int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
    for (int i = 0; i < kLooks; ++i) {
        const double moment = duration * i / kLooks;
        if (!decoder.SeekBefore(start + static_cast<std::int64_t>(moment / av_q2d(stream.time_base)))) return;
        listener.Listen(kLookSeconds);
    }
}

// Colours of the picture, from the edge of the swing to its middle.
constexpr std::uint32_t kGround = 0xFF1B2430u;
constexpr std::uint32_t kMiddleLine = 0xFF344558u;
constexpr std::uint32_t kSwing = 0xFF2F8FB5u;
constexpr std::uint32_t kStrength = 0xFF8FE3E8u;

std::uint32_t Mixed(std::uint32_t under, std::uint32_t over, double share) {
    std::uint32_t result = 0xFF;
    for (const unsigned shift : {16u, 8u, 0u}) {
        const double a = under >> shift & 0xFF;
        const double b = over >> shift & 0xFF;
        result = result << 8 | static_cast<std::uint32_t>(a + (b - a) * share + 0.5);
    }
    return result;
}

// A bar from `top` to `bottom`, both in fractions of pixels, its ends smoothed.
void DrawBar(Picture& picture, int x, double top, double bottom, std::uint32_t colour) {
    const int first = std::max(0, static_cast<int>(std::floor(top)));
    for (int y = first; y < picture.height && y < bottom; ++y) {
        const double covered = std::min<double>(bottom, y + 1) - std::max<double>(top, y);
        picture.At(x, y) = Mixed(picture.At(x, y), colour, std::clamp(covered, 0.0, 1.0));
    }
}

double Magnification(const std::vector<SoundEnvelope::Stretch>& columns) {
    constexpr double kFull = 0.92;
    constexpr double kMost = 12;
    float peak = 0;
    for (const auto& column : columns) peak = std::max({peak, column.high, -column.low});
    return peak > 0 ? std::min(kMost, kFull / peak) : 1;
}

}  // namespace

SoundEnvelope ReadEnvelope(MediaFile& file, double& exactSeconds) {
    SoundEnvelope envelope;
    const AVStream& stream = *file.SoundStream();
    StreamDecoder decoder(file, *file.SoundStream());
    Listener listener(decoder, envelope);
    const double duration = file.Facts().duration;
    const bool isLong = duration > kLongSound;
    if (isLong) {
        LookInto(decoder, listener, stream, duration);
    } else {
        listener.Listen(kLongSound * 2);
    }
    if (envelope.Moments() == 0) throw MediaError("no sound can be decoded");
    exactSeconds = isLong ? 0 : listener.Total();
    return envelope;
}

Picture DrawWaveform(const SoundEnvelope& envelope, PictureSize size) {
    Picture picture(size.width, size.height, kGround);
    const auto columns = envelope.Columns(static_cast<std::size_t>(size.width));
    const double scale = Magnification(columns) * size.height / 2;
    const double middle = size.height / 2.0;
    for (int x = 0; x < size.width; ++x) {
        DrawBar(picture, x, middle - 0.5, middle + 0.5, kMiddleLine);
        if (columns.empty()) continue;
        const auto& column = columns[static_cast<std::size_t>(x)];
        DrawBar(picture, x, middle - column.high * scale - 0.5, middle - column.low * scale + 0.5, kSwing);
        const double strength = std::sqrt(column.energy) * scale;
        DrawBar(picture, x, std::max(middle - strength, middle - column.high * scale),
                std::min(middle + strength, middle - column.low * scale), kStrength);
    }
    return picture;
}

}  // namespace qfc::host
