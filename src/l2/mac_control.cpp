// Learning limits, ageing, counts and walks of the MAC address table.
#include <adp/mac.h>

#include "core/port_map.h"
#include "l2/mac.h"

namespace adp {
namespace {

void name_interface(netlink_learn_limit_t &limit, Intf intf) {
    switch (kind_of(intf)) {
        case IntfKind::kUserPort:
            limit.flags = NETLINK_LIMIT_PORT;
            limit.port = number(phy_of(intf));
            break;
        case IntfKind::kAggregation:
            limit.flags = NETLINK_LIMIT_TRUNK;
            limit.trunk = get_chip_tgid(intf);
            break;
        default:
            // Contract: no scope; the driver refuses it.
            break;
    }
}

/** Fills in what the limit applies to; false for an unknown scope. */
bool name_scope(netlink_learn_limit_t &limit, uint32_t subject, uint32_t scope) {
    switch (scope) {
        case ADP_MAC_SCOPE_VLAN:
            limit.flags = NETLINK_LIMIT_VLAN;
            limit.vid = static_cast<uint16_t>(low16(subject));
            return true;
        case ADP_MAC_SCOPE_INTF:
            name_interface(limit, Intf(subject));
            return true;
        case ADP_MAC_SCOPE_SYSTEM:
            limit.flags = NETLINK_LIMIT_SYSTEM;
            return true;
        default:
            return false;
    }
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_set_mac_limit(uint32_t limit, uint32_t vid_or_intf, uint32_t scope) {
    netlink_learn_limit_t record = {};
    if (!name_scope(record, vid_or_intf, scope)) {
        return ADP_E_SELECTOR;
    }
    record.limit = limit;
    return user_mac_learn_limit_set(0, record);
}

adp_status_t adp_get_mac_limit(uint32_t *limit, uint32_t vid_or_intf, uint32_t scope) {
    netlink_learn_limit_t record = {};
    if (!name_scope(record, vid_or_intf, scope)) {
        return ADP_E_SELECTOR;
    }
    const int32_t result = user_mac_learn_limit_get(0, &record);
    *limit = record.limit;
    return result;
}

adp_status_t adp_set_mac_age_time(uint32_t seconds) {
    return user_mac_age_time_set(0, seconds);
}

adp_status_t adp_get_mac_age_time(uint32_t *seconds) {
    return user_mac_age_time_get(0, seconds);
}

adp_status_t adp_traverse_mac_table(adp_word_t vid, adp_word_t, adp_word_t option, adp_word_t option2) {
    return user_mac_table_show(0, vid, option, option2);
}

adp_status_t adp_traverse_mac_mcast_table(adp_word_t vid, adp_word_t, adp_word_t option, adp_word_t option2) {
    return user_mac_mcast_table_show(0, vid, option, option2);
}

adp_status_t adp_get_mac_learn_count_by_intf(adp_intf_t intf, uint32_t *count) {
    return user_mac_learn_count_get_by_port(number(phy_of(Intf(intf))), count);
}

adp_status_t adp_get_mac_violate_count_by_intf(adp_intf_t intf, uint32_t *count) {
    return user_mac_violate_count_get_by_port(number(phy_of(Intf(intf))), count);
}

adp_status_t adp_l2_mactable_fread(adp_word_t first, adp_word_t second, adp_word_t third, adp_word_t fourth) {
    return user_l2_mactable_fread(first, second, third, fourth);
}

adp_status_t adp_is_mcast_addr_exist_by_vlan(uint32_t vid, uint32_t last_vid, adp_word_t, adp_word_t option) {
    return user_is_mcast_addr_exist_by_vlan(0, low16(vid), low16(last_vid), option);
}

adp_status_t adp_is_mcast_addr_exist_by_vlan_ex(adp_word_t vid, adp_word_t, adp_word_t option, adp_word_t option2) {
    return user_is_mcast_addr_exist_vlan_is(0, vid, option, option2);
}
