// The tags are the library's, the socket is this one's own: the library's needs four system calls for a frame.
#include "switchd/frames/cpu_port.h"

#include <adp/agg.h>
#include <adp/pkt.h>

#include <algorithm>
#include <array>

#include "vdevice/chip/frame/switch_tag.h"

namespace switchd {
namespace {

using vdevice::chip::Bytes;
using vdevice::chip::kAddressBytes;
using vdevice::chip::kTypeBytes;
using vdevice::chip::kVlanTagBytes;

constexpr size_t kMostOctets = vdevice::chip::kMaxFrameBytes + kVlanTagBytes;

/** Word 1 of the tag that __adp_transmit_frame() makes for one port. */
constexpr uint32_t kOnePortAsGiven = 0xDA000000;

}  // namespace

CpuPort::CpuPort(const std::string &interface_name) : port_{interface_name}, received_(kMostOctets) {}

void CpuPort::open() {
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
    adp_intf_t port = intf;
    const bool is_group = intf >> ADP_INTF_TYPE_SHIFT == ADP_INTF_TYPE_AGG;
    if (!is_open() || frame.size() < kAddressBytes || frame.size() + kVlanTagBytes > vdevice::chip::kMaxFrameBytes ||
        (is_group && (GET_AGG_MANAGE_INTF(intf, &port) != ADP_OK || port == 0))) {
        return false;
    }
    std::array<uint8_t, kAddressBytes + vdevice::chip::kTransmitTagBytes + kVlanTagBytes> head{};
    uint8_t *end = std::copy_n(frame.begin(), kAddressBytes, head.data());
    vdevice::chip::write16(end, vdevice::chip::kSwitchTagType);
    end += kTypeBytes;
    vdevice::chip::write32(end, kOnePortAsGiven | port);
    adp_bcmtag_dest_port_intf_2_phy(end);
    end += 2 * sizeof(uint32_t);
    if (vid != 0) {
        vdevice::chip::write16(end, vdevice::chip::kVlanTpid);
        vdevice::chip::write16(end + kTypeBytes, vid);
        end += kVlanTagBytes;
    }
    const auto used = static_cast<size_t>(end - head.data());
    port_.queue({Bytes{head}.first(used), frame.subspan(kAddressBytes)});
    return true;
}

}  // namespace switchd
