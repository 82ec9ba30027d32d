#include "hosts/qfc/CalendarTime.h"
#include "hosts/qfc/media/MediaFile.h"
#include "hosts/qfc/media/MediaProbe.h"

#include <array>
#include <chrono>
#include <filesystem>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace qfc::host {

namespace {

constexpr double kFastestRate = 1000;

std::int64_t ModificationTime(const std::string& path) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(path, error);
    if (error) return 0;
    const auto system = std::chrono::file_clock::to_sys(time);
    return std::chrono::floor<std::chrono::seconds>(system).time_since_epoch().count();
}

std::uint64_t FileSize(const std::string& path) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    return error ? 0 : size;
}

// FFmpeg's reader often serves a family ("mov,mp4,m4a"); the member that the name's extension tells is said.
std::string ContainerName(std::string_view reader, const std::string& path) {
    constexpr std::string_view kPipe = "_pipe";
    if (reader.ends_with(kPipe)) reader.remove_suffix(kPipe.size());
    std::string extension = std::filesystem::path(path).extension().string();
    if (!extension.empty()) extension.erase(0, 1);
    const std::string family = "," + std::string(reader) + ",";
    if (!extension.empty() && family.find("," + extension + ",") != std::string::npos) return extension;
    return std::string(reader.substr(0, reader.find(',')));
}

double FrameRate(AVFormatContext& format, AVStream& stream) {
    const AVRational guessed = av_guess_frame_rate(&format, &stream, nullptr);
    for (const AVRational rate : {guessed, stream.avg_frame_rate}) {
        if (rate.num > 0 && rate.den > 0 && av_q2d(rate) <= kFastestRate) return av_q2d(rate);
    }
    return 0;
}

double Duration(const AVFormatContext& format, const AVStream& stream) {
    if (format.duration > 0) return static_cast<double>(format.duration) / AV_TIME_BASE;
    return stream.duration > 0 ? static_cast<double>(stream.duration) * av_q2d(stream.time_base) : 0;
}

// The first is the camera's own clock with its zone, the last may hold no more than a year and then says nothing.
std::optional<std::int64_t> RecordedIn(const AVDictionary* metadata) {
    constexpr std::array kKeys = {"com.apple.quicktime.creationdate", "creation_time", "date"};
    for (const char* key : kKeys) {
        const AVDictionaryEntry* entry = av_dict_get(metadata, key, nullptr, 0);
        if (!entry) continue;
        const std::optional<std::int64_t> moment = ParseTime(entry->value);
        // A clock that was never set begins at 1904 or at 1970.
        constexpr std::int64_t kUnset1904 = -2082844800;
        if (moment && *moment != 0 && *moment != kUnset1904) return moment;
    }
    return std::nullopt;
}

}  // namespace

bool MediaFile::IsDurationGuessed() const {
    return m_facts.duration <= 0 || m_format->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
}

void MediaFile::FillSound() {
    if (!m_sound) return;
    m_facts.audioCodec = avcodec_get_name(m_sound->codecpar->codec_id);
    m_facts.channels = m_sound->codecpar->ch_layout.nb_channels;
    m_facts.sampleRate = m_sound->codecpar->sample_rate;
}

void MediaFile::FillFacts() {
    AVStream& main = m_picture ? *m_picture : *m_sound;
    m_facts.fileSize = FileSize(m_path);
    m_facts.modified = ModificationTime(m_path);
    m_facts.container = ContainerName(m_format->iformat->name, m_path);
    m_facts.codec = avcodec_get_name(main.codecpar->codec_id);
    m_facts.recorded = RecordedIn(m_format->metadata);
    if (!m_facts.recorded) m_facts.recorded = RecordedIn(main.metadata);
    FillSound();
    if (m_facts.kind == MediaKind::Image) return;
    m_facts.duration = Duration(*m_format, main);
    if (m_facts.kind == MediaKind::Audio) return;
    m_facts.frameRate = FrameRate(*m_format, main);
    const PictureSize size = SquarePixels({main.codecpar->width, main.codecpar->height});
    const bool swapped = DisplayTurn().SwapsSides();
    m_facts.width = swapped ? size.height : size.width;
    m_facts.height = swapped ? size.width : size.height;
}

}  // namespace qfc::host
