#pragma once

#include "hosts/qfc/media/DecodedMedia.h"
#include "hosts/qfc/media/FrameScaler.h"
#include "hosts/qfc/media/StreamDecoder.h"
#include "hosts/qfc/pictures/Dib.h"
#include "tests/support/TempFolder.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
}

namespace qfc::test {

using host::DecodedMedia;
using host::Picture;
using host::PictureSize;

// A folder that fills with media on demand.
class MediaMaker {
public:
    // Runs ffmpeg with the arguments, which name the inputs and the encoding, and gives the file's path.
    std::string Make(const std::string& name, const std::string& arguments) const {
        const std::string path = m_folder / name;
        const std::string command = "timeout 60 ffmpeg -nostdin -v error -y " + arguments + " '" + path + "'";
        if (std::system(command.c_str()) != 0) throw std::runtime_error("does not work: " + command);
        return path;
    }

    // A moving picture that is different in each frame.
    std::string Video(const std::string& name, const std::string& more = "-c:v mpeg4 -q:v 5", double seconds = 4,
                      const std::string& size = "320x180") const {
        return Make(name, "-f lavfi -i testsrc2=s=" + size + ":r=25:d=" + std::to_string(seconds) + " " + more);
    }

    std::string Image(const std::string& name, const std::string& size = "320x180",
                      const std::string& more = "") const {
        return Make(name, "-f lavfi -i testsrc2=s=" + size + " -frames:v 1 " + more);
    }

    const TempFolder& Folder() const { return m_folder; }

private:
    TempFolder m_folder;
};

inline DecodedMedia Decode(const std::string& path) {
    return host::DecodeMedia(path, host::TimeLimit(std::chrono::seconds(60)));
}

inline Picture Cache(const DecodedMedia& media) { return host::ReadDib(media.thumbnails.cache).value_or(Picture{}); }

inline PictureSize SizeOf(const Picture& picture) { return {picture.width, picture.height}; }

inline std::vector<std::vector<std::uint8_t>> FilmFrames(const DecodedMedia& media) {
    std::vector<std::vector<std::uint8_t>> frames;
    const auto& film = media.thumbnails.film;
    const std::size_t size = media.thumbnails.frameSize;
    for (std::size_t at = 0; size > 0 && at + size <= film.size(); at += size)
        frames.emplace_back(film.begin() + static_cast<std::ptrdiff_t>(at),
                            film.begin() + static_cast<std::ptrdiff_t>(at + size));
    return frames;
}

// A whole image file, pixel by pixel.
inline Picture ReadImage(const std::string& path) {
    host::MediaFile file(path, host::TimeLimit(std::chrono::seconds(60)));
    host::StreamDecoder decoder(file, *file.PictureStream());
    const AVFrame* frame = decoder.Next();
    if (!frame) throw std::runtime_error("no picture in " + path);
    host::FrameScaler scaler;
    return scaler.Scaled(*frame, {frame->width, frame->height});
}

// Whether a colour is near another one, as lossy codecs leave it.
inline bool IsNear(std::uint32_t colour, std::uint32_t wanted, int distance = 40) {
    for (const unsigned shift : {16u, 8u, 0u}) {
        const int difference = static_cast<int>(colour >> shift & 0xFF) - static_cast<int>(wanted >> shift & 0xFF);
        if (std::abs(difference) > distance) return false;
    }
    return true;
}

}  // namespace qfc::test
