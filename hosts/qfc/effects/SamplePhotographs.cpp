#include "hosts/qfc/effects/SamplePhotographs.h"

#include "hosts/qfc/effects/FilterStudy.h"
#include "hosts/qfc/media/FrameScaler.h"
#include "hosts/qfc/media/MediaFile.h"
#include "hosts/qfc/media/StreamDecoder.h"

#include <stdexcept>

extern "C" {
#include <libavutil/frame.h>
}

namespace qfc::host {

namespace {

constexpr const char* kFirst = "Cat.jpg";
constexpr const char* kSecond = "Arches.jpg";

Picture ReadPhotograph(const std::filesystem::path& path) {
    MediaFile file(path, TimeLimit(std::chrono::seconds(5)));
    if (!file.PictureStream()) throw std::runtime_error("no photograph");
    StreamDecoder decoder(file, *file.PictureStream());
    const AVFrame* const frame = decoder.Next();
    if (!frame) throw std::runtime_error("cannot be decoded");
    if (frame->width * 4 < kStudySize.width * 5 || frame->height * 4 < kStudySize.height * 5)
        throw std::runtime_error("too small");
    FrameScaler scaler;
    return scaler.Scaled(*frame, {frame->width, frame->height});
}

Picture ReadNamed(const std::filesystem::path& path) {
    try {
        return ReadPhotograph(path);
    } catch (const std::exception& error) {
        throw std::runtime_error(path.string() + ": " + error.what());
    }
}

}  // namespace

std::filesystem::path PhotographFolder(const std::filesystem::path& program) {
    return program.parent_path() / "photographs";
}

SamplePhotographs ReadPhotographs(const std::filesystem::path& folder) {
    return {ReadNamed(folder / kFirst), ReadNamed(folder / kSecond)};
}

}  // namespace qfc::host
