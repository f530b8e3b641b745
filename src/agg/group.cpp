// Groups: creation, deletion, configured members, load balancing.
#include <adp/agg.h>
#include <adp/l2.h>
#include <adp/port.h>
#include <netlink_api.h>

#include "core/group_tables.h"

namespace adp {
namespace {

void clear_group(TrunkId trunk, Intf agg, uint8_t in_use) {
    agg_info[number(trunk)] = {0, in_use, {}};
    agg_standby_members[number(trunk)][0] = 0;
    agg_standby_members[number(trunk)][1] = 0;
    agg_manage_intf[number(trunk)] = 0;
    for (uint32_t port = 1; intf_map_trunk != nullptr && port <= adp_max_phy_port_num; ++port) {
        if (intf_map_trunk[port] == number(agg)) {
            intf_map_trunk[port] = 0;
        }
    }
}

constexpr uint32_t hash_selection(uint32_t mode) {
    switch (mode) {
        case ADP_BALANCE_DST_MAC:
        case ADP_BALANCE_DST_IP:
            return 0x60;
        case ADP_BALANCE_SRC_MAC:
        case ADP_BALANCE_SRC_IP:
            return 0x50;
        default:
            return 0x70;
    }
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_create_agg_group(adp_intf_t agg_intf) {
    const TrunkId trunk = trunk_of(Intf(agg_intf));
    if (!exists(trunk)) {
        return ADP_FAIL;
    }
    const int32_t result = user_trunk_create_id(0, 0, driver_number(trunk));
    if (result == 0) {
        clear_group(trunk, Intf(agg_intf), 1);
    }
    return result;
}

adp_status_t adp_delete_agg_group(adp_intf_t agg_intf) {
    const TrunkId trunk = trunk_of(Intf(agg_intf));
    if (!exists(trunk)) {
        return ADP_FAIL;
    }
    const int32_t result = user_trunk_destroy(0, 0, driver_number(trunk));
    if (result == 0) {
        clear_group(trunk, Intf(agg_intf), 0);
    }
    return result;
}

adp_status_t adp_add_agg_standby_member(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    const TrunkId trunk = trunk_of(Intf(agg_intf));
    if (word0 == 0 && word1 == 0) {
        return ADP_OK;
    }
    if (!exists(trunk)) {
        return ADP_FAIL;
    }
    agg_standby_members[number(trunk)][0] |= word0;
    agg_standby_members[number(trunk)][1] |= word1;
    return ADP_OK;
}

adp_status_t adp_del_agg_standby_member(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    const TrunkId trunk = trunk_of(Intf(agg_intf));
    if (word0 == 0 && word1 == 0) {
        return ADP_OK;
    }
    if (!exists(trunk)) {
        return ADP_FAIL;
    }
    agg_standby_members[number(trunk)][0] &= ~word0;
    agg_standby_members[number(trunk)][1] &= ~word1;
    return ADP_OK;
}

adp_status_t adp_set_agg_loadbalance(adp_intf_t agg_intf, uint32_t mode) {
    // Contract: the group is not checked, and a failed control does not stop the trunk call.
    adp_switch_control_set(ADP_CONTROL_HASH, hash_selection(mode));
    return user_trunk_loadbalance_set(0, 0, driver_number(trunk_of(Intf(agg_intf))), mode);
}
