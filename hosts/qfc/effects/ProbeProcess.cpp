#include "hosts/qfc/cli/Exit.h"
#include "hosts/qfc/effects/ChildProcess.h"
#include "hosts/qfc/effects/PluginStudy.h"
#include "hosts/qfc/effects/ProbeArguments.h"
#include "hosts/qfc/effects/ReportBytes.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <malloc.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#if defined(__has_feature)
#define QFC_HAS_FEATURE(x) __has_feature(x)
#else
#define QFC_HAS_FEATURE(x) 0
#endif

namespace qfc::host {

namespace {

// qfc effects probe FILE --answer-within MILLISECONDS
constexpr std::string_view kWithin = "--answer-within";
constexpr int kArguments = 6;

constexpr rlim_t kMemory = rlim_t{1} << 30;
constexpr rlim_t kWrittenFile = rlim_t{16} << 20;

// The sanitizers lay out terabytes of addresses.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || QFC_HAS_FEATURE(address_sanitizer) || \
    QFC_HAS_FEATURE(thread_sanitizer)
constexpr bool kIsMemoryLimited = false;
#else
constexpr bool kIsMemoryLimited = true;
#endif

bool Limit(int resource, rlim_t soft, rlim_t hard) {
    const rlimit limit{soft, hard};
    return setrlimit(static_cast<__rlimit_resource>(resource), &limit) == 0;
}

// Nothing can be undone, whatever the plugin tries.
bool EnterLimits(std::chrono::milliseconds time) {
    const auto seconds = static_cast<rlim_t>((time.count() + 999) / 1000);
    // For the case that the parent is killed and nobody looks at the clock any more.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    alarm(static_cast<unsigned int>(seconds) + 2);
    return Limit(RLIMIT_CPU, seconds, seconds + 1) && (!kIsMemoryLimited || Limit(RLIMIT_AS, kMemory, kMemory)) &&
           Limit(RLIMIT_CORE, 0, 0) && Limit(RLIMIT_FSIZE, kWrittenFile, kWrittenFile) && chdir("/") == 0;
}

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

ProbeReport Probed(const char* file, const WorkBudget& budget) {
    try {
        const auto program = std::filesystem::read_symlink("/proc/self/exe");
        return StudyPlugin(file, ReadPhotographs(PhotographFolder(program)), budget);
    } catch (const std::exception& error) {
        ProbeReport report;
        report.reason = error.what();
        return report;
    }
}

}  // namespace

std::vector<std::string> ProbeArguments(const std::filesystem::path& file, std::chrono::milliseconds limit) {
    return {"effects", "probe", file.string(), std::string(kWithin), std::to_string(limit.count())};
}

bool IsProbeProcess(int argc, const char* const* argv) {
    return argc == kArguments && std::string_view(argv[1]) == "effects" && std::string_view(argv[2]) == "probe" &&
           argv[4] == kWithin;
}

int RunProbeProcess(int, const char* const* argv) {
    int milliseconds = 0;
    const std::string_view text = argv[5];
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), milliseconds);
    if (error != std::errc() || end != text.data() + text.size() || milliseconds <= 0 || !CanAnswer())
        return kWrongUsage;
    const std::chrono::milliseconds limit(milliseconds);
    const WorkBudget budget(limit);
    if (!EnterLimits(limit)) return kFailed;
    ZeroFreshMemory();
    std::vector<std::uint8_t> bytes = PackReport(Probed(argv[3], budget));
    if (bytes.empty()) {
        ProbeReport tooLarge;
        tooLarge.reason = "its effects are more than a report can hold";
        bytes = PackReport(tooLarge);
    }
    // Without the ends of other objects: threads of the plugin may still be using them.
    _exit(Answer(bytes) ? kDone : kFailed);
}

}  // namespace qfc::host
