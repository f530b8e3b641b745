// The packet socket of a port. The kernel takes an outer VLAN tag out of received frames and reports it beside them;
// here it is put back, because the chip must see the frame as it was on the cable.
#include "vdevice/io/packet_port.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <net/if.h>

#include <cerrno>
#include <cstring>

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

/** Beyond the system's limit where the privilege is there, up to it otherwise. */
void enlarge_buffers(int fd) {
    if (setsockopt(fd, SOL_SOCKET, SO_RCVBUFFORCE, &kSocketBufferBytes, sizeof(kSocketBufferBytes)) != 0) {
        setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &kSocketBufferBytes, sizeof(kSocketBufferBytes));
    }
    if (setsockopt(fd, SOL_SOCKET, SO_SNDBUFFORCE, &kSocketBufferBytes, sizeof(kSocketBufferBytes)) != 0) {
        setsockopt(fd, SOL_SOCKET, SO_SNDBUF, &kSocketBufferBytes, sizeof(kSocketBufferBytes));
    }
}

}  // namespace

ReceiveBatch::ReceiveBatch() : slots_(kFrames * kSlotBytes) {
    for (std::size_t i = 0; i < kFrames; ++i) {
        pieces_[i] = {&slots_[i * kSlotBytes + kRoomForTag], kSlotBytes - kRoomForTag};
        messages_[i].msg_hdr.msg_iov = &pieces_[i];
        messages_[i].msg_hdr.msg_iovlen = 1;
        messages_[i].msg_hdr.msg_control = &controls_[i];
    }
}

void ReceiveBatch::prepare() {
    for (mmsghdr &message : messages_) {
        message.msg_hdr.msg_controllen = sizeof(Control);
    }
    count_ = 0;
}

void ReceiveBatch::restore_tag(std::size_t index) {
    std::uint8_t *frame = &slots_[index * kSlotBytes + kRoomForTag];
    frames_[index] = {frame, messages_[index].msg_len};
    msghdr &header = messages_[index].msg_hdr;
    for (cmsghdr *part = CMSG_FIRSTHDR(&header); part != nullptr; part = CMSG_NXTHDR(&header, part)) {
        if (part->cmsg_level != SOL_PACKET || part->cmsg_type != PACKET_AUXDATA) {
            continue;
        }
        tpacket_auxdata auxiliary{};
        std::memcpy(&auxiliary, CMSG_DATA(part), sizeof(auxiliary));
        if ((auxiliary.tp_status & TP_STATUS_VLAN_VALID) == 0 || messages_[index].msg_len < chip::kAddressBytes) {
            continue;
        }
        const bool names_tpid = (auxiliary.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0;
        std::memmove(frame - chip::kVlanTagBytes, frame, chip::kAddressBytes);
        frame -= chip::kVlanTagBytes;
        chip::write16(frame + chip::kAddressBytes, names_tpid ? auxiliary.tp_vlan_tpid : chip::kVlanTpid);
        chip::write16(frame + chip::kAddressBytes + chip::kTypeBytes, auxiliary.tp_vlan_tci);
        frames_[index] = {frame, messages_[index].msg_len + chip::kVlanTagBytes};
        return;
    }
}

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
    queue_bytes_.resize(kQueueBytes);
    queue_.reserve(kQueueFrames);
    index_ = static_cast<int>(index);
    socket_ = std::move(fd);
}

void PacketPort::close() {
    socket_.reset();
    index_ = 0;
    queue_.clear();
    queued_bytes_ = 0;
}

void PacketPort::receive(ReceiveBatch &batch) {
    batch.prepare();
    const int count = recvmmsg(fd(), batch.messages_.data(), ReceiveBatch::kFrames, MSG_DONTWAIT, nullptr);
    // An interface that went down reports ENETDOWN once; the link monitor has told or will tell the chip.
    batch.count_ = count < 0 ? 0 : static_cast<std::size_t>(count);
    for (std::size_t i = 0; i < batch.count_; ++i) {
        batch.restore_tag(i);
    }
}

bool PacketPort::queue(const chip::Frame &frame) {
    if (!is_open()) {
        ++send_failures_;
        return false;
    }
    if (queue_.size() == kQueueFrames || frame.size() > queue_bytes_.size() - queued_bytes_) {
        flush();
    }
    std::uint8_t *place = &queue_bytes_[queued_bytes_];
    frame.copy_to(place);
    queued_bytes_ += frame.size();
    queue_.push_back({place, frame.size()});
    return queue_.size() == 1;
}

void PacketPort::flush() {
    std::array<mmsghdr, kQueueFrames> messages{};
    for (std::size_t i = 0; i < queue_.size(); ++i) {
        messages[i].msg_hdr.msg_iov = &queue_[i];
        messages[i].msg_hdr.msg_iovlen = 1;
    }
    std::size_t sent = 0;
    while (sent < queue_.size()) {
        const int count = sendmmsg(fd(), &messages[sent], static_cast<unsigned>(queue_.size() - sent), MSG_DONTWAIT);
        if (count > 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            // The frame at the head was refused (interface down, too long, no buffers): it is lost, the others go on.
            ++send_failures_;
            ++sent;
        }
    }
    queue_.clear();
    queued_bytes_ = 0;
}

}  // namespace vdevice::io
