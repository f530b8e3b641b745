// Reads the attributes of links, bridges and ports.
#include "switchd/kernel/link_message.h"

#include <linux/if_bridge.h>
#include <linux/if_link.h>
#include <net/if.h>

#include <algorithm>
#include <map>

// <net/if.h> and <linux/if.h> cannot be included together, and only the latter names this flag.
#ifndef IFF_LOWER_UP
#define IFF_LOWER_UP 0x10000
#endif

namespace switchd {
namespace {

using netlink::Attributes;
using netlink::Octets;

constexpr uint16_t kLastVid = 4094;

/** Ages begin at a second: 0 means another thing. */
template <typename Number>
uint32_t seconds_of(Number ticks) {
    return static_cast<uint32_t>((uint64_t{ticks} + kTicksPerSecond - 1) / kTicksPerSecond);
}

/** 0 if there is none. */
int index_in(const Attributes &attributes, uint16_t type) {
    return std::max(attributes.number<int32_t>(type).value_or(0), 0);
}

Bridge bridge_of(const Attributes &data) {
    Bridge bridge;
    bridge.stp = data.number<uint32_t>(IFLA_BR_STP_STATE).value_or(0) != 0;
    bridge.topology_change = data.flag(IFLA_BR_TOPOLOGY_CHANGE);
    bridge.vlan_filtering = data.flag(IFLA_BR_VLAN_FILTERING);
    bridge.default_pvid = data.number<uint16_t>(IFLA_BR_VLAN_DEFAULT_PVID).value_or(bridge.default_pvid);
    if (const auto ticks = data.number<uint32_t>(IFLA_BR_AGEING_TIME)) {
        bridge.ageing_seconds = seconds_of(*ticks);
    }
    bridge.multicast_snooping = data.flag(IFLA_BR_MCAST_SNOOPING);
    bridge.querier = data.flag(IFLA_BR_MCAST_QUERIER);
    const Attributes queriers = data.nested(IFLA_BR_MCAST_QUERIER_STATE);
    bridge.other_querier = queriers.has(BRIDGE_QUERIER_IP_OTHER_TIMER);
    bridge.other_mld_querier = queriers.has(BRIDGE_QUERIER_IPV6_OTHER_TIMER);
    if (const auto ticks = data.number<uint64_t>(IFLA_BR_MCAST_QUERY_RESPONSE_INTVL)) {
        bridge.query_response_seconds = seconds_of(*ticks);
    }
    return bridge;
}

PortState state_of(uint8_t number) {
    const bool is_known = number <= static_cast<uint8_t>(PortState::kBlocking);
    return is_known ? static_cast<PortState>(number) : PortState::kDisabled;
}

/** Nothing if the state is missing: an older kernel's message has it alone, and not as an attribute. */
std::optional<BridgePort> port_of(const Attributes &data) {
    static constexpr struct {
        uint16_t type;
        bool BridgePort::*setting;
    } kSettings[] = {
        {IFLA_BRPORT_LEARNING, &BridgePort::learning},
        {IFLA_BRPORT_UNICAST_FLOOD, &BridgePort::unicast_flood},
        {IFLA_BRPORT_MCAST_FLOOD, &BridgePort::multicast_flood},
        {IFLA_BRPORT_BCAST_FLOOD, &BridgePort::broadcast_flood},
        {IFLA_BRPORT_ISOLATED, &BridgePort::isolated},
        {IFLA_BRPORT_LOCKED, &BridgePort::locked},
        {IFLA_BRPORT_MODE, &BridgePort::hairpin},
    };
    const auto state = data.number<uint8_t>(IFLA_BRPORT_STATE);
    if (!state) {
        return std::nullopt;
    }
    BridgePort port;
    port.state = state_of(*state);
    for (const auto &[type, setting] : kSettings) {
        if (data.has(type)) {
            port.*setting = data.flag(type);
        }
    }
    port.multicast_router = data.number<uint8_t>(IFLA_BRPORT_MULTICAST_ROUTER).value_or(port.multicast_router);
    return port;
}

/** One VLAN, or a range of them: the kernel says its first and its last one. */
std::vector<BridgeVlan> vlans_in(const Attributes &attributes) {
    std::map<uint16_t, BridgeVlan> vlans;
    uint16_t first = 0;
    attributes.each(IFLA_BRIDGE_VLAN_INFO, [&](Octets payload) {
        const auto info = netlink::take<bridge_vlan_info>(payload);
        if (!info || info->vid == 0 || info->vid > kLastVid) {
            return;
        }
        if ((info->flags & BRIDGE_VLAN_INFO_RANGE_BEGIN) != 0) {
            first = info->vid;
            return;
        }
        const bool ends_range = (info->flags & BRIDGE_VLAN_INFO_RANGE_END) != 0 && first != 0;
        for (uint16_t vid = ends_range ? first : info->vid; vid <= info->vid; ++vid) {
            vlans[vid] = {vid, (info->flags & BRIDGE_VLAN_INFO_PVID) != 0,
                          (info->flags & BRIDGE_VLAN_INFO_UNTAGGED) != 0};
        }
        first = 0;
    });
    std::vector<BridgeVlan> sorted;
    sorted.reserve(vlans.size());
    for (const auto &[vid, vlan] : vlans) {
        sorted.push_back(vlan);
    }
    return sorted;
}

}  // namespace

std::optional<Mac> mac_in(Octets octets) {
    Mac mac{};
    if (octets.size() != mac.size()) {
        return std::nullopt;
    }
    std::copy(octets.begin(), octets.end(), mac.begin());
    return mac;
}

std::optional<Link> link_of(const ifinfomsg &info, const Attributes &attributes) {
    Link link;
    link.name = attributes.text(IFLA_IFNAME);
    if (link.name.empty() || link.name.size() >= IFNAMSIZ) {
        return std::nullopt;
    }
    link.alias = attributes.text(IFLA_IFALIAS);
    link.mac = mac_in(attributes.payload(IFLA_ADDRESS)).value_or(Mac{});
    link.mtu = attributes.number<uint32_t>(IFLA_MTU).value_or(0);
    link.up = (info.ifi_flags & IFF_UP) != 0;
    link.carrier = (info.ifi_flags & IFF_LOWER_UP) != 0;
    if (!attributes.has(IFLA_LINK_NETNSID)) {
        link.parent = index_in(attributes, IFLA_LINK);
    }
    const Attributes kind = attributes.nested(IFLA_LINKINFO);
    link.kind = kind.text(IFLA_INFO_KIND);
    if (link.kind == "bridge") {
        link.bridge = bridge_of(kind.nested(IFLA_INFO_DATA));
    } else if (link.kind == "vlan") {
        link.vid = kind.nested(IFLA_INFO_DATA).number<uint16_t>(IFLA_VLAN_ID).value_or(0);
    }
    link.master = kind.text(IFLA_INFO_SLAVE_KIND) == "bridge" ? index_in(attributes, IFLA_MASTER) : 0;
    if (link.master != 0) {
        link.port = port_of(kind.nested(IFLA_INFO_SLAVE_DATA));
    }
    return link;
}

std::optional<BridgeMember> bridge_member_of(const Attributes &attributes) {
    const Attributes vlans = attributes.nested(IFLA_AF_SPEC);
    const bool is_hardware = (vlans.number<uint16_t>(IFLA_BRIDGE_FLAGS).value_or(0) & BRIDGE_FLAGS_SELF) != 0;
    const int bridge = index_in(attributes, IFLA_MASTER);
    if (is_hardware || bridge <= 0) {
        return std::nullopt;
    }
    return BridgeMember{bridge, port_of(attributes.nested(IFLA_PROTINFO)), vlans_in(vlans)};
}

}  // namespace switchd
