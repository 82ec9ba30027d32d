#pragma once

#include "hosts/qfc/media/FfmpegHandles.h"
#include "hosts/qfc/media/MediaFile.h"

#include <cstdint>

namespace qfc::host {

// Decodes one stream of an open file, frame by frame, on the calling thread. Damaged packets are passed over; a stream
// of nothing but damage ends. Borrows the file. One thread at a time.
class StreamDecoder {
public:
    // Throws MediaError when there is no decoder for the stream.
    StreamDecoder(MediaFile& file, AVStream& stream);

    // The next frame, valid until the next call; null at the end or out of time.
    const AVFrame* Next();

    // Decoding goes on at the last key frame at or before the moment, in the stream's time base.
    bool SeekBefore(std::int64_t moment);

    // Frames that no other frame needs are left out from now on: about twice as fast through long stretches.
    void LeaveOutUnreferenced();

private:
    bool Feed();

    MediaFile& m_file;
    AVStream& m_stream;
    CodecPtr m_codec;
    PacketPtr m_packet;
    FramePtr m_frame;
    int m_failures = 0;
    bool m_draining = false;
};

}  // namespace qfc::host
