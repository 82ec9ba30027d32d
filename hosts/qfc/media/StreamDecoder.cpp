#include "hosts/qfc/media/StreamDecoder.h"

#include <new>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace qfc::host {

namespace {

constexpr std::int64_t kMaxPixels = 100'000'000;
constexpr int kMaxFailures = 200;

CodecPtr OpenCodec(const AVStream& stream) {
    const AVCodec* decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (!decoder) throw MediaError("there is no decoder for it");
    CodecPtr codec(avcodec_alloc_context3(decoder));
    if (!codec) throw std::bad_alloc();
    int result = avcodec_parameters_to_context(codec.get(), stream.codecpar);
    if (result < 0) throw MediaError("its format is broken: " + FfmpegText(result));
    codec->pkt_timebase = stream.time_base;
    codec->max_pixels = kMaxPixels;
    codec->thread_count = 1;  // several files are decoded side by side instead
    result = avcodec_open2(codec.get(), decoder, nullptr);
    if (result < 0) throw MediaError("its decoder does not start: " + FfmpegText(result));
    return codec;
}

}  // namespace

StreamDecoder::StreamDecoder(MediaFile& file, AVStream& stream)
    : m_file(file), m_stream(stream), m_codec(OpenCodec(stream)), m_packet(NewPacket()), m_frame(NewFrame()) {}

// Gives the decoder one more packet, or tells it that none will come. False when nothing is left to give.
bool StreamDecoder::Feed() {
    if (m_draining) return false;
    const bool read = m_failures < kMaxFailures && m_file.ReadPacket(m_stream, *m_packet);
    m_draining = !read;
    const int result = avcodec_send_packet(m_codec.get(), read ? m_packet.get() : nullptr);
    m_failures = result < 0 ? m_failures + 1 : 0;
    return true;
}

const AVFrame* StreamDecoder::Next() {
    while (!m_file.Limit().IsOver()) {
        const int result = avcodec_receive_frame(m_codec.get(), m_frame.get());
        if (result >= 0) return m_frame.get();
        if (result == AVERROR_EOF) return nullptr;
        if (result != AVERROR(EAGAIN)) ++m_failures;
        if (!Feed()) return nullptr;
    }
    return nullptr;
}

bool StreamDecoder::SeekBefore(std::int64_t moment) {
    if (!m_file.SeekBefore(m_stream, moment)) return false;
    avcodec_flush_buffers(m_codec.get());
    m_draining = false;
    return true;
}

void StreamDecoder::LeaveOutUnreferenced() { m_codec->skip_frame = AVDISCARD_NONREF; }

}  // namespace qfc::host
