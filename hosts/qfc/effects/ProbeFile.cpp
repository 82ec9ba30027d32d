#include "hosts/qfc/effects/ChildProcess.h"
#include "hosts/qfc/effects/ProbeArguments.h"
#include "hosts/qfc/effects/ReportBytes.h"
#include "hosts/qfc/effects/SamplePhotographs.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <csignal>
#include <fmt/format.h>
#include <sys/stat.h>

namespace qfc::host {

namespace {

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
        default:
            return fmt::format("it is ended by signal {}", signal);
    }
}

std::string TooSlow(std::chrono::milliseconds limit) {
    return fmt::format("it takes longer than {} s", static_cast<double>(limit.count()) / 1000);
}

ProbeReport Without(ProbeReport::Outcome outcome, std::string reason) {
    ProbeReport report;
    report.outcome = outcome;
    report.reason = std::move(reason);
    return report;
}

ProbeReport ReportOf(const ChildEnd& end, std::chrono::milliseconds limit) {
    using Outcome = ProbeReport::Outcome;
    switch (end.how) {
        case ChildEnd::How::Stopped:
            return Without(Outcome::Stopped, "stopped");
        case ChildEnd::How::TooSlow:
            return Without(Outcome::Failed, TooSlow(limit));
        case ChildEnd::How::TooMuch:
            return Without(Outcome::Failed, "it answers more than a report can hold");
        case ChildEnd::How::Signalled:
            if (end.code == SIGXCPU) return Without(Outcome::Failed, TooSlow(limit));
            return Without(Outcome::Failed, NameOfSignal(end.code));
        case ChildEnd::How::Exited:
            break;
    }
    if (end.code != 0 || end.answer.empty())
        return Without(Outcome::Failed, fmt::format("it ends the process, with {}", end.code));
    if (auto report = UnpackReport(end.answer)) return std::move(*report);
    return Without(Outcome::Failed, "its report makes no sense");
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
    std::filesystem::path program = settings.program;
    if (program.empty()) program = std::filesystem::read_symlink("/proc/self/exe");
    const std::filesystem::path photographs = PhotographFolder(std::filesystem::canonical(program));
    if (!ArePhotographsIn(photographs))
        throw std::runtime_error("the sample photographs are missing in " + photographs.string());
    const FileStamp stamp = StampOf(file);
    const ChildLimits limits{settings.limit, kLargestReport, settings.stop};
    const ChildEnd end = RunChild(program, ProbeArguments(std::filesystem::absolute(file), settings.limit), limits);
    ProbeReport report = ReportOf(end, settings.limit);
    report.stamp = stamp;
    return report;
}

}  // namespace qfc::host
