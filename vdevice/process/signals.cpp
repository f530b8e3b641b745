// Signals and limits of the process.
#include "vdevice/process/signals.h"

#include <sys/resource.h>
#include <sys/signalfd.h>

#include <csignal>

#include "vdevice/io/error.h"

namespace vdevice {

UniqueFd open_signals(bool has_file) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGTERM, SIGINT, SIGQUIT}) {
        sigaddset(&signals, signal);
    }
    struct sigaction before {};
    if (has_file || (sigaction(SIGHUP, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)) {
        std::signal(SIGHUP, SIG_DFL);
        sigaddset(&signals, SIGHUP);
    }
    UniqueFd fd{signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK)};
    if (!fd || sigprocmask(SIG_BLOCK, &signals, nullptr) != 0) {
        throw io::error_from_errno("set up signals");
    }
    std::signal(SIGPIPE, SIG_IGN);
    return fd;
}

void allow_many_descriptors() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

}  // namespace vdevice
