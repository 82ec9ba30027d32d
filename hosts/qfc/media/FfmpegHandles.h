#pragma once

#include <memory>
#include <stdexcept>
#include <string>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVIOContext;
struct AVPacket;
struct SwrContext;
struct SwsContext;

namespace qfc::host {

// Owners for FFmpeg's objects, and its error numbers as exceptions. For the sources of this room alone. An object is
// used by one thread at a time.

struct FfmpegDelete {
    void operator()(AVCodecContext* context) const noexcept;
    void operator()(AVFormatContext* context) const noexcept;
    void operator()(AVFrame* frame) const noexcept;
    void operator()(AVIOContext* io) const noexcept;
    void operator()(AVPacket* packet) const noexcept;
    void operator()(SwrContext* resampler) const noexcept;
    void operator()(SwsContext* scaler) const noexcept;
};

using CodecPtr = std::unique_ptr<AVCodecContext, FfmpegDelete>;
using FormatPtr = std::unique_ptr<AVFormatContext, FfmpegDelete>;
using FramePtr = std::unique_ptr<AVFrame, FfmpegDelete>;
using IoPtr = std::unique_ptr<AVIOContext, FfmpegDelete>;
using PacketPtr = std::unique_ptr<AVPacket, FfmpegDelete>;
using ResamplerPtr = std::unique_ptr<SwrContext, FfmpegDelete>;
using ScalerPtr = std::unique_ptr<SwsContext, FfmpegDelete>;

// Why a file cannot be used, as a text for a person.
class MediaError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// Neither the name nor the content of the file is that of media.
class NoMediaError : public MediaError {
    using MediaError::MediaError;
};

// Both throw std::bad_alloc when memory is out.
FramePtr NewFrame();
PacketPtr NewPacket();

// FFmpeg's own words for its error number.
std::string FfmpegText(int error);

}  // namespace qfc::host
