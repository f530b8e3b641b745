// A timer of the event loop.
#pragma once

#include <chrono>
#include <functional>

#include "vdevice/io/event_loop.h"
#include "vdevice/sockets/unique_fd.h"

namespace switchd {

class Timer {
  public:
    /** Does the work each time that it ends. Throws a vdevice::io::Error. */
    Timer(vdevice::io::EventLoop &loop, std::function<void()> work);
    ~Timer();
    Timer(const Timer &) = delete;
    Timer &operator=(const Timer &) = delete;

    void start_once(std::chrono::nanoseconds time) { start(time, {}); }
    void start_periodic(std::chrono::nanoseconds period) { start(period, period); }

  private:
    void start(std::chrono::nanoseconds first, std::chrono::nanoseconds period);

    vdevice::io::EventLoop &loop_;
    vdevice::UniqueFd fd_;
};

}  // namespace switchd
