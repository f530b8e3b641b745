// Reads the fields of a frame, through all its tags and extension headers.
#include "vdevice/chip/fields/field_key.h"

#include "vdevice/chip/frame/encapsulation.h"
#include "vdevice/chip/frame/ip_header.h"
#include "vdevice/chip/frame/port_set.h"

namespace vdevice::chip {
namespace {

constexpr uint16_t kTypeArp = 0x0806;
constexpr unsigned kLowMacBits = 32;

TagFormat format_of(std::optional<uint16_t> tci) {
    if (!tci) {
        return TagFormat::kNone;
    }
    return (*tci & kVidMask) == 0 ? TagFormat::kPriority : TagFormat::kVlan;
}

}  // namespace

FieldKey::FieldKey(const FieldFrame &frame) {
    const Encapsulation carried = read_encapsulation(frame.header);
    set(Field::kInPorts, static_cast<uint32_t>(frame.ingress));
    set(Field::kDestinationMac, frame.header.destination);
    set(Field::kSourceMac, frame.header.source);
    set(Field::kOuterVid, frame.tci & kVidMask);
    set(Field::kOuterPriority, frame.tci >> kPcpShift);
    set(Field::kInnerFormat, static_cast<uint32_t>(format_of(carried.inner_tci)));
    if (carried.inner_tci) {
        set(Field::kInnerVid, *carried.inner_tci & kVidMask);
        set(Field::kInnerPriority, *carried.inner_tci >> kPcpShift);
    }
    set(Field::kFrameKind, bit_of(FrameKind::kAny) | bit_of(carried.kind));
    if (carried.type) {
        set(Field::kEtherType, *carried.type);
    }
    if (const auto packet = read_ip_packet(carried.type.value_or(0), carried.octets)) {
        set_packet(*packet, carried.octets);
    } else {
        set(Field::kIpKind,
            bit_of(IpKind::kAny) | bit_of(IpKind::kNotIp) | (carried.type == kTypeArp ? bit_of(IpKind::kArp) : 0));
    }
}

bool FieldKey::meets(const Qualifier &qualifier) const {
    return qualifier.field == Field::kInPorts ? shares_port(qualifier) : is_equal(qualifier);
}

bool FieldKey::is_equal(const Qualifier &qualifier) const {
    const bool is_there = has(qualifier.field);
    const size_t first = first_key_word(qualifier.field);
    for (size_t i = 0; i < key_words(qualifier.field); ++i) {
        const uint32_t mask = qualifier.mask[i];
        if (mask != 0 && (!is_there || ((word(first + i) ^ qualifier.data[i]) & mask) != 0)) {
            return false;
        }
    }
    return true;
}

bool FieldKey::shares_port(const Qualifier &qualifier) const {
    const PortSet asked = PortSet::from_words(qualifier.data.data()) & PortSet::from_words(qualifier.mask.data());
    return asked.has(ingress());
}

void FieldKey::set(Field field, uint32_t value) {
    *add(field) = value;
}

void FieldKey::set(Field field, Mac mac) {
    uint32_t *words = add(field);
    words[0] = static_cast<uint32_t>(mac.value() >> kLowMacBits);
    words[1] = static_cast<uint32_t>(mac.value());
}

void FieldKey::set_ipv6(Field field, Bytes address) {
    uint32_t *words = add(field);
    for (size_t i = 0; i < kIpv6AddressBytes / sizeof(uint32_t); ++i) {
        words[i] = read32(address, i * sizeof(uint32_t));
    }
}

void FieldKey::set_packet(const IpPacket &packet, Bytes octets) {
    if (packet.is_version6()) {
        set(Field::kIpKind, bit_of(IpKind::kAny) | bit_of(IpKind::kIp) | bit_of(IpKind::kIpv6));
        set_ipv6(Field::kSourceIpv6, packet.source);
        set_ipv6(Field::kDestinationIpv6, packet.destination);
        set(Field::kTrafficClass, (read16(octets, 0) >> kIpv6TrafficClassShift) & 0xFFU);
    } else {
        set(Field::kIpKind, bit_of(IpKind::kAny) | bit_of(IpKind::kIp) | bit_of(IpKind::kIpv4));
        set(Field::kSourceIpv4, read32(packet.source, 0));
        set(Field::kDestinationIpv4, read32(packet.destination, 0));
        set(Field::kDscp, octets[kIpv4DscpAt]);
    }
    set(Field::kProtocol, packet.protocol);
    const bool has_ports = packet.protocol == kTcp || packet.protocol == kUdp || packet.protocol == kSctp;
    if (has_ports && packet.fragment_offset == 0 && packet.payload.size() >= 2 * kPortBytes) {
        set(Field::kSourcePort, read16(packet.payload, 0));
        set(Field::kDestinationPort, read16(packet.payload, kPortBytes));
    }
}

}  // namespace vdevice::chip
