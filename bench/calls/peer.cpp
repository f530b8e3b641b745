// peer SOCKET CALLS COMMAND [ARGUMENT ...]: the other end of the shipped driver's socket. Runs the command, answers its
// driver calls with success, and checks their number.
//
// It answers when the caller waits. So every call executes the same instructions, also on a busy machine.
#include <poll.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <string>

#include "calls/call_table.h"
#include "calls/invoke.h"
#include "vdevice/remote/server.h"

extern "C" void *const instant_calls[];

namespace {

constexpr std::chrono::seconds kPatience{60};

/** The command that makes the calls. */
class Caller {
  public:
    explicit Caller(char **command) : process_(fork()) {
        if (process_ == 0) {
            execvp(command[0], command);
            std::perror(command[0]);
            _exit(EXIT_FAILURE);
        }
        descriptor_ = static_cast<int>(syscall(SYS_pidfd_open, process_, 0));
        if (process_ < 0 || descriptor_ < 0) {
            throw std::runtime_error("the command cannot be started");
        }
    }
    ~Caller() { close(descriptor_); }
    Caller(const Caller &) = delete;
    Caller &operator=(const Caller &) = delete;

    /** Readable when the command has ended. */
    [[nodiscard]] int poll_fd() const { return descriptor_; }

    void wait_until_it_waits() const {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (!waits()) {
            if (std::chrono::steady_clock::now() > end) {
                throw std::runtime_error("the caller does not wait for its answer");
            }
            sched_yield();
        }
    }

    [[nodiscard]] bool has_succeeded() const {
        int status = 0;
        return waitpid(process_, &status, 0) == process_ && WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS;
    }

  private:
    /** Whether it is in the system call that waits. The emulator uses a newer one than the program. */
    [[nodiscard]] bool waits() const {
        std::ifstream file("/proc/" + std::to_string(process_) + "/syscall");
        std::string call;
        if (!(file >> call)) {
            throw std::runtime_error("the system does not tell what the caller does");
        }
#ifdef SYS_poll
        if (call == std::to_string(SYS_poll)) {
            return true;
        }
#endif
        return call == std::to_string(SYS_ppoll);
    }

    pid_t process_;
    int descriptor_ = -1;
};

int64_t answer(calls::CallId id, const void *const *arguments) {
    // The logger takes a format, which the client has already formatted.
    return id == calls::CallId::Log_logging_func
               ? 0
               : calls::call_function(instant_calls[static_cast<size_t>(id)], id, arguments);
}

void serve(vdevice::remote::Server &server, const Caller &caller) {
    enum { kCaller, kServer, kPolled };
    constexpr int kWithoutLimit = -1;
    pollfd ready[kPolled] = {{caller.poll_fd(), POLLIN, 0}, {server.poll_fd(), POLLIN, 0}};
    while (ready[kCaller].revents == 0) {
        poll(ready, kPolled, kWithoutLimit);
        if (ready[kServer].revents != 0) {
            server.serve_ready();
        }
    }
}

int run(const char *socket, unsigned long long expected, char **command) {
    const Caller *caller = nullptr;
    vdevice::remote::Server server(
        [&caller](calls::CallId id, const void *const *arguments) {
            caller->wait_until_it_waits();
            return answer(id, arguments);
        },
        socket);
    const Caller started(command);
    caller = &started;
    serve(server, started);
    if (!started.has_succeeded()) {
        return EXIT_FAILURE;
    }
    if (server.counters().calls != expected) {
        throw std::runtime_error(std::to_string(server.counters().calls) + " driver calls arrived, not " +
                                 std::to_string(expected));
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char **arguments) {
    enum Argument { kProgram, kSocket, kCalls, kCommand };
    constexpr int kDecimal = 10;
    if (count <= kCommand) {
        std::fprintf(stderr, "usage: peer SOCKET CALLS COMMAND [ARGUMENT ...]\n");
        return EXIT_FAILURE;
    }
    try {
        return run(arguments[kSocket], std::strtoull(arguments[kCalls], nullptr, kDecimal), &arguments[kCommand]);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "peer: %s\n", error.what());
        return EXIT_FAILURE;
    }
}
