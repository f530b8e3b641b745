// Reads IP headers with their options and extension headers.
#include "vdevice/chip/frame/ip_packet.h"

#include <algorithm>

#include "vdevice/chip/frame/ip_header.h"

namespace vdevice::chip {
namespace {

constexpr uint16_t kIpv4MoreFragments = 0x2000;

// Extension headers of version 6. Each begins with the number of the next one.
constexpr uint8_t kHopByHop = 0;
constexpr uint8_t kRouting = 43;
constexpr uint8_t kFragment = 44;
constexpr uint8_t kAuthentication = 51;
constexpr uint8_t kDestinationOptions = 60;
constexpr size_t kExtensionUnit = 8; /**< headers are as long as so many octets, or a multiple */
constexpr size_t kExtensionLengthAt = 1;
constexpr size_t kAuthenticationUnit = 4; /**< this header's length counts in these, less two */
constexpr size_t kFragmentOffsetAt = 2;
constexpr unsigned kFragmentOffsetShift = 3;
constexpr uint16_t kIpv6MoreFragments = 1;
constexpr int kMaxExtensions = 16; /**< no honest packet has more */

Bytes at_most(Bytes bytes, size_t length) {
    return bytes.first(std::min(bytes.size(), length));
}

IpPacket read_ipv4(Bytes octets) {
    IpPacket packet;
    packet.source = octets.subspan(kIpv4SourceAt, kIpv4AddressBytes);
    packet.destination = octets.subspan(kIpv4SourceAt + kIpv4AddressBytes, kIpv4AddressBytes);
    packet.protocol = octets[kIpv4ProtocolAt];
    const uint16_t fragment = read16(octets, kIpv4FragmentAt);
    packet.fragment_offset = fragment & kIpv4OffsetMask;
    packet.more_fragments = (fragment & kIpv4MoreFragments) != 0;
    const size_t header = ipv4_header_bytes(octets);
    const Bytes whole = at_most(octets, read16(octets, kIpv4LengthAt));
    if (header >= kIpv4Bytes && header <= whole.size()) {
        packet.payload = whole.subspan(header);
    }
    return packet;
}

bool is_extension(uint8_t number) {
    constexpr uint8_t kExtensions[] = {kHopByHop, kRouting, kFragment, kAuthentication, kDestinationOptions};
    return std::find(std::begin(kExtensions), std::end(kExtensions), number) != std::end(kExtensions);
}

/** @p extension holds one unit at least. */
size_t extension_bytes(uint8_t number, Bytes extension) {
    const size_t length = extension[kExtensionLengthAt];
    switch (number) {
        case kFragment:
            return kExtensionUnit;
        case kAuthentication:
            return (length + 2) * kAuthenticationUnit;
        default:
            return (length + 1) * kExtensionUnit;
    }
}

void read_fragment_header(Bytes extension, IpPacket &packet) {
    const uint16_t word = read16(extension, kFragmentOffsetAt);
    packet.fragment_offset = static_cast<uint16_t>(word >> kFragmentOffsetShift);
    packet.more_fragments = (word & kIpv6MoreFragments) != 0;
}

/** Takes the extension header in front of the payload off it. False if there is none, or not a whole one. */
bool take_extension(IpPacket &packet) {
    // A later fragment does not begin with a header.
    if (!is_extension(packet.protocol) || packet.fragment_offset != 0) {
        return false;
    }
    const size_t length =
        packet.payload.size() < kExtensionUnit ? kExtensionUnit : extension_bytes(packet.protocol, packet.payload);
    if (length > packet.payload.size()) {
        packet.payload = {};
        return false;
    }
    packet.has_hop_by_hop |= packet.protocol == kHopByHop;
    if (packet.protocol == kFragment) {
        read_fragment_header(packet.payload, packet);
    }
    packet.protocol = packet.payload[0];
    packet.payload = packet.payload.subspan(length);
    return true;
}

IpPacket read_ipv6(Bytes octets) {
    IpPacket packet;
    packet.source = octets.subspan(kIpv6SourceAt, kIpv6AddressBytes);
    packet.destination = octets.subspan(kIpv6SourceAt + kIpv6AddressBytes, kIpv6AddressBytes);
    packet.protocol = octets[kIpv6NextHeaderAt];
    packet.payload = at_most(octets.subspan(kIpv6Bytes), read16(octets, kIpv6LengthAt));
    int taken = 0;
    while (taken < kMaxExtensions && take_extension(packet)) {
        ++taken;
    }
    return packet;
}

}  // namespace

bool IpPacket::is_version6() const {
    return source.size() == kIpv6AddressBytes;
}

std::optional<IpPacket> read_ip_packet(const Header &header) {
    return read_ip_packet(read16(header.payload, 0), header.payload.subspan(kTypeBytes));
}

std::optional<IpPacket> read_ip_packet(uint16_t type, Bytes octets) {
    switch (type) {
        case kTypeIpv4:
            return is_ipv4(octets) ? std::optional{read_ipv4(octets)} : std::nullopt;
        case kTypeIpv6:
            return is_ipv6(octets) ? std::optional{read_ipv6(octets)} : std::nullopt;
        default:
            return std::nullopt;
    }
}

}  // namespace vdevice::chip
