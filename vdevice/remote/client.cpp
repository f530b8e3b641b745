// Makes requests and takes their replies, one exchange at a time, each within the deadline.
#include "vdevice/remote/client.h"

#include <cstdio>
#include <memory>

#include "vdevice/remote/message.h"
#include "vdevice/remote/protocol.h"
#include "vdevice/sockets/unique_fd.h"

namespace vdevice::remote {

using calls::CallId;

namespace {

/** Closing, printing and taking locks are done whole: of a call, only the wait for the daemon can be cancelled. */
class Uncancelled {
  public:
    Uncancelled() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &before_); }
    ~Uncancelled() { pthread_setcancelstate(before_, nullptr); }
    Uncancelled(const Uncancelled &) = delete;
    Uncancelled &operator=(const Uncancelled &) = delete;

    [[nodiscard]] int before() const { return before_; }

  private:
    int before_ = PTHREAD_CANCEL_ENABLE;
};

}  // namespace

/** Ends the connection if the exchange does not end as it should, also by an exception or a cancelled thread. */
class Client::Exchange {
  public:
    explicit Exchange(Channel &channel) : channel_(channel) {}
    ~Exchange() {
        if (!ended_) {
            channel_.drop();
        }
    }
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;

    void end() { ended_ = true; }

  private:
    Channel &channel_;
    bool ended_ = false;
};

Client::Client(std::string name, std::string path, std::chrono::milliseconds deadline)
    : name_(std::move(name)), path_(std::move(path)), deadline_(deadline) {}

// The old state is not destroyed: a thread that the child does not have may have been changing it.
void Client::start_anew_in_child() {
    const int inherited = state_.channel.descriptor();
    std::construct_at(&state_);
    UniqueFd{inherited}.reset();
}

// On a new connection again only if the daemon cannot have taken any of the request: nothing is carried out twice.
bool Client::send_request(std::span<const uint8_t> request, Clock::time_point end) {
    Channel &channel = state_.channel;
    if (channel.is_connected()) {
        const size_t sent = channel.send_all(request, end);
        if (sent != 0) {
            return sent == request.size();
        }
    }
    return channel.connect(path_, end) && channel.send_all(request, end) == request.size();
}

bool Client::receive_words(Clock::time_point end, std::vector<uint32_t> &words) {
    std::vector<uint8_t> body;
    if (!state_.channel.receive_message(body, end)) {
        return false;
    }
    words.clear();
    for (Reader reader(body); reader.left() != 0;) {
        words.push_back(reader.word());
    }
    return true;
}

bool Client::receive_reply(CallId id, const void *const *arguments, Clock::time_point end, int32_t &result) {
    std::vector<uint8_t> body;
    if (!state_.channel.receive_message(body, end)) {
        return false;
    }
    Reader reader(body);
    result = static_cast<int32_t>(reader.word());
    const uint32_t has_outputs = reader.word();
    // Outputs go with every result that is not negative, and with no other.
    const bool fits = has_outputs == (result < 0 ? 0 : 1) &&
                      (has_outputs != 0 ? decode_outputs(reader, id, arguments) : reader.is_finished());
    return fits || state_.channel.lost("sent nonsense");
}

template <typename Receive>
bool Client::exchange(const char *name, std::span<const uint8_t> request, Clock::time_point end, Receive receive) {
    const Uncancelled uncancelled;
    std::string reason;
    if (const std::unique_lock lock(state_.mutex, end); lock) {
        state_.channel.set_cancel_state(uncancelled.before());
        Exchange begun(state_.channel);
        if (send_request(request, end) && receive()) {
            begun.end();
            complained_ = false;
            return true;
        }
        reason = state_.channel.reason();
    }
    complain(name, reason);
    return false;
}

void Client::complain(const char *request, const std::string &reason) {
    if (!complained_.exchange(true)) {
        const std::string late = "gave no answer within " + std::to_string(deadline_.count()) + " ms";
        std::fprintf(stderr, "%s: %s failed: the virtual device at %s %s.\n", name_.c_str(), request, path_.c_str(),
                     reason.empty() ? late.c_str() : reason.c_str());
    }
}

int32_t Client::call(CallId id, const void *const *arguments) {
    const auto end = deadline();
    Writer writer;
    writer.word(0);  // the length, known below
    writer.word(static_cast<uint32_t>(id));
    if (!encode_inputs(writer, id, arguments)) {
        complain(calls::call(id).name, "was not asked: the arguments are too long for a message");
        return kCallLost;
    }
    writer.patch(0, static_cast<uint32_t>(writer.buffer().size() / kWordBytes - 1));
    int32_t result = kCallLost;
    const bool is_answered =
        exchange(calls::call(id).name, writer.buffer(), end, [&] { return receive_reply(id, arguments, end, result); });
    return is_answered ? result : kCallLost;
}

int32_t Client::request(Extra id, std::span<const uint32_t> words, std::vector<uint32_t> &answer,
                        Clock::time_point end) {
    Writer writer;
    writer.word(static_cast<uint32_t>(words.size() + 1));
    writer.word(static_cast<uint32_t>(id));
    for (const uint32_t word : words) {
        writer.word(word);
    }
    const char *name = id == Extra::kWatchLinks ? "the link scan" : "vdev_equeue_receive";
    const auto receive = [&] {
        return receive_words(end, answer) && (!answer.empty() || state_.channel.lost("sent nonsense"));
    };
    if (!exchange(name, writer.buffer(), end, receive)) {
        return kCallLost;
    }
    const auto result = static_cast<int32_t>(answer.front());
    answer.erase(answer.begin());
    return result;
}

bool Client::wait_for_message(std::vector<uint32_t> &words) {
    if (state_.channel.wait_for_input() && receive_words(deadline(), words)) {
        return true;
    }
    const std::lock_guard guard(state_.mutex);
    state_.channel.drop();
    return false;
}

// Whoever has the lock connects anew, and makes the request then; and so does the waiting thread, if it has to.
void Client::ask_again(Extra id) {
    Writer writer;
    writer.word(1);
    writer.word(static_cast<uint32_t>(id));
    if (const std::unique_lock lock(state_.mutex, std::try_to_lock); lock) {
        state_.channel.send_or_end(writer.buffer());
    }
}

}  // namespace vdevice::remote
