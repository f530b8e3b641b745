// The packet socket of a port: its options, and its errors.
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

template <typename Value>
void set_option(int fd, int level, int option, const Value &value, const std::string &interface_name) {
    if (setsockopt(fd, level, option, &value, sizeof(value)) != 0) {
        throw error_from_errno("set up the packet socket on " + interface_name);
    }
}

/** With the privilege beyond the system's limit, otherwise up to it. */
void enlarge_buffers(int fd) {
    if (setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &kSocketBufferBytes, sizeof(kSocketBufferBytes)) != 0) {
        setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &kSocketBufferBytes, sizeof(kSocketBufferBytes));
    }
    if (setsockopt(fd, SOL_SOCKET, SO_SNDBUFFORCE, &kSocketBufferBytes, sizeof(kSocketBufferBytes)) != 0) {
        setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &kSocketBufferBytes, sizeof(kSocketBufferBytes));
    }
}

}  // namespace

void PacketPort::open() {
    const unsigned index = if_nametoindex(interface_name_.c_str());
    if (index == 0) {
        throw Error{"cannot find interface " + interface_name_ + ". Make it before the device is started, or let the " +
                    "device make all of them with --create-interfaces."};
    }
    // Protocol 0 receives nothing yet: no frame slips in before the options are set.
    UniqueFd fd{socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0)};
    if (!fd) {
        throw error_from_errno("open packet socket on " + interface_name_);
    }
    set_option(fd.get(), SOL_PACKET, PACKET_AUXDATA, int{1}, interface_name_);
    set_option(fd.get(), SOL_PACKET, PACKET_IGNORE_OUTGOING, int{1}, interface_name_);
    enlarge_buffers(fd.get());
    if (ring_slots_ != 0) {
        ring_.open(fd.get(), ring_slots_);
    }
    packet_mreq promiscuous{};
    promiscuous.mr_ifindex = static_cast<int>(index);
    promiscuous.mr_type = PACKET_MR_PROMISC;
    set_option(fd.get(), SOL_PACKET, PACKET_ADD_MEMBERSHIP, promiscuous, interface_name_);
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_ALL);
    address.sll_ifindex = static_cast<int>(index);
    if (bind(fd.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) != 0) {
        throw error_from_errno("bind packet socket to " + interface_name_);
    }
    index_ = static_cast<int>(index);
    socket_ = std::move(fd);
}

void PacketPort::close() {
    receive_losses();
    ring_.close();
    socket_.reset();
    index_ = 0;
    queue_.clear();
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
    send_failures_ += queue_.send(fd());
}

}  // namespace vdevice::io
