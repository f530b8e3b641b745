// Of the wanted state: static addresses, multicast groups, and what the chip sets once for all VLANs.
#include <linux/if_ether.h>

#include <algorithm>
#include <set>

#include "switchd/mirror/draft.h"

namespace switchd {
namespace {

constexpr uint8_t kMulticastRouterAlways = 2;  // MDB_RTR_TYPE_PERM of linux/if_bridge.h

bool is_station(const Mac &mac) {
    return (mac[0] & 1) == 0 && mac != Mac{};
}

/** The chip floods these groups whatever its table says: 224.0.0.0/24 and ff02::1. */
bool is_always_flooded(const Mac &mac) {
    constexpr Mac kAllNodes{0x33, 0x33, 0, 0, 0, 1};
    return mac == kAllNodes || (mac[0] == 0x01 && mac[1] == 0 && mac[2] == 0x5E && mac[3] == 0 && mac[4] == 0);
}

/** The bridges that have ports in hardware. */
std::set<int> served_bridges(const Draft &draft) {
    std::set<int> bridges;
    for (const auto &[interface, member] : draft.served) {
        bridges.insert(member->bridge);
    }
    return bridges;
}

/** RFC 4541: without queries nobody repeats what he asked for, so groups are not to be trusted. */
bool has_querier(const Draft &draft, int bridge, uint16_t protocol) {
    const Bridge &settings = *draft.link(bridge).bridge;
    const bool is_heard = protocol == ETH_P_IP ? settings.other_querier : settings.other_mld_querier;
    return is_heard || (settings.querier && !draft.plan.new_queriers.contains(bridge));
}

bool trusts_groups(const Draft &draft, int bridge, uint16_t protocol) {
    return draft.link(bridge).bridge->multicast_snooping && (protocol == 0 || has_querier(draft, bridge, protocol));
}

/** Where an interface of the kernel is in the chip. What the chip does not serve is behind the CPU port. */
IntfSet ports_behind(const Draft &draft, int bridge, int interface) {
    const auto found = draft.served.find(interface);
    return found != draft.served.end() && found->second->bridge == bridge ? found->second->ports : kCpuAlone;
}

IntfSet router_ports_of(const Draft &draft, int bridge) {
    IntfSet ports = 0;
    if (const auto heard = draft.kernel.router_ports.find(bridge); heard != draft.kernel.router_ports.end()) {
        for (const int interface : heard->second) {
            ports |= ports_behind(draft, bridge, interface);
        }
    }
    for (const auto &[index, link] : draft.kernel.links) {
        if (link.master == bridge && link.port && link.port->multicast_router == kMulticastRouterAlways) {
            ports |= ports_behind(draft, bridge, index);
        }
    }
    return ports;
}

void add_ageing(Draft &draft, const std::set<int> &bridges) {
    uint32_t least = draft.plan.ageing_seconds;
    if (!bridges.empty()) {
        const int quickest = *std::min_element(bridges.begin(), bridges.end(), [&](int a, int b) {
            return draft.link(a).bridge->ageing_seconds < draft.link(b).bridge->ageing_seconds;
        });
        least = draft.link(quickest).bridge->ageing_seconds;
        for (const int bridge : bridges) {
            if (draft.link(bridge).bridge->ageing_seconds != least) {
                draft.remark(draft.link(bridge).name, "forgets addresses after " + std::to_string(least) + " s as " +
                                                          draft.link(quickest).name +
                                                          " does: the chip has one time for all VLANs");
            }
        }
    }
    // To the kernel 0 means at once, to the chip never.
    draft.wanted.state.ageing_seconds = std::max(least, 1U);
}

/** What happens to unknown groups is set for all VLANs. The kernel forwards what the CPU gets to router ports. */
adp_mcast_miss unknown_groups_of(Draft &draft, const std::set<int> &bridges, uint16_t protocol) {
    const auto trusts = [&](int bridge) { return trusts_groups(draft, bridge, protocol); };
    const auto first_other = std::find_if_not(bridges.begin(), bridges.end(), trusts);
    if (!bridges.empty() && first_other == bridges.end()) {
        return ADP_MCAST_MISS_TO_CPU;
    }
    const char *const name = protocol == ETH_P_IP ? "IPv4" : "IPv6";
    for (const int bridge : bridges) {
        if (trusts(bridge)) {
            draft.remark(draft.link(bridge).name, std::string("floods unknown ") + name +
                                                      " multicast: " + draft.link(*first_other).name +
                                                      " needs it, and the chip has one setting for all VLANs");
        }
    }
    return ADP_MCAST_MISS_FLOOD;
}

}  // namespace

void add_addresses(Draft &draft) {
    auto &addresses = draft.wanted.state.addresses;
    for (const auto &[key, address] : draft.kernel.addresses) {
        const bool is_own = address.kind == Address::Kind::kLocal && address.interface == key.bridge;
        const auto vid = draft.chip_vid_of(key.bridge, key.vid);
        if (!vid || !is_station(key.mac) || (address.kind != Address::Kind::kStatic && !is_own)) {
            continue;
        }
        const bool in_hardware = ports_behind(draft, key.bridge, address.interface) != kCpuAlone;
        addresses[{*vid, key.mac}] = in_hardware ? draft.served.at(address.interface)->port.intf : kCpuIntf;
    }
    for (const auto &[vid, owner] : draft.owners) {
        const Link &link = draft.link(owner);
        if (link.bridge && is_station(link.mac)) {
            addresses[{vid, link.mac}] = kCpuIntf;
        }
    }
}

void add_groups(Draft &draft) {
    const std::set<int> bridges = served_bridges(draft);
    SwitchState &state = draft.wanted.state;
    std::map<int, IntfSet> routers;
    for (const int bridge : bridges) {
        const bool snoops = draft.link(bridge).bridge->multicast_snooping;
        routers[bridge] = snoops ? router_ports_of(draft, bridge) : 0;
        state.igmp_to_cpu = state.igmp_to_cpu || snoops;
    }
    state.mld_to_cpu = state.igmp_to_cpu;
    for (const auto &[key, interfaces] : draft.kernel.groups) {
        const auto vid = draft.chip_vid_of(key.bridge, key.vid);
        const Mac mac = mac_of(key);
        if (!vid || !bridges.contains(key.bridge) || is_always_flooded(mac) ||
            !trusts_groups(draft, key.bridge, key.protocol)) {
            continue;
        }
        IntfSet &ports = state.groups[{*vid, mac}];
        ports |= routers[key.bridge];
        for (const int interface : interfaces) {
            ports |= ports_behind(draft, key.bridge, interface);
        }
    }
    add_ageing(draft, bridges);
    state.unknown_ipv4_groups = unknown_groups_of(draft, bridges, ETH_P_IP);
    state.unknown_ipv6_groups = unknown_groups_of(draft, bridges, ETH_P_IPV6);
}

}  // namespace switchd
