#include "vdevice/chip/packet.h"

#include <algorithm>
#include <array>

#include "vdevice/chip/ip_header.h"

namespace vdevice::chip {
namespace {

constexpr std::uint16_t kServiceTpid = 0x88A8;
constexpr std::uint16_t kOldServiceTpid = 0x9100;
constexpr std::uint16_t kMaxLength = 1500;  // up to here the type of an IEEE 802.3 frame is its length
constexpr std::array<std::uint8_t, 3> kSnapStart = {0xAA, 0xAA, 0x03};
constexpr std::size_t kSnapBytes = 8;  // the start, three octets of an organisation, two of its protocol
constexpr std::size_t kSnapTypeAt = 6;

constexpr std::size_t kPortsBytes = 2 * kPortBytes;

// IPv6 extension headers, RFC 8200; the authentication header, RFC 4302, counts its length in other units.
constexpr std::uint8_t kHopByHop = 0;
constexpr std::uint8_t kRouting = 43;
constexpr std::uint8_t kFragment = 44;
constexpr std::uint8_t kAuthentication = 51;
constexpr std::uint8_t kDestinationOptions = 60;
constexpr int kMaxExtensions = 8;
constexpr std::size_t kExtensionUnit = 8;
constexpr std::size_t kAuthenticationUnit = 4;
constexpr std::size_t kFragmentOffsetAt = 2;
constexpr unsigned kFragmentOffsetShift = 3;

bool is_tag(std::uint16_t type) {
    return type == kVlanTpid || type == kServiceTpid || type == kOldServiceTpid;
}

void read_llc(Packet &packet, Bytes llc) {
    packet.octets = {};
    packet.frame_kind = FrameKind::kLlc;
    if (llc.size() < kSnapBytes || !std::equal(kSnapStart.begin(), kSnapStart.end(), llc.begin())) {
        return;
    }
    packet.frame_kind = FrameKind::kSnap;
    const Bytes organisation = llc.subspan(kSnapStart.size(), kSnapTypeAt - kSnapStart.size());
    if (std::all_of(organisation.begin(), organisation.end(), [](std::uint8_t octet) { return octet == 0; })) {
        packet.type = read16(llc, kSnapTypeAt);
        packet.octets = llc.subspan(kSnapBytes);
    }
}

Bytes ports_of(std::uint8_t protocol, Bytes transport) {
    const bool has_ports = protocol == kTcp || protocol == kUdp || protocol == kSctp;
    return has_ports && transport.size() >= kPortsBytes ? transport : Bytes{};
}

bool is_extension(std::uint8_t header) {
    return header == kHopByHop || header == kRouting || header == kFragment || header == kAuthentication ||
           header == kDestinationOptions;
}

std::size_t extension_bytes(std::uint8_t header, Bytes extension) {
    if (header == kFragment) {
        return kExtensionUnit;
    }
    return header == kAuthentication ? (std::size_t{extension[1]} + 2) * kAuthenticationUnit
                                     : (std::size_t{extension[1]} + 1) * kExtensionUnit;
}

/** The first octets of a packet, as many as it says that it has, or fewer where the frame is cut. */
Bytes cut_to(Bytes packet, std::size_t length) {
    return packet.first(std::min(packet.size(), length));
}

}  // namespace

Packet read_packet(const Header &header) {
    Packet packet;
    if (header.tagged) {
        packet.inner_tci = header.tci;
    }
    Bytes rest = header.payload;
    while (rest.size() >= kVlanTagBytes + kTypeBytes && is_tag(read16(rest, 0))) {
        packet.inner_tci = read16(rest, kTypeBytes);
        rest = rest.subspan(kVlanTagBytes);
    }
    packet.octets = rest.subspan(kTypeBytes);
    if (const std::uint16_t type = read16(rest, 0); type > kMaxLength) {
        packet.type = type;
    } else {
        read_llc(packet, packet.octets);
    }
    return packet;
}

Upper read_upper_ipv4(Bytes packet) {
    Upper upper{packet[kIpv4ProtocolAt], {}};
    const Bytes whole = cut_to(packet, read16(packet, kIpv4LengthAt));
    const std::size_t header = ipv4_header_bytes(packet);
    const bool is_first = (read16(packet, kIpv4FragmentAt) & kIpv4OffsetMask) == 0;
    if (is_first && header >= kIpv4Bytes && header <= whole.size()) {
        upper.ports = ports_of(*upper.protocol, whole.subspan(header));
    }
    return upper;
}

Upper read_upper_ipv6(Bytes packet) {
    Bytes rest = cut_to(packet, kIpv6Bytes + read16(packet, kIpv6LengthAt)).subspan(kIpv6Bytes);
    std::uint8_t header = packet[kIpv6NextHeaderAt];
    for (int extensions = 0; extensions <= kMaxExtensions; ++extensions) {
        if (!is_extension(header)) {
            return {header, ports_of(header, rest)};
        }
        if (rest.size() < kExtensionUnit) {
            return {};
        }
        const std::size_t bytes = extension_bytes(header, rest);
        const bool is_later_fragment =
            header == kFragment && read16(rest, kFragmentOffsetAt) >> kFragmentOffsetShift != 0;
        header = rest[0];
        if (is_later_fragment) {
            return {header, {}};
        }
        if (bytes > rest.size()) {
            return {};
        }
        rest = rest.subspan(bytes);
    }
    return {};
}

}  // namespace vdevice::chip
