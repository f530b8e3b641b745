// Starts the shell, and waits for signals: of its end, or from whoever wants to end adptrace.
#include "tools/adptrace/reduce/shell_command.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/adptrace/command.h"

namespace adptrace {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;

constexpr int kAwaited[] = {SIGCHLD, SIGINT, SIGTERM, SIGHUP};
constexpr const char *kPlaceholder = "{}";
constexpr steady_clock::time_point kNever = steady_clock::time_point::max();

/** A name as a word of the shell. */
std::string quoted(const std::string &name) {
    std::string word = "'";
    for (const char c : name) {
        word += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return word + "'";
}

bool has_ended(pid_t process) {
    siginfo_t info{};
    // It is not reaped yet: until then its group's number belongs to no other one.
    return waitid(P_PID, static_cast<id_t>(process), &info, WEXITED | WNOHANG | WNOWAIT) == 0 && info.si_pid == process;
}

/** @return the status of waitpid() */
int end_group(pid_t process) {
    ::kill(-process, SIGKILL);
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

/** Waits for a signal, at most until @p deadline if that is ever. @return the signal, -1 when time is up */
int await(const sigset_t &signals, steady_clock::time_point deadline) {
    for (;;) {
        const nanoseconds left = std::max(nanoseconds(0), nanoseconds(deadline - steady_clock::now()));
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
        const timespec time = {static_cast<time_t>(seconds.count()), static_cast<long>((left - seconds).count())};
        const int signal = ::sigtimedwait(&signals, nullptr, deadline == kNever ? nullptr : &time);
        if (signal >= 0 || errno != EINTR) {
            return signal;
        }
    }
}

}  // namespace

ShellCommand::ShellCommand(std::string command, std::optional<milliseconds> limit)
    : command_(std::move(command)), limit_(limit) {
    sigemptyset(&awaited_);
    for (const int signal : kAwaited) {
        sigaddset(&awaited_, signal);
    }
    sigprocmask(SIG_BLOCK, &awaited_, &before_);
}

ShellCommand::~ShellCommand() {
    sigprocmask(SIG_SETMASK, &before_, nullptr);
}

std::string ShellCommand::script(const std::string &file) const {
    if (command_.find(kPlaceholder) == std::string::npos) {
        return command_ + " " + quoted(file);
    }
    std::string script = command_;
    const std::string word = quoted(file);
    for (size_t at = 0; (at = script.find(kPlaceholder, at)) != std::string::npos; at += word.size()) {
        script.replace(at, std::strlen(kPlaceholder), word);
    }
    return script;
}

pid_t ShellCommand::start(const std::string &file) const {
    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDWR, 0);
    posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&files, STDIN_FILENO, STDERR_FILENO);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK);
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setsigmask(&attributes, &before_);
    std::string words[] = {"sh", "-c", script(file)};
    char *const arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    pid_t process = 0;
    const int error = posix_spawn(&process, "/bin/sh", &files, &attributes, arguments, environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    if (error != 0) {
        throw Refusal(std::string("the shell cannot be started: ") + std::strerror(error) + ".");
    }
    return process;
}

std::optional<int> ShellCommand::run(const std::string &file) const {
    const auto deadline = limit_ ? steady_clock::now() + *limit_ : kNever;
    const pid_t process = start(file);
    while (!has_ended(process)) {
        const int signal = await(awaited_, deadline);
        if (signal == SIGCHLD) {
            continue;
        }
        end_group(process);
        if (signal >= 0) {
            throw Interrupted(signal);
        }
        return std::nullopt;
    }
    const int status = end_group(process);
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignalled + WTERMSIG(status);
}

}  // namespace adptrace
