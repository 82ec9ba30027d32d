#include "hosts/qfc/effects/ChildProcess.h"
#include "hosts/qfc/effects/PluginTexts.h"
#include "hosts/qfc/effects/ProbeArguments.h"
#include "hosts/qfc/effects/ReportBytes.h"
#include "hosts/qfc/effects/ReportMark.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <csignal>
#include <fmt/format.h>
#include <span>
#include <sys/stat.h>

namespace qfc::host {

namespace {

using Outcome = ProbeReport::Outcome;

std::string NameOfSignal(int signal) {
    switch (signal) {
        case SIGABRT:
            return "it aborts";
        case SIGSEGV:
        case SIGBUS:
            return "it uses memory that is not its own";
        case SIGFPE:
            return "it divides by zero";
        case SIGILL:
            return "it runs what this processor cannot run";
        case SIGXFSZ:
            return "it writes too large a file";
        default:
            return fmt::format("it is ended by signal {}", signal);
    }
}

std::string TooSlow(std::chrono::milliseconds limit) {
    return fmt::format("it takes longer than {} s", static_cast<double>(limit.count()) / 1000);
}

ProbeReport Without(Outcome outcome, std::string reason) {
    ProbeReport report;
    report.outcome = outcome;
    report.reason = std::move(reason);
    return report;
}

// Signals by which somebody else ends processes: a person, a system that goes down or has no memory left.
bool IsFromOutside(const ChildEnd& end, std::chrono::milliseconds limit) {
    switch (end.code) {
        case SIGHUP:
        case SIGINT:
        case SIGQUIT:
        case SIGTERM:
            return true;
        case SIGKILL:
            return end.worked < limit;  // The system kills what goes on after SIGXCPU.
        default:
            return false;
    }
}

ProbeReport EndedBySignal(const ChildEnd& end, std::chrono::milliseconds limit) {
    if (IsFromOutside(end, limit))
        return Without(Outcome::Unknown, fmt::format("it is ended from outside, by signal {}", end.code));
    const bool hasNoTimeLeft = end.code == SIGXCPU || end.code == SIGKILL;
    return Without(Outcome::Failed, hasNoTimeLeft ? TooSlow(limit) : NameOfSignal(end.code));
}

// The clock that ended it saw little of its work.
ProbeReport CutOff(const ChildEnd& end, std::chrono::milliseconds limit) {
    constexpr double kMostOfTheTime = 0.8;
    ProbeReport report = Without(Outcome::Failed, TooSlow(limit));
    report.isStarved = end.worked < kMostOfTheTime * limit;
    return report;
}

// Of one that has loaded the plugin, or begun to.
ProbeReport ReportOfPlugin(const ChildEnd& end, std::chrono::milliseconds limit) {
    switch (end.how) {
        case ChildEnd::How::Stopped:
            return Without(Outcome::Stopped, "stopped");
        case ChildEnd::How::TooSlow:
            return CutOff(end, limit);
        case ChildEnd::How::TooMuch:
            return Without(Outcome::Failed, "it answers more than a report can hold");
        case ChildEnd::How::Signalled:
            return EndedBySignal(end, limit);
        case ChildEnd::How::Lost:
            return Without(Outcome::Unknown, "how its process ended is not known");
        case ChildEnd::How::Exited:
            break;
    }
    const auto answer = std::span(end.answer).subspan(1);
    if (end.code != 0 || answer.empty())
        return Without(Outcome::Failed, fmt::format("it ends the process, with {}", end.code));
    if (auto report = UnpackReport(answer)) return std::move(*report);
    return Without(Outcome::Failed, "its report makes no sense");
}

// Of one that did not come so far.
ProbeReport ComplaintOf(const ChildEnd& end) {
    if (end.how == ChildEnd::How::Stopped) return Without(Outcome::Stopped, "stopped");
    std::string words = CleanPluginText(std::string(end.answer.begin(), end.answer.end()).c_str());
    if (words.empty()) words = "it does not begin";
    return Without(Outcome::Unknown, "the process for plugins: " + words);
}

ProbeReport ReportOf(const ChildEnd& end, std::chrono::milliseconds limit) {
    const std::uint8_t greeting = end.answer.empty() ? 0 : end.answer[0];
    if (greeting != kUnderFullLimits && greeting != kUnderLowerLimits) return ComplaintOf(end);
    ProbeReport report = ReportOfPlugin(end, limit);
    if (greeting == kUnderLowerLimits && report.outcome == Outcome::Failed) {
        report.outcome = Outcome::Unknown;
        report.reason += " (under lower limits than plugins are given)";
    }
    return report;
}

ProbeReport Probed(const std::filesystem::path& file, const ProbeSettings& settings) {
    // By that name it is started even when its file was replaced meanwhile.
    constexpr const char* kThisProgram = "/proc/self/exe";
    constexpr std::chrono::seconds kToPrepare(30);
    const ChildLimits limits{
        .begin = kToPrepare, .time = settings.limit, .answer = kLargestReport, .stop = settings.stop};
    const ChildEnd end = RunChild(settings.program.empty() ? kThisProgram : settings.program,
                                  ProbeArguments(std::filesystem::absolute(file), settings.limit), limits);
    return ReportOf(end, settings.limit);
}

std::array<std::uint8_t, 4> LittleEndian(std::uint32_t bits) {
    return {static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
            static_cast<std::uint8_t>(bits >> 16), static_cast<std::uint8_t>(bits >> 24)};
}

// A share of the whole range of an unsigned number.
std::uint32_t Step(double share, std::uint32_t most) {
    return static_cast<std::uint32_t>(std::lround(std::clamp(share, 0.0, 1.0) * most));
}

struct BytesOf {
    std::array<std::uint8_t, 4> operator()(bool yes) const { return (*this)(yes ? 1.0 : 0.0); }
    std::array<std::uint8_t, 4> operator()(double number) const {
        // What 32 bits cannot hold is a default that no plugin means.
        const auto narrow = static_cast<float>(number);
        return LittleEndian(std::isfinite(narrow) ? std::bit_cast<std::uint32_t>(narrow) : 0);
    }
    std::array<std::uint8_t, 4> operator()(const ParameterColour& colour) const {
        return {static_cast<std::uint8_t>(Step(colour.red, 255)), static_cast<std::uint8_t>(Step(colour.green, 255)),
                static_cast<std::uint8_t>(Step(colour.blue, 255)), 0};
    }
    std::array<std::uint8_t, 4> operator()(const ParameterPosition& position) const {
        return LittleEndian(Step(position.x, 65535) | Step(position.y, 65535) << 16);
    }
    std::array<std::uint8_t, 4> operator()(const std::string&) const { return {}; }
};

}  // namespace

std::array<std::uint8_t, 4> DefaultBytes(const ParameterValue& value) { return std::visit(BytesOf{}, value); }

FileStamp StampOf(const std::filesystem::path& file) {
    constexpr std::int64_t kNanosecondsOfSecond = 1'000'000'000;
    struct stat state {};
    if (stat(file.c_str(), &state) != 0) return {};
    return {static_cast<std::uint64_t>(state.st_size),
            static_cast<std::int64_t>(state.st_mtim.tv_sec) * kNanosecondsOfSecond + state.st_mtim.tv_nsec};
}

ProbeReport ProbeFile(const std::filesystem::path& file, const ProbeSettings& settings) {
    const FileStamp stamp = StampOf(file);
    ProbeReport report;
    try {
        report = Probed(file, settings);
    } catch (const std::exception& error) {
        report = Without(Outcome::Unknown, CleanPluginText(error.what()));
    }
    const bool isVerdict = report.outcome == Outcome::Failed || report.outcome == Outcome::Skipped;
    if (isVerdict && StampOf(file) != stamp)
        report = Without(Outcome::Unknown, "it changed while it was looked at: " + report.reason);
    report.stamp = stamp;
    return report;
}

}  // namespace qfc::host
