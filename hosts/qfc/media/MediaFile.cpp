#include "hosts/qfc/media/MediaFile.h"

#include "hosts/qfc/media/MediaProbe.h"

#include <algorithm>
#include <filesystem>
#include <mutex>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

namespace qfc::host {

namespace {

constexpr std::size_t kMaxAllocation = std::size_t{1} << 30;
constexpr double kWidestPixel = 8;
constexpr int kHead = 4096;

// FFmpeg's own messages would break into the lines and the progress bar of the command.
void PrepareFfmpeg() {
    static std::once_flag once;
    std::call_once(once, [] {
        av_log_set_level(AV_LOG_QUIET);
        av_max_alloc(kMaxAllocation);
    });
}

int IsOver(void* limit) { return static_cast<const TimeLimit*>(limit)->IsOver() ? 1 : 0; }

// A playlist or a film may name other files; no imported file gets to choose what else is read.
int RefuseToOpen(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) { return AVERROR(EPERM); }

class Options {
public:
    Options() = default;
    ~Options() { av_dict_free(&m_options); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

    void Set(const char* key, const char* value) { av_dict_set(&m_options, key, value, 0); }
    AVDictionary** Get() { return &m_options; }

private:
    AVDictionary* m_options = nullptr;
};

void CheckFile(const std::string& path, bool promised) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (error || !std::filesystem::exists(status)) throw MediaError("no such file");
    if (!std::filesystem::is_regular_file(status)) throw MediaError("not a regular file");
    if (std::filesystem::file_size(path, error) != 0 || error) return;
    if (!promised) throw NoMediaError("no media file");
    throw MediaError("the file is empty");
}

bool IsDecodable(const AVStream& stream) { return avcodec_find_decoder(stream.codecpar->codec_id) != nullptr; }

bool IsCover(const AVStream& stream) {
    return (stream.disposition & (AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS)) != 0;
}

std::int64_t Area(const AVStream& stream) { return std::int64_t{stream.codecpar->width} * stream.codecpar->height; }

}  // namespace

MediaFile::MediaFile(std::string path, TimeLimit limit)
    : m_path(std::move(path)), m_promised(PromisedReader(m_path)), m_limit(limit) {
    PrepareFfmpeg();
    CheckFile(m_path, !m_promised.empty());
    OpenBytes();
    const AVInputFormat* reader = ProbedReader();
    if (!reader) reader = ReaderByName();
    m_isPicture = UseOfReader(reader->name) == ReaderUse::Picture || IsStillPicture(m_head);
    if (IsReaderCalled(reader->name, "image2")) {
        OpenPictureByName();
    } else {
        Open(*reader);
    }
    // A single picture's header says enough; FFmpeg would else decode it once only to learn its format.
    if (!m_isPicture) {
        const int result = avformat_find_stream_info(m_format.get(), nullptr);
        if (m_limit.IsOver()) throw MediaError("reading it takes too long");
        if (result < 0) throw MediaError("its streams cannot be read: " + FfmpegText(result));
    }
    ChooseStreams();
    FillFacts();
}

MediaFile::~MediaFile() = default;

void MediaFile::Allocate() {
    m_format.reset(avformat_alloc_context());
    if (!m_format) throw std::bad_alloc();
    m_format->interrupt_callback = {IsOver, &m_limit};
}

void MediaFile::OpenBytes() {
    const std::string address = "file:" + m_path;
    const AVIOInterruptCB interrupt = {IsOver, &m_limit};
    Options options;
    options.Set("protocol_whitelist", "file");
    AVIOContext* io = nullptr;
    const int result = avio_open2(&io, address.c_str(), AVIO_FLAG_READ, &interrupt, options.Get());
    if (result < 0) throw MediaError("cannot be read: " + FfmpegText(result));
    m_io.reset(io);
    m_head.resize(kHead);
    const int length = avio_read(m_io.get(), reinterpret_cast<unsigned char*>(m_head.data()), kHead);
    m_head.resize(static_cast<std::size_t>(std::max(length, 0)));
    if (length < 0 || avio_seek(m_io.get(), 0, SEEK_SET) < 0) throw MediaError("cannot be read: " + FfmpegText(length));
}

// Null when the content is not clearly that of an allowed reader's files.
const AVInputFormat* MediaFile::ProbedReader() {
    if (IsText(m_head) && !IsReaderOfText(m_promised)) return nullptr;
    const AVInputFormat* reader = nullptr;
    // Without a name FFmpeg judges by the content alone.
    const int score = av_probe_input_buffer2(m_io.get(), &reader, "", nullptr, 0, 0);
    if (m_limit.IsOver()) throw MediaError("reading it takes too long");
    if (!reader || UseOfReader(reader->name) == ReaderUse::Refused) return nullptr;
    const bool promised = IsReaderCalled(reader->name, m_promised);
    const bool likely = score > AVPROBE_SCORE_RETRY && !IsOnlyAsPromised(reader->name);
    return promised || likely ? reader : nullptr;
}

const AVInputFormat* MediaFile::ReaderByName() {
    if (m_promised.empty()) throw NoMediaError("no media file");
    const bool fits = IsKnownByNameAlone(m_promised) && (!IsText(m_head) || IsReaderOfText(m_promised));
    const AVInputFormat* reader = fits ? av_find_input_format(std::string(m_promised).c_str()) : nullptr;
    if (!reader) throw MediaError("the content is no media of this kind");
    return reader;
}

void MediaFile::Open(const AVInputFormat& reader) {
    Allocate();
    m_format->pb = m_io.get();
    m_format->flags |= AVFMT_FLAG_CUSTOM_IO;
    m_format->io_open = RefuseToOpen;
    AVFormatContext* format = m_format.release();  // freed by FFmpeg on failure
    const int result = avformat_open_input(&format, nullptr, &reader, nullptr);
    if (result < 0) throw MediaError("cannot be opened: " + FfmpegText(result));
    m_format.reset(format);
}

// The reader of pictures that are known by their names opens them itself.
void MediaFile::OpenPictureByName() {
    m_io.reset();
    Allocate();
    Options options;
    options.Set("protocol_whitelist", "file");
    options.Set("pattern_type", "none");  // a '%' in a name is a letter like any other
    AVFormatContext* format = m_format.release();
    const int result = avformat_open_input(&format, m_path.c_str(), av_find_input_format("image2"), options.Get());
    if (result < 0) throw MediaError("cannot be opened: " + FfmpegText(result));
    m_format.reset(format);
}

AVStream* MediaFile::Choose(int mediaType) const {
    AVStream* best = nullptr;
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        AVStream* stream = m_format->streams[i];
        if (stream->codecpar->codec_type != mediaType || IsCover(*stream) || !IsDecodable(*stream)) continue;
        const bool preferred =
            best && !(best->disposition & AV_DISPOSITION_DEFAULT) && (stream->disposition & AV_DISPOSITION_DEFAULT);
        if (!best || preferred) best = stream;
    }
    return best;
}

// An icon file holds the same picture in several sizes.
AVStream* MediaFile::ChooseImage() const {
    AVStream* best = nullptr;
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        AVStream* stream = m_format->streams[i];
        if (stream->codecpar->codec_type != AVMEDIA_TYPE_VIDEO || !IsDecodable(*stream)) continue;
        if (!best || Area(*stream) > Area(*best)) best = stream;
    }
    return best;
}

void MediaFile::ChooseStreams() {
    m_picture = m_isPicture ? ChooseImage() : Choose(AVMEDIA_TYPE_VIDEO);
    m_sound = m_isPicture ? nullptr : Choose(AVMEDIA_TYPE_AUDIO);
    if (!m_picture && !m_sound) throw MediaError("holds no stream that can be decoded");
    m_facts.kind = m_isPicture ? MediaKind::Image : m_picture ? MediaKind::Video : MediaKind::Audio;
    for (unsigned i = 0; i < m_format->nb_streams; ++i) {
        AVStream* stream = m_format->streams[i];
        const bool used = m_picture ? stream == m_picture : stream == m_sound;
        stream->discard = used ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    }
}

Turn MediaFile::DisplayTurn() const {
    if (m_facts.kind != MediaKind::Video) return {};
    const auto* matrix =
        reinterpret_cast<const std::int32_t*>(av_stream_get_side_data(m_picture, AV_PKT_DATA_DISPLAYMATRIX, nullptr));
    if (!matrix) return {};
    const auto sign = [](std::int32_t value) {
        constexpr std::int32_t kHalf = 1 << 15;  // the numbers are 16.16 fixed point
        return value > kHalf ? 1 : value < -kHalf ? -1 : 0;
    };
    const Turn turn{sign(matrix[0]), sign(matrix[1]), sign(matrix[3]), sign(matrix[4])};
    const bool upright = turn.a != 0 && turn.d != 0 && turn.b == 0 && turn.c == 0;
    const bool sideways = turn.a == 0 && turn.d == 0 && turn.b != 0 && turn.c != 0;
    return upright || sideways ? turn : Turn{};
}

PictureSize MediaFile::SquarePixels(PictureSize frame) const {
    if (m_facts.kind != MediaKind::Video) return frame;
    const AVRational pixel = av_guess_sample_aspect_ratio(m_format.get(), m_picture, nullptr);
    const double ratio = pixel.num > 0 && pixel.den > 0 ? av_q2d(pixel) : 1;
    if (ratio == 1 || ratio > kWidestPixel || ratio < 1 / kWidestPixel) return frame;
    return {std::max(1, static_cast<int>(frame.width * ratio + 0.5)), frame.height};
}

bool MediaFile::ReadPacket(const AVStream& stream, AVPacket& packet) {
    while (!m_limit.IsOver()) {
        av_packet_unref(&packet);
        const int result = av_read_frame(m_format.get(), &packet);
        if (result == AVERROR(EAGAIN)) continue;
        if (result < 0) return false;
        if (packet.stream_index == stream.index) return true;
    }
    return false;
}

bool MediaFile::SeekBefore(const AVStream& stream, std::int64_t moment) {
    return av_seek_frame(m_format.get(), stream.index, moment, AVSEEK_FLAG_BACKWARD) >= 0;
}

}  // namespace qfc::host
