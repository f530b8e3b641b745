// The table of fields: numbers, names and widths.
#include "vdevice/chip/fields/field.h"

#include "vdevice/chip/frame/port_set.h"

namespace vdevice::chip {
namespace {

constexpr unsigned kDataWordBits = 32;
constexpr unsigned kIpv6Bits = 128;
constexpr unsigned kMacBits = 48;

constexpr FieldInfo kFieldTable[] = {
    {Field::kSourceIpv6, 0, "src_ip6", kIpv6Bits},
    {Field::kDestinationIpv6, 1, "dst_ip6", kIpv6Bits},
    {Field::kSourceMac, 6, "src_mac", kMacBits},
    {Field::kDestinationMac, 7, "dst_mac", kMacBits},
    {Field::kSourceIpv4, 9, "src_ip", 32},
    {Field::kDestinationIpv4, 10, "dst_ip", 32},
    {Field::kInPorts, 13, "in_ports", PortSet::kSize},
    {Field::kOuterVid, 18, "outer_vid", 12},
    {Field::kOuterPriority, 19, "outer_priority", 3},
    {Field::kInnerFormat, 21, "inner_format", 2},
    {Field::kInnerVid, 22, "inner_vid", 12},
    {Field::kInnerPriority, 23, "inner_priority", 3},
    {Field::kSourcePort, 27, "src_port", 16},
    {Field::kDestinationPort, 28, "dst_port", 16},
    {Field::kEtherType, 29, "ether_type", 16},
    {Field::kProtocol, 30, "protocol", 8},
    {Field::kDscp, 31, "dscp", 8},
    {Field::kIpKind, 61, "ip_kind", 32},
    {Field::kFrameKind, 89, "frame_kind", 32},
    {Field::kTrafficClass, 332, "traffic_class", 8},
};

static_assert(std::size(kFieldTable) == kFields);

constexpr bool is_in_order() {
    for (size_t i = 0; i < kFields; ++i) {
        if (static_cast<size_t>(kFieldTable[i].field) != i) {
            return false;
        }
    }
    return true;
}
static_assert(is_in_order(), "describe() finds a field's row by its number");

}  // namespace

std::span<const FieldInfo> field_table() {
    return kFieldTable;
}

const FieldInfo &describe(Field field) {
    return kFieldTable[static_cast<size_t>(field)];
}

bool is_ip_kind(uint32_t code) {
    constexpr uint32_t kKinds = bit_of(IpKind::kAny) | bit_of(IpKind::kNotIp) | bit_of(IpKind::kIp) |
                                bit_of(IpKind::kArp) | bit_of(IpKind::kIpv4) | bit_of(IpKind::kIpv6);
    return code < static_cast<uint32_t>(IpKind::kCount) && ((kKinds >> code) & 1) != 0;
}

bool is_frame_kind(uint32_t code) {
    return code < static_cast<uint32_t>(FrameKind::kCount);
}

bool is_possible(const Qualifier &qualifier) {
    const unsigned bits = describe(qualifier.field).bits;
    return bits >= kDataWordBits || ((qualifier.data[0] & qualifier.mask[0]) >> bits) == 0;
}

}  // namespace vdevice::chip
