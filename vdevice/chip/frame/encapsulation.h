// What a frame carries behind its VLAN tags, and how. Frames are anybody's: nothing is read beyond their end.
#pragma once

#include <optional>

#include "vdevice/chip/fields/field.h"
#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

struct Encapsulation {
    FrameKind kind = FrameKind::kEthernet;
    std::optional<uint16_t> inner_tci; /**< of the innermost VLAN tag, whatever its TPID */
    std::optional<uint16_t> type;      /**< EtherType; also in a SNAP header of the plain kind (RFC 1042) */
    Bytes octets;                      /**< behind the type; empty without one */
};

/** Looks behind all VLAN tags of the frame, however many there are. */
Encapsulation read_encapsulation(const Header &header);

}  // namespace vdevice::chip
