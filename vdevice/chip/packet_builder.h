// For tests: IP packets put together from their parts, each beginning with its EtherType.
#pragma once

#include "vdevice/chip/frame_builder.h"
#include "vdevice/chip/ip_header.h"

namespace vdevice::chip::test {

constexpr std::uint8_t kTtl = 64;

/** The sum that a whole header with a good checksum has, and minus which the checksum is (RFC 1071). */
inline std::uint16_t ones_sum(Bytes header) {
    std::uint32_t sum = 0;
    for (std::size_t i = 0; i + 1 < header.size(); i += 2) {
        sum += read16(header, i);
    }
    while (sum > 0xFFFF) {
        sum = (sum & 0xFFFF) + (sum >> 16);
    }
    return static_cast<std::uint16_t>(sum);
}

struct Ipv4 {
    std::uint32_t source = 0x0A000001;
    std::uint32_t destination = 0x0A000002;
    std::uint8_t protocol = kUdp;
    std::uint8_t tos = 0;
    std::uint16_t fragment = 0;
    Octets options{};
    Octets data = octets16(1000) + octets16(2000) + Octets(22, 0x5A);

    Octets build() const {
        const std::size_t header_bytes = kIpv4Bytes + options.size();
        Octets header = Octets{static_cast<std::uint8_t>(0x40 | header_bytes / 4), tos} +
                        octets16(static_cast<std::uint16_t>(header_bytes + data.size())) + octets16(7) +
                        octets16(fragment) + Octets{kTtl, protocol} + octets16(0) + octets32(source) +
                        octets32(destination) + options;
        write16(header.data() + kIpv4ChecksumAt, static_cast<std::uint16_t>(~ones_sum(header)));
        return octets16(kTypeIpv4) + header + data;
    }
};

/** 2001:db8::@p host */
inline Octets ipv6_address(std::uint8_t host) {
    Octets address = octets32(0x20010DB8) + Octets(12, 0);
    address.back() = host;
    return address;
}

struct Ipv6 {
    Octets source = ipv6_address(1);
    Octets destination = ipv6_address(2);
    std::uint8_t next_header = kUdp;
    std::uint8_t traffic_class = 0;
    Octets data = octets16(1000) + octets16(2000) + Octets(22, 0x5A);

    Octets build() const {
        return octets16(kTypeIpv6) + octets32(0x60012345U | std::uint32_t{traffic_class} << 20) +
               octets16(static_cast<std::uint16_t>(data.size())) + Octets{next_header, kTtl} + source + destination +
               data;
    }
};

/** An IPv6 extension header that counts its length in units of eight octets. */
inline Octets extension(std::uint8_t next_header, std::uint8_t further_units = 0) {
    return Octets{next_header, further_units} + Octets(6U + 8U * further_units, 0);
}

inline Octets fragment_header(std::uint8_t next_header, std::uint16_t offset) {
    return Octets{next_header, 0} + octets16(static_cast<std::uint16_t>(offset << 3)) + octets32(1);
}

}  // namespace vdevice::chip::test
