// A non-blocking client of a Unix socket.
#include "tests/fuzz/raw_socket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace fuzz {

RawSocket::RawSocket(const std::string &path) : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    expect(connect(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0, "a socket to talk to");
}

RawSocket::~RawSocket() {
    close(socket_);
}

size_t RawSocket::send(std::span<const uint8_t> data) const {
    const ssize_t sent = ::send(socket_, data.data(), data.size(), MSG_NOSIGNAL);
    return static_cast<size_t>(std::max<ssize_t>(sent, 0));
}

void RawSocket::finish() const {
    shutdown(socket_, SHUT_WR);
}

bool RawSocket::receive(Bytes *to) const {
    constexpr size_t kAtOnce = 4096;
    std::array<uint8_t, kAtOnce> data;
    ssize_t got = 0;
    while ((got = recv(socket_, data.data(), data.size(), 0)) > 0) {
        to->insert(to->end(), data.begin(), data.begin() + got);
    }
    return got < 0 && errno == EAGAIN;
}

}  // namespace fuzz
