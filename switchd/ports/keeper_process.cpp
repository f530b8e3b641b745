// Holds descriptors by name until it is told to end, or the socket's file is gone.
#include "switchd/ports/keeper_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <exception>
#include <map>
#include <utility>

#include "switchd/ports/keeper_message.h"
#include "vdevice/sockets/listening_socket.h"

namespace switchd {
namespace {

using vdevice::ListeningSocket;
using vdevice::UniqueFd;

constexpr int kLookMilliseconds = 500;  // how often it looks whether the socket's file is there
constexpr int kReadyFd = STDERR_FILENO + 1;

bool is_same_user(int client) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    return getsockopt(client, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

bool is_readable_now(int fd) {
    pollfd waiting{fd, POLLIN, 0};
    return fd >= 0 && poll(&waiting, 1, 0) == 1;
}

class Holder {
  public:
    explicit Holder(const std::string &path) : socket_{path} {}

    void run() {
        while (!is_ended_ && socket_.is_in_place()) {
            pollfd waiting[] = {{socket_.fd(), POLLIN, 0}, {client_.get(), POLLIN, 0}};
            poll(waiting, 2, kLookMilliseconds);
            // What a killed daemon has sent is read before the next one is heard.
            while (!is_ended_ && is_readable_now(client_.get())) {
                serve_client();
            }
            if (waiting[0].revents != 0) {
                accept_client();
            }
        }
    }

  private:
    void accept_client() {
        UniqueFd client = socket_.accept();
        if (client && is_same_user(client.get())) {
            wait_on(client.get());
            client_ = std::move(client);
        }
    }

    void serve_client() {
        auto message = receive_message(client_.get());
        if (!message || !carry_out(*message)) {
            client_.reset();
        }
    }

    bool carry_out(KeeperMessage &message) {
        switch (message.verb) {
            case KeeperVerb::kHold:
                if (message.fd) {
                    held_[message.name] = std::move(message.fd);
                }
                return true;
            case KeeperVerb::kDrop:
                held_.erase(message.name);
                return true;
            case KeeperVerb::kList:
                return list();
            case KeeperVerb::kEnd:
                is_ended_ = true;
                return true;
        }
        return false;
    }

    bool list() {
        for (const auto &[name, fd] : held_) {
            if (!send_message(client_.get(), KeeperVerb::kHold, name, fd.get())) {
                return false;
            }
        }
        return send_message(client_.get(), KeeperVerb::kEnd);
    }

    // In this order: when the client hears the end, nobody can find the socket and nothing is held.
    UniqueFd client_;
    std::map<std::string, UniqueFd> held_;
    ListeningSocket socket_;
    bool is_ended_ = false;
};

/** Nothing of the daemon's is left open: neither its terminal nor its lock. */
void leave_daemon(int ready) {
    setsid();
    prctl(PR_SET_NAME, "adp-keeper");
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int signal : {SIGTERM, SIGINT, SIGQUIT, SIGHUP}) {
        std::signal(signal, SIG_DFL);
    }
    dup2(ready, kReadyFd);
    const int nothing = open("/dev/null", O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        dup2(nothing, standard);
    }
    closefrom(kReadyFd + 1);
    umask(S_IRWXG | S_IRWXO);
    if (chdir("/") != 0) {
        _exit(1);
    }
}

/** Each interface needs a descriptor. */
void allow_many_interfaces() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

[[noreturn]] void live_as_keeper(const std::string &path, int ready) {
    leave_daemon(ready);
    allow_many_interfaces();
    try {
        Holder holder{path};
        if (write(kReadyFd, "", 1) == 1) {
            close(kReadyFd);
            holder.run();
        }
    } catch (const std::exception &) {
        _exit(1);
    }
    _exit(0);
}

}  // namespace

bool start_keeper(const std::string &path) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        return false;
    }
    const UniqueFd reading{ends[0]};
    UniqueFd writing{ends[1]};
    const pid_t child = fork();
    if (child == 0) {
        // Its parent ends at once, so it is nobody's child that would have to wait for it.
        if (fork() != 0) {
            _exit(0);
        }
        live_as_keeper(path, writing.get());
    }
    writing.reset();
    if (child < 0 || waitpid(child, nullptr, 0) != child) {
        return false;
    }
    char octet = 0;
    return read(reading.get(), &octet, sizeof(octet)) == sizeof(octet);
}

}  // namespace switchd
