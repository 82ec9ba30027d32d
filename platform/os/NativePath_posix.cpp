#include "platform/os/Files.h"
#include "platform/text/CodePages.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <sys/stat.h>

namespace qfc {
namespace {

// The application folder is spelled in both ways by those who install it.
constexpr std::array<std::string_view, 2> kApplicationFolder = {"Orvel.dat", "orvel.dat"};

bool Exists(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0;
}

// A file that is still to be made is literal too when its folder is there and its own name has no backslash.
bool IsLiteral(const std::string& path) {
    if (path.find('\\') == std::string::npos || Exists(path)) return true;
    const auto slash = path.rfind('/');
    if (slash == std::string::npos || slash == 0 || path.find('\\', slash) != std::string::npos) return false;
    return Exists(path.substr(0, slash));
}

// The component as it is found behind `folder`.
std::string_view SpellComponent(const std::string& folder, std::string_view component) {
    if (std::find(kApplicationFolder.begin(), kApplicationFolder.end(), component) == kApplicationFolder.end()) {
        return component;
    }
    if (Exists(folder + std::string(component))) return component;
    for (const std::string_view spelling : kApplicationFolder) {
        if (Exists(folder + std::string(spelling))) return spelling;
    }
    return component;
}

}  // namespace

std::string NativePath(const char* path) {
    std::string native = AnsiToUtf8(path != nullptr ? path : "");
    if (!IsLiteral(native)) std::replace(native.begin(), native.end(), '\\', '/');
    if (Exists(native)) return native;
    std::string spelled;
    std::string_view rest = native;
    for (auto slash = rest.find('/'); slash != std::string_view::npos; slash = rest.find('/')) {
        spelled += SpellComponent(spelled, rest.substr(0, slash));
        spelled += '/';
        rest.remove_prefix(slash + 1);
    }
    spelled += SpellComponent(spelled, rest);
    return spelled;
}

}  // namespace qfc
