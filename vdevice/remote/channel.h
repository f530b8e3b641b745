// The client's end of a connection to the daemon.
#pragma once

#include <pthread.h>
#include <sys/types.h>

#include <stdint.h>
#include <chrono>
#include <span>
#include <string>
#include <vector>

#include "vdevice/sockets/unique_fd.h"

namespace vdevice::remote {

/** One connection, or none: bytes and messages, each waited for until a point in time. */
class Channel {
  public:
    using Clock = std::chrono::steady_clock;

    /** Connects and shakes hands, in place of an earlier connection. */
    bool connect(const std::string &path, Clock::time_point end);
    /** Whether this process has a connection that the daemon has not closed, and that nothing is left on. */
    bool is_connected();
    void drop();

    /** How much was sent; less than all of it if the connection is lost. */
    size_t send_all(std::span<const uint8_t> data, Clock::time_point end);
    /** A message without its length. */
    bool receive_message(std::vector<uint8_t> &body, Clock::time_point end);

    /** @name Of a connection that one thread waits on without limit */
    /** @{ */
    [[nodiscard]] bool wait_for_input() const;
    /** Sends without waiting, from another thread. If that fails the connection ends, which the first one sees. */
    void send_or_end(std::span<const uint8_t> data) const;
    /** @} */

    /** Remembers why there is no answer; false. */
    bool lost(const std::string &reason);
    /** Why the last function that is false failed; empty if the time was over. */
    [[nodiscard]] const std::string &reason() const { return reason_; }

    /** The calling thread's state of cancellation, in force while it waits. Otherwise it must be disabled. */
    void set_cancel_state(int state) { cancel_state_ = state; }
    [[nodiscard]] int descriptor() const { return socket_.get(); }

  private:
    bool shake_hands(Clock::time_point end);
    bool receive_all(std::span<uint8_t> data, Clock::time_point end);
    bool receive_some(Clock::time_point end);
    bool wait_for(short events, Clock::time_point end);

    UniqueFd socket_;
    std::vector<uint8_t> input_; /**< received after the last message */
    pid_t owner_ = 0;            /**< the process that opened the socket */
    std::string reason_;
    int cancel_state_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace vdevice::remote
