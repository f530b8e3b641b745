// Mixes addresses, ports and VLAN of a flow into a number.
#include "vdevice/chip/frame/flow_hash.h"

#include <optional>

#include "vdevice/chip/frame/ip_header.h"

namespace vdevice::chip {
namespace {

struct Ends {
    Bytes source;
    Bytes destination;
};

struct IpFlow {
    Ends addresses;
    Ends ports; /**< empty where there are none */
};

Ends pair_at(Bytes bytes, size_t offset, size_t width) {
    return {bytes.subspan(offset, width), bytes.subspan(offset + width, width)};
}

Ends ports_of(Bytes transport, uint8_t protocol) {
    const bool has_ports = (protocol == kTcp || protocol == kUdp) && transport.size() >= 2 * kPortBytes;
    return has_ports ? pair_at(transport, 0, kPortBytes) : Ends{};
}

std::optional<IpFlow> ipv4_flow(Bytes packet) {
    if (!is_ipv4(packet)) {
        return std::nullopt;
    }
    IpFlow flow{pair_at(packet, kIpv4SourceAt, kIpv4AddressBytes), {}};
    const size_t header = ipv4_header_bytes(packet);
    // Only the first fragment of a packet has ports, and all of them must go the same way.
    if (header >= kIpv4Bytes && header <= packet.size() && (read16(packet, kIpv4FragmentAt) & kIpv4FragmentMask) == 0) {
        flow.ports = ports_of(packet.subspan(header), packet[kIpv4ProtocolAt]);
    }
    return flow;
}

std::optional<IpFlow> ipv6_flow(Bytes packet) {
    if (!is_ipv6(packet)) {
        return std::nullopt;
    }
    return IpFlow{pair_at(packet, kIpv6SourceAt, kIpv6AddressBytes),
                  ports_of(packet.subspan(kIpv6Bytes), packet[kIpv6NextHeaderAt])};
}

std::optional<IpFlow> read_ip(const Header &header) {
    switch (read16(header.payload, 0)) {
        case kTypeIpv4:
            return ipv4_flow(header.payload.subspan(kTypeBytes));
        case kTypeIpv6:
            return ipv6_flow(header.payload.subspan(kTypeBytes));
        default:
            return std::nullopt;
    }
}

/** FNV-1a, with a finish that carries every octet into the low bits, by which members are chosen. */
class Hash {
  public:
    void add(uint8_t octet) { value_ = (value_ ^ octet) * kPrime; }
    void add(Bytes octets) {
        for (const uint8_t octet : octets) {
            add(octet);
        }
    }
    void add(Mac mac) {
        for (size_t i = 0; i < kMacBytes; ++i) {
            add(mac.byte(i));
        }
    }
    uint32_t finish() const {
        uint32_t value = value_;
        value = (value ^ (value >> 16)) * kMix1;
        value = (value ^ (value >> 13)) * kMix2;
        return value ^ (value >> 16);
    }

  private:
    static constexpr uint32_t kPrime = 16777619;
    static constexpr uint32_t kMix1 = 0x85EBCA6B;
    static constexpr uint32_t kMix2 = 0xC2B2AE35;

    uint32_t value_ = 2166136261;
};

}  // namespace

uint32_t flow_hash(const Header &header, Vid vid, HashLayer layer, HashSides sides) {
    Hash hash;
    hash.add(static_cast<uint8_t>(vid >> 8));
    hash.add(static_cast<uint8_t>(vid & 0xFF));
    const std::optional<IpFlow> flow = layer == HashLayer::kIp ? read_ip(header) : std::nullopt;
    if (sides.source) {
        if (flow) {
            hash.add(flow->addresses.source);
            hash.add(flow->ports.source);
        } else {
            hash.add(header.source);
        }
    }
    if (sides.destination) {
        if (flow) {
            hash.add(flow->addresses.destination);
            hash.add(flow->ports.destination);
        } else {
            hash.add(header.destination);
        }
    }
    return hash.finish();
}

}  // namespace vdevice::chip
