// Multicast control traffic for the software on the CPU, which decides who gets the groups' frames (RFC 4541).
#pragma once

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

struct Snooping {
    bool igmp = false;               /**< IGMP messages go to the CPU, and nowhere else */
    bool mld = false;                /**< MLD messages go to the CPU, and nowhere else */
    bool reserved_multicast = false; /**< packets to 224.0.0.0/24 that are flooded always reach the CPU */
};

bool is_igmp_or_mld(const Header &header, bool igmp, bool mld);
/** A packet to the local network's control groups (RFC 5771). */
bool is_to_control_group(const Header &header);

/** An IGMP or MLD message that the settings give to the CPU: its software sends it on where it belongs. */
inline bool is_snooped(const Snooping &snooping, const Header &header) {
    return (snooping.igmp || snooping.mld) && is_igmp_or_mld(header, snooping.igmp, snooping.mld);
}

inline bool is_copied_to_cpu(const Snooping &snooping, const Header &header) {
    return snooping.reserved_multicast && is_to_control_group(header);
}

}  // namespace vdevice::chip
