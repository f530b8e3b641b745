// __adp_receive_frame(): ingress interface, VLAN check, and the headers of a received frame. Frames are hostile: no
// byte is read before its offset is checked.
#include <adp/pkt.h>

#include "core/group_tables.h"
#include "core/port_map.h"
#include "pkt/receive.h"

namespace adp {
namespace {

constexpr uint32_t kTypeIpv4 = 0x0800;
constexpr uint32_t kTypeIpv6 = 0x86DD;
constexpr uint32_t kTypeVlan = 0x8100;         // IEEE 802.1Q
constexpr uint32_t kTypeStackedVlan = 0x9100;  // outer tag of stacked VLANs
constexpr uint32_t kVlanTagLength = 4;
constexpr uint32_t kTypeLength = 2;
constexpr uint32_t kVidMask = 0xFFF;
constexpr uint8_t kProtocolUdp = 17;

constexpr uint32_t kIpv4ProtocolOffset = 9;
constexpr uint8_t kIpv4HeaderLengthMask = 0xF;  // in words of four bytes
constexpr uint32_t kIpv6NextHeaderOffset = 6;
constexpr uint32_t kIpv6HeaderLength = 40;
constexpr uint8_t kHopByHop = 0;
constexpr uint32_t kExtensionLengthOffset = kIpv6HeaderLength + 1;  // in units of eight bytes, less the first

/** Contract: the length is reduced by four more than the bytes removed. */
constexpr uint32_t kReportedReduction = 10;

/** A frame after the tag is stripped. */
class Frame {
  public:
    Frame(uint8_t *start, uint32_t length) : start_(start), length_(length) {}

    /** The address of an offset; it may lie beyond the end. */
    uint8_t *at(uint32_t offset) const { return start_ + offset; }

    bool read8(uint32_t offset, uint8_t *value) const {
        if (offset >= length_) {
            return false;
        }
        *value = start_[offset];
        return true;
    }

    bool read16(uint32_t offset, uint32_t *value) const {
        if (offset + 1 >= length_) {
            return false;
        }
        *value = read_be16(start_ + offset);
        return true;
    }

  private:
    uint8_t *start_;
    uint32_t length_;
};

// The VID of the tag that the caller points at. A tag that starts inside the frame must end inside it.
bool read_vid(const adp_rx_frame_t &desc, uint32_t length, int32_t *vid) {
    const auto tag = reinterpret_cast<uintptr_t>(desc.vlan_tag);
    const auto start = reinterpret_cast<uintptr_t>(desc.frame);
    if (tag >= start && tag < start + length && tag + kVlanTagLength > start + length) {
        return false;
    }
    *vid = static_cast<int32_t>(read_be16(desc.vlan_tag + kTypeLength) & kVidMask);
    return true;
}

bool passes_vlan_check(const adp_rx_frame_t &desc, uint32_t length) {
    int32_t vid = 0;
    return desc.vlan_tag != nullptr && read_vid(desc, length, &vid) &&
           check_port_vlan_ability(desc.intf, vid) == ADP_OK;
}

// Skips at most max_tags 802.1Q tags from the one at *offset. *offset then is that of the type after them.
bool walk_tags(const Frame &frame, uint32_t max_tags, uint32_t *offset, uint32_t *type, adp_rx_frame_t *desc) {
    *type = kTypeVlan;
    for (uint32_t tags = 0; *type == kTypeVlan; ++tags, *offset += kVlanTagLength) {
        if (tags == max_tags) {
            return false;
        }
        desc->vlan_tag = frame.at(*offset);
        if (!frame.read16(*offset + kVlanTagLength, type)) {
            return false;
        }
    }
    return true;
}

// Finds the type after the VLAN tags. Contract: untagged frames are refused.
bool find_type(const Frame &frame, uint32_t *offset, uint32_t *type, adp_rx_frame_t *desc) {
    constexpr uint32_t kMaxTags = 2;
    *offset = kMacAddressesLength;
    if (!frame.read16(*offset, type)) {
        return false;
    }
    if (*type == kTypeVlan) {
        return walk_tags(frame, kMaxTags, offset, type, desc);
    }
    if (*type != kTypeStackedVlan) {
        return false;
    }
    *offset += kVlanTagLength;
    return frame.read16(*offset, type) && (*type != kTypeVlan || walk_tags(frame, 1, offset, type, desc));
}

bool parse_ipv4(const Frame &frame, uint32_t header, adp_rx_frame_t *desc) {
    uint8_t version_and_length = 0;
    uint8_t protocol = 0;
    desc->ipv4_header = frame.at(header);
    if (!frame.read8(header, &version_and_length)) {
        return false;
    }
    desc->l4_header = frame.at(header + 4u * (version_and_length & kIpv4HeaderLengthMask));
    if (!frame.read8(header + kIpv4ProtocolOffset, &protocol)) {
        return false;
    }
    if (protocol == kProtocolUdp) {
        desc->udp_header = desc->l4_header;
    }
    return true;
}

bool parse_ipv6(const Frame &frame, uint32_t header, adp_rx_frame_t *desc) {
    uint8_t next_header = 0;
    uint8_t extension_units = 0;
    desc->ipv6_header = frame.at(header);
    if (!frame.read8(header + kIpv6NextHeaderOffset, &next_header)) {
        return false;
    }
    const uint32_t payload = header + kIpv6HeaderLength;
    if (next_header != kHopByHop) {
        desc->l4_header = frame.at(payload);
        if (next_header == kProtocolUdp) {
            desc->udp_header = desc->l4_header;
        }
        return true;
    }
    if (!frame.read8(header + kExtensionLengthOffset, &extension_units)) {
        return false;
    }
    desc->l4_header = frame.at(payload + 8u * extension_units + 8u);
    return true;
}

bool parse(const Frame &frame, adp_rx_frame_t *desc) {
    uint32_t offset = 0;
    uint32_t type = 0;
    if (!find_type(frame, &offset, &type, desc)) {
        return false;
    }
    const uint32_t header = offset + kTypeLength;
    switch (type) {
        case kTypeIpv4:
            return parse_ipv4(frame, header, desc);
        case kTypeIpv6:
            return parse_ipv6(frame, header, desc);
        default:
            return true;
    }
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t __adp_receive_frame(adp_rx_frame_t *desc, int32_t check_vlan) {
    const uint32_t length = low16(desc->length);
    if (length < kRxTaggedHeaderLength) {
        return ADP_FAIL;
    }
    const PhyPort port = ingress_port_of(desc->frame);
    desc->phy = number(port);
    const Intf user_port = intf_of(port);
    const Intf group = agg_of(user_port);
    desc->intf = number(group == kNoIntf ? user_port : group);
    if (check_vlan == 1 && !passes_vlan_check(*desc, length)) {
        return ADP_FAIL;
    }
    strip_rx_tag(desc->frame, length);
    desc->length = low16(length - kReportedReduction);
    desc->ethernet_header = desc->frame;
    return parse(Frame(desc->frame, length - kRxTagLength), desc) ? ADP_OK : ADP_FAIL;
}
