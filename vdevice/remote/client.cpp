// Connects with the first call, sends requests and waits for replies, each within the deadline.
#include "vdevice/remote/client.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "vdevice/remote/message.h"
#include "vdevice/remote/protocol.h"
#include "vdevice/sockets/device_socket.h"

namespace vdevice::remote {

using calls::CallId;

namespace {

constexpr size_t kReadBytes = 4096;

std::string hex(uint32_t value) {
    constexpr size_t kSize = sizeof "0x01234567";
    char text[kSize];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(value));
    return text;
}

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
    explicit Exchange(Client &client) : client_(client) {}
    ~Exchange() {
        if (!ended_) {
            client_.drop();
        }
    }
    Exchange(const Exchange &) = delete;
    Exchange &operator=(const Exchange &) = delete;

    void end() { ended_ = true; }

  private:
    Client &client_;
    bool ended_ = false;
};

Client::Client(std::string name, std::string path, std::chrono::milliseconds deadline)
    : name_(std::move(name)), path_(std::move(path)), deadline_(deadline) {}

// The old state is not destroyed: a thread that the child does not have may have been changing it.
void Client::start_anew_in_child() {
    const int inherited = state_.socket.get();
    std::construct_at(&state_);
    UniqueFd{inherited}.reset();
}

void Client::drop() {
    state_.socket.reset();
    state_.input.clear();
}

std::string Client::no_answer() const {
    return "gave no answer within " + std::to_string(deadline_.count()) + " ms";
}

bool Client::lost(const std::string &reason) {
    state_.reason = reason;
    return false;
}

bool Client::wait_for(short events, Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        pollfd waiting{state_.socket.get(), events, 0};
        pthread_setcancelstate(state_.cancel_state, nullptr);
        const int ready = poll(&waiting, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
        const int error = errno;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
        if (ready > 0) {
            return true;
        }
        if (ready == 0) {
            return lost(no_answer());
        }
        if (error != EINTR) {
            return lost(std::strerror(error));
        }
    }
}

/** How much was sent; less than all of it if the connection is lost. */
size_t Client::send_all(std::span<const uint8_t> data, Clock::time_point end) {
    size_t sent = 0;
    while (sent < data.size()) {
        const ssize_t now = send(state_.socket.get(), &data[sent], data.size() - sent, MSG_NOSIGNAL);
        if (now >= 0) {
            sent += static_cast<size_t>(now);
        } else if (errno == EAGAIN) {
            if (!wait_for(POLLOUT, end)) {
                return sent;
            }
        } else if (errno != EINTR) {
            lost(std::string("went away: ") + std::strerror(errno));
            return sent;
        }
    }
    return sent;
}

bool Client::receive_all(std::span<uint8_t> data, Clock::time_point end) {
    for (;;) {
        const auto taken = static_cast<ptrdiff_t>(std::min(data.size(), state_.input.size()));
        std::copy_n(state_.input.begin(), taken, data.begin());
        state_.input.erase(state_.input.begin(), state_.input.begin() + taken);
        data = data.subspan(static_cast<size_t>(taken));
        if (data.empty()) {
            return true;
        }
        if (!receive_some(end)) {
            return false;
        }
    }
}

// The answer has never arrived yet, so the wait comes first; it mostly arrives whole, so length and rest are read
// together.
bool Client::receive_some(Clock::time_point end) {
    std::array<uint8_t, kReadBytes> bytes;
    while (wait_for(POLLIN, end)) {
        const ssize_t got = recv(state_.socket.get(), bytes.data(), bytes.size(), 0);
        if (got > 0) {
            state_.input.insert(state_.input.end(), bytes.begin(), bytes.begin() + got);
            return true;
        }
        if (got == 0) {
            return lost("closed the connection");
        }
        if (errno != EAGAIN && errno != EINTR) {
            return lost(std::string("went away: ") + std::strerror(errno));
        }
    }
    return false;
}

bool Client::shake_hands(Clock::time_point end) {
    Writer writer;
    writer.word(kMagic);
    writer.word(calls::kInterfaceChecksum);
    std::array<uint8_t, kHandshakeWords * kWordBytes> answer{};
    // A daemon that turns the client away may have closed the connection already. Its answer says why.
    send_all(writer.buffer(), end);
    if (!receive_all(answer, end)) {
        return false;
    }
    Reader reader(answer);
    const uint32_t magic = reader.word();
    const uint32_t value = reader.word();
    if (magic == kFull) {
        return lost("turned this process away: it serves at most " + std::to_string(value) + " programs at a time");
    }
    if (magic != kMagic) {
        return lost("is no virtual device");
    }
    if (value != calls::kInterfaceChecksum) {
        return lost("was built from other headers (interface " + hex(value) + ", here " +
                    hex(calls::kInterfaceChecksum) + "): build both anew");
    }
    return true;
}

bool Client::connect_until(Clock::time_point end) {
    drop();
    state_.owner = getpid();
    if (const int error = connect_to_device(state_.socket, path_, end); error != 0) {
        return lost("cannot be reached: " + connect_problem(error));
    }
    return shake_hands(end);
}

// Between exchanges nothing is to be read: if there is something, the daemon has ended or is out of step.
bool Client::is_connected() {
    if (!state_.socket || state_.owner != getpid() || !state_.input.empty()) {
        return false;
    }
    uint8_t next = 0;
    return recv(state_.socket.get(), &next, sizeof next, MSG_PEEK) < 0 && errno == EAGAIN;
}

// On a new connection again only if the daemon cannot have taken any of the request: nothing is carried out twice.
bool Client::send_request(std::span<const uint8_t> request, Clock::time_point end) {
    if (is_connected()) {
        const size_t sent = send_all(request, end);
        if (sent != 0) {
            return sent == request.size();
        }
    }
    return connect_until(end) && send_all(request, end) == request.size();
}

bool Client::receive_body(Clock::time_point end, std::vector<uint8_t> &body) {
    std::array<uint8_t, kWordBytes> head{};
    if (!receive_all(head, end)) {
        return false;
    }
    const size_t words = Reader(head).word();
    if (words > kMaxMessageWords) {
        return lost("sent nonsense");
    }
    body.resize(words * kWordBytes);
    return receive_all(body, end);
}

bool Client::receive_words(Clock::time_point end, std::vector<uint32_t> &words) {
    std::vector<uint8_t> body;
    if (!receive_body(end, body)) {
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
    if (!receive_body(end, body)) {
        return false;
    }
    Reader reader(body);
    result = static_cast<int32_t>(reader.word());
    const uint32_t has_outputs = reader.word();
    // Outputs go with every result that is not negative, and with no other.
    const bool fits = has_outputs == (result < 0 ? 0 : 1) &&
                      (has_outputs != 0 ? decode_outputs(reader, id, arguments) : reader.is_finished());
    return fits || lost("sent nonsense");
}

template <typename Receive>
bool Client::exchange(const char *name, std::span<const uint8_t> request, Clock::time_point end, Receive receive) {
    const Uncancelled uncancelled;
    std::string reason;
    if (const std::unique_lock lock(state_.mutex, end); lock) {
        state_.cancel_state = uncancelled.before();
        Exchange begun(*this);
        if (send_request(request, end) && receive()) {
            begun.end();
            complained_ = false;
            return true;
        }
        reason = state_.reason;
    } else {
        reason = no_answer();
    }
    complain(name, reason);
    return false;
}

void Client::complain(const char *request, const std::string &reason) {
    if (!complained_.exchange(true)) {
        std::fprintf(stderr, "%s: %s failed: the virtual device at %s %s.\n", name_.c_str(), request, path_.c_str(),
                     reason.c_str());
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
    if (!exchange(name, writer.buffer(), end, [&] { return receive_words(end, answer) && !answer.empty(); })) {
        return kCallLost;
    }
    const auto result = static_cast<int32_t>(answer.front());
    answer.erase(answer.begin());
    return result;
}

bool Client::wait_for_message(std::vector<uint32_t> &words) {
    constexpr int kWithoutLimit = -1;
    pollfd waiting{state_.socket.get(), POLLIN, 0};
    int ready = state_.input.empty() ? 0 : 1;
    while (ready == 0 || (ready < 0 && errno == EINTR)) {
        ready = poll(&waiting, 1, kWithoutLimit);
    }
    if (ready > 0 && receive_words(deadline(), words)) {
        return true;
    }
    const std::lock_guard guard(state_.mutex);
    drop();
    return false;
}

// Whoever has the lock connects anew, and makes the request then; and so does the waiting thread, if it has to.
void Client::ask_again(Extra id) {
    Writer writer;
    writer.word(1);
    writer.word(static_cast<uint32_t>(id));
    const std::unique_lock lock(state_.mutex, std::try_to_lock);
    if (lock && state_.socket &&
        send(state_.socket.get(), writer.buffer().data(), writer.buffer().size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(writer.buffer().size())) {
        shutdown(state_.socket.get(), SHUT_RDWR);
    }
}

}  // namespace vdevice::remote
