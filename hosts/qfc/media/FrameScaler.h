#pragma once

#include "hosts/qfc/media/FfmpegHandles.h"
#include "hosts/qfc/pictures/Picture.h"

namespace qfc::host {

// Turns decoded frames of any pixel format into pictures of a wanted size, with the colours the file means; what is
// transparent shows grey chequers. Keeps its tables from frame to frame. One thread at a time.
class FrameScaler {
public:
    // Throws MediaError when the frame has no pixels or a format that cannot be converted.
    Picture Scaled(const AVFrame& frame, PictureSize size);

private:
    void Convert(const AVFrame& frame, Picture& result);
    Picture Flattened(const AVFrame& frame, PictureSize size);

    ScalerPtr m_scaler;
};

}  // namespace qfc::host
