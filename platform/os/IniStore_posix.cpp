#include "platform/os/Descriptor.h"
#include "platform/os/ErrnoError.h"
#include "platform/os/FileStamp.h"
#include "platform/os/Files.h"
#include "platform/os/IniDocument.h"
#include "platform/os/IniStore.h"
#include "platform/os/LastError.h"
#include "platform/text/CodePages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <fcntl.h>
#include <list>
#include <mutex>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace qfc {
namespace {

using Document = std::shared_ptr<const IniDocument>;

constexpr std::size_t kMostKept = 16;
constexpr std::time_t kCoarsestClockSeconds = 2;

// A file that changed a moment ago may change again without another time to show for it.
bool IsSettled(const FileStamp& stamp, std::time_t now) {
    return now - std::max(stamp.seconds[0], stamp.seconds[1]) > kCoarsestClockSeconds;
}

struct Kept {
    std::string path;
    std::string codePage;
    FileStamp stamp;
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

    std::optional<Kept> Find(const std::string& path, std::string_view codePage) {
        const std::lock_guard lock(m_mutex);
        const auto found = Position(path, codePage);
        if (found == m_files.end()) return std::nullopt;
        m_files.splice(m_files.begin(), m_files, found);
        return m_files.front();
    }

    void Keep(Kept kept) {
        const std::lock_guard lock(m_mutex);
        const auto found = Position(kept.path, kept.codePage);
        if (found != m_files.end()) m_files.erase(found);
        m_files.push_front(std::move(kept));
        if (m_files.size() > kMostKept) m_files.pop_back();
    }

private:
    std::list<Kept>::iterator Position(const std::string& path, std::string_view codePage) {
        return std::find_if(m_files.begin(), m_files.end(),
                            [&](const Kept& kept) { return kept.path == path && kept.codePage == codePage; });
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
bool ReadRegularFile(const std::string& path, std::string& bytes, FileStamp& stamp) {
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

// The code page that a document depends on; none when its texts are UTF-8.
std::string CodePageOf(ProfileTexts texts) { return texts == ProfileTexts::Utf8 ? "" : AnsiCodePage(); }

Document ReadProfile(const std::string& path, ProfileTexts texts, std::time_t now, const std::optional<Kept>& kept) {
    Kept fresh{path, CodePageOf(texts), {}, false, nullptr};
    std::string bytes;
    if (!ReadRegularFile(path, bytes, fresh.stamp)) return nullptr;
    fresh.settled = IsSettled(fresh.stamp, now);
    if (kept && kept->document->ComesFrom(bytes)) {
        fresh.document = kept->document;
    } else {
        fresh.document = std::make_shared<const IniDocument>(std::move(bytes), texts);
    }
    KeptFiles::Instance().Keep(fresh);
    return fresh.document;
}

// Whoever may write the profile can hold its lock, whatever the mask and the group of the one who made it.
void LetWritersHold(const Descriptor& lock, const std::string& path) {
    struct stat profile;
    struct stat status;
    if (stat(path.c_str(), &profile) != 0 || fstat(lock.Get(), &status) != 0) return;
    const mode_t writers = profile.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH);
    const mode_t holders = writers | writers << 1;
    const bool sameOwners = status.st_uid == profile.st_uid && status.st_gid == profile.st_gid;
    const bool suits = sameOwners && (status.st_mode & holders) == holders;
    // What holds something is no lock of ours, whatever it is called.
    if (suits || !S_ISREG(status.st_mode) || status.st_nlink != 1 || status.st_size != 0) return;
    // Where it cannot have the group of the profile, all may hold it. Only its owner can do any of this; others hold it
    // already.
    const mode_t all = TakeOwnersOf(lock, profile) ? holders : holders | (holders & S_IRWXG) >> 3;
    static_cast<void>(fchmod(lock.Get(), (status.st_mode | all) & 0777));
}

// Without waiting, lest a pipe of that name stop every writer; not through a link, lest the permissions of another file
// be widened. One that is there is not opened as if it were to be made: in a folder that all share, systems refuse that
// for the files of others.
Descriptor OpenLock(const std::string& path, int access) {
    const int flags = access | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;
    Descriptor lock(open(path.c_str(), flags));
    return lock.IsOpen() || errno != ENOENT ? std::move(lock) : Descriptor(open(path.c_str(), flags | O_CREAT, 0666));
}

// For writing, since a network file system locks nothing else exclusively; for reading where only that is allowed, as
// the lock of another user may be.
Descriptor OpenLock(const std::string& path) {
    Descriptor lock = OpenLock(path, O_RDWR);
    return lock.IsOpen() || (errno != EACCES && errno != EROFS) ? std::move(lock) : OpenLock(path, O_RDONLY);
}

// Held until it is closed. The file stays: whoever removed it would part those who wait from those who come.
Descriptor LockForWriting(const std::string& path) {
    Descriptor lock = OpenLock(path + ".lock");
    if (lock.IsOpen()) LetWritersHold(lock, path);
    while (lock.IsOpen() && flock(lock.Get(), LOCK_EX) != 0) {
        if (errno != EINTR) return Descriptor(-1);
    }
    return lock;
}

// Nobody writes a read-only file, not even those whom the system would let.
bool MayWrite(const std::string& path, const struct stat& status) {
    return (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0 &&
           faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

// The bytes of a file that may be written over; none when there is no file.
bool ReadForWriting(const std::string& path, std::string& bytes) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) return errno == ENOENT || FailWithErrno();
    if (!MayWrite(path, status)) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    FileStamp stamp;
    return ReadRegularFile(path, bytes, stamp);
}

bool ChangesNothing(const std::string& path, ProfileTexts texts, const ProfileChange& change) {
    const Document document = OpenProfile(path, texts);
    if (document != nullptr) return !change(*document);
    return GetLastError() == ERROR_FILE_NOT_FOUND && !change(IniDocument("", texts));
}

}  // namespace

FileStamp StampOf(const struct stat& status) {
    return {status.st_dev,
            status.st_ino,
            status.st_size,
            {status.st_mtim.tv_sec, status.st_ctim.tv_sec},
            {status.st_mtim.tv_nsec, status.st_ctim.tv_nsec}};
}

std::shared_ptr<const IniDocument> OpenProfile(const std::string& path, ProfileTexts texts, std::time_t now) {
    struct stat status;
    if (stat(path.c_str(), &status) != 0) {
        FailWithErrno();
        return nullptr;
    }
    const std::optional<Kept> kept = KeptFiles::Instance().Find(path, CodePageOf(texts));
    if (kept && kept->settled && kept->stamp == StampOf(status)) return kept->document;
    return ReadProfile(path, texts, now, kept);
}

bool ChangeProfile(const std::string& path, ProfileTexts texts, const ProfileChange& change) {
    if (ChangesNothing(path, texts, change)) return true;
    const std::string target = WithoutLinks(path);
    const Descriptor lock = LockForWriting(target);
    if (!lock.IsOpen()) return FailWithErrno();
    std::string bytes;
    if (!ReadForWriting(target, bytes)) return false;
    const IniDocument document(std::move(bytes), texts);
    const std::optional<std::string> text = change(document);
    return !text || WriteFileDurably(target, document.BytesOf(*text));
}

}  // namespace qfc
