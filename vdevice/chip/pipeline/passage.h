// One frame on its way through the chip, and what each step has decided about it. A later step needs the decision, or a
// watcher reads it when the frame has passed; no step writes anything down for a watcher alone.
#pragma once

#include <stdint.h>
#include <optional>

#include "vdevice/chip/fields/field_processor.h"
#include "vdevice/chip/frame/frame.h"
#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/frame/time.h"
#include "vdevice/chip/rates/storm_control.h"
#include "vdevice/chip/tables/classified.h"
#include "vdevice/chip/tables/mac_table.h"
#include "vdevice/chip/tables/port.h"
#include "vdevice/chip/tables/vlan_table.h"

namespace vdevice::chip {

/** How it was found out where the frame goes. */
enum class Way : uint8_t {
    kNone,       /**< it was dropped before that */
    kDirected,   /**< the CPU named the ports */
    kToCpu,      /**< it is for the CPU alone */
    kRedirected, /**< a rule named the ports */
    kEntry,      /**< to where its destination is known to be */
    kGroup,      /**< to the ports of its group's entry */
    kFlooded,
};

/** Why a frame is for the CPU alone. */
enum class CpuReason : uint8_t {
    kNone,
    kRule,          /**< a rule, or the port's action for frames that meet none */
    kReservedMac,   /**< its destination is in the table of reserved addresses */
    kTrap,          /**< it is of a protocol that is trapped */
    kUnknownSource, /**< the software decides whether its source is let in */
    kSnooped,       /**< it tells of a host's groups */
    kUnknownGroup,  /**< its group has no entry */
};

struct Passage {
    Passage(Time at, int port, Bytes octets, bool looped = false)
        : now{at}, ingress{port}, received{octets}, is_looped{looped} {}

    /** Ends the frame's way; false, for the step to return. */
    bool end(Drop reason) {
        drop = reason;
        return false;
    }

    Vid vid() const { return tci & kVidMask; }
    /** With neither a tag of the CPU's nor a VLAN tag that the ingress port reads. */
    Frame untagged() const { return {frame.head, header.payload}; }

    const Time now;
    const int ingress;
    const Bytes received;
    const bool is_looped; /**< it came back in by the port that it should have left by */

    Frame frame; /**< as received, but without a tag of the CPU's */
    Header header;
    Classified own;       /**< what its tags and its port make of it */
    FieldVerdict verdict; /**< what the rules make of that */
    uint16_t tci = 0;     /**< VLAN and priority in which it goes on */
    uint32_t priority = 0;
    const Vlan *vlan = nullptr;
    Learned learned = Learned::kNot;
    const MacEntry *entry = nullptr; /**< of its destination */
    std::optional<StormType> storm;  /**< the storm limit that is on it */
    Way way = Way::kNone;
    CpuReason cpu_reason = CpuReason::kNone;
    PortSet wanted; /**< the ports that it is for, whatever keeps it from some of them */
    PortSet chosen; /**< the ports that get a copy */
    std::optional<Drop> drop;
};

}  // namespace vdevice::chip
