// What the kernel has: interfaces, bridges and their ports, addresses and groups. Filled from netlink messages.
#pragma once

#include <stdint.h>
#include <array>
#include <compare>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace switchd {

using Mac = std::array<uint8_t, 6>;

/** Settings of a bridge, from IFLA_INFO_DATA. */
struct Bridge {
    bool stp = false;             /**< the kernel's or a program's (stp_state 1 or 2) */
    bool topology_change = false; /**< seen by the kernel's spanning tree, still going on */
    bool vlan_filtering = false;
    uint16_t default_pvid = 1;
    uint32_t ageing_seconds = 300;
    bool multicast_snooping = false;
    bool querier = false;           /**< the bridge itself sends queries */
    bool other_querier = false;     /**< one of IPv4 (IGMP) has been heard on a port */
    bool other_mld_querier = false; /**< one of IPv6 */
    uint32_t query_response_seconds = 10;

    bool operator==(const Bridge &) const = default;
};

/** A bridge's spanning-tree states, as BR_STATE_... of linux/if_bridge.h. */
enum class PortState : uint8_t { kDisabled, kListening, kLearning, kForwarding, kBlocking };

/** A VLAN of a port or of the bridge itself, where the bridge is aware of VLANs. */
struct BridgeVlan {
    uint16_t vid = 0;
    bool pvid = false;
    bool untagged = false;

    auto operator<=>(const BridgeVlan &) const = default;
};

/** Settings of an interface as a port of a bridge, from IFLA_PROTINFO. */
struct BridgePort {
    PortState state = PortState::kDisabled;
    bool learning = true;
    bool unicast_flood = true;
    bool multicast_flood = true;
    bool broadcast_flood = true;
    bool isolated = false;
    bool locked = false;
    bool hairpin = false;
    uint8_t multicast_router = 1; /**< MDB_RTR_TYPE_...: 0 never, 1 learned, 2 always, 3 for a time */

    bool operator==(const BridgePort &) const = default;
};

struct Link {
    std::string name;
    std::string alias; /**< a text for people; also marks what a program has made */
    std::string kind;  /**< of IFLA_INFO_KIND: "bridge", "tun", "veth", "vlan" ... */
    Mac mac{};
    uint32_t mtu = 0;
    bool up = false;      /**< IFF_UP: a person or program wants it so */
    bool carrier = false; /**< IFF_LOWER_UP */
    int master = 0;       /**< the bridge's index; 0 for none */
    int parent = 0;       /**< of a VLAN device; of a veth its other end; 0 if that is in another namespace */
    uint16_t vid = 0;     /**< of a VLAN device */
    std::optional<Bridge> bridge;
    std::optional<BridgePort> port;
    std::vector<BridgeVlan> vlans; /**< in ascending order */

    bool operator==(const Link &) const = default;
};

/** An address in a bridge's forwarding database. */
struct AddressKey {
    int bridge = 0;
    uint16_t vid = 0; /**< 0 where the bridge is not aware of VLANs */
    Mac mac{};

    auto operator<=>(const AddressKey &) const = default;
};

struct Address {
    int interface = 0;
    enum class Kind : uint8_t {
        kLearned,  /**< by the kernel, from a frame */
        kHardware, /**< told by us: NTF_EXT_LEARNED */
        kStatic,   /**< a person's; does not age */
        kLocal     /**< of the switch itself: NUD_PERMANENT */
    } kind = Kind::kLearned;

    bool operator==(const Address &) const = default;
};

/** A multicast group of a bridge; what is not IP has a MAC address. */
struct GroupKey {
    int bridge = 0;
    uint16_t vid = 0;
    uint16_t protocol = 0; /**< ETH_P_IP, ETH_P_IPV6, or 0 for a MAC address */
    std::array<uint8_t, 16> address{};

    auto operator<=>(const GroupKey &) const = default;
};

/** The Ethernet address of the group's frames: RFC 1112, section 6.4, and RFC 2464, section 7. */
Mac mac_of(const GroupKey &group);

/** Everything, by interface index. */
struct KernelState {
    std::map<int, Link> links;
    std::map<AddressKey, Address> addresses;
    std::map<GroupKey, std::set<int>> groups;  /**< the ports' interfaces; the bridge's own index for itself */
    std::map<int, std::set<int>> router_ports; /**< of each bridge: where multicast routers were heard */

    bool operator==(const KernelState &) const = default;
};

}  // namespace switchd
