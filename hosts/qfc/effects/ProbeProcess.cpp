#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/effects/ChildProcess.h"
#include "hosts/qfc/effects/PluginLimits.h"
#include "hosts/qfc/effects/PluginStudy.h"
#include "hosts/qfc/effects/ProbeArguments.h"
#include "hosts/qfc/effects/ReportBytes.h"
#include "hosts/qfc/effects/ReportMark.h"

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fcntl.h>
#include <malloc.h>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace qfc::host {

namespace {

// qfc effects probe FILE --answer-within MILLISECONDS
constexpr std::string_view kWithin = "--answer-within";
constexpr int kArguments = 6;

std::atomic<bool> g_isPluginsProcess = false;

// Some plugins read memory that they never wrote to: with zeros in it they are the same at every run, and find no
// numbers there that lead beyond a frame.
void ZeroFreshMemory() {
    constexpr int kComplementOfZero = 0xFF;
    mallopt(M_PERTURB, kComplementOfZero);
}

bool CanAnswer() {
    const int flags = fcntl(kAnswerDescriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

bool Answer(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(kAnswerDescriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

// A file that cannot be read, on a disk that is away or closed to this user, is no broken plugin.
void ReadWhole(const char* path) {
    constexpr std::size_t kMostThatIsLoaded = std::size_t{1} << 30;
    const int file = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) throw std::system_error(errno, std::generic_category(), "cannot open the file");
    struct stat state {};
    if (fstat(file, &state) != 0 || !S_ISREG(state.st_mode)) throw std::runtime_error("it is no file to be read");
    std::vector<std::uint8_t> buffer(std::size_t{1} << 16);
    ssize_t count = 1;
    for (std::size_t total = 0; count != 0 && total < kMostThatIsLoaded; total += static_cast<std::size_t>(count)) {
        while ((count = read(file, buffer.data(), buffer.size())) < 0 && errno == EINTR) continue;
        if (count < 0) throw std::system_error(errno, std::generic_category(), "cannot read the file");
    }
    close(file);
}

// All that is no plugin's business, up to the greeting.
SamplePhotographs Prepare(const char* file, std::chrono::milliseconds limit) {
    const bool full = EnterPluginLimits(limit, kAnswerDescriptor);
    ReadWhole(file);
    ZeroFreshMemory();
    SamplePhotographs photographs = ReadPhotographs(PhotographFolder(std::filesystem::read_symlink("/proc/self/exe")));
    const std::uint8_t greeting = full ? kUnderFullLimits : kUnderLowerLimits;
    if (!Answer({&greeting, 1})) throw std::runtime_error("cannot answer");
    return photographs;
}

std::vector<std::uint8_t> Studied(const char* file, const SamplePhotographs& photographs, const WorkBudget& budget) {
    std::vector<std::uint8_t> bytes = PackReport(StudyPlugin(file, photographs, budget));
    if (!bytes.empty()) return bytes;
    ProbeReport tooLarge;
    tooLarge.reason = "its effects are more than a report can hold";
    return PackReport(tooLarge);
}

}  // namespace

std::vector<std::string> ProbeArguments(const std::filesystem::path& file, std::chrono::milliseconds limit) {
    return {"effects", "probe", file.string(), std::string(kWithin), std::to_string(limit.count())};
}

bool IsProbeProcess(int argc, const char* const* argv) {
    return argc == kArguments && std::string_view(argv[1]) == "effects" && std::string_view(argv[2]) == "probe" &&
           argv[4] == kWithin;
}

bool IsPluginsProcess() { return g_isPluginsProcess; }

int RunProbeProcess(int, const char* const* argv) {
    g_isPluginsProcess = true;
    int milliseconds = 0;
    const std::string_view text = argv[5];
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), milliseconds);
    if (error != std::errc() || end != text.data() + text.size() || milliseconds <= 0 || !CanAnswer())
        return kWrongUsage;
    const std::chrono::milliseconds limit(milliseconds);
    SamplePhotographs photographs;
    try {
        photographs = Prepare(argv[3], limit);
    } catch (const std::exception& complaint) {
        Answer({reinterpret_cast<const std::uint8_t*>(complaint.what()), std::strlen(complaint.what())});
        return kFailed;
    }
    const WorkBudget budget(limit);
    // Without the ends of other objects: threads of the plugin may still be using them.
    _exit(Answer(Studied(argv[3], photographs, budget)) ? kDone : kFailed);
}

}  // namespace qfc::host
