// Uses the library's frame calls; only reading from the socket is done here.
#include "switchd/frames/cpu_port.h"

#include <adp/pkt.h>
#include <fcntl.h>
#include <linux/filter.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "vdevice/chip/frame/switch_tag.h"
#include "vdevice/io/error.h"

namespace switchd {
namespace {

using vdevice::chip::Bytes;
using vdevice::chip::kAddressBytes;
using vdevice::chip::kTypeBytes;
using vdevice::chip::kVlanTagBytes;

constexpr size_t kMostOctets = vdevice::chip::kMaxFrameBytes + kVlanTagBytes;

/** The number may be that of printed characters instead: then it is no packet socket. */
bool is_packet_socket(int fd) {
    int family = 0;
    socklen_t size = sizeof(family);
    return getsockopt(fd, SOL_SOCKET, SO_DOMAIN, &family, &size) == 0 && family == AF_PACKET;
}

/** The library's socket for sending. What it would receive is read by nobody, so the kernel keeps none of it. */
void open_for_sending() {
    static bool is_done = false;
    if (is_done) {
        return;
    }
    const int fd = adp_pkt_init();
    if (!is_packet_socket(fd)) {
        throw vdevice::io::error_from_errno("open the socket for frames to the switch");
    }
    sock_filter nothing{BPF_RET | BPF_K, 0, 0, 0};
    const sock_fprog filter{1, &nothing};
    setsockopt(fd, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof(filter));
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    is_done = true;
}

}  // namespace

CpuPort::CpuPort(const std::string &interface_name)
    : port_{interface_name}, received_(kMostOctets), sent_(kMostOctets) {}

void CpuPort::open() {
    open_for_sending();
    port_.close();
    port_.open();
}

void CpuPort::receive(const Take &take) {
    port_.receive(batch_, [&](Bytes frame, vdevice::io::WallTime) { take_frame(frame, take); });
}

// The library ignores the tag's type and moves the frame over the tag, so it gets a copy of what has one.
void CpuPort::take_frame(Bytes frame, const Take &take) {
    const bool has_tag = frame.size() >= kAddressBytes + kTypeBytes &&
                         vdevice::chip::read16(frame, kAddressBytes) == vdevice::chip::kSwitchTagType;
    uint8_t *first = nullptr;
    uint16_t length = 0;
    uint8_t flag = 0;
    adp_intf_t port = 0;
    if (!has_tag || frame.size() > received_.size()) {
        ++foreign_frames_;
        return;
    }
    std::copy(frame.begin(), frame.end(), received_.begin());
    if (adp_receive_frame(received_.data(), &first, static_cast<uint32_t>(frame.size()), &length, &flag, &port) !=
        ADP_OK) {
        ++foreign_frames_;
        return;
    }
    take(port, Bytes{first, length});
}

bool CpuPort::send(uint32_t intf, uint16_t vid, Bytes frame) {
    if (!is_open() || frame.size() < kAddressBytes || frame.size() + kVlanTagBytes > sent_.size()) {
        return false;
    }
    uint8_t *end = std::copy_n(frame.begin(), kAddressBytes, sent_.data());
    if (vid != 0) {
        vdevice::chip::write16(end, vdevice::chip::kVlanTpid);
        vdevice::chip::write16(end + kTypeBytes, vid);
        end += kVlanTagBytes;
    }
    end = std::copy(frame.begin() + kAddressBytes, frame.end(), end);
    adp_tx_dest_t destination{{nullptr, nullptr}, intf};
    adp_list_link_t head{&destination.link, &destination.link};
    destination.link = {&head, &head};
    const adp_tx_frame_t sent{sent_.data(), static_cast<uint32_t>(end - sent_.data()), 0};
    return __adp_transmit_frame(&sent, &head, ADP_NO_VLAN, ADP_TX_ONE_PORT) == ADP_OK;
}

}  // namespace switchd
