// A single-threaded loop over epoll: calls a descriptor's handler when events are pending on it.
#pragma once

#include <stdint.h>
#include <functional>
#include <map>
#include <memory>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice::io {

class EventLoop {
  public:
    /** Takes the EPOLL... events that are pending. */
    using Handler = std::function<void(uint32_t events)>;

    EventLoop();

    /** Throws an Error if the kernel watches no more descriptors. */
    void add(int fd, uint32_t events, Handler handler);
    void change(int fd, uint32_t events);
    /** May be called by any handler, the descriptor's own included. */
    void remove(int fd);

    /** Runs until stop() is called. */
    void run();
    void stop() { running_ = false; }
    /** Waits at most that long, -1 for ever, and handles the events, at most so many; false if there were none. */
    bool run_once(int timeout_milliseconds, int most = kEventsAtOnce);
    /** Readable when events are pending: a loop can be a descriptor of another one. */
    int fd() const { return epoll_.get(); }
    /** Does the work once a second, for as long as the descriptor is kept. */
    UniqueFd every_second(std::function<void()> work);

  private:
    static constexpr int kEventsAtOnce = 64;

    UniqueFd epoll_;
    std::map<int, std::shared_ptr<Handler>> handlers_;
    bool running_ = true;
};

}  // namespace vdevice::io
