// timerfd.
#include "switchd/daemon/timer.h"

#include <stdint.h>
#include <sys/epoll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <utility>

#include "vdevice/io/error.h"

namespace switchd {
namespace {

timespec timespec_of(std::chrono::nanoseconds time) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    timespec result{};
    result.tv_sec = static_cast<time_t>(seconds.count());
    result.tv_nsec = static_cast<decltype(result.tv_nsec)>((time - seconds).count());
    return result;
}

}  // namespace

Timer::Timer(vdevice::io::EventLoop &loop, std::function<void()> work)
    : loop_{loop}, fd_{timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)} {
    if (!fd_) {
        throw vdevice::io::error_from_errno("start a clock");
    }
    loop_.add(fd_.get(), EPOLLIN, [fd = fd_.get(), work = std::move(work)](uint32_t) {
        uint64_t expirations = 0;
        if (read(fd, &expirations, sizeof expirations) == static_cast<ssize_t>(sizeof expirations)) {
            work();
        }
    });
}

Timer::~Timer() {
    loop_.remove(fd_.get());
}

void Timer::start(std::chrono::nanoseconds first, std::chrono::nanoseconds period) {
    const itimerspec times{timespec_of(period), timespec_of(first)};
    timerfd_settime(fd_.get(), 0, &times, nullptr);
}

}  // namespace switchd
