// A packet socket and batches of messages on it.
#include "bench/device/packet_sender.h"

#include <linux/if_packet.h>
#include <net/if.h>

#include <cerrno>
#include <system_error>

namespace bench {
namespace {

void check(bool done, const std::string &what) {
    if (!done) {
        throw std::system_error{errno, std::generic_category(), what};
    }
}

/** A message without an end of its own: what its piece says is sent. */
mmsghdr message_of(iovec &piece) {
    mmsghdr message{};
    message.msg_hdr.msg_iov = &piece;
    message.msg_hdr.msg_iovlen = 1;
    return message;
}

}  // namespace

PacketSender::PacketSender(const std::string &interface_name, Kind kind)
    : socket_{socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC, 0)} {
    check(static_cast<bool>(socket_), "open a packet socket");
    // Single frames go to the interface itself. Trains are taken apart on the way through the kernel's queue.
    const int option = kind == Kind::kTrains ? PACKET_VNET_HDR : PACKET_QDISC_BYPASS;
    const int on = 1;
    check(setsockopt(socket_.get(), SOL_PACKET, option, &on, sizeof(on)) == 0, "set up a packet socket");
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_ifindex = static_cast<int>(if_nametoindex(interface_name.c_str()));
    check(address.sll_ifindex != 0, "find interface " + interface_name);
    check(bind(socket_.get(), reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0, "bind the socket");
}

uint64_t PacketSender::send(std::span<const Frame> frames) {
    pieces_.clear();
    messages_.clear();
    pieces_.reserve(frames.size());
    for (const Frame &frame : frames) {
        pieces_.push_back({const_cast<uint8_t *>(frame.data()), frame.size()});
        messages_.push_back(message_of(pieces_.back()));
    }
    uint64_t taken = 0;
    for (size_t at = 0; at < messages_.size();) {
        const int count = sendmmsg(socket_.get(), &messages_[at], static_cast<unsigned>(messages_.size() - at), 0);
        // What is at the head was refused, the others go on.
        at += count > 0 ? static_cast<size_t>(count) : 1;
        taken += count > 0 ? static_cast<uint64_t>(count) : 0;
    }
    return taken;
}

}  // namespace bench
