#include "hosts/qfc/library/FailedEffects.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Console.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/Session.h"

#include <sstream>

namespace qfc::host {
namespace {

constexpr const char* kFailed = "Effects that failed";
constexpr const char* kSkipped = "Effect files without an effect";

// A path may hold what no key can.
std::string KeyOf(const std::string& path) { return GuidToText(NamedGuid("file:" + path)); }

void Write(const char* section, const char* key, const char* value) {
    WritePrivateProfileStringA(section, key, value, SettingsPath().c_str());
}

std::optional<FailedEffect> Recall(const char* section, const std::string& path) {
    char text[4096];
    GetPrivateProfileStringA(section, KeyOf(path).c_str(), "", text, sizeof text, SettingsPath().c_str());
    std::istringstream words(text);
    FailedEffect failure;
    if (!(words >> failure.stamp.size >> failure.stamp.time)) return std::nullopt;
    std::getline(words >> std::ws, failure.reason);
    return failure;
}

void Remember(const char* section, const std::string& path, const FailedEffect& failure) {
    const std::string text =
        std::to_string(failure.stamp.size) + " " + std::to_string(failure.stamp.time) + " " + Printable(failure.reason);
    Write(section, KeyOf(path).c_str(), text.c_str());
}

}  // namespace

std::optional<FailedEffect> RecallFailure(const std::string& path) { return Recall(kFailed, path); }
void RememberFailure(const std::string& path, const FailedEffect& failure) { Remember(kFailed, path, failure); }

std::optional<FailedEffect> RecallSkipped(const std::string& path) { return Recall(kSkipped, path); }
void RememberSkipped(const std::string& path, const FailedEffect& skipped) { Remember(kSkipped, path, skipped); }

void ForgetFailure(const std::string& path) {
    for (const char* section : {kFailed, kSkipped}) Write(section, KeyOf(path).c_str(), nullptr);
}

void ForgetAllFailures() {
    for (const char* section : {kFailed, kSkipped}) Write(section, nullptr, nullptr);
}

}  // namespace qfc::host
