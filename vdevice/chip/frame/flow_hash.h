// The number by which a trunk chooses a member for a frame. All frames of a flow give the same number, so a flow keeps
// its member and its order.
#pragma once

#include <stdint.h>

#include "vdevice/chip/frame/frame.h"

namespace vdevice::chip {

/** Which ends of a flow are hashed. */
struct HashSides {
    bool source = true;
    bool destination = true;
};

/** What is hashed of a frame. */
enum class HashLayer : uint8_t {
    kMac, /**< the addresses of the Ethernet header */
    kIp,  /**< of IP packets the addresses and, where there are some, the TCP or UDP ports; of others the MAC addresses
           */
};

/** The VLAN is always part of the hash. */
uint32_t flow_hash(const Header &header, Vid vid, HashLayer layer, HashSides sides);

}  // namespace vdevice::chip
