// Multicast snooping groups and the multicast controls.
#include <cstdio>
#include <cstring>

#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

using Key = std::array<uint8_t, 8>;

Key key_of(const uint8_t *mac) {
    return {mac[0], mac[1], mac[2], mac[3], mac[4], mac[5], 0, 0};
}

/** A list that names a group outside 1..8 is refused whole. */
bool has_bad_group(uint32_t count, const uint32_t *list) {
    for (uint32_t n = 0; n < count; ++n) {
        if (is_agg(list[n]) && !is_group(list[n])) {
            return true;
        }
    }
    return false;
}

/** Writes the numbers of the listed user ports and configured members over the first two words; none: untouched. */
void put_numbers(netlink_mcast_entry_t *entry, uint32_t count, const uint32_t *list) {
    PortSet numbers;
    const auto add = [&](uint32_t number) {
        if (number < 64) {
            numbers.add(number);
        }
    };
    for (uint32_t n = 0; n < count; ++n) {
        if (is_user_port(list[n])) {
            add(index_of(list[n]));
        } else if (is_agg(list[n])) {
            const Members members = configured_members(list[n]);
            for (uint32_t m = 0; m < members.count; ++m) {
                if (members.slots[m] != 0) {  // an empty slot
                    add(members.slots[m]);
                }
            }
        }
        entry->ports[0] = numbers.word[0];
        entry->ports[1] = numbers.word[1];
    }
}

}  // namespace

adp_status_t adp_create_igmpsn_group(const uint8_t *mac, uint32_t vid, uint32_t count, const adp_intf_t *list) {
    if (has_bad_group(count, list)) {
        return -1;
    }
    netlink_mcast_entry_t entry{};
    User_mcast_addr_t_init(0, &entry, key_of(mac).data(), vid & 0xFFFF);
    std::memset(entry.ports, 0, sizeof entry.ports);
    put_numbers(&entry, count, list);
    return User_mcast_addr_add(0, 0, &entry);
}

adp_status_t adp_delete_igmpsn_group(const uint8_t *mac, uint32_t vid) {
    return User_mcast_addr_remove(0, 0, key_of(mac).data(), vid & 0xFFFF);
}

adp_status_t adp_get_igmpsn_group(const uint8_t *mac, uint32_t vid, uint32_t *index) {
    netlink_mcast_entry_t entry{};
    const int32_t result = User_mcast_port_get(0, 0, key_of(mac).data(), vid & 0xFFFF, &entry);
    *index = entry.index;
    return result;
}

adp_status_t adp_add_igmpsn_member(const uint8_t *mac, uint32_t vid, uint32_t count, const adp_intf_t *list,
                                   const uint16_t *vid_p) {
    if (has_bad_group(count, list)) {
        return -1;
    }
    netlink_mcast_entry_t entry{};
    User_mcast_port_get(0, 0, key_of(mac).data(), vid & 0xFFFF, &entry);
    PortSet ports = PortSet::from(entry.ports);
    for (uint32_t n = 0; n < count; ++n) {
        if (type_of(list[n]) > 1) {
            return 201;
        }
        if (is_user_port(list[n])) {
            ports.add(adp_intf_2_phy_id(list[n]));
        }
    }
    std::memcpy(entry.ports, ports.word.data(), sizeof entry.ports);
    const int32_t result = User_mcast_port_add(0, 0, &entry);
    if ((vid & 0xFFFF) == 0) {
        fprintf(stderr, "Mcast Add Port Error tVlanId = %d *vid_p = %u\n", 0, *vid_p);
    }
    return result;
}

adp_status_t adp_del_igmpsn_member(const uint8_t *mac, uint32_t vid, uint32_t count, const adp_intf_t *list) {
    if (has_bad_group(count, list)) {
        return -1;
    }
    netlink_mcast_entry_t entry{};
    User_mcast_port_get(0, 0, key_of(mac).data(), vid & 0xFFFF, &entry);
    put_numbers(&entry, count, list);
    return User_mcast_port_remove(0, 0, &entry);
}

adp_status_t adp_set_vlan_igmp_pkt_action(uint32_t control, uint32_t value) {
    return user_switch_control_set(0, 0, control, value);
}

adp_status_t adp_get_vlan_igmp_pkt_action(uint32_t control, uint32_t *value) {
    return user_switch_control_get(0, 0, control, value);
}

adp_status_t adp_control_port_l2mc_enable(adp_intf_t intf, uint32_t value) {
    return User_switch_port_control_l2mc_enable(0, adp_intf_2_phy_id(intf), 0, value);
}

adp_status_t adp_control_port_l2mc_get_status(adp_intf_t intf, uint32_t *value) {
    return User_switch_port_control_l2mc_get(0, adp_intf_2_phy_id(intf), 0, value);
}

adp_status_t adp_control_port_ipmc_get_status(adp_intf_t intf, uint32_t *value) {
    return User_switch_port_control_ipmc_get(0, adp_intf_2_phy_id(intf), 0, value);
}

adp_status_t adp_control_port_ipmc_set_enable(adp_intf_t intf, uint32_t value) {
    return User_switch_port_control_ipmc_set(0, adp_intf_2_phy_id(intf), 0, value);
}

adp_status_t adp_control_ipmc_set_disable() {
    return User_switch_ipmc_set(0, 0, 0);
}

adp_status_t adp_control_ipmc_set_enable() {
    return User_switch_ipmc_set(0, 0, 1);
}

adp_status_t adp_control_ip6mc_mode_enable(uint32_t mode) {
    return User_switch_ip6mc_mode_set(0, 0, mode);
}

adp_status_t adp_control_ipmc_lookup_miss_action(uint32_t action) {
    for (uint32_t n = 1; n <= 26; ++n) {
        User_switch_ipmc_lookup_miss_action(0, 0, adp_intf_2_phy_id(n), action);
    }
    return 0;
}

adp_status_t adp_control_ip6mc_lookup_miss_action(uint32_t action) {
    for (uint32_t n = 1; n <= 26; ++n) {
        User_switch_ip6mc_lookup_miss_action(0, 0, adp_intf_2_phy_id(n), action);
    }
    return 0;
}

}  // namespace reference
