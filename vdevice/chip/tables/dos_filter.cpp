// The attacks that are recognised in one frame: MAC addresses, IP addresses, TCP flags, fragments.
#include "vdevice/chip/tables/dos_filter.h"

#include <algorithm>

#include "vdevice/chip/frame/ip_header.h"
#include "vdevice/chip/frame/ip_packet.h"

namespace vdevice::chip {
namespace {

// Transmission Control Protocol, RFC 9293.
constexpr size_t kTcpBytes = 20;
constexpr size_t kTcpFlagsAt = 13;
constexpr uint8_t kFin = 0x01;
constexpr uint8_t kSyn = 0x02;
constexpr uint8_t kPsh = 0x08;
constexpr uint8_t kUrg = 0x20;
constexpr uint8_t kTcpFlags = 0x3F; /**< without the two of congestion notification */
/** A fragment at this offset would overwrite the flags of the first one (RFC 1858). */
constexpr uint16_t kTinyOffset = 1;

bool is_land(const IpPacket &packet) {
    return std::equal(packet.source.begin(), packet.source.end(), packet.destination.begin());
}

std::optional<Drop> judge_flags(uint8_t octet) {
    const auto flags = static_cast<uint8_t>(octet & kTcpFlags);
    if (flags == 0) {
        return Drop::kDosNullScan;
    }
    if ((flags & kSyn) != 0 && (flags & kFin) != 0) {
        return Drop::kDosSynFin;
    }
    if (flags == (kFin | kPsh | kUrg)) {
        return Drop::kDosXmasScan;
    }
    return std::nullopt;
}

std::optional<Drop> judge_tcp(const IpPacket &packet) {
    if (packet.fragment_offset == kTinyOffset || (packet.is_first_fragment() && packet.payload.size() < kTcpBytes)) {
        return Drop::kDosFragment;
    }
    if (packet.fragment_offset != 0 || packet.payload.size() <= kTcpFlagsAt) {
        return std::nullopt;
    }
    return judge_flags(packet.payload[kTcpFlagsAt]);
}

}  // namespace

std::optional<Drop> find_attack(const Header &header) {
    if (header.source == header.destination) {
        return Drop::kDosSameMac;
    }
    const std::optional<IpPacket> packet = read_ip_packet(header);
    if (!packet) {
        return std::nullopt;
    }
    if (is_land(*packet)) {
        return Drop::kDosLand;
    }
    return packet->protocol == kTcp ? judge_tcp(*packet) : std::nullopt;
}

}  // namespace vdevice::chip
