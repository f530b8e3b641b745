// Connects, and moves bytes for as long as there is time.
#include "vdevice/remote/channel.h"

#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "calls/call_table.h"
#include "vdevice/remote/protocol.h"
#include "vdevice/remote/wire.h"
#include "vdevice/sockets/device_socket.h"

namespace vdevice::remote {
namespace {

constexpr size_t kReadBytes = 4096;

std::string hex(uint32_t value) {
    constexpr size_t kSize = sizeof "0x01234567";
    char text[kSize];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(value));
    return text;
}

}  // namespace

void Channel::drop() {
    socket_.reset();
    input_.clear();
}

bool Channel::lost(const std::string &reason) {
    reason_ = reason;
    return false;
}

bool Channel::wait_for(short events, Clock::time_point end) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        pollfd waiting{socket_.get(), events, 0};
        pthread_setcancelstate(cancel_state_, nullptr);
        const int ready = poll(&waiting, 1, static_cast<int>(std::max<int64_t>(left.count(), 0)));
        const int error = errno;
        pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
        if (ready > 0) {
            return true;
        }
        if (ready == 0) {
            return lost({});
        }
        if (error != EINTR) {
            return lost(std::strerror(error));
        }
    }
}

size_t Channel::send_all(std::span<const uint8_t> data, Clock::time_point end) {
    size_t sent = 0;
    while (sent < data.size()) {
        const ssize_t now = send(socket_.get(), &data[sent], data.size() - sent, MSG_NOSIGNAL);
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

bool Channel::receive_all(std::span<uint8_t> data, Clock::time_point end) {
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
bool Channel::receive_some(Clock::time_point end) {
    std::array<uint8_t, kReadBytes> bytes;
    while (wait_for(POLLIN, end)) {
        const ssize_t got = recv(socket_.get(), bytes.data(), bytes.size(), 0);
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

bool Channel::shake_hands(Clock::time_point end) {
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

bool Channel::connect(const std::string &path, Clock::time_point end) {
    drop();
    owner_ = getpid();
    if (const int error = connect_to_device(socket_, path, end); error != 0) {
        return lost("cannot be reached: " + connect_problem(error));
    }
    return shake_hands(end);
}

// Between exchanges nothing is to be read: if there is something, the daemon has ended or is out of step.
bool Channel::is_connected() {
    if (!socket_ || owner_ != getpid() || !input_.empty()) {
        return false;
    }
    uint8_t next = 0;
    return recv(socket_.get(), &next, sizeof next, MSG_PEEK) < 0 && errno == EAGAIN;
}

bool Channel::receive_message(std::vector<uint8_t> &body, Clock::time_point end) {
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

bool Channel::wait_for_input() const {
    constexpr int kWithoutLimit = -1;
    pollfd waiting{socket_.get(), POLLIN, 0};
    int ready = input_.empty() ? 0 : 1;
    while (ready == 0 || (ready < 0 && errno == EINTR)) {
        ready = poll(&waiting, 1, kWithoutLimit);
    }
    return ready > 0;
}

void Channel::send_or_end(std::span<const uint8_t> data) const {
    if (socket_ && send(socket_.get(), data.data(), data.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(data.size())) {
        shutdown(socket_.get(), SHUT_RDWR);
    }
}

}  // namespace vdevice::remote
