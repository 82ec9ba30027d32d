#include "hosts/qfc/media/FfmpegHandles.h"

#include <array>
#include <new>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace qfc::host {

void FfmpegDelete::operator()(AVCodecContext* context) const noexcept { avcodec_free_context(&context); }
void FfmpegDelete::operator()(AVFormatContext* context) const noexcept { avformat_close_input(&context); }
void FfmpegDelete::operator()(AVFrame* frame) const noexcept { av_frame_free(&frame); }
void FfmpegDelete::operator()(AVIOContext* io) const noexcept { avio_closep(&io); }
void FfmpegDelete::operator()(AVPacket* packet) const noexcept { av_packet_free(&packet); }
void FfmpegDelete::operator()(SwrContext* resampler) const noexcept { swr_free(&resampler); }
void FfmpegDelete::operator()(SwsContext* scaler) const noexcept { sws_freeContext(scaler); }

FramePtr NewFrame() {
    FramePtr frame(av_frame_alloc());
    if (!frame) throw std::bad_alloc();
    return frame;
}

PacketPtr NewPacket() {
    PacketPtr packet(av_packet_alloc());
    if (!packet) throw std::bad_alloc();
    return packet;
}

std::string FfmpegText(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

}  // namespace qfc::host
