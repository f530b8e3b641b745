// Multicast control traffic for the software on the CPU, which decides who gets the groups' frames (RFC 4541).
#pragma once

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

struct Snooping {
    bool igmp = false;               /**< group membership of version 4 goes to the CPU, and nowhere else */
    bool mld = false;                /**< the same of version 6 */
    bool reserved_multicast = false; /**< what is flooded to 224.0.0.0/24 reaches the CPU in any case */
};

/** IGMP and MLD messages, as far as they are switched on: software takes them, and sends them on where they belong. */
bool is_snooped(const Snooping &snooping, const Header &header);

/** Packets to the local network's control groups (RFC 5771), if they are switched on. */
bool is_copied_to_cpu(const Snooping &snooping, const Header &header);

}  // namespace vdevice::chip
