// The MAC address table: entries are added, found and deleted; limits.
#include <cstring>

#include "platform/netlink_api.h"
#include "tests/differential/reference/l2.h"

namespace reference {
namespace {

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
    if (refusal_of(intf) != 0) {
        return refusal_of(intf);
    }
    if (is_agg(intf)) {
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

}  // namespace reference
