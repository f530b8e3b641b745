// Opens, sends and receives; only what the kernel itself sent is given on.
#include "switchd/kernel/netlink_socket.h"

#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <cerrno>

#include "vdevice/io/error.h"

namespace switchd::netlink {
namespace {

/** The kernel's answers have at most 32 KiB. */
constexpr size_t kLongestDatagram = 65536;
constexpr timeval kPatience{1, 0};

void set_buffer(int fd, int octets) {
    // Beyond the system's limit only root's own capability helps.
    if (setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &octets, sizeof(octets)) != 0) {
        setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &octets, sizeof(octets));
    }
}

}  // namespace

Socket::Socket(int buffer_octets, std::initializer_list<int> groups)
    : fd_{socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | (groups.size() != 0 ? SOCK_NONBLOCK : 0), NETLINK_ROUTE)},
      buffer_(kLongestDatagram) {
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    if (!fd_ || bind(fd_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        throw vdevice::io::error_from_errno("open a netlink socket");
    }
    set_buffer(fd_.get(), buffer_octets);
    setsockopt(fd_.get(), SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof(kPatience));
    const int on = 1;  // a refusal without a copy of the request
    setsockopt(fd_.get(), SOL_NETLINK, NETLINK_CAP_ACK, &on, sizeof(on));
    for (const int group : groups) {
        if (setsockopt(fd_.get(), SOL_NETLINK, NETLINK_ADD_MEMBERSHIP, &group, sizeof(group)) != 0) {
            throw vdevice::io::error_from_errno("listen for changes of the kernel's network configuration");
        }
    }
}

int Socket::send(Octets octets) {
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    const ssize_t sent =
        sendto(fd_.get(), octets.data(), octets.size(), 0, reinterpret_cast<const sockaddr *>(&kernel), sizeof(kernel));
    return sent < 0 ? errno : 0;
}

Socket::Received Socket::receive() {
    sockaddr_nl sender{};
    iovec place{buffer_.data(), buffer_.size()};
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof(sender);
    message.msg_iov = &place;
    message.msg_iovlen = 1;
    ssize_t length = 0;
    do {
        length = recvmsg(fd_.get(), &message, 0);
    } while (length < 0 && errno == EINTR);
    datagram_ = {};
    if (length < 0) {
        return errno == EAGAIN ? Received::kNothing : Received::kLoss;
    }
    if ((message.msg_flags & MSG_TRUNC) != 0) {
        return Received::kLoss;
    }
    constexpr uint32_t kKernel = 0;
    if (sender.nl_pid == kKernel) {
        datagram_ = Octets{buffer_}.first(static_cast<size_t>(length));
    }
    return Received::kDatagram;
}

int error_of(const Message &message) {
    Octets payload = message.payload;
    return -take<int32_t>(payload).value_or(0);
}

}  // namespace switchd::netlink
