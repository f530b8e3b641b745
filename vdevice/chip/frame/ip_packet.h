// An IP packet as the chip's filters and traps read it. What hosts send may be cut short or lie about its lengths;
// every step stays within the frame.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

struct IpPacket {
    Bytes source;
    Bytes destination;
    uint8_t protocol = 0;         /**< of the payload, behind the extension headers of version 6 */
    bool has_hop_by_hop = false;  /**< version 6: every node on the way looks at its options */
    uint16_t fragment_offset = 0; /**< in units of eight octets */
    bool more_fragments = false;
    Bytes payload; /**< without the padding of a short frame; empty if the headers in front of it are broken */

    bool is_version6() const;
    bool is_first_fragment() const { return more_fragments && fragment_offset == 0; }
};

/** Nothing if the frame carries no IP packet, or one without a whole fixed header. */
std::optional<IpPacket> read_ip_packet(const Header &header);

/** The same of what a frame carries behind its type, wherever that stands. */
std::optional<IpPacket> read_ip_packet(uint16_t type, Bytes octets);

}  // namespace vdevice::chip
