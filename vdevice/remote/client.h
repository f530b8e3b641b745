// The calling end: sends each call to the daemon and waits for the answer.
#pragma once

#include <stdint.h>
#include <atomic>
#include <chrono>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "calls/call_table.h"
#include "vdevice/remote/channel.h"
#include "vdevice/remote/protocol.h"

namespace vdevice::remote {

/**
 * One connection to the daemon, opened with the first call.
 *
 * A call without an answer, for whatever reason, has the result kCallLost and leaves its outputs alone. The first of
 * several failures in a row says why on standard error; each later call tries again. A call never takes longer than
 * the deadline, which begins with the call.
 *
 * Calls may come from several threads, one of which has its turn at a time. A thread may be cancelled in a call while
 * it waits for the daemon, and not otherwise. A connection on which an exchange was begun and not ended is closed, so
 * that no later call takes the answer for its own.
 */
class Client {
  public:
    using Clock = Channel::Clock;
    /** The device waits for the kernel when a call changes an interface, on a busy machine for some seconds. */
    static constexpr std::chrono::milliseconds kDeadline{20000};

    /** @p name is the library's, for messages; @p path the daemon's socket. */
    Client(std::string name, std::string path, std::chrono::milliseconds deadline = kDeadline);
    ~Client() = default;
    Client(const Client &) = delete;
    Client &operator=(const Client &) = delete;

    /** The call's result. A negative result leaves the outputs alone. */
    int32_t call(calls::CallId id, const void *const *arguments);

    /** Makes a request that is no driver call: its result, and in @p answer the words that follow it. */
    int32_t request(Extra id, std::span<const uint32_t> words, std::vector<uint32_t> &answer, Clock::time_point end);
    /** When a call that begins now has to end. */
    [[nodiscard]] Clock::time_point deadline() const { return Clock::now() + deadline_; }

    /** @name A client that watches. One thread waits; the others may only ask again. */
    /** @{ */
    /** Waits without limit for a message that the daemon sends unasked; false if the connection is lost. */
    bool wait_for_message(std::vector<uint32_t> &words);
    /** Makes the request again, without waiting for the reply, which is one of the messages. */
    void ask_again(Extra id);
    /** @} */

    /**
     * In the child of a fork, before anything else: the connection and the lock are the parent's, also in the middle of
     * a call. The child gets new ones, and closes the connection's descriptor.
     */
    void start_anew_in_child();

  private:
    /** What begins anew in the child of a fork. */
    struct State {
        std::timed_mutex mutex;
        Channel channel;
    };
    class Exchange;

    template <typename Receive>
    bool exchange(const char *name, std::span<const uint8_t> request, Clock::time_point end, Receive receive);
    bool send_request(std::span<const uint8_t> request, Clock::time_point end);
    bool receive_reply(calls::CallId id, const void *const *arguments, Clock::time_point end, int32_t &result);
    bool receive_words(Clock::time_point end, std::vector<uint32_t> &words);
    /** Without a reason the time was over. */
    void complain(const char *request, const std::string &reason);

    const std::string name_;
    const std::string path_;
    const std::chrono::milliseconds deadline_;
    std::atomic<bool> complained_{false};
    State state_;
};

}  // namespace vdevice::remote
