// The calling end: sends each call to the daemon and waits for the answer.
#pragma once

#include <sys/types.h>

#include <stdint.h>
#include <chrono>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "calls/call_table.h"
#include "vdevice/remote/protocol.h"

namespace vdevice::remote {

/**
 * One connection to the daemon, opened with the first call.
 *
 * A call without an answer, for whatever reason, has the result kCallLost and leaves its outputs alone. The first of
 * several failures in a row says why on standard error; each later call tries again. A call never takes longer than
 * the deadline. Calls may come from several threads, and from both sides of a fork.
 */
class Client {
  public:
    using Clock = std::chrono::steady_clock;
    static constexpr std::chrono::milliseconds kDeadline{5000};

    /** @p name is the library's, for messages; @p path the daemon's socket. */
    Client(std::string name, std::string path, std::chrono::milliseconds deadline = kDeadline);
    ~Client();
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    /** The call's result. A negative result leaves the outputs alone. */
    int32_t call(calls::CallId id, const void *const *arguments);

    /** Makes a request that is no driver call: its result, and in @p answer the words that follow it. */
    int32_t request(Extra id, std::span<const uint32_t> words, std::vector<uint32_t> &answer);
    /** Waits without limit for a message that the daemon sends unasked; false if the connection is lost. */
    bool wait_for_message(std::vector<uint32_t> &words);

    /** @name Around a fork, so that the child finds the lock as it was */
    /** @{ */
    void lock() { mutex_.lock(); }
    void unlock() { mutex_.unlock(); }
    /** @} */

  private:
    bool connect_until(Clock::time_point end);
    bool open_socket(Clock::time_point end);
    bool shake_hands(Clock::time_point end);
    bool exchange(calls::CallId id, const void *const *arguments, Clock::time_point end, int32_t &result);
    bool receive_reply(calls::CallId id, const void *const *arguments, Clock::time_point end, int32_t &result);
    bool exchange_words(Extra id, std::span<const uint32_t> words, Clock::time_point end,
                        std::vector<uint32_t> &answer);
    bool receive_body(Clock::time_point end, std::vector<uint8_t> &body);
    bool receive_words(Clock::time_point end, std::vector<uint32_t> &words);
    bool send_all(std::span<const uint8_t> data, Clock::time_point end);
    bool receive_all(std::span<uint8_t> data, Clock::time_point end);
    bool receive_some(Clock::time_point end);
    bool wait_for(short events, Clock::time_point end);
    void drop();
    /** Remembers why the call fails. */
    bool lost(const std::string &reason);
    void complain(const char *request);

    const std::string name_;
    const std::string path_;
    const std::chrono::milliseconds deadline_;
    std::mutex mutex_;
    int socket_ = -1;
    std::vector<uint8_t> input_; /**< received after the last answer */
    pid_t owner_ = 0;            /**< the process that opened the socket: after a fork the child needs one of its own */
    std::string reason_;
    bool complained_ = false;
};

}  // namespace vdevice::remote
