#include "hosts/qfc/media/MediaProbe.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>

namespace qfc::host {

namespace {

struct Promise {
    std::string_view reader;
    std::string_view extensions;  // separated by blanks
};

// The readers of images are called "x_pipe" because they read one picture from a stream of bytes; "image2" is for those
// that only their name tells apart.
constexpr Promise kPromises[] = {
    {"mov", "mp4 m4v mov qt 3gp 3g2 mj2 f4v m4a m4b m4r 3ga f4a f4b avif"},
    {"matroska", "mkv webm mka weba mk3d"},
    {"avi", "avi divx"},
    {"flv", "flv"},
    {"mpeg", "mpg mpeg mpe vob mod m2p"},
    {"mpegvideo", "m1v m2v mpv"},
    {"mpegts", "ts mts m2ts m2t tod trp"},
    {"asf", "wmv asf wma"},
    {"wtv", "wtv"},
    {"ogg", "ogv ogm ogg oga opus spx"},
    {"dv", "dv dif"},
    {"mxf", "mxf"},
    {"gxf", "gxf"},
    {"nut", "nut"},
    {"nsv", "nsv"},
    {"nuv", "nuv"},
    {"ivf", "ivf"},
    {"yuv4mpegpipe", "y4m"},
    {"rm", "rm rmvb ra"},
    {"h264", "h264 264"},
    {"hevc", "h265 265 hevc"},
    {"mjpeg", "mjpg mjpeg"},
    {"flic", "fli flc"},
    {"obu", "obu"},
    {"vc1", "vc1"},
    {"swf", "swf"},
    {"thp", "thp"},
    {"roq", "roq"},
    {"smk", "smk"},
    {"bink", "bik"},
    {"mp3", "mp3 mp2 mpa"},
    {"aac", "aac adts"},
    {"flac", "flac"},
    {"wav", "wav rf64 bwf"},
    {"w64", "w64"},
    {"aiff", "aif aiff aifc"},
    {"au", "au snd"},
    {"caf", "caf"},
    {"ac3", "ac3"},
    {"eac3", "eac3"},
    {"dts", "dts"},
    {"mlp", "mlp"},
    {"truehd", "thd"},
    {"amr", "amr awb"},
    {"ape", "ape"},
    {"wv", "wv"},
    {"tta", "tta"},
    {"tak", "tak"},
    {"mpc8", "mpc"},
    {"mpc", "mp+"},
    {"voc", "voc"},
    {"sox", "sox"},
    {"oma", "oma aa3"},
    {"dsf", "dsf"},
    {"gsm", "gsm"},
    {"g722", "g722"},
    {"sln", "sln"},
    {"libopenmpt", "xm s3m mptm"},
    {"libgme", "spc nsf nsfe gbs vgm vgz ay gym hes kss"},
    {"jpeg_pipe", "jpg jpeg jpe jfif mpo"},
    {"png_pipe", "png"},
    {"apng", "apng"},
    {"gif", "gif"},
    {"bmp_pipe", "bmp dib"},
    {"tiff_pipe", "tif tiff"},
    {"webp_pipe", "webp"},
    {"psd_pipe", "psd"},
    {"j2k_pipe", "jp2 j2k j2c"},
    {"jpegls_pipe", "jls"},
    {"jpegxl_pipe", "jxl"},
    {"svg_pipe", "svg"},
    {"pcx_pipe", "pcx"},
    {"pbm_pipe", "pbm"},
    {"pgm_pipe", "pgm"},
    {"ppm_pipe", "ppm pnm"},
    {"pam_pipe", "pam"},
    {"pfm_pipe", "pfm"},
    {"phm_pipe", "phm"},
    {"sgi_pipe", "sgi rgb"},
    {"sunrast_pipe", "ras sun"},
    {"xbm_pipe", "xbm"},
    {"xpm_pipe", "xpm"},
    {"xwd_pipe", "xwd"},
    {"dds_pipe", "dds"},
    {"dpx_pipe", "dpx"},
    {"exr_pipe", "exr"},
    {"qoi_pipe", "qoi"},
    {"gem_pipe", "gem"},
    {"photocd_pipe", "pcd"},
    {"qdraw_pipe", "pct pict"},
    {"ico", "ico"},
    {"fits", "fits fit"},
    {"image2", "tga icb vda vst hdr pix ptx"},
};

// Every reader of films and sounds that knows its files by their content. Left out are those that open further files or
// addresses (hls, concat, dash, imf, sdp, image2), those that make films of text (tty and its like), those of texts
// without pictures (subtitles, scripts), and devices.
constexpr std::string_view kFilmReaders[] = {
    "3dostr",       "4xm",         "aa",         "aac",      "aax",
    "ac3",          "ace",         "acm",        "act",      "adp",
    "ads",          "adx",         "aea",        "afc",      "aiff",
    "aix",          "alp",         "amr",        "amrnb",    "amrwb",
    "anm",          "apc",         "ape",        "apm",      "argo_asf",
    "argo_brp",     "argo_cvg",    "asf",        "ast",      "au",
    "av1",          "avi",         "avr",        "avs",      "avs2",
    "avs3",         "bethsoftvid", "bfi",        "bfstm",    "bink",
    "binka",        "boa",         "brstm",      "c93",      "caf",
    "cavsvideo",    "cdxl",        "cine",       "codec2",   "daud",
    "dcstr",        "derf",        "dfa",        "dhav",     "dirac",
    "dnxhd",        "dsf",         "dsicin",     "dss",      "dts",
    "dtshd",        "dv",          "dxa",        "ea",       "eac3",
    "film_cpk",     "filmstrip",   "flac",       "flic",     "flv",
    "frm",          "fsb",         "fwse",       "gdv",      "genh",
    "gsm",          "g722",        "gxf",        "h261",     "h263",
    "h264",         "hca",         "hcom",       "hevc",     "hnm",
    "idcin",        "iff",         "ifv",        "ircam",    "iss",
    "iv8",          "ivf",         "ivr",        "jv",       "kux",
    "kvag",         "libgme",      "libopenmpt", "live_flv", "lmlm4",
    "loas",         "luodat",      "lvf",        "lxf",      "m4v",
    "matroska",     "mca",         "mgsts",      "mjpeg",    "mlp",
    "mlv",          "mm",          "mmf",        "mods",     "moflex",
    "mov",          "mp3",         "mpc",        "mpc8",     "mpeg",
    "mpegts",       "mpegvideo",   "msf",        "msp",      "mtaf",
    "mtv",          "musx",        "mv",         "mvi",      "mxf",
    "mxg",          "nc",          "nistsphere", "nsp",      "nsv",
    "nut",          "nuv",         "obu",        "ogg",      "oma",
    "paf",          "pmp",         "pp_bnk",     "psxstr",   "pva",
    "pvf",          "qcp",         "r3d",        "redspark", "rl2",
    "rm",           "roq",         "rpl",        "rsd",      "rso",
    "scd",          "sdr2",        "sds",        "sdx",      "ser",
    "sga",          "shn",         "siff",       "sln",      "simbiosis_imx",
    "smjpeg",       "smk",         "smush",      "sol",      "sox",
    "spdif",        "svag",        "svs",        "swf",      "tak",
    "thp",          "tmv",         "truehd",     "tta",      "txd",
    "ty",           "vag",         "vc1",        "vc1test",  "vividas",
    "vivo",         "vmd",         "voc",        "vpk",      "vqf",
    "w64",          "wav",         "wc3movie",   "webm",     "wsaud",
    "wsd",          "wsvqa",       "wtv",        "wv",       "wve",
    "xa",           "xmv",         "xvag",       "xwma",     "yop",
    "yuv4mpegpipe",
};

constexpr std::string_view kPictureReaders[] = {"alias_pix", "apng", "brender_pix", "fits", "gif", "ico", "image2"};
constexpr std::string_view kKnownByNameAlone[] = {"image2", "svg_pipe", "gsm", "g722", "sln"};
// Takes every gzip file for music.
constexpr std::string_view kOnlyAsPromised[] = {"libgme"};
constexpr std::string_view kReadersOfText[] = {"pbm_pipe", "pgm_pipe", "ppm_pipe", "svg_pipe", "xbm_pipe", "xpm_pipe"};

bool IsIn(const auto& names, std::string_view name) { return std::ranges::find(names, name) != std::end(names); }

// Calls `fits` with each part of a list until it says yes.
template <class Fits>
bool AnyPart(std::string_view list, char separator, Fits&& fits) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(separator), list.size());
        if (fits(list.substr(0, end))) return true;
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

std::string ExtensionOf(std::string_view path) {
    const std::string_view name = path.substr(path.find_last_of('/') + 1);
    const std::size_t dot = name.find_last_of('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    std::string extension(name.substr(dot + 1));
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

}  // namespace

ReaderUse UseOfReader(std::string_view reader) {
    const auto isPicture = [](std::string_view name) { return name.ends_with("_pipe") || IsIn(kPictureReaders, name); };
    if (AnyPart(reader, ',', isPicture)) return ReaderUse::Picture;
    const auto isFilm = [](std::string_view name) { return IsIn(kFilmReaders, name); };
    return AnyPart(reader, ',', isFilm) ? ReaderUse::Film : ReaderUse::Refused;
}

bool IsReaderCalled(std::string_view reader, std::string_view name) {
    return AnyPart(reader, ',', [&](std::string_view spelling) { return spelling == name; });
}

std::string_view PromisedReader(std::string_view path) {
    const std::string extension = ExtensionOf(path);
    const auto promises = [&](const Promise& promise) {
        return AnyPart(promise.extensions, ' ', [&](std::string_view one) { return one == extension; });
    };
    const auto* found = std::ranges::find_if(kPromises, promises);
    return found == std::end(kPromises) ? std::string_view{} : found->reader;
}

bool IsKnownByNameAlone(std::string_view reader) { return IsIn(kKnownByNameAlone, reader); }

bool IsOnlyAsPromised(std::string_view reader) { return IsIn(kOnlyAsPromised, reader); }

bool IsReaderOfText(std::string_view reader) { return IsIn(kReadersOfText, reader); }

bool IsText(std::string_view head) {
    // What texts hold of control characters; the last one begins a colour of a terminal.
    constexpr std::string_view kInText = "\t\n\v\f\r\x1b";
    return std::ranges::all_of(head, [&](char c) {
        return static_cast<unsigned char>(c) >= 0x20 || kInText.find(c) != std::string_view::npos;
    });
}

bool IsStillPicture(std::string_view head) {
    constexpr std::array<std::string_view, 7> kBrands = {"avif", "avis", "mif1", "msf1", "heic", "heix", "hevc"};
    return head.size() >= 12 && head.substr(4, 4) == "ftyp" && IsIn(kBrands, head.substr(8, 4));
}

}  // namespace qfc::host
