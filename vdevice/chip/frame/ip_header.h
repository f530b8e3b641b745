// Offsets and sizes of the fields of IP headers: Internet Protocol version 4 (RFC 791), version 6 (RFC 8200).
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

constexpr uint16_t kTypeIpv4 = 0x0800;
constexpr uint16_t kTypeIpv6 = 0x86DD;
constexpr unsigned kIpVersionShift = 4;  // of the first octet

constexpr uint8_t kTcp = 6;
constexpr uint8_t kUdp = 17;
constexpr uint8_t kSctp = 132;
constexpr size_t kPortBytes = 2;  // of each; TCP, UDP and SCTP begin with the source port

constexpr size_t kIpv4Bytes = 20;
constexpr size_t kIpv4DscpAt = 1;
constexpr size_t kIpv4LengthAt = 2;
constexpr size_t kIpv4FragmentAt = 6;
constexpr uint16_t kIpv4FragmentMask = 0x3FFF;  // more fragments, and the fragment offset
constexpr uint16_t kIpv4OffsetMask = 0x1FFF;
constexpr size_t kIpv4ProtocolAt = 9;
constexpr size_t kIpv4ChecksumAt = 10;
constexpr size_t kIpv4SourceAt = 12;
constexpr size_t kIpv4AddressBytes = 4;

constexpr size_t kIpv6Bytes = 40;
constexpr unsigned kIpv6TrafficClassShift = 4;  // of the first two octets
constexpr size_t kIpv6LengthAt = 4;             // of what follows the header
constexpr size_t kIpv6NextHeaderAt = 6;
constexpr size_t kIpv6SourceAt = 8;
constexpr size_t kIpv6AddressBytes = 16;

inline bool is_ipv4(Bytes packet) {
    return packet.size() >= kIpv4Bytes && packet[0] >> kIpVersionShift == 4;
}

inline bool is_ipv6(Bytes packet) {
    return packet.size() >= kIpv6Bytes && packet[0] >> kIpVersionShift == 6;
}

/** As the packet says, options included; may be less than it must be, or more than there is. */
inline size_t ipv4_header_bytes(Bytes packet) {
    return size_t{packet[0] & 0x0FU} * 4;
}

}  // namespace vdevice::chip
