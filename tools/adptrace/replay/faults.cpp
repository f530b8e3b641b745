// The handler of crashes. It uses nothing that a crash may have broken.
#include "tools/adptrace/replay/faults.h"

#include <unistd.h>

#include <atomic>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <string_view>

namespace adptrace::replay {

namespace {

constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT};
constexpr size_t kDigits = 20;

std::atomic<const Call *> under_way = nullptr;
std::atomic<int> exit_status = 0;

void say(std::string_view text) {
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text.data(), text.size());
}

void on_crash(int signal) {
    const Call *const call = under_way;
    say("adptrace: ");
    if (call != nullptr) {
        char line[kDigits];
        const char *const end = std::to_chars(line, line + sizeof line, call->line).ptr;
        say("line ");
        say({line, static_cast<size_t>(end - line)});
        say(": ");
        say(call->name);
        say(" crashed.\n");
    } else {
        say("the program crashed.\n");
    }
    if (exit_status >= 0) {
        _exit(exit_status);
    }
    std::signal(signal, SIG_DFL);
    raise(signal);
}

}  // namespace

UnderWay::UnderWay(const Call &call) : before_(under_way.exchange(&call)) {}

UnderWay::~UnderWay() {
    under_way = before_;
}

void report_crashes(int status) {
    exit_status = status;
    for (const int signal : kSignals) {
        std::signal(signal, on_crash);
    }
}

}  // namespace adptrace::replay
