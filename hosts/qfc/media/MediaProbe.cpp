#include "hosts/qfc/media/MediaProbe.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace qfc::host {

namespace {

struct Extension {
    std::string_view text;
    MediaKind kind;
    std::string_view reader;
};

constexpr MediaKind kVideo = MediaKind::Video;
constexpr MediaKind kAudio = MediaKind::Audio;
constexpr MediaKind kImage = MediaKind::Image;

// The readers of images are called "x_pipe" because they read one picture from a stream of bytes; "image2" is for those
// that only their name tells apart.
// clang-format off
constexpr Extension kExtensions[] = {
    {"mp4", kVideo, "mov"},           {"m4v", kVideo, "mov"},           {"mov", kVideo, "mov"},
    {"qt", kVideo, "mov"},            {"3gp", kVideo, "mov"},           {"3g2", kVideo, "mov"},
    {"mj2", kVideo, "mov"},           {"mkv", kVideo, "matroska"},      {"webm", kVideo, "matroska"},
    {"avi", kVideo, "avi"},           {"divx", kVideo, "avi"},          {"flv", kVideo, "flv"},
    {"f4v", kVideo, "mov"},           {"mpg", kVideo, "mpeg"},          {"mpeg", kVideo, "mpeg"},
    {"mpe", kVideo, "mpeg"},          {"m1v", kVideo, "mpegvideo"},     {"m2v", kVideo, "mpegvideo"},
    {"mpv", kVideo, "mpegvideo"},     {"vob", kVideo, "mpeg"},          {"mod", kVideo, "mpeg"},
    {"ts", kVideo, "mpegts"},         {"mts", kVideo, "mpegts"},        {"m2ts", kVideo, "mpegts"},
    {"m2t", kVideo, "mpegts"},        {"tod", kVideo, "mpegts"},        {"wmv", kVideo, "asf"},
    {"asf", kVideo, "asf"},           {"wtv", kVideo, "wtv"},           {"ogv", kVideo, "ogg"},
    {"ogm", kVideo, "ogg"},           {"dv", kVideo, "dv"},             {"dif", kVideo, "dv"},
    {"mxf", kVideo, "mxf"},           {"gxf", kVideo, "gxf"},           {"nut", kVideo, "nut"},
    {"ivf", kVideo, "ivf"},           {"y4m", kVideo, "yuv4mpegpipe"},  {"rm", kVideo, "rm"},
    {"rmvb", kVideo, "rm"},           {"h264", kVideo, "h264"},         {"264", kVideo, "h264"},
    {"h265", kVideo, "hevc"},         {"265", kVideo, "hevc"},          {"hevc", kVideo, "hevc"},
    {"mjpg", kVideo, "mjpeg"},        {"mjpeg", kVideo, "mjpeg"},       {"fli", kVideo, "flic"},
    {"flc", kVideo, "flic"},          {"obu", kVideo, "obu"},           {"vc1", kVideo, "vc1"},
    {"mp3", kAudio, "mp3"},           {"mp2", kAudio, "mp3"},           {"mpa", kAudio, "mp3"},
    {"m4a", kAudio, "mov"},           {"m4b", kAudio, "mov"},           {"m4r", kAudio, "mov"},
    {"aac", kAudio, "aac"},           {"ogg", kAudio, "ogg"},           {"oga", kAudio, "ogg"},
    {"opus", kAudio, "ogg"},          {"spx", kAudio, "ogg"},           {"flac", kAudio, "flac"},
    {"wav", kAudio, "wav"},           {"w64", kAudio, "w64"},           {"rf64", kAudio, "wav"},
    {"bwf", kAudio, "wav"},           {"aif", kAudio, "aiff"},          {"aiff", kAudio, "aiff"},
    {"aifc", kAudio, "aiff"},         {"au", kAudio, "au"},             {"snd", kAudio, "au"},
    {"caf", kAudio, "caf"},           {"wma", kAudio, "asf"},           {"mka", kAudio, "matroska"},
    {"weba", kAudio, "matroska"},     {"ac3", kAudio, "ac3"},           {"eac3", kAudio, "eac3"},
    {"dts", kAudio, "dts"},           {"amr", kAudio, "amr"},           {"3ga", kAudio, "mov"},
    {"ape", kAudio, "ape"},           {"wv", kAudio, "wv"},             {"tta", kAudio, "tta"},
    {"tak", kAudio, "tak"},           {"mpc", kAudio, "mpc8"},          {"mp+", kAudio, "mpc"},
    {"ra", kAudio, "rm"},             {"voc", kAudio, "voc"},           {"dsf", kAudio, "dsf"},
    {"jpg", kImage, "jpeg_pipe"},     {"jpeg", kImage, "jpeg_pipe"},    {"jpe", kImage, "jpeg_pipe"},
    {"jfif", kImage, "jpeg_pipe"},    {"png", kImage, "png_pipe"},      {"apng", kImage, "apng"},
    {"gif", kImage, "gif"},           {"bmp", kImage, "bmp_pipe"},      {"dib", kImage, "bmp_pipe"},
    {"tif", kImage, "tiff_pipe"},     {"tiff", kImage, "tiff_pipe"},    {"webp", kImage, "webp_pipe"},
    {"tga", kImage, "image2"},        {"icb", kImage, "image2"},        {"vda", kImage, "image2"},
    {"vst", kImage, "image2"},        {"psd", kImage, "psd_pipe"},      {"jp2", kImage, "j2k_pipe"},
    {"j2k", kImage, "j2k_pipe"},      {"j2c", kImage, "j2k_pipe"},      {"jls", kImage, "jpegls_pipe"},
    {"jxl", kImage, "jpegxl_pipe"},   {"pcx", kImage, "pcx_pipe"},      {"pbm", kImage, "pbm_pipe"},
    {"pgm", kImage, "pgm_pipe"},      {"ppm", kImage, "ppm_pipe"},      {"pnm", kImage, "ppm_pipe"},
    {"pam", kImage, "pam_pipe"},      {"pfm", kImage, "pfm_pipe"},      {"sgi", kImage, "sgi_pipe"},
    {"rgb", kImage, "sgi_pipe"},      {"ras", kImage, "sunrast_pipe"},  {"sun", kImage, "sunrast_pipe"},
    {"xbm", kImage, "xbm_pipe"},      {"xpm", kImage, "xpm_pipe"},      {"xwd", kImage, "xwd_pipe"},
    {"dds", kImage, "dds_pipe"},      {"dpx", kImage, "dpx_pipe"},      {"exr", kImage, "exr_pipe"},
    {"hdr", kImage, "image2"},        {"qoi", kImage, "qoi_pipe"},      {"ico", kImage, "ico"},
    {"fits", kImage, "fits"},         {"fit", kImage, "fits"},          {"pcd", kImage, "photocd_pipe"},
    {"pct", kImage, "qdraw_pipe"},    {"pict", kImage, "qdraw_pipe"},
};
// clang-format on

std::string Lowered(std::string_view text) {
    std::string lowered(text);
    for (char& c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lowered;
}

const Extension* Find(std::string_view path) {
    const std::string_view name = path.substr(path.find_last_of('/') + 1);
    const std::size_t dot = name.find_last_of('.');
    if (dot == std::string_view::npos || dot == 0) return nullptr;
    const std::string text = Lowered(name.substr(dot + 1));
    const auto* found = std::ranges::find(kExtensions, std::string_view{text}, &Extension::text);
    return found == std::end(kExtensions) ? nullptr : found;
}

}  // namespace

std::optional<MediaKind> KindByName(std::string_view path) {
    const Extension* extension = Find(path);
    return extension ? std::optional(extension->kind) : std::nullopt;
}

std::string_view ReaderByName(std::string_view path) {
    const Extension* extension = Find(path);
    return extension ? extension->reader : std::string_view{};
}

bool IsReaderAllowed(std::string_view reader, MediaKind promised) {
    const bool image = promised == MediaKind::Image;
    while (!reader.empty()) {
        const std::size_t comma = std::min(reader.find(','), reader.size());
        const std::string_view name = reader.substr(0, comma);
        reader.remove_prefix(std::min(comma + 1, reader.size()));
        const bool allowed = std::ranges::any_of(kExtensions, [&](const Extension& extension) {
            return extension.reader == name && (extension.kind == MediaKind::Image) == image;
        });
        if (allowed) return true;
    }
    return false;
}

}  // namespace qfc::host
