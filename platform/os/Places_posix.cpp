#include "platform/os/Files.h"
#include "platform/os/LastError.h"
#include "platform/os/Places.h"
#include "platform/text/CodePages.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <pwd.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace qfc {
namespace {

// Native paths with a closing slash; empty while the host has set none.
struct Places {
    std::mutex mutex;
    std::string dataFolder;
    std::string hostFolder;
    bool frozen = false;
};

Places& ThePlaces() {
    static Places places;
    return places;
}

std::string AsFolder(std::string path) {
    if (path.empty() || path.back() != '/') path += '/';
    return path;
}

// Empty for a path that names nothing.
std::string AbsoluteFolder(const std::string& path) {
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? std::string() : AsFolder(absolute.string());
}

std::string FromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string HomeFolder() {
    if (const std::string home = FromEnvironment("HOME"); !home.empty()) return home;
    std::vector<char> buffer(16384);
    passwd entry{};
    passwd* found = nullptr;
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) return "/";
    return found->pw_dir;
}

std::string DefaultDataFolder() {
    const std::string shared = FromEnvironment("XDG_DATA_HOME");
    // The variable counts only when it holds an absolute path.
    const bool usable = !shared.empty() && shared.front() == '/';
    return AsFolder(usable ? shared : AsFolder(HomeFolder()) + ".local/share") + "Orvel/Cinelume/";
}

std::string ExecutableFolder() {
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? "./" : AsFolder(executable.parent_path().string());
}

// Called with the places locked.
std::string DataFolder(const Places& places) {
    if (!places.dataFolder.empty()) return places.dataFolder;
    const std::string chosen = FromEnvironment("QFCLIB_DATA_DIR");
    return chosen.empty() ? DefaultDataFolder() : AbsoluteFolder(chosen);
}

bool SetFolder(std::string Places::*folder, const char* path) {
    if (path == nullptr || *path == '\0') return false;
    const std::string absolute = AbsoluteFolder(NativePath(path));
    Places& places = ThePlaces();
    const std::lock_guard lock(places.mutex);
    if (places.frozen || absolute.empty()) return false;
    places.*folder = absolute;
    return true;
}

enum class Then { kNothing, kFreeze };

// Reading and freezing are one step: no host can move the folder in between. What does not fit freezes nothing.
int AnswerDataFolder(char* buffer, int size, Then then, const std::function<bool(const char*)>& suits = nullptr) {
    std::string native;
    {
        Places& places = ThePlaces();
        const std::lock_guard lock(places.mutex);
        native = DataFolder(places);
        const std::string folder = Utf8ToAnsi(native);
        if (buffer == nullptr || size < 0 || folder.size() >= static_cast<std::size_t>(size) ||
            (suits && !suits(folder.c_str()))) {
            SetLastError(ERROR_INSUFFICIENT_BUFFER);
            return 0;
        }
        if (then == Then::kFreeze) places.frozen = true;
        std::memcpy(buffer, folder.c_str(), folder.size() + 1);
    }
    MakeFolders(native);
    return 1;
}

}  // namespace

std::string HostFolder() {
    Places& places = ThePlaces();
    const std::lock_guard lock(places.mutex);
    if (!places.hostFolder.empty()) return Utf8ToAnsi(places.hostFolder);
    const std::string chosen = FromEnvironment("QFCLIB_HOST_DIR");
    return Utf8ToAnsi(chosen.empty() ? ExecutableFolder() : AbsoluteFolder(chosen));
}

std::string HostDataFile(const char* folder, const char* name) {
    static const std::string host = HostFolder();
    const std::string path = host + folder + '\\' + name;
    return path.size() < MAX_PATH ? path : std::string();
}

bool SetDataFolder(const char* path) { return SetFolder(&Places::dataFolder, path); }

bool SetHostFolder(const char* path) { return SetFolder(&Places::hostFolder, path); }

int FreezePlaces(char* buffer, int size, const std::function<bool(const char*)>& suits) {
    return AnswerDataFolder(buffer, size, Then::kFreeze, suits);
}

}  // namespace qfc

int GetAppDataFolder(char* buffer, int size, int, int) {
    return qfc::AnswerDataFolder(buffer, size, qfc::Then::kNothing);
}
