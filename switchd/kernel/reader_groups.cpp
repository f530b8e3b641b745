// Multicast groups of bridges, and the ports where multicast routers are.
#include <endian.h>
#include <linux/if_bridge.h>
#include <linux/if_ether.h>
#include <stddef.h>
#include <sys/socket.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

#include "switchd/kernel/reader.h"

namespace switchd {

using netlink::Attributes;
using netlink::Octets;

namespace {

constexpr uint16_t kGroupVids = 4096;

/** 0 for a number that is no interface's. */
int index_of(uint32_t number) {
    return number <= uint32_t{std::numeric_limits<int>::max()} ? static_cast<int>(number) : 0;
}

size_t octets_of_address(uint16_t protocol) {
    switch (protocol) {
        case ETH_P_IP:
            return 4;
        case ETH_P_IPV6:
            return 16;
        case 0:
            return ETH_ALEN;
        default:
            return 0;
    }
}

/** The address, of as many octets as the protocol's has; the rest is zeros. */
std::array<uint8_t, 16> address_in(Octets octets, size_t length) {
    std::array<uint8_t, 16> address{};
    std::copy_n(octets.begin(), std::min({length, octets.size(), address.size()}), address.begin());
    return address;
}

/** Removes an interface, which may be a bridge, from ports by bridge. */
template <typename Ports, typename BridgeOf>
void erase_interface(Ports &ports_by_bridge, int index, const BridgeOf &bridge_of) {
    for (auto entry = ports_by_bridge.begin(); entry != ports_by_bridge.end();) {
        entry->second.erase(index);
        const bool is_gone = bridge_of(entry->first) == index || entry->second.empty();
        entry = is_gone ? ports_by_bridge.erase(entry) : std::next(entry);
    }
}

}  // namespace

bool Reader::apply_groups(Octets body, bool is_new) {
    const auto header = netlink::take<br_port_msg>(body);
    const int bridge = header ? index_of(header->ifindex) : 0;
    // A dump has no family.
    if (bridge == 0 || (header->family != AF_BRIDGE && header->family != AF_UNSPEC)) {
        return false;
    }
    bool changed = false;
    const Attributes attributes{body};
    attributes.each(MDBA_MDB, [&](Octets groups) {
        Attributes{groups}.each(MDBA_MDB_ENTRY, [&](Octets group) {
            Attributes{group}.each(MDBA_MDB_ENTRY_INFO,
                                   [&](Octets entry) { changed = apply_membership(bridge, entry, is_new) || changed; });
        });
    });
    attributes.each(MDBA_ROUTER, [&](Octets ports) {
        Attributes{ports}.each(MDBA_ROUTER_PORT,
                               [&](Octets entry) { changed = apply_router_port(bridge, entry, is_new) || changed; });
    });
    return changed;
}

bool Reader::apply_membership(int bridge, Octets entry, bool is_new) {
    const Octets whole = entry;
    const auto info = netlink::take<br_mdb_entry>(entry);
    const int interface = info ? index_of(info->ifindex) : 0;
    if (interface == 0 || info->vid >= kGroupVids) {
        return false;
    }
    const uint16_t protocol = be16toh(info->addr.proto);
    const size_t length = octets_of_address(protocol);
    if (length == 0) {
        return false;
    }
    Membership membership;
    membership.group = {bridge, info->vid, protocol, address_in(whole.subspan(offsetof(br_mdb_entry, addr)), length)};
    membership.interface = interface;
    membership.source = address_in(Attributes{entry}.payload(MDBA_MDB_EATTR_SOURCE), length);
    const bool is_wanted = is_new && (info->flags & MDB_FLAGS_BLOCKED) == 0;
    return is_wanted ? add_membership(membership) : remove_membership(membership);
}

bool Reader::add_membership(const Membership &membership) {
    const auto group = state_.groups.find(membership.group);
    const bool is_full = group == state_.groups.end() && state_.groups.size() >= limits_.groups;
    if (memberships_.contains(membership)) {
        return false;
    }
    if (is_full || memberships_.size() >= limits_.memberships) {
        return ignore();
    }
    memberships_.insert(membership);
    return state_.groups[membership.group].insert(membership.interface).second;
}

bool Reader::remove_membership(const Membership &membership) {
    if (memberships_.erase(membership) == 0) {
        return false;
    }
    const auto other = memberships_.lower_bound({membership.group, membership.interface, {}});
    if (other != memberships_.end() && other->group == membership.group && other->interface == membership.interface) {
        return false;  // it still wants the frames of another source
    }
    const auto group = state_.groups.find(membership.group);
    group->second.erase(membership.interface);
    if (group->second.empty()) {
        state_.groups.erase(group);
    }
    return true;
}

bool Reader::apply_router_port(int bridge, Octets entry, bool is_new) {
    const int interface = index_of(netlink::take<uint32_t>(entry).value_or(0));
    if (interface == 0) {  // the bridge itself is the router
        return false;
    }
    const auto found = state_.router_ports.find(bridge);
    const bool is_known = found != state_.router_ports.end() && found->second.contains(interface);
    if (is_known == is_new) {
        return false;
    }
    if (is_new) {
        if (router_ports_ >= limits_.links) {
            return ignore();
        }
        ++router_ports_;
        return state_.router_ports[bridge].insert(interface).second;
    }
    --router_ports_;
    found->second.erase(interface);
    if (found->second.empty()) {
        state_.router_ports.erase(found);
    }
    return true;
}

bool Reader::forget_memberships(int index) {
    const size_t memberships = std::erase_if(memberships_, [index](const Membership &membership) {
        return membership.group.bridge == index || membership.interface == index;
    });
    if (memberships != 0) {
        erase_interface(state_.groups, index, [](const GroupKey &group) { return group.bridge; });
    }
    erase_interface(state_.router_ports, index, [](int bridge) { return bridge; });
    size_t left = 0;
    for (const auto &[bridge, ports] : state_.router_ports) {
        left += ports.size();
    }
    return std::exchange(router_ports_, left) != left || memberships != 0;
}

}  // namespace switchd
