// Reads headers; nothing is read beyond the frame's end.
#include "switchd/frames/frame_header.h"

#include <algorithm>
#include <iterator>

#include "vdevice/chip/tables/snooping.h"

namespace switchd {
namespace {

using vdevice::chip::Bytes;
using vdevice::chip::kAddressBytes;
using vdevice::chip::kTypeBytes;
using vdevice::chip::kVlanTagBytes;
using vdevice::chip::read16;

constexpr uint16_t kTagTypes[] = {0x8100, 0x88A8, 0x9100};
constexpr uint16_t kEapolType = 0x888E;
constexpr uint16_t kSlowProtocolType = 0x8809;
constexpr uint8_t kLacpSubtype = 1;
constexpr uint8_t kMarkerSubtype = 2;

Mac mac_at(Bytes octets, size_t offset) {
    Mac mac{};
    std::copy_n(octets.begin() + static_cast<ptrdiff_t>(offset), mac.size(), mac.begin());
    return mac;
}

std::optional<FrameHeader> read_header(Bytes octets, bool is_tagged) {
    const size_t tag_bytes = is_tagged ? kVlanTagBytes : 0;
    if (octets.size() < kAddressBytes + tag_bytes + kTypeBytes) {
        return std::nullopt;
    }
    FrameHeader header;
    header.destination = mac_at(octets, 0);
    header.source = mac_at(octets, vdevice::chip::kMacBytes);
    header.type = read16(octets, kAddressBytes + tag_bytes);
    if (is_tagged) {
        header.vid = read16(octets, kAddressBytes + kTypeBytes) & vdevice::chip::kVidMask;
    }
    header.frame = vdevice::chip::split_frame(octets, tag_bytes);
    header.whole = vdevice::chip::split_frame(octets);
    return header;
}

/** Of the addresses that bridges do pass on, those in the chip's table of reserved addresses at power-on. */
bool is_reserved_for_bridges(const Mac &destination) {
    constexpr Mac kManagement{0x01, 0x80, 0xC2, 0x00, 0x00, 0x10};
    constexpr Mac kFirst{0x01, 0x80, 0xC2, 0x00, 0x00, 0x20};
    constexpr Mac kLast{0x01, 0x80, 0xC2, 0x00, 0x00, 0x28};
    return destination == kManagement || (kFirst <= destination && destination <= kLast);
}

}  // namespace

std::optional<FrameHeader> read_tagged(Bytes octets) {
    return read_header(octets, true);
}

std::optional<FrameHeader> read_frame(Bytes octets) {
    if (octets.size() < kAddressBytes + kTypeBytes) {
        return std::nullopt;
    }
    const uint16_t type = read16(octets, kAddressBytes);
    return read_header(octets, std::find(std::begin(kTagTypes), std::end(kTagTypes), type) != std::end(kTagTypes));
}

bool is_link_local(const Mac &destination) {
    return vdevice::chip::Mac::from_bytes(destination.data()).is_reserved();
}

bool is_ipv4_group(const Mac &destination) {
    const auto &[a, b, c, d, e, f] = destination;
    return a == 0x01 && b == 0x00 && c == 0x5E && d < 0x80 && (d != 0 || e != 0);
}

bool is_ipv6_group(const Mac &destination) {
    constexpr Mac kAllNodes{0x33, 0x33, 0, 0, 0, 1};
    return destination[0] == 0x33 && destination[1] == 0x33 && destination != kAllNodes;
}

bool is_trapped(const FrameHeader &header) {
    if (!header.is_to_group()) {
        return false;
    }
    if (is_link_local(header.destination) || is_reserved_for_bridges(header.destination)) {
        return true;
    }
    const auto of_chip = vdevice::chip::read_untagged_header(header.frame);
    return of_chip && vdevice::chip::is_igmp_or_mld(*of_chip, true, true);
}

bool is_eapol(const FrameHeader &header) {
    return header.type == kEapolType;
}

bool is_lacp(const FrameHeader &header) {
    const Bytes body = header.frame.body;
    return header.type == kSlowProtocolType && body.size() > kTypeBytes &&
           (body[kTypeBytes] == kLacpSubtype || body[kTypeBytes] == kMarkerSubtype);
}

}  // namespace switchd
