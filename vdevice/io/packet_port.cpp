// The packet sockets of a port: their options, and their errors.
#include "vdevice/io/packet_port.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <net/if.h>

#include "vdevice/io/error.h"

// Newer than some C libraries' headers.
#ifndef PACKET_IGNORE_OUTGOING
#define PACKET_IGNORE_OUTGOING 23
#endif

namespace vdevice::io {
namespace {

constexpr int kSocketBufferBytes = 4 * 1024 * 1024;
constexpr uint16_t kNoProtocol = 0;

template <typename Value>
void set_option(int fd, int level, int option, const Value &value, const std::string &interface_name) {
    if (setsockopt(fd, level, option, &value, sizeof(value)) != 0) {
        throw error_from_errno("set up the packet socket on " + interface_name);
    }
}

/** With the privilege (the option @p forced) beyond the system's limit, otherwise up to it. */
void enlarge_buffer(int fd, int forced, int option) {
    if (setsockopt(fd, SOL_SOCKET, forced, &kSocketBufferBytes, sizeof(kSocketBufferBytes)) != 0) {
        setsockopt(fd, SOL_SOCKET, option, &kSocketBufferBytes, sizeof(kSocketBufferBytes));
    }
}

/** It receives nothing until it is bound with a protocol: no frame slips in before the options are set. */
UniqueFd packet_socket(const std::string &interface_name) {
    UniqueFd fd{socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, kNoProtocol)};
    if (!fd) {
        throw error_from_errno("open packet socket on " + interface_name);
    }
    return fd;
}

void bind_to(int fd, int index, uint16_t protocol, const std::string &interface_name) {
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(protocol);
    address.sll_ifindex = index;
    if (bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        throw error_from_errno("bind packet socket to " + interface_name);
    }
}

}  // namespace

void PacketPort::open() {
    const auto index = static_cast<int>(if_nametoindex(interface_name_.c_str()));
    if (index == 0) {
        throw Error{"cannot find interface " + interface_name_ + ". Make it before the device is started, or let the " +
                    "device make all of them with --create-interfaces."};
    }
    UniqueFd sending = open_for_sending(index);
    socket_ = open_for_receiving(index);
    send_socket_ = std::move(sending);
    index_ = index;
}

// A socket of its own, which receives nothing and which nobody watches: whenever the kernel frees a frame that was
// sent, it looks for those who wait for the socket. It has no pending errors either, so an interface that was down
// takes the first frame again.
UniqueFd PacketPort::open_for_sending(int index) const {
    UniqueFd fd = packet_socket(interface_name_);
    enlarge_buffer(fd.get(), SO_SNDBUFFORCE, SO_SNDBUF);
    bind_to(fd.get(), index, kNoProtocol, interface_name_);
    return fd;
}

UniqueFd PacketPort::open_for_receiving(int index) {
    UniqueFd fd = packet_socket(interface_name_);
    set_option(fd.get(), SOL_PACKET, PACKET_AUXDATA, int{1}, interface_name_);
    set_option(fd.get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, int{1}, interface_name_);
    enlarge_buffer(fd.get(), SO_RCVBUFFORCE, SO_RCVBUF);
    if (ring_slots_ != 0) {
        ring_.open(fd.get(), ring_slots_);
    }
    packet_mreq promiscuous{};
    promiscuous.mr_ifindex = index;
    promiscuous.mr_type = PACKET_MR_PROMISC;
    set_option(fd.get(), SOL_PACKET, PACKET_ADD_MEMBERSHIP, promiscuous, interface_name_);
    bind_to(fd.get(), index, ETH_P_ALL, interface_name_);
    return fd;
}

// The kernel takes a socket off an interface that is removed, even if one of the same index and name follows.
bool PacketPort::is_current() const {
    sockaddr_ll bound{};
    socklen_t size = sizeof(bound);
    return getsockname(fd(), reinterpret_cast<sockaddr *>(&bound), &size) == 0 &&
           bound.sll_ifindex == static_cast<int>(if_nametoindex(interface_name_.c_str()));
}

void PacketPort::close() {
    if (!is_open()) {
        return;
    }
    receive_losses();
    receive_losses_ += discard_unread();
    send_failures_ += queue_.clear();
    ring_.close();
    socket_.reset();
    send_socket_.reset();
    index_ = 0;
}

/** Takes out what the device has not read, and counts it. */
uint64_t PacketPort::discard_unread() {
    uint64_t frames = 0;
    if (has_ring()) {
        for (; ring_.front(); ring_.release()) {
            ++frames;
        }
        return frames;
    }
    forget_error();
    while (recv(fd(), nullptr, 0, MSG_DONTWAIT) >= 0) {
        ++frames;
    }
    return frames;
}

// A socket keeps waking the loop until the error of an interface that went down is read. The link monitor reports the
// link itself.
void PacketPort::forget_error() const {
    int error = 0;
    socklen_t size = sizeof(error);
    getsockopt(fd(), SOL_SOCKET, SO_ERROR, &error, &size);
}

// Reading the kernel's counter sets it to 0.
uint64_t PacketPort::receive_losses() const {
    tpacket_stats counted{};
    socklen_t size = sizeof(counted);
    if (is_open() && getsockopt(fd(), SOL_PACKET, PACKET_STATISTICS, &counted, &size) == 0) {
        receive_losses_ += counted.tp_drops;
    }
    return receive_losses_;
}

void PacketPort::clear_counts() {
    receive_losses();  // takes the kernel's count, too
    receive_losses_ = 0;
    send_failures_ = 0;
}

bool PacketPort::queue(const chip::Frame &frame) {
    if (!is_open()) {
        ++send_failures_;
        return false;
    }
    if (!queue_.has_room(frame.size())) {
        flush();
    }
    const bool is_first = queue_.empty();
    queue_.add(frame);
    return is_first;
}

void PacketPort::flush() {
    send_failures_ += queue_.send(send_socket_.get());
}

}  // namespace vdevice::io
