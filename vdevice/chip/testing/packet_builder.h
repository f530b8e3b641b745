// For tests: IP packets, from the frame's type on.
#pragma once

#include "vdevice/chip/frame/ip_header.h"
#include "vdevice/chip/testing/frame_builder.h"

namespace vdevice::chip::test {

/** 10.0.0.number */
inline Octets ipv4_address(uint8_t number) {
    return {10, 0, 0, number};
}

/** fd00::number */
inline Octets ipv6_address(uint8_t number) {
    return Octets{0xFD} + Octets(14, 0) + Octets{number};
}

constexpr uint16_t kMoreFragments = 0x2000;

struct Ipv4 {
    uint8_t protocol;
    Octets source = ipv4_address(1);
    Octets destination = ipv4_address(2);
    uint16_t fragment = 0;
    Octets options{};
    uint8_t tos = 0;
};

/** What the checksum makes 0xFFFF of in a good header (RFC 1071). */
inline uint16_t ones_sum(Bytes header) {
    constexpr uint32_t kOnes = 0xFFFF;
    uint32_t sum = 0;
    for (size_t i = 0; i + 1 < header.size(); i += 2) {
        sum += read16(header, i);
    }
    while (sum > kOnes) {
        sum = (sum & kOnes) + (sum >> 16);
    }
    return static_cast<uint16_t>(sum);
}

inline Octets ipv4(const Ipv4 &header, const Octets &payload) {
    const size_t length = kIpv4Bytes + header.options.size();
    Octets head = Octets{static_cast<uint8_t>(0x40 + length / 4), header.tos} +
                  octets16(static_cast<uint16_t>(length + payload.size())) + octets16(0) + octets16(header.fragment) +
                  Octets{64, header.protocol, 0, 0} + header.source + header.destination + header.options;
    write16(head.data() + kIpv4ChecksumAt, static_cast<uint16_t>(~ones_sum(head)));
    return octets16(kTypeIpv4) + head + payload;
}

struct Ipv6 {
    uint8_t next_header;
    Octets source = ipv6_address(1);
    Octets destination = ipv6_address(2);
    uint8_t traffic_class = 0;
};

inline Octets ipv6(const Ipv6 &header, const Octets &payload) {
    return octets16(kTypeIpv6) + octets32(0x60012345U | uint32_t{header.traffic_class} << 20) +
           octets16(static_cast<uint16_t>(payload.size())) + Octets{header.next_header, 64} + header.source +
           header.destination + payload;
}

/** A hop-by-hop header with the router alert option, as IGMP's sisters of version 6 have it. */
inline Octets router_alert(uint8_t next_header) {
    return {next_header, 0, 5, 2, 0, 0, 1, 0};
}

/** An extension header that counts its length in units of eight octets. */
inline Octets extension(uint8_t next_header, uint8_t further_units = 0) {
    return Octets{next_header, further_units} + Octets(6U + 8U * further_units, 0);
}

inline Octets fragment_header(uint8_t next_header, uint16_t offset, bool more) {
    return Octets{next_header, 0} + octets16(static_cast<uint16_t>(offset * 8 + (more ? 1 : 0))) + octets32(7);
}

/** A TCP header with these flags, and no options. */
inline Octets tcp(uint8_t flags) {
    return octets16(1024) + octets16(80) + octets32(1) + octets32(0) + Octets{0x50, flags} + Octets(6, 0);
}

}  // namespace vdevice::chip::test
