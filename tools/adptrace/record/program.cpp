// Starts the program that is recorded.
#include "tools/adptrace/record/program.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cinttypes>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <vector>

#include "tools/adptrace/command.h"

namespace adptrace::record {
namespace {

constexpr char kLibrary[] = "libadptrace.so";
constexpr char kPreload[] = "LD_PRELOAD";
constexpr int kNotStarted = 127;
constexpr std::array kForwarded = {SIGTERM, SIGHUP};
constexpr std::array kIgnored = {SIGINT, SIGQUIT, SIGXFSZ}; /**< the terminal sends the program its own */

volatile pid_t child = 0;

bool is_program(const std::filesystem::path &path) {
    std::error_code error;
    return access(path.c_str(), X_OK) == 0 && !std::filesystem::is_directory(path, error);
}

sigset_t set_of_signals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : kForwarded) {
        sigaddset(&set, signal);
    }
    for (const int signal : kIgnored) {
        sigaddset(&set, signal);
    }
    return set;
}

void take_signals() {
    for (const int signal : kForwarded) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        if (before.sa_handler != SIG_IGN) {  // as under nohup
            struct sigaction action = {};
            action.sa_handler = [](int number) { kill(child, number); };
            sigaction(signal, &action, nullptr);
        }
    }
    for (const int signal : kIgnored) {
        std::signal(signal, SIG_IGN);
    }
}

/** What the program is told in its environment. */
void set_environment(const std::string &library, const std::string &recording, const Session &session) {
    // Behind what is there: the run-time library of a sanitizer wants to be the first.
    const char *before = std::getenv(kPreload);
    setenv(kPreload, before == nullptr || *before == '\0' ? library.c_str() : (before + (':' + library)).c_str(), 1);
    setenv(kFileVariable, recording.c_str(), 1);
    std::array<char, 128> text{};
    std::snprintf(text.data(), text.size(), kSessionFormat, session.process, session.began, session.device,
                  session.inode, session.follows, session.frames);
    setenv(kSessionVariable, text.data(), 1);
}

[[noreturn]] void become(const std::string &file, std::span<const std::string> command, int failure) {
    std::vector<char *> words;
    for (const std::string &word : command) {
        words.push_back(const_cast<char *>(word.c_str()));
    }
    words.push_back(nullptr);
    execvp(file.c_str(), words.data());
    const int error = errno;
    [[maybe_unused]] const auto written = write(failure, &error, sizeof error);
    _exit(kNotStarted);
}

Ending wait_for(pid_t process) {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    Ending ending = {.process = process};
    if (WIFSIGNALED(status)) {
        ending.signal = WTERMSIG(status);
    } else {
        ending.status = WEXITSTATUS(status);
    }
    return ending;
}

}  // namespace

std::string program_file(const std::string &name) {
    if (name.find('/') != std::string::npos) {
        if (!is_program(name)) {
            throw Refusal("'" + name + "': " + std::strerror(access(name.c_str(), X_OK) != 0 ? errno : EISDIR) + ".");
        }
        return name;
    }
    const char *path = std::getenv("PATH");
    std::istringstream folders(path == nullptr ? "/usr/bin:/bin" : path);
    for (std::string folder; std::getline(folders, folder, ':');) {
        const auto file = std::filesystem::path(folder.empty() ? "." : folder) / name;
        if (is_program(file)) {
            return file;
        }
    }
    throw Refusal("there is no program '" + name + "' in PATH; one of this folder is './" + name + "'.");
}

std::string recorder_library() {
    const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (const auto &file : {folder / kLibrary, folder / ADPTRACE_LIBRARIES / kLibrary}) {
        if (access(file.c_str(), R_OK) != 0) {
            continue;
        }
        std::string name = std::filesystem::canonical(file);
        if (name.find_first_of(" :") != std::string::npos) {
            throw Refusal("the loader takes no library with a blank or a colon in its name: '" + name + "'.");
        }
        return name;
    }
    throw Refusal(std::string("there is no ") + kLibrary + " beside adptrace, in '" + folder.string() + "'.");
}

Ending run_program(const std::string &file, std::span<const std::string> command, const std::string &library,
                   const std::string &recording, Session session) {
    std::array<int, 2> failure{};
    if (pipe2(failure.data(), O_CLOEXEC) != 0) {
        throw Refusal(std::string("pipe: ") + std::strerror(errno) + ".");
    }
    const sigset_t signals = set_of_signals();
    sigset_t before;
    sigprocmask(SIG_BLOCK, &signals, &before);
    child = fork();
    if (child == 0) {
        sigprocmask(SIG_SETMASK, &before, nullptr);
        session.process = getpid();
        set_environment(library, recording, session);
        become(file, command, failure[1]);
    }
    if (child < 0) {
        throw Refusal(std::string("fork: ") + std::strerror(errno) + ".");
    }
    take_signals();
    sigprocmask(SIG_SETMASK, &before, nullptr);
    close(failure[1]);
    const Ending ending = wait_for(child);
    int error = 0;
    const bool has_failed = read(failure[0], &error, sizeof error) == sizeof error;
    close(failure[0]);
    if (has_failed) {
        throw Refusal("'" + command[0] + "': " + std::strerror(error) + ".");
    }
    return ending;
}

}  // namespace adptrace::record
