// Descriptors and their handlers over epoll.
#include "vdevice/io/event_loop.h"

#include <sys/epoll.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include "vdevice/io/error.h"

namespace vdevice::io {
namespace {

constexpr int kNoTimeout = -1;

epoll_event event_for(int fd, uint32_t events) {
    epoll_event event{};
    event.events = events;
    event.data.fd = fd;
    return event;
}

}  // namespace

EventLoop::EventLoop() : epoll_{epoll_create1(EPOLL_CLOEXEC)} {
    if (!epoll_) {
        throw error_from_errno("create an event loop");
    }
}

void EventLoop::add(int fd, uint32_t events, Handler handler) {
    epoll_event event = event_for(fd, events);
    if (epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event) != 0) {
        throw error_from_errno("watch a descriptor");
    }
    handlers_[fd] = std::make_shared<Handler>(std::move(handler));
}

void EventLoop::change(int fd, uint32_t events) {
    epoll_event event = event_for(fd, events);
    epoll_ctl(epoll_.get(), EPOLL_CTL_MOD, fd, &event);
}

void EventLoop::remove(int fd) {
    epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, fd, nullptr);
    handlers_.erase(fd);
}

void EventLoop::run() {
    running_ = true;
    while (running_) {
        run_once(kNoTimeout);
    }
}

bool EventLoop::run_once(int timeout_milliseconds, int most) {
    std::array<epoll_event, kEventsAtOnce> events;
    const int count = epoll_wait(epoll_.get(), events.data(), std::min(most, kEventsAtOnce), timeout_milliseconds);
    if (count < 0 && errno != EINTR) {
        throw error_from_errno("wait for events");
    }
    for (int i = 0; i < count && running_; ++i) {
        const epoll_event &event = events[static_cast<size_t>(i)];
        // An earlier handler of this round may have removed the descriptor; the copy keeps a handler alive that
        // removes itself.
        if (const auto found = handlers_.find(event.data.fd); found != handlers_.end()) {
            const std::shared_ptr<Handler> handler = found->second;
            (*handler)(event.events);
        }
    }
    return count > 0;
}

UniqueFd EventLoop::every_second(std::function<void()> work) {
    UniqueFd timer{timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)};
    const itimerspec every_tick{{1, 0}, {1, 0}};
    if (!timer || timerfd_settime(timer.get(), 0, &every_tick, nullptr) != 0) {
        throw error_from_errno("start a clock");
    }
    add(timer.get(), EPOLLIN, [fd = timer.get(), work = std::move(work)](uint32_t) {
        uint64_t expirations = 0;
        if (read(fd, &expirations, sizeof(expirations)) == sizeof(expirations)) {
            work();
        }
    });
    return timer;
}

}  // namespace vdevice::io
