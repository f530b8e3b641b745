// The table of qualifiers.
#include "fp/qualifiers.h"

#include <netlink_api.h>

#include "core/bitmap.h"

namespace adp {
namespace {

using enum QualifierForm;

constexpr uint8_t kFirstHalf = 0;
constexpr uint8_t kSecondOf1 = 1u << 1;
constexpr uint8_t kSecondOf5 = 1u << 5;

#define CALL(name) QualifierCall(user_field_qualify_##name)
#define FORMAT(name) "%s:[%05d]" name " i=[%d] ret=[%d] fent=[%d]-------\n"

const Qualifier kQualifiers[] = {
    {ADP_FP_QUALIFY_SRC_IP6, kPointers, kFirstHalf, CALL(SrcIp6), 1126, FORMAT(" srcip6")},
    {ADP_FP_QUALIFY_DST_IP6, kPointers, kSecondOf5, CALL(DstIp6), 1131, FORMAT(" dstip6")},
    {ADP_FP_QUALIFY_SRC_MAC, kPointers, kFirstHalf, CALL(SrcMac), 1034, FORMAT("  smac")},
    {ADP_FP_QUALIFY_DST_MAC, kPointers, kFirstHalf, CALL(DstMac), 1029, FORMAT("  dmac")},
    {ADP_FP_QUALIFY_SRC_IP, kWords, kSecondOf1, CALL(SrcIp), 1086, FORMAT("  src-ip")},
    {ADP_FP_QUALIFY_DST_IP, kWords, kSecondOf1, CALL(DstIp), 1081, FORMAT("  dst-ip")},
    {ADP_FP_QUALIFY_IN_PORTS, kPorts, kFirstHalf, CALL(InPorts), 1024,
     "%s:[%05d]  inports i=[%d] ret=[%d] fent=[%d] ------\n"},
    {ADP_FP_QUALIFY_OUTER_VLAN_ID, kLow16, kFirstHalf, CALL(OuterVlanId), 1058, FORMAT("  ovlan ID")},
    {ADP_FP_QUALIFY_OUTER_VLAN_PRI, kLow8, kFirstHalf, CALL(OuterVlanPri), 1042, FORMAT("  ovlan pri")},
    {ADP_FP_QUALIFY_INNER_VLAN, kLow16, kFirstHalf, CALL(InnerVlan), 1071, FORMAT("  ivlan format")},
    {ADP_FP_QUALIFY_INNER_VLAN_ID, kLow16, kFirstHalf, CALL(InnerVlanId), 1066, FORMAT("  ivlan ID")},
    {ADP_FP_QUALIFY_INNER_VLAN_PRI, kLow8, kFirstHalf, CALL(InnerVlanPri), 1050, FORMAT("  ivlan pri")},
    {ADP_FP_QUALIFY_L4_SRC_PORT, kWords, kSecondOf1 | kSecondOf5, CALL(L4SrcPort), 1106, FORMAT("  l4-src-port")},
    {ADP_FP_QUALIFY_L4_DST_PORT, kWords, kSecondOf1 | kSecondOf5, CALL(L4DstPort), 1111, FORMAT("  l4-dst-port")},
    {ADP_FP_QUALIFY_ETHER_TYPE, kLow16, kFirstHalf, CALL(EtherType), 1076, FORMAT("  ethertype")},
    {ADP_FP_QUALIFY_IP_PROTOCOL, kLow8, kSecondOf5, CALL(IpProtocol), 1091, FORMAT("  ip-proto")},
    {ADP_FP_QUALIFY_DSCP, kLow8, kSecondOf1, CALL(DSCP), 1096, FORMAT("  dscp")},
    {ADP_FP_QUALIFY_IP_TYPE, kWordNoMask, kSecondOf1, CALL(iptype), 1116, FORMAT("  ip-type")},
    {ADP_FP_QUALIFY_FRAME_TYPE, kWordNoMask, kFirstHalf, CALL(FrameType), 1121, FORMAT("  frametype")},
    {ADP_FP_QUALIFY_IP6_TRAFFIC_CLASS, kLow8, kSecondOf1, CALL(Ip6TrafficClass), 1101, FORMAT("  ip6-traffic")},
};

#undef CALL
#undef FORMAT

}  // namespace

const Qualifier *find_qualifier(uint32_t type) {
    for (const Qualifier &qualifier : kQualifiers) {
        if (qualifier.type == type) {
            return &qualifier;
        }
    }
    return nullptr;
}

adp_port_set_t phy_ports_of(const uint8_t *field, uint32_t unit) {
    // All interfaces are of slot 0, which is unit 0.
    if (unit != 0) {
        return {};
    }
    adp_ports_t interfaces;
    memcpy(interfaces, field, sizeof interfaces);
    return phy_set_of(interfaces);
}

int32_t apply_qualifier(const Qualifier &qualifier, const FpQualify &condition, uint32_t unit, uint32_t entry) {
    const uint32_t data = load_word(condition.data);
    const uint32_t mask = load_word(condition.mask);
    uint32_t width = UINT32_MAX;
    switch (qualifier.form) {
        case kPointers:
            return qualifier.call.pointers(fp_handle, unit, entry, condition.data, condition.mask);
        case kPorts:
            return qualifier.call.ports(fp_handle, unit, entry, phy_ports_of(condition.data, unit),
                                        phy_ports_of(condition.mask, unit));
        case kWordNoMask:
            return qualifier.call.word(fp_handle, unit, entry, data);
        case kLow16:
            width = UINT16_MAX;
            break;
        case kLow8:
            width = UINT8_MAX;
            break;
        default:  // kWords: as they are
            break;
    }
    return qualifier.call.words(fp_handle, unit, entry, data & width, mask & width);
}

}  // namespace adp
