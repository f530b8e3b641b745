// Multicast control traffic for the software on the CPU, which decides who gets the groups' frames (RFC 4541).
#pragma once

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

struct Snooping {
    bool igmp = false;               /**< group membership of version 4 goes to the CPU, and nowhere else */
    bool mld = false;                /**< the same of version 6 */
    bool reserved_multicast = false; /**< what is flooded to 224.0.0.0/24 reaches the CPU in any case */
};

bool is_igmp_or_mld(const Header &header, bool igmp, bool mld);
/** A packet to the local network's control groups (RFC 5771). */
bool is_to_control_group(const Header &header);

/** IGMP and MLD messages, as far as they are switched on: software takes them, and sends them on where they belong. */
inline bool is_snooped(const Snooping &snooping, const Header &header) {
    return (snooping.igmp || snooping.mld) && is_igmp_or_mld(header, snooping.igmp, snooping.mld);
}

inline bool is_copied_to_cpu(const Snooping &snooping, const Header &header) {
    return snooping.reserved_multicast && is_to_control_group(header);
}

}  // namespace vdevice::chip
