#pragma once

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace qfc::test {

// What a run of the program came to. A signal that ended it counts as 128 and its number.
struct QfcResult {
    int exit = -1;
    std::string out;
    std::string err;
};

// The read of a file that fails, counted from the first write to it or from the start. When it was its turn there is a
// file at mark.
struct FailingRead {
    std::string file;
    int number = 1;
    std::string mark;
    bool fromStart = false;
};

// What happens before the program looks at a library for the n-th time: a command of the shell, when SQLite holds no
// lock of its file.
struct Meanwhile {
    std::string file;
    int look = 1;
    std::string mark;  // As above.
    std::string command;
};

// Under which conditions the program runs.
struct QfcWorld {
    bool unprivileged = false;                       // as a user who owns nothing
    std::optional<long> largestFile = std::nullopt;  // bytes: writing beyond fails, as on a full disk
    bool narrowPipe = false;                         // its output waits for the reader after a page
    std::optional<FailingRead> failingRead = std::nullopt;
    std::optional<Meanwhile> meanwhile = std::nullopt;
    bool terminal = false;       // its error stream is one
    bool outToTerminal = false;  // and so is its standard output, which comes with the errors
};

// One run of the built program, to be talked to while it runs.
class QfcProcess {
public:
    QfcProcess(const std::vector<std::string>& arguments, const QfcWorld& world);
    // Kills it if it still runs.
    ~QfcProcess();
    QfcProcess(const QfcProcess&) = delete;
    QfcProcess& operator=(const QfcProcess&) = delete;

    // The next line of its standard output; nothing when there are no more.
    std::optional<std::string> ReadLine();
    void Signal(int signal);
    // Waits until the program answers the signal itself. False when it ends before.
    bool WaitUntilCaught(int signal) const { return WaitUntilCaught(signal, true); }
    // Waits until it has answered, so that the next one would end it. False when it ends before.
    bool WaitUntilLeftToItself(int signal) const { return WaitUntilCaught(signal, false); }
    // From now on nobody reads its standard output.
    void StopReading();
    // The terminal takes nothing any more, as after Ctrl-S.
    void HoldTerminal();
    // Reads to the end of its output.
    QfcResult Wait();

private:
    bool ReadMore();
    bool WaitUntilCaught(int signal, bool caught) const;

    pid_t m_child = -1;
    int m_out = -1;
    int m_err = -1;
    int m_terminal = -1;     // the side of the program
    std::string m_read;      // all of its output so far
    std::size_t m_line = 0;  // where the next line begins
};

// Whether a user who owns nothing can start the program at all.
bool CanRunUnprivileged();
// Whether the system gives out terminals: a bare one may have no /dev/pts.
bool CanMakeTerminal();

}  // namespace qfc::test
