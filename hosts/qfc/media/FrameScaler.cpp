#include "hosts/qfc/media/FrameScaler.h"

#include <algorithm>
#include <array>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace qfc::host {

namespace {

// Old names for "the same, but in the full range of values"; the range is said apart from the format now.
AVPixelFormat PlainFormat(int format) {
    switch (format) {
        case AV_PIX_FMT_YUVJ420P:
            return AV_PIX_FMT_YUV420P;
        case AV_PIX_FMT_YUVJ422P:
            return AV_PIX_FMT_YUV422P;
        case AV_PIX_FMT_YUVJ444P:
            return AV_PIX_FMT_YUV444P;
        case AV_PIX_FMT_YUVJ440P:
            return AV_PIX_FMT_YUV440P;
        case AV_PIX_FMT_YUVJ411P:
            return AV_PIX_FMT_YUV411P;
        default:
            return static_cast<AVPixelFormat>(format);
    }
}

bool IsFullRange(const AVFrame& frame) {
    return frame.color_range == AVCOL_RANGE_JPEG || PlainFormat(frame.format) != frame.format;
}

int ColourMatrix(const AVFrame& frame) {
    switch (frame.colorspace) {
        case AVCOL_SPC_BT709:
            return SWS_CS_ITU709;
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL:
            return SWS_CS_BT2020;
        case AVCOL_SPC_SMPTE240M:
            return SWS_CS_SMPTE240M;
        case AVCOL_SPC_FCC:
            return SWS_CS_FCC;
        case AVCOL_SPC_UNSPECIFIED:
            return frame.height >= 720 && !IsFullRange(frame) ? SWS_CS_ITU709 : SWS_CS_ITU601;
        default:
            return SWS_CS_ITU601;
    }
}

bool HasTransparency(const AVFrame& frame) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    return format && ((format->flags & AV_PIX_FMT_FLAG_ALPHA) || frame.format == AV_PIX_FMT_PAL8);
}

int Method(PictureSize from, PictureSize to) {
    if (from == to) return SWS_POINT;
    if (to.width > from.width && to.width % from.width == 0) return SWS_POINT;  // tiny pictures grow in blocks
    return to.width < from.width && to.height <= from.height ? SWS_AREA : SWS_BICUBIC;
}

bool IsRgb(const AVFrame& frame) {
    const AVPixFmtDescriptor* format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    return format && (format->flags & AV_PIX_FMT_FLAG_RGB);
}

std::uint32_t Over(std::uint32_t ground, std::uint32_t pixel) {
    const std::uint32_t alpha = pixel >> 24;
    std::uint32_t result = 0xFF;
    for (const unsigned shift : {16u, 8u, 0u}) {
        const std::uint32_t below = ground >> shift & 0xFF;
        const std::uint32_t above = pixel >> shift & 0xFF;
        result = result << 8 | (above * alpha + below * (255 - alpha) + 127) / 255;
    }
    return result;
}

// Grey squares, about twenty along the longer side: white drawings on nothing stay visible, and black ones too.
void PutOnChequers(Picture& picture) {
    constexpr std::uint32_t kLight = 0xFF9DA5AFu;
    constexpr std::uint32_t kDark = 0xFF89919Bu;
    const int square = std::max(1, std::max(picture.width, picture.height) / 20);
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            std::uint32_t& pixel = picture.At(x, y);
            if (pixel >> 24 != 0xFF) pixel = Over((x / square + y / square) % 2 == 0 ? kLight : kDark, pixel);
        }
    }
}

}  // namespace

void FrameScaler::Convert(const AVFrame& frame, Picture& result) {
    const int method = Method({frame.width, frame.height}, {result.width, result.height});
    m_scaler.reset(sws_getCachedContext(m_scaler.release(), frame.width, frame.height, PlainFormat(frame.format),
                                        result.width, result.height, AV_PIX_FMT_RGB32,
                                        method | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (!m_scaler) throw MediaError("its pictures cannot be converted");
    if (!IsRgb(frame))
        sws_setColorspaceDetails(m_scaler.get(), sws_getCoefficients(ColourMatrix(frame)), IsFullRange(frame) ? 1 : 0,
                                 sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    const std::array<std::uint8_t*, 4> rows = {reinterpret_cast<std::uint8_t*>(result.pixels.data())};
    const std::array<int, 4> strides = {result.width * 4};
    const int lines =
        sws_scale(m_scaler.get(), frame.data, frame.linesize, 0, frame.height, rows.data(), strides.data());
    if (lines != result.height) throw MediaError("its pictures cannot be converted");
}

// Transparent pixels often carry stray colours; they go before pixels are averaged.
Picture FrameScaler::Flattened(const AVFrame& frame, PictureSize size) {
    Picture whole(frame.width, frame.height);
    Convert(frame, whole);
    PutOnChequers(whole);
    if (size == PictureSize{frame.width, frame.height}) return whole;

    const FramePtr flat = NewFrame();
    flat->format = AV_PIX_FMT_RGB32;
    flat->width = whole.width;
    flat->height = whole.height;
    flat->data[0] = reinterpret_cast<std::uint8_t*>(whole.pixels.data());
    flat->linesize[0] = whole.width * 4;
    Picture result(size.width, size.height);
    Convert(*flat, result);
    return result;
}

Picture FrameScaler::Scaled(const AVFrame& frame, PictureSize size) {
    if (frame.width < 1 || frame.height < 1 || !frame.data[0]) throw MediaError("its pictures are empty");
    Picture result;
    if (HasTransparency(frame)) {
        result = Flattened(frame, size);
    } else {
        result = Picture(size.width, size.height);
        Convert(frame, result);
    }
    for (std::uint32_t& pixel : result.pixels) pixel |= 0xFF000000u;
    return result;
}

}  // namespace qfc::host
