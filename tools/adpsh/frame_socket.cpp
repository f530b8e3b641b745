// A packet socket that restores stripped VLAN tags.
#include "tools/adpsh/frame_socket.h"

#include "tools/adpsh/line_error.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>

namespace adpsh {

namespace {

constexpr size_t kMaxFrame = 65536;
constexpr size_t kControlBytes = 256;
constexpr size_t kAddressBytes = 12;
constexpr int kReceiveBuffer = 1024 * 1024;

[[noreturn]] void fail(const std::string &interface, int error) {
    throw LineError("cannot listen on " + interface + ": " + std::strerror(error));
}

/** Restores the VLAN tag that the kernel reports separately. */
void restore_tag(msghdr &message, Bytes &frame) {
    for (cmsghdr *control = CMSG_FIRSTHDR(&message); control != nullptr; control = CMSG_NXTHDR(&message, control)) {
        if (control->cmsg_level != SOL_PACKET || control->cmsg_type != PACKET_AUXDATA) {
            continue;
        }
        tpacket_auxdata data = {};
        std::memcpy(&data, CMSG_DATA(control), sizeof data);
        if ((data.tp_status & TP_STATUS_VLAN_VALID) == 0 || frame.size() < kAddressBytes) {
            continue;
        }
        const bool has_type = (data.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0;
        const std::array<uint16_t, 2> tag = {htons(has_type ? data.tp_vlan_tpid : uint16_t{ETH_P_8021Q}),
                                             htons(data.tp_vlan_tci)};
        std::array<uint8_t, sizeof tag> bytes = {};
        std::memcpy(bytes.data(), tag.data(), sizeof tag);
        frame.insert(frame.begin() + kAddressBytes, bytes.begin(), bytes.end());
    }
}

}  // namespace

FrameSocket::~FrameSocket() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

void FrameSocket::open(const std::string &interface) {
    if (descriptor_ >= 0) {
        return;
    }
    const unsigned index = ::if_nametoindex(interface.c_str());
    if (index == 0) {
        fail(interface, errno);
    }
    // Protocol 0 until it is bound, so that no frame of another interface is received.
    const int descriptor = ::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0);
    if (descriptor < 0) {
        fail(interface, errno);
    }
    // Optional: an emulator may not support them. Outgoing frames are skipped below as well.
    const int on = 1;
    ::setsockopt(descriptor, SOL_PACKET, PACKET_AUXDATA, &on, sizeof on);
    ::setsockopt(descriptor, SOL_PACKET, PACKET_IGNORE_OUTGOING, &on, sizeof on);
    ::setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
    sockaddr_ll address = {};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_ALL);
    address.sll_ifindex = static_cast<int>(index);
    if (::bind(descriptor, static_cast<const sockaddr *>(static_cast<const void *>(&address)), sizeof address) != 0) {
        const int error = errno;
        ::close(descriptor);
        fail(interface, error);
    }
    descriptor_ = descriptor;
}

std::optional<Bytes> FrameSocket::receive() {
    Bytes frame(kMaxFrame);
    sockaddr_ll from = {};
    iovec part = {frame.data(), frame.size()};
    alignas(cmsghdr) std::array<uint8_t, kControlBytes> control = {};
    msghdr message = {};
    message.msg_name = &from;
    message.msg_namelen = sizeof from;
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const ssize_t got = ::recvmsg(descriptor_, &message, MSG_DONTWAIT);
    if (got < 0) {
        if (errno == EAGAIN || errno == EINTR || errno == ENETDOWN) {
            return std::nullopt;
        }
        throw LineError(std::string("receiving failed: ") + std::strerror(errno));
    }
    if (from.sll_pkttype == PACKET_OUTGOING) {
        return std::nullopt;
    }
    frame.resize(static_cast<size_t>(got));
    restore_tag(message, frame);
    return frame;
}

std::optional<Bytes> FrameSocket::wait(std::chrono::milliseconds time) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point deadline = Clock::now() + time;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd ready = {descriptor_, POLLIN, 0};
        const int wait_for = static_cast<int>(std::max<std::chrono::milliseconds::rep>(0, left.count()));
        if (::poll(&ready, 1, wait_for) > 0) {
            if (std::optional<Bytes> frame = receive()) {
                return frame;
            }
        }
        if (Clock::now() >= deadline) {
            return std::nullopt;
        }
    }
}

}  // namespace adpsh
