// MAC addresses are deleted by VLAN, port, group and address.
#include "platform/netlink_api.h"
#include "tests/differential/reference/l2.h"

namespace reference {

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

}  // namespace reference
