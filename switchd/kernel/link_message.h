// What messages about links say: of an interface, and of a bridge's port.
#pragma once

#include <linux/rtnetlink.h>

#include <optional>
#include <vector>

#include "switchd/kernel/kernel_state.h"
#include "switchd/kernel/message.h"

namespace switchd {

/** The kernel counts ages in these, on every machine (USER_HZ). */
inline constexpr uint32_t kTicksPerSecond = 100;

/** What a message of no family says of an interface; nothing without a name. It says nothing of VLANs in a bridge. */
std::optional<Link> link_of(const ifinfomsg &info, const netlink::Attributes &attributes);

/** What a message of the family AF_BRIDGE says of a port, or of the bridge itself. */
struct BridgeMember {
    int bridge = 0;                 /**< its own index for the bridge itself */
    std::optional<BridgePort> port; /**< where the message has its settings */
    std::vector<BridgeVlan> vlans;
};

/** Nothing if a driver answers for its hardware, which is no bridge of the kernel. */
std::optional<BridgeMember> bridge_member_of(const netlink::Attributes &attributes);

std::optional<Mac> mac_in(netlink::Octets octets);

}  // namespace switchd
