// Replaces a DSCP, and corrects the checksum of an IPv4 header.
#include "vdevice/chip/frame/remark.h"

#include "vdevice/chip/frame/encapsulation.h"
#include "vdevice/chip/frame/ip_header.h"

namespace vdevice::chip {
namespace {

constexpr unsigned kDscpShift = 2;
constexpr uint16_t kIpv4DscpMask = 0x00FC;  // in the header's first two octets
constexpr uint16_t kIpv6DscpMask = 0x0FC0;

bool carries_ipv4(const Encapsulation &carried) {
    return carried.type == kTypeIpv4 && is_ipv4(carried.octets);
}

bool carries_ipv6(const Encapsulation &carried) {
    return carried.type == kTypeIpv6 && is_ipv6(carried.octets);
}

/** Of ones' complement sums: a header's checksum after one of its words has changed (RFC 1624). */
uint16_t corrected(uint16_t checksum, uint16_t before, uint16_t after) {
    constexpr uint32_t kOnes = 0xFFFF;
    constexpr unsigned kCarryShift = 16;
    uint32_t sum = (~uint32_t{checksum} & kOnes) + (~uint32_t{before} & kOnes) + after;
    sum = (sum & kOnes) + (sum >> kCarryShift);
    sum = (sum & kOnes) + (sum >> kCarryShift);
    return static_cast<uint16_t>(~sum & kOnes);
}

void remark_ipv4(uint8_t *packet, Bytes old, uint32_t dscp) {
    const uint16_t before = read16(old, 0);
    const uint16_t after = with_bits(before, kIpv4DscpMask, dscp << kDscpShift);
    write16(packet, after);
    write16(packet + kIpv4ChecksumAt, corrected(read16(old, kIpv4ChecksumAt), before, after));
}

void remark_ipv6(uint8_t *packet, Bytes old, uint32_t dscp) {
    write16(packet, with_bits(read16(old, 0), kIpv6DscpMask, dscp << (kDscpShift + kIpv6TrafficClassShift)));
}

}  // namespace

std::optional<uint8_t> dscp_of(const Header &header) {
    constexpr uint32_t kOctet = 0xFF;
    const Encapsulation carried = read_encapsulation(header);
    if (carries_ipv4(carried)) {
        return carried.octets[kIpv4DscpAt] >> kDscpShift;
    }
    if (carries_ipv6(carried)) {
        const uint32_t traffic_class = read16(carried.octets, 0) >> kIpv6TrafficClassShift & kOctet;
        return static_cast<uint8_t>(traffic_class >> kDscpShift);
    }
    return std::nullopt;
}

Bytes with_dscp(const Header &header, uint8_t dscp, std::vector<uint8_t> &copy) {
    const Encapsulation carried = read_encapsulation(header);
    const bool v4 = carries_ipv4(carried);
    if (!v4 && !carries_ipv6(carried)) {
        return header.payload;
    }
    copy.assign(header.payload.begin(), header.payload.end());
    uint8_t *octets = copy.data() + (header.payload.size() - carried.octets.size());
    (v4 ? remark_ipv4 : remark_ipv6)(octets, carried.octets, dscp);
    return copy;
}

}  // namespace vdevice::chip
