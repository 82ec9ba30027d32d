#include "platform/os/Descriptor.h"
#include "platform/os/ErrnoError.h"
#include "platform/os/Files.h"
#include "platform/os/IniDocument.h"
#include "platform/os/IniStore.h"
#include "platform/os/LastError.h"
#include "platform/text/CodePages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <list>
#include <mutex>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qfc {
namespace {

using Document = std::shared_ptr<const IniDocument>;

constexpr std::size_t kMostKept = 16;
constexpr std::time_t kCoarsestClockSeconds = 2;

struct Stamp {
    dev_t device;
    ino_t inode;
    off_t size;
    std::array<std::time_t, 2> seconds;
    std::array<long, 2> nanoseconds;
    bool operator==(const Stamp&) const = default;
};

Stamp StampOf(const struct stat& status) {
    return {status.st_dev,
            status.st_ino,
            status.st_size,
            {status.st_mtim.tv_sec, status.st_ctim.tv_sec},
            {status.st_mtim.tv_nsec, status.st_ctim.tv_nsec}};
}

// A file that changed a moment ago may change again without another time to show for it.
bool IsSettled(const Stamp& stamp) {
    return std::time(nullptr) - std::max(stamp.seconds[0], stamp.seconds[1]) > kCoarsestClockSeconds;
}

struct Kept {
    std::string path;
    std::string codePage;
    Stamp stamp;
    bool settled;  // When it was read.
    Document document;
};

// The files read last, the latest first.
class KeptFiles {
public:
    static KeptFiles& Instance() {
        static KeptFiles files;
        return files;
    }

    std::optional<Kept> Find(const std::string& path) {
        const std::lock_guard lock(m_mutex);
        const auto found = Position(path);
        if (found == m_files.end() || found->codePage != AnsiCodePage()) return std::nullopt;
        m_files.splice(m_files.begin(), m_files, found);
        return m_files.front();
    }

    void Keep(Kept kept) {
        const std::lock_guard lock(m_mutex);
        const auto found = Position(kept.path);
        if (found != m_files.end()) m_files.erase(found);
        m_files.push_front(std::move(kept));
        if (m_files.size() > kMostKept) m_files.pop_back();
    }

private:
    std::list<Kept>::iterator Position(const std::string& path) {
        return std::find_if(m_files.begin(), m_files.end(), [&](const Kept& kept) { return kept.path == path; });
    }

    std::mutex m_mutex;
    std::list<Kept> m_files;
};

bool ReadAll(const Descriptor& file, std::string& bytes) {
    std::array<char, 65536> buffer;
    for (;;) {
        const ssize_t count = read(file.Get(), buffer.data(), buffer.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return count == 0;
        bytes.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

// Neither a device nor a pipe is waited for.
bool ReadRegularFile(const std::string& path, std::string& bytes, Stamp& stamp) {
    const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status;
    if (!file.IsOpen() || fstat(file.Get(), &status) != 0) return FailWithErrno();
    if (!S_ISREG(status.st_mode)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    stamp = StampOf(status);
    return ReadAll(file, bytes) || FailWithErrno();
}

Document ReadProfile(const std::string& path, const std::optional<Kept>& kept) {
    Kept fresh{path, AnsiCodePage(), {}, false, nullptr};
    std::string bytes;
    if (!ReadRegularFile(path, bytes, fresh.stamp)) return nullptr;
    fresh.settled = IsSettled(fresh.stamp);
    if (kept && kept->document->ComesFrom(bytes)) {
        fresh.document = kept->document;
    } else {
        fresh.document = std::make_shared<const IniDocument>(std::move(bytes));
    }
    KeptFiles::Instance().Keep(fresh);
    return fresh.document;
}

// The file itself, not a link to it: the new one has to come where the link points to.
std::string WithoutLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(path.c_str(), nullptr), &std::free);
    return resolved != nullptr ? std::string(resolved.get()) : path;
}

// Held until it is closed. The file stays: whoever removed it would part those who wait from those who come.
Descriptor LockForWriting(const std::string& path) {
    Descriptor lock(open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666));
    while (lock.IsOpen() && flock(lock.Get(), LOCK_EX) != 0) {
        if (errno != EINTR) return Descriptor(-1);
    }
    return lock;
}

// The bytes of a file that may be written over; none when there is no file.
bool ReadForWriting(const std::string& path, std::string& bytes) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return errno == ENOENT || FailWithErrno();
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    Stamp stamp;
    return ReadRegularFile(path, bytes, stamp);
}

}  // namespace

std::shared_ptr<const IniDocument> OpenProfile(const std::string& path) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        FailWithErrno();
        return nullptr;
    }
    const std::optional<Kept> kept = KeptFiles::Instance().Find(path);
    if (kept && kept->settled && kept->stamp == StampOf(status)) return kept->document;
    return ReadProfile(path, kept);
}

bool ChangeProfile(const std::string& path, const ProfileChange& change) {
    const std::string target = WithoutLinks(path);
    const Descriptor lock = LockForWriting(target);
    if (!lock.IsOpen()) return FailWithErrno();
    std::string bytes;
    if (!ReadForWriting(target, bytes)) return false;
    const IniDocument document(std::move(bytes));
    const std::optional<std::string> text = change(document);
    return !text || WriteFileDurably(target, document.BytesOf(*text));
}

}  // namespace qfc
