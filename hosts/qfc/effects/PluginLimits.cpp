#include "hosts/qfc/effects/PluginLimits.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>
#include <vector>

#if defined(__has_feature)
#define QFC_HAS_FEATURE(x) __has_feature(x)
#else
#define QFC_HAS_FEATURE(x) 0
#endif

namespace qfc::host {

namespace {

constexpr rlim_t kMemory = rlim_t{1} << 30;
constexpr rlim_t kWrittenFile = rlim_t{16} << 20;

// The sanitizers lay out terabytes of addresses.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || QFC_HAS_FEATURE(address_sanitizer) || \
    QFC_HAS_FEATURE(thread_sanitizer)
constexpr bool kIsMemoryLimited = false;
#else
constexpr bool kIsMemoryLimited = true;
#endif

[[noreturn]] void Throw(int error, const char* what) { throw std::system_error(error, std::generic_category(), what); }

// False when a lower one stays.
bool Limit(__rlimit_resource resource, rlim_t soft, rlim_t hard) {
    rlimit before{};
    if (getrlimit(resource, &before) != 0) Throw(errno, "cannot read a limit");
    const rlimit limit{std::min(soft, before.rlim_max), std::min(hard, before.rlim_max)};
    if (setrlimit(resource, &limit) != 0) Throw(errno, "cannot enter a limit");
    return limit.rlim_cur == soft;
}

#if defined(__x86_64__) || defined(__aarch64__)

#if defined(__x86_64__)
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_X86_64;
#else
constexpr std::uint32_t kArchitecture = AUDIT_ARCH_AARCH64;
#endif

// Which system calls are refused, as the kernel reads it.
class CallFilter {
public:
    CallFilter() {
        Load(offsetof(seccomp_data, arch));
        m_rules.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, kArchitecture, 1, 0));
        Return(Refusal(ENOSYS));
        Load(offsetof(seccomp_data, nr));
#if defined(__x86_64__)
        constexpr std::uint32_t kOtherNumbers = 0x40000000;  // the same calls with addresses of 32 bits
        m_rules.push_back(BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, kOtherNumbers, 0, 1));
        Return(Refusal(ENOSYS));
        Refuse(SYS_fork, EAGAIN);
        Refuse(SYS_vfork, EAGAIN);
#endif
        // What it is asked for cannot be seen; without it the C library uses the older one.
        Refuse(SYS_clone3, ENOSYS);
        Refuse(SYS_setsid, EPERM);
        Refuse(SYS_setpgid, EPERM);
        OfCall(SYS_prctl, BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, PR_SET_PDEATHSIG, 0, 1), EPERM);
        OfCall(SYS_clone, BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_THREAD, 1, 0), EAGAIN);
        Return(SECCOMP_RET_ALLOW);
    }

    // A kernel without filters refuses it; then the plugin is as free as it was.
    void Enter() {
        const sock_fprog program{static_cast<unsigned short>(m_rules.size()), m_rules.data()};
        prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
        syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_TSYNC, &program);
    }

private:
    static std::uint32_t Refusal(int error) { return SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error); }
    void Load(std::size_t offset) {
        m_rules.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset)));
    }
    void Return(std::uint32_t verdict) { m_rules.push_back(BPF_STMT(BPF_RET | BPF_K, verdict)); }
    void Refuse(std::uint32_t call, int error) {
        m_rules.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
        Return(Refusal(error));
    }
    // A call that hangs on its first argument: the test goes on to the refusal, or over it.
    void OfCall(std::uint32_t call, const sock_filter& test, int error) {
        m_rules.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 4));
        Load(offsetof(seccomp_data, args));  // the lower half
        m_rules.push_back(test);
        Return(Refusal(error));
        Return(SECCOMP_RET_ALLOW);
    }

    std::vector<sock_filter> m_rules;
};

void StayAlone() { CallFilter().Enter(); }

#else

void StayAlone() {}

#endif

// The signal comes only from a parent that is still there to die.
void EndWithParent(int answerDescriptor) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    pollfd answer{answerDescriptor, 0, 0};
    if (poll(&answer, 1, 0) > 0 && (answer.revents & POLLERR) != 0) Throw(EPIPE, "nobody waits for an answer");
}

}  // namespace

bool EnterPluginLimits(std::chrono::milliseconds time, int answerDescriptor) {
    const auto seconds = static_cast<rlim_t>((time.count() + 999) / 1000);
    EndWithParent(answerDescriptor);
    bool full = Limit(RLIMIT_CPU, seconds, seconds + 1);
    if (kIsMemoryLimited && !Limit(RLIMIT_AS, kMemory, kMemory)) full = false;
    if (!Limit(RLIMIT_FSIZE, kWrittenFile, kWrittenFile)) full = false;
    Limit(RLIMIT_CORE, 0, 0);
    if (chdir("/") != 0) Throw(errno, "cannot leave this folder");
    StayAlone();
    return full;
}

}  // namespace qfc::host
