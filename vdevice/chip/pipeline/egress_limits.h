// The one list of limits on what leaves: for a frame whose way is chosen, the sets that a port must be in to get a
// copy, and what keeps the copy from the ports that are not.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "vdevice/chip/pipeline/passage.h"
#include "vdevice/chip/pipeline/tables.h"

namespace vdevice::chip {

/** Why a port gets no copy of a frame. */
enum class Unsent : uint8_t {
    kNotWanted,   /**< the frame is not for it */
    kIngress,     /**< the frame came in there */
    kSameTrunk,   /**< the frame came in by its trunk */
    kNotMember,   /**< it is not a member of the VLAN */
    kDown,        /**< it is disabled or has no link */
    kStandby,     /**< it waits in its trunk for members to fail */
    kStpBlocked,  /**< it does not forward in the VLAN's spanning-tree group */
    kIsolated,    /**< it is not in the ingress port's egress set */
    kOtherMember, /**< another port of its trunk gets the copy */
};

struct EgressLimit {
    PortSet ports; /**< that may have a copy */
    Unsent reason; /**< of the other ports */
    Drop drop;     /**< of a frame that the limit leaves no port */
};

class EgressLimits {
  public:
    void add(const PortSet &ports, Unsent reason, Drop drop) { limits_[size_++] = {ports, reason, drop}; }
    std::span<const EgressLimit> list() const & { return std::span{limits_}.first(size_); }
    std::span<const EgressLimit> list() const && = delete; /**< would refer to limits that are gone */
    /** The ports that all limits leave. */
    PortSet left_of(PortSet ports) const {
        for (const EgressLimit &limit : list()) {
            ports &= limit.ports;
        }
        return ports;
    }
    /** The first limit that leaves none of these ports. */
    const EgressLimit &first_without(PortSet ports) const {
        const auto leaves_none = [&](const EgressLimit &limit) { return (ports &= limit.ports).empty(); };
        const auto found = std::find_if(list().begin(), list().end() - 1, leaves_none);
        return *found;
    }

  private:
    std::array<EgressLimit, 8> limits_;
    size_t size_ = 0;
};

/** Those on a frame that goes this way, in the order in which they are named. */
EgressLimits egress_limits(const Tables &tables, const Passage &p);

/** Whether one port passes all limits on a frame to an entry: asked for most frames, and so bit by bit. */
inline bool may_leave(const Tables &tables, const Passage &p, int port) {
    return p.vlan->members.has(port) && tables.up.has(port) && !tables.standby.has(port) &&
           tables.stp.forwarding_in_vlan(p.vid()).has(port) && tables.port(p.ingress).egress.has(port) &&
           !p.entry->is_behind(p.ingress, tables.trunk_of(p.ingress));
}

/** Why the CPU cannot direct a frame to the port, whatever its number; nothing if it can. */
std::optional<Drop> why_not_directed(const Tables &tables, int port);

/** Why the frame, which has passed, was not sent to the port; nothing if it was. */
std::optional<Unsent> why_unsent(const Tables &tables, const Passage &p, int port);

}  // namespace vdevice::chip
