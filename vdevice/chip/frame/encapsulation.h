// What a frame carries behind its VLAN tags, and how. Nothing is read beyond the end of a frame, whatever it says.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

/** Encapsulations. The numbers are those of the field processor's rules. */
enum class FrameKind : uint8_t { kAny = 0, kEthernet = 1, kLlc = 2, kSnap = 3, kCount };

struct Encapsulation {
    FrameKind kind = FrameKind::kEthernet;
    std::optional<uint16_t> inner_tci; /**< of the innermost VLAN tag, whatever its TPID */
    std::optional<uint16_t> type;      /**< EtherType; also in a SNAP header of the plain kind (RFC 1042) */
    Bytes octets;                      /**< behind the type; empty without one */
};

/** Looks behind all VLAN tags of the frame, however many there are. */
Encapsulation read_encapsulation(const Header &header);

}  // namespace vdevice::chip
