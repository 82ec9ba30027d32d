// A process for tests of how processes are run. Its argument says what it does.
#include <csignal>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kAnswer = 3;

void Answer(const char* bytes, std::size_t count) {
    while (count > 0) {
        const ssize_t written = write(kAnswer, bytes, count);
        if (written <= 0) return;
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
}

// Goes where a signal to its own group does not find it.
void Desert() {
    for (int number = 1; number < 32; ++number) std::signal(number, SIG_IGN);
    setpgid(0, getpgid(getppid()));
    Answer("away", 4);
    for (;;) pause();
}

// More than a pipe holds.
void AnswerMuch() {
    const std::vector<char> much(1 << 20, 'x');
    Answer(much.data(), much.size());
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view what = argc > 1 ? argv[1] : "";
    if (what == "desert") Desert();
    if (what == "stop") std::raise(SIGSTOP);
    if (what == "stop-parent") {
        kill(getppid(), SIGSTOP);
        AnswerMuch();
    }
    return 7;
}
