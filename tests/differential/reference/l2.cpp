// The MAC address table, isolation, switch controls and 802.1X.
#include <cstring>

#include "platform/device_services.h"
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

using Key = std::array<uint8_t, 8>;

Key key_of(const uint8_t *mac) {
    return {mac[0], mac[1], mac[2], mac[3], mac[4], mac[5], 0, 0};
}

uint32_t low16(uint32_t word) {
    return word & 0xFFFF;
}
uint32_t low8(uint32_t word) {
    return word & 0xFF;
}

adp_l2_entry_t entry_for(const uint8_t *mac, uint32_t vid) {
    adp_l2_entry_t entry{};
    std::memcpy(entry.mac, mac, 6);
    entry.vid = static_cast<uint16_t>(vid);
    return entry;
}

}  // namespace

adp_status_t adp_add_mac_addr(const uint8_t *mac, adp_intf_t intf, uint32_t vid, uint32_t is_static) {
    adp_l2_entry_t entry = entry_for(mac, vid);
    entry.flags = low8(is_static) == 1 ? 8 : 0;
    if (type_of(intf) > 1) {
        return 201;
    }
    if (is_agg(intf)) {
        if (!is_group(intf)) {
            return -1;
        }
        entry.flags |= 1;
        entry.trunk = static_cast<int32_t>(trunk_of(intf));
    }
    entry.port = adp_intf_2_phy_id(is_agg(intf) ? manager_of(intf) : intf);
    return user_mac_addr_add(0, entry);
}

adp_status_t adp_filter_mac_addr(adp_intf_t intf, const uint8_t *mac, uint32_t vid, uint32_t flags) {
    adp_l2_entry_t entry = entry_for(mac, vid);
    entry.flags = low8(flags);
    if (is_user_port(intf)) {
        entry.port = adp_intf_2_phy_id(intf);
    } else if (is_agg(intf)) {
        entry.flags |= 1;
        entry.trunk = static_cast<int32_t>(trunk_of(intf));
    } else {
        return 201;
    }
    return user_mac_addr_add(0, entry);
}

adp_status_t adp_add_mac_mcast_addr(const uint8_t *mac, uint64_t ports, uint32_t vid, uint32_t kind) {
    if (low8(kind) != 1) {
        return -1;
    }
    adp_l2_entry_t entry = entry_for(mac, vid);
    PortSet interfaces;
    interfaces.word[0] = static_cast<uint32_t>(ports);
    interfaces.word[1] = static_cast<uint32_t>(ports >> 32);
    const PortSet physical = to_physical(interfaces);
    std::memcpy(entry.ports, physical.word.data(), sizeof entry.ports);
    return user_mac_mcast_addr_add(0, entry);
}

namespace {

struct Found {
    adp_l2_entry_t entry{};
    int32_t result = 0;
    [[nodiscard]] uint32_t intf() const {
        return (entry.flags & 0x80) != 0 ? 0x10000000u | (static_cast<uint32_t>(entry.trunk) + 1)
                                         : static_cast<uint32_t>(adp_phy_2_intf_id(static_cast<uint32_t>(entry.port)));
    }
};

Found find(const uint8_t *mac, uint32_t vid) {
    Found found;
    found.result = user_mac_addr_get(0, key_of(mac).data(), low16(vid), &found.entry);
    return found;
}

}  // namespace

adp_status_t adp_get_mac_addr(const uint8_t *mac, uint32_t vid, adp_l2_entry_t *entry) {
    const Found found = find(mac, vid);
    *entry = found.entry;
    entry->port = adp_phy_2_intf_id(static_cast<uint32_t>(found.entry.port));
    return found.result;
}

adp_status_t adp_get_mac_mcast_addr(const uint8_t *mac, uint32_t vid, adp_l2_entry_t *entry) {
    adp_l2_entry_t found{};
    const int32_t result = user_mac_mcast_addr_get(0, key_of(mac).data(), low16(vid), &found);
    *entry = found;
    return result;
}

adp_status_t adp_get_intf_by_addr(const uint8_t *mac, uint32_t vid, adp_intf_t *intf) {
    const Found found = find(mac, vid);
    *intf = found.intf();
    return found.result;
}

adp_status_t adp_get_intf_flags_by_addr(const uint8_t *mac, uint32_t vid, adp_intf_t *intf, uint32_t *flags) {
    const Found found = find(mac, vid);
    *intf = found.intf();
    *flags = found.entry.flags;
    return found.result;
}

adp_status_t adp_get_l2_index_by_addr(const uint8_t *mac, uint32_t vid, uint32_t *index) {
    const Found found = find(mac, vid);
    *index = found.entry.index;
    return found.result;
}

adp_status_t adp_get_nextvalid_mac_addr(adp_word_t first, adp_l2_entry_t *second, adp_word_t /*unused*/,
                                        adp_word_t fourth) {
    return user_netlink_mac_nextValidAddr_get(0, first, second, fourth);
}

adp_status_t adp_del_mac_addr(const uint8_t *mac, uint32_t vid, uint32_t /*unused*/, adp_word_t last) {
    return user_mac_addr_delete(0, key_of(mac).data(), low16(vid), last);
}

adp_status_t adp_del_mac_mcast_addr(const uint8_t *mac, uint32_t vid, uint32_t /*unused*/, adp_word_t last) {
    return user_mac_mcast_addr_delete(0, key_of(mac).data(), low16(vid), last);
}

adp_status_t adp_del_mac_by_lrntype(uint32_t type) {
    return user_l2_addr_del_all_addr_by_lrntype(0, 0, low8(type));
}

adp_status_t adp_del_mac_addr_by_vlan(uint32_t vid, uint32_t mode) {
    switch (low8(mode)) {
        case 0:
            return user_l2_addr_delete_by_vlan(0, 0, low16(vid), 0);
        case 1:
            return user_l2_addr_delete_static_by_vlan(0, 0, low16(vid), 0);
        case 2:
            return user_l2_addr_delete_by_vlan(0, 0, low16(vid), 1);
        default:
            return 101;
    }
}

adp_status_t adp_del_mac_addr_by_mac(const uint8_t *mac, uint32_t mode) {
    switch (low8(mode)) {
        case 0:
            return user_l2_addr_delete_by_mac(0, 0, key_of(mac).data(), 0);
        case 1:
            return user_l2_addr_delete_static_by_mac(0, 0, key_of(mac).data(), 0);
        case 2:
            return user_l2_addr_delete_by_mac(0, 0, key_of(mac).data(), 1);
        default:
            return 101;
    }
}

namespace {

adp_status_t delete_by_port(int32_t port, uint32_t mode) {
    switch (low8(mode)) {
        case 0:
            return user_l2_addr_delete_by_port(0, 0, -1, port, 0);
        case 1:
            return user_l2_addr_delete_static_by_port(0, 0, -1, port);
        case 2:
            return user_l2_addr_delete_by_port(0, 0, -1, port, 1);
        default:
            return 101;
    }
}

}  // namespace

adp_status_t adp_del_mac_addr_by_intf(adp_intf_t intf, uint32_t mode) {
    if (is_user_port(intf)) {
        return delete_by_port(adp_intf_2_phy_id(intf), mode);
    }
    if (!is_agg(intf)) {
        return 201;
    }
    adp_status_t result = -1;
    for (const uint32_t member : active_members(intf).slots) {
        if (member != 0) {
            result = delete_by_port(adp_intf_2_phy_id(member), mode);
        }
    }
    return result;
}

adp_status_t adp_del_mac_addr_by_vlan_intf(uint32_t vid, adp_intf_t intf, uint32_t mode) {
    const int32_t port = adp_intf_2_phy_id(intf);
    const auto trunk = static_cast<int32_t>(trunk_of(intf));
    vid = low16(vid);
    mode = low8(mode);
    if (type_of(intf) > 1) {
        return 201;
    }
    if (mode > 2) {
        return 101;
    }
    if (is_agg(intf)) {
        const int32_t result = user_l2_addr_delete_by_vlan_trunk(0, 0, vid, trunk, mode == 0 ? 0 : 1);
        return mode == 1 ? -1 : result;
    }
    if (mode == 1) {
        return user_l2_addr_delete_static_by_vlan_port(0, 0, vid, port);
    }
    return user_l2_addr_delete_by_vlan_port(0, 0, vid, -1, port, mode == 0 ? 0 : 1);
}

adp_status_t adp_del_mac_addr_by_intf_mac(adp_intf_t intf, const uint8_t *mac, uint32_t mode, adp_word_t last) {
    if (type_of(intf) > 1) {
        return 201;
    }
    if (is_agg(intf)) {
        return -1;
    }
    const int32_t port = adp_intf_2_phy_id(intf);
    switch (low8(mode)) {
        case 0:
            return user_l2_addr_delete_dynaic_by_mac_port(0, 0, key_of(mac).data(), port, last);
        case 1:
            return user_l2_addr_delete_static_by_mac_port(0, 0, key_of(mac).data(), port, last);
        case 2:
            return user_l2_addr_delete_all_by_mac_port(0, 0, key_of(mac).data(), port);
        default:
            return 101;
    }
}

adp_status_t adp_del_mac_addr_by_trunkid_mac_vlan(adp_intf_t intf, const uint8_t *mac, uint32_t mode, uint32_t vid) {
    const int32_t port = adp_intf_2_phy_id(intf);
    switch (low8(mode)) {
        case 0:
            return user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(0, 0, key_of(mac).data(), port, low16(vid));
        case 1:
            return user_l2_addr_delete_trunk_static_by_port_mac_vlan(0, 0, key_of(mac).data(), port, low16(vid));
        case 2:
            return user_l2_addr_delete_all_dynamic_by_port_mac_vlan(0, 0, key_of(mac).data(), port, low16(vid));
        default:
            return 101;
    }
}

adp_status_t adp_del_port_violate_mac_addr_by_intf(adp_intf_t intf) {
    return user_mac_violate_del_by_port(adp_intf_2_phy_id(intf));
}

namespace {

netlink_learn_limit_t limit_record(uint32_t subject, uint32_t scope) {
    netlink_learn_limit_t record{};
    if (scope == 0) {
        record.flags = 2;
        record.vid = static_cast<uint16_t>(subject);
    } else if (scope == 2) {
        record.flags = 1;
    } else if (is_user_port(subject)) {
        record.flags = 4;
        record.port = adp_intf_2_phy_id(subject);
    } else if (is_agg(subject)) {
        record.flags = 8;
        record.trunk = static_cast<int32_t>(trunk_of(subject));
    }
    return record;
}

}  // namespace

adp_status_t adp_set_mac_limit(uint32_t limit, uint32_t subject, uint32_t scope) {
    if (scope > 2) {
        return 101;
    }
    netlink_learn_limit_t record = limit_record(subject, scope);
    record.limit = limit;
    return user_mac_learn_limit_set(0, record);
}

adp_status_t adp_get_mac_limit(uint32_t *limit, uint32_t subject, uint32_t scope) {
    if (scope > 2) {
        return 101;
    }
    netlink_learn_limit_t record = limit_record(subject, scope);
    const int32_t result = user_mac_learn_limit_get(0, &record);
    *limit = record.limit;
    return result;
}

adp_status_t adp_set_mac_age_time(uint32_t age) {
    return user_mac_age_time_set(0, age);
}

adp_status_t adp_get_mac_age_time(uint32_t *age) {
    return user_mac_age_time_get(0, age);
}

adp_status_t adp_traverse_mac_table(adp_word_t first, adp_word_t /*unused*/, adp_word_t third, adp_word_t fourth) {
    return user_mac_table_show(0, first, third, fourth);
}

adp_status_t adp_traverse_mac_mcast_table(adp_word_t first, adp_word_t /*unused*/, adp_word_t third,
                                          adp_word_t fourth) {
    return user_mac_mcast_table_show(0, first, third, fourth);
}

adp_status_t adp_get_mac_learn_count_by_intf(adp_intf_t intf, uint32_t *count) {
    return user_mac_learn_count_get_by_port(adp_intf_2_phy_id(intf), count);
}

adp_status_t adp_get_mac_violate_count_by_intf(adp_intf_t intf, uint32_t *count) {
    return user_mac_violate_count_get_by_port(adp_intf_2_phy_id(intf), count);
}

adp_status_t adp_l2_mactable_fread(adp_word_t first, adp_word_t second, adp_word_t third, adp_word_t fourth) {
    return user_l2_mactable_fread(first, second, third, fourth);
}

adp_status_t adp_is_mcast_addr_exist_by_vlan(uint32_t vid, uint32_t second, adp_word_t /*unused*/, adp_word_t fourth) {
    return user_is_mcast_addr_exist_by_vlan(0, low16(vid), low16(second), fourth);
}

adp_status_t adp_is_mcast_addr_exist_by_vlan_ex(adp_word_t first, adp_word_t /*unused*/, adp_word_t third,
                                                adp_word_t fourth) {
    return user_is_mcast_addr_exist_vlan_is(0, first, third, fourth);
}

// Isolation and switch controls

adp_status_t hal_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1) {
    PortSet interfaces;
    interfaces.word[0] = word0;
    interfaces.word[1] = word1;
    const PortSet physical = to_physical(interfaces);
    adp_port_set_t egress{};
    std::memcpy(egress.word, physical.word.data(), sizeof egress.word);
    const auto set = [&](int32_t port) { return or_102(user_port_egress_set(0, 0, port, 0, egress)); };
    if (type_of(intf) > 1) {
        return 201;
    }
    if (is_user_port(intf)) {
        return set(adp_intf_2_phy_id(intf));
    }
    return is_group(intf) ? each_member(configured_members(intf), set) : -1;
}

adp_status_t hal_get_port_isolate(adp_intf_t intf, uint32_t *map) {
    if (is_agg(intf) && !is_group(intf)) {
        map[0] = map[1] = 0;
    }
    return on_port_or_manager(intf, [&](int32_t port) {
        adp_ports_t egress{};
        const int32_t result = user_port_egress_get(0, 0, port, 0, egress);
        const PortSet interfaces = to_interfaces(PortSet::from(egress));
        map[0] = interfaces.word[0];
        map[1] = interfaces.word[1];
        return or_102(result);
    });
}

adp_status_t adp_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1) {
    return hal_set_port_isolate(intf, word0, word1);
}

adp_status_t adp_get_port_isolatestatus(adp_intf_t intf, uint32_t *map) {
    return hal_get_port_isolate(intf, map);
}

adp_status_t adp_switch_control_set(uint32_t control, uint32_t value) {
    return or_102(user_switch_control_set(0, 0, control, value));
}

adp_status_t adp_switch_control_get(uint32_t control, uint32_t *value) {
    return user_switch_control_get(0, 0, control, value);
}

adp_status_t adp_selfmac_trap_tocpu(uint32_t value, uint32_t /*unused*/, uint32_t /*unused2*/, adp_word_t option) {
    return user_selfmac_trap_to_cpu(0, 0, value, option);
}

adp_status_t hal_vlan_control_port_set(adp_intf_t intf, uint32_t control, int32_t value) {
    return on_port_only(intf, [&](int32_t port) { return user_vlan_control_port_set(0, 0, port, control, value); });
}

adp_status_t hal_vlan_control_port_get(adp_intf_t intf, uint32_t control, uint32_t *value) {
    return on_port_only(intf, [&](int32_t port) { return user_vlan_control_port_get(0, 0, port, control, value); });
}

// 802.1X

adp_status_t adp_set_port_dot1x_mode(int32_t intf, uint32_t mode, uint32_t /*unused*/, uint32_t learn) {
    const auto port = static_cast<uint32_t>(intf);
    mode = low8(mode);
    if (mode > 2) {
        return 403;
    }
    const int32_t learning = mode == 0 ? 8 : mode == 2 ? 0 : learn != 0 ? 8 : 5;
    if (adp_intf_learn_set(port, learning) != 0) {
        return 401;
    }
    return mode != 1 && set_mac_tbl_clear_by_port(port, 7, 3) != 0 ? 402 : 0;
}

adp_status_t adp_set_port_dot1x_authorized_state(int32_t intf, uint32_t state, uint32_t learn) {
    return adp_set_port_dot1x_mode(intf, low8(state) == 1 ? 1 : 0, 0, learn);
}

adp_status_t adp_set_mac_dot1x_authorized_state(adp_intf_t intf, uint32_t vid, const uint8_t *mac,
                                                uint32_t authorised) {
    const char *text = onu_mac2str(mac);
    if (text == nullptr) {
        return 403;
    }
    del_mac_addr(text, low16(vid), 1);
    if (low8(authorised) == 0) {
        return 0;
    }
    uint32_t target = intf;
    uint32_t group = 0;
    get_group_by_interface(intf, &group);
    if (group != 0) {
        const Members members = active_members(group);
        uint32_t smallest = members.slots[0];
        for (const uint32_t member : members.slots) {
            if (member != 0 && member < smallest) {
                smallest = member;
            }
        }
        target = smallest != 0 ? smallest : target;
    }
    return add_mac_static_addr(text, target, low16(vid), 1) == 0 ? 0 : 405;
}

}  // namespace reference
