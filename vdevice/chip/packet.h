// What a frame carries behind its VLAN tags, and what an IP packet carries behind its headers. Frames are anybody's:
// nothing is read beyond their end, and what is not whole counts as not there.
#pragma once

#include <optional>

#include "vdevice/chip/field.h"
#include "vdevice/chip/frame.h"

namespace vdevice::chip {

struct Packet {
    FrameKind frame_kind = FrameKind::kEthernet;
    std::optional<std::uint16_t> inner_tci; /**< of the innermost VLAN tag, whatever its TPID */
    std::optional<std::uint16_t> type;      /**< EtherType; also in a SNAP header of the plain kind (RFC 1042) */
    Bytes octets;                           /**< behind the type */
};

/** Looks behind all VLAN tags of the frame, however many there are. */
Packet read_packet(const Header &header);

struct Upper {
    std::optional<std::uint8_t> protocol;
    Bytes ports; /**< source and destination port and more; empty where the packet has none */
};

/** Of a packet with a whole IPv4, respectively IPv6 header. Extension headers are passed over. */
Upper read_upper_ipv4(Bytes packet);
Upper read_upper_ipv6(Bytes packet);

}  // namespace vdevice::chip
