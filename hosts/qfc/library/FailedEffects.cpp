#include "hosts/qfc/library/FailedEffects.h"

#include "api/QFCLib.h"
#include "hosts/qfc/cli/Console.h"
#include "hosts/qfc/library/EffectNames.h"
#include "hosts/qfc/library/Session.h"

#include <sstream>

namespace qfc::host {
namespace {

constexpr const char* kSection = "Effects that failed";

// A path may hold what no key can.
std::string KeyOf(const std::string& path) { return GuidToText(NamedGuid("file:" + path)); }

void Write(const char* key, const char* value) {
    WritePrivateProfileStringA(kSection, key, value, SettingsPath().c_str());
}

}  // namespace

std::optional<FailedEffect> RecallFailure(const std::string& path) {
    char text[4096];
    GetPrivateProfileStringA(kSection, KeyOf(path).c_str(), "", text, sizeof text, SettingsPath().c_str());
    std::istringstream words(text);
    FailedEffect failure;
    if (!(words >> failure.stamp.size >> failure.stamp.time)) return std::nullopt;
    std::getline(words >> std::ws, failure.reason);
    return failure;
}

void RememberFailure(const std::string& path, const FailedEffect& failure) {
    const std::string text =
        std::to_string(failure.stamp.size) + " " + std::to_string(failure.stamp.time) + " " + Printable(failure.reason);
    Write(KeyOf(path).c_str(), text.c_str());
}

void ForgetFailure(const std::string& path) { Write(KeyOf(path).c_str(), nullptr); }

void ForgetAllFailures() { Write(nullptr, nullptr); }

}  // namespace qfc::host
