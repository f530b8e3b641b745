#include "vdevice/chip/field_key.h"

#include "vdevice/chip/ip_header.h"
#include "vdevice/chip/packet.h"
#include "vdevice/chip/port_set.h"

namespace vdevice::chip {
namespace {

constexpr std::uint16_t kTypeArp = 0x0806;
constexpr unsigned kWordBits = 32;

constexpr std::size_t words_of(unsigned bits) {
    return (bits + kWordBits - 1) / kWordBits;
}

TagFormat format_of(std::optional<std::uint16_t> tci) {
    if (!tci) {
        return TagFormat::kNone;
    }
    return (*tci & kVidMask) == 0 ? TagFormat::kPriority : TagFormat::kVlan;
}

}  // namespace

FieldKey::FieldKey(const FieldFrame &frame) {
    const Packet packet = read_packet(frame.header);
    set(Field::kInPorts, static_cast<std::uint32_t>(frame.ingress));
    set(Field::kDestinationMac, frame.header.destination);
    set(Field::kSourceMac, frame.header.source);
    set(Field::kOuterVid, frame.tci & kVidMask);
    set(Field::kOuterPriority, frame.tci >> kPcpShift);
    set(Field::kInnerFormat, static_cast<std::uint32_t>(format_of(packet.inner_tci)));
    if (packet.inner_tci) {
        set(Field::kInnerVid, *packet.inner_tci & kVidMask);
        set(Field::kInnerPriority, *packet.inner_tci >> kPcpShift);
    }
    set(Field::kFrameKind, bit_of(FrameKind::kAny) | bit_of(packet.frame_kind));
    if (packet.type) {
        set(Field::kEtherType, *packet.type);
    }
    if (packet.type == kTypeIpv4 && is_ipv4(packet.octets)) {
        read_ipv4(packet.octets);
    } else if (packet.type == kTypeIpv6 && is_ipv6(packet.octets)) {
        read_ipv6(packet.octets);
    } else {
        set(Field::kIpKind,
            bit_of(IpKind::kAny) | bit_of(IpKind::kNotIp) | (packet.type == kTypeArp ? bit_of(IpKind::kArp) : 0));
    }
}

bool FieldKey::meets(const Qualifier &qualifier) const {
    return qualifier.field == Field::kInPorts ? shares_port(qualifier) : is_equal(qualifier);
}

bool FieldKey::is_equal(const Qualifier &qualifier) const {
    const bool is_there = has(qualifier.field);
    const std::size_t count = words_of(describe(qualifier.field).bits);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t mask = qualifier.mask[i];
        if (mask != 0 && (!is_there || ((at(qualifier.field)[i] ^ qualifier.data[i]) & mask) != 0)) {
            return false;
        }
    }
    return true;
}

bool FieldKey::shares_port(const Qualifier &qualifier) const {
    const PortSet asked = PortSet::from_words(qualifier.data.data()) & PortSet::from_words(qualifier.mask.data());
    return asked.has(static_cast<int>(at(Field::kInPorts)[0]));
}

FieldWords &FieldKey::add(Field field) {
    present_ |= bit_of(field);
    return words_[static_cast<std::size_t>(field)];
}

void FieldKey::set(Field field, std::uint32_t value) {
    add(field)[0] = value;
}

void FieldKey::set(Field field, Mac mac) {
    FieldWords &words = add(field);
    words[0] = static_cast<std::uint32_t>(mac.value() >> kWordBits);
    words[1] = static_cast<std::uint32_t>(mac.value());
}

void FieldKey::set_ipv6(Field field, Bytes address) {
    FieldWords &words = add(field);
    for (std::size_t i = 0; i < kIpv6AddressBytes / sizeof(std::uint32_t); ++i) {
        words[i] = read32(address, i * sizeof(std::uint32_t));
    }
}

void FieldKey::read_ipv4(Bytes packet) {
    set(Field::kIpKind, bit_of(IpKind::kAny) | bit_of(IpKind::kIp) | bit_of(IpKind::kIpv4));
    set(Field::kSourceIpv4, read32(packet, kIpv4SourceAt));
    set(Field::kDestinationIpv4, read32(packet, kIpv4SourceAt + kIpv4AddressBytes));
    set(Field::kDscp, packet[kIpv4DscpAt]);
    const Upper upper = read_upper_ipv4(packet);
    set(Field::kProtocol, *upper.protocol);
    set_ports(upper.ports);
}

void FieldKey::read_ipv6(Bytes packet) {
    set(Field::kIpKind, bit_of(IpKind::kAny) | bit_of(IpKind::kIp) | bit_of(IpKind::kIpv6));
    set_ipv6(Field::kSourceIpv6, packet.subspan(kIpv6SourceAt));
    set_ipv6(Field::kDestinationIpv6, packet.subspan(kIpv6SourceAt + kIpv6AddressBytes));
    set(Field::kTrafficClass, (read16(packet, 0) >> kIpv6TrafficClassShift) & 0xFFU);
    const Upper upper = read_upper_ipv6(packet);
    if (upper.protocol) {
        set(Field::kProtocol, *upper.protocol);
    }
    set_ports(upper.ports);
}

void FieldKey::set_ports(Bytes ports) {
    if (!ports.empty()) {
        set(Field::kSourcePort, read16(ports, 0));
        set(Field::kDestinationPort, read16(ports, kPortBytes));
    }
}

}  // namespace vdevice::chip
