// Stands in front of the C library's epoll_ctl().
#include "tests/support/full_epoll.h"

#include <sys/epoll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

namespace {

std::atomic<bool> is_full{false};

}  // namespace

FullEpoll::FullEpoll() {
    is_full = true;
}

FullEpoll::~FullEpoll() {
    is_full = false;
}

extern "C" int epoll_ctl(int epoll, int operation, int descriptor, epoll_event *event) noexcept {
    if (is_full && operation == EPOLL_CTL_ADD) {
        errno = ENOSPC;
        return -1;
    }
    return static_cast<int>(syscall(SYS_epoll_ctl, epoll, operation, descriptor, event));
}
