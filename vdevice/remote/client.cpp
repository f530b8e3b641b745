// Connects with the first call, sends requests and waits for replies, each within the deadline.
#include "vdevice/remote/client.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "vdevice/remote/message.h"
#include "vdevice/remote/protocol.h"

namespace vdevice::remote {

using calls::CallId;

namespace {

constexpr int kRetryMilliseconds = 10;
constexpr size_t kReadBytes = 4096;

std::string hex(uint32_t value) {
    constexpr size_t kSize = sizeof "0x01234567";
    char text[kSize];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(value));
    return text;
}

}  // namespace

Client::Client(std::string name, std::string path, std::chrono::milliseconds deadline)
    : name_(std::move(name)), path_(std::move(path)), deadline_(deadline) {}

Client::~Client() {
    drop();
}

void Client::drop() {
    if (socket_ >= 0) {
        close(socket_);
        socket_ = -1;
    }
    input_.clear();
}

bool Client::lost(const std::string &reason) {
    reason_ = reason;
    return false;
}

bool Client::wait_for(short events, Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        pollfd waiting{socket_, events, 0};
        const int ready = poll(&waiting, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
        if (ready > 0) {
            return true;
        }
        if (ready == 0) {
            return lost("gave no answer within " + std::to_string(deadline_.count()) + " ms");
        }
        if (errno != EINTR) {
            return lost(std::strerror(errno));
        }
    }
}

bool Client::send_all(std::span<const uint8_t> data, Clock::time_point end) {
    while (!data.empty()) {
        const ssize_t sent = send(socket_, data.data(), data.size(), MSG_NOSIGNAL);
        if (sent >= 0) {
            data = data.subspan(static_cast<size_t>(sent));
        } else if (errno == EAGAIN) {
            if (!wait_for(POLLOUT, end)) {
                return false;
            }
        } else if (errno != EINTR) {
            return lost(std::string("went away: ") + std::strerror(errno));
        }
    }
    return true;
}

bool Client::receive_all(std::span<uint8_t> data, Clock::time_point end) {
    for (;;) {
        const auto taken = static_cast<ptrdiff_t>(std::min(data.size(), input_.size()));
        std::copy_n(input_.begin(), taken, data.begin());
        input_.erase(input_.begin(), input_.begin() + taken);
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
        const ssize_t got = recv(socket_, bytes.data(), bytes.size(), 0);
        if (got > 0) {
            input_.insert(input_.end(), bytes.begin(), bytes.begin() + got);
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

bool Client::open_socket(Clock::time_point end) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path_.size() >= sizeof address.sun_path) {
        return lost("has too long a path");
    }
    std::memcpy(address.sun_path, path_.c_str(), path_.size() + 1);
    socket_ = socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (socket_ < 0) {
        return lost(std::string("cannot be reached: ") + std::strerror(errno));
    }
    owner_ = getpid();
    // A daemon that is too busy to accept gives EAGAIN at once instead of letting the caller wait.
    while (connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        if (errno == EINTR) {
            continue;
        }
        if (errno != EAGAIN || Clock::now() >= end) {
            return lost(std::string("cannot be reached: ") + std::strerror(errno));
        }
        poll(nullptr, 0, kRetryMilliseconds);
    }
    return true;
}

bool Client::shake_hands(Clock::time_point end) {
    Writer writer;
    writer.word(kMagic);
    writer.word(calls::kInterfaceChecksum);
    std::array<uint8_t, kHandshakeWords * kWordBytes> answer{};
    if (!send_all(writer.buffer(), end) || !receive_all(answer, end)) {
        return false;
    }
    Reader reader(answer);
    const uint32_t magic = reader.word();
    const uint32_t checksum = reader.word();
    if (magic != kMagic) {
        return lost("is no virtual device");
    }
    if (checksum != calls::kInterfaceChecksum) {
        return lost("was built from other headers (interface " + hex(checksum) + ", here " +
                    hex(calls::kInterfaceChecksum) + "): build both anew");
    }
    return true;
}

bool Client::connect_until(Clock::time_point end) {
    if (socket_ >= 0 && owner_ == getpid()) {
        return true;
    }
    drop();
    return open_socket(end) && shake_hands(end);
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

bool Client::exchange(CallId id, const void *const *arguments, Clock::time_point end, int32_t &result) {
    Writer writer;
    writer.word(0);  // the length, known below
    writer.word(static_cast<uint32_t>(id));
    if (!encode_inputs(writer, id, arguments)) {
        return lost("was not asked: the arguments are too long for a message");
    }
    writer.patch(0, static_cast<uint32_t>(writer.buffer().size() / kWordBytes - 1));
    if (connect_until(end) && send_all(writer.buffer(), end) && receive_reply(id, arguments, end, result)) {
        return true;
    }
    drop();
    return false;
}

bool Client::exchange_words(Extra id, std::span<const uint32_t> words, Clock::time_point end,
                            std::vector<uint32_t> &answer) {
    Writer writer;
    writer.word(static_cast<uint32_t>(words.size() + 1));
    writer.word(static_cast<uint32_t>(id));
    for (const uint32_t word : words) {
        writer.word(word);
    }
    if (connect_until(end) && send_all(writer.buffer(), end) && receive_words(end, answer) && !answer.empty()) {
        return true;
    }
    drop();
    return false;
}

void Client::complain(const char *request) {
    if (!complained_) {
        std::fprintf(stderr, "%s: %s failed: the virtual device at %s %s.\n", name_.c_str(), request, path_.c_str(),
                     reason_.c_str());
        complained_ = true;
    }
}

int32_t Client::call(CallId id, const void *const *arguments) {
    const std::lock_guard guard(mutex_);
    int32_t result = kCallLost;
    if (!exchange(id, arguments, Clock::now() + deadline_, result)) {
        complain(calls::call(id).name);
        return kCallLost;
    }
    complained_ = false;
    return result;
}

int32_t Client::request(Extra id, std::span<const uint32_t> words, std::vector<uint32_t> &answer) {
    const std::lock_guard guard(mutex_);
    if (!exchange_words(id, words, Clock::now() + deadline_, answer)) {
        complain(id == Extra::kWatchLinks ? "the link scan" : "vdev_equeue_receive");
        return kCallLost;
    }
    complained_ = false;
    const auto result = static_cast<int32_t>(answer.front());
    answer.erase(answer.begin());
    return result;
}

bool Client::wait_for_message(std::vector<uint32_t> &words) {
    constexpr int kWithoutLimit = -1;
    pollfd waiting{socket_, POLLIN, 0};
    int ready = input_.empty() ? 0 : 1;
    while (ready == 0 || (ready < 0 && errno == EINTR)) {
        ready = poll(&waiting, 1, kWithoutLimit);
    }
    if (ready > 0 && receive_words(Clock::now() + deadline_, words)) {
        return true;
    }
    drop();
    return false;
}

}  // namespace vdevice::remote
