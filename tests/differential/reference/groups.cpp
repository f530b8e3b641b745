// Aggregation groups: their tables, creation and deletion, the members that are configured.
#include <algorithm>

#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {

adp_intf_t GET_INTF_MAPPING_AGGINTF(adp_intf_t intf) {
    return index_of(intf) < tables.trunk_map.size() ? tables.trunk_map[index_of(intf)] : 0;
}

adp_status_t adp_get_agg_group_drvid(adp_intf_t agg_intf, uint32_t *trunk_id) {
    *trunk_id = trunk_of(agg_intf);
    return 0;
}

adp_status_t GET_AGG_CONFIG_MIN_INTF(adp_intf_t agg_intf, adp_intf_t *intf) {
    *intf = 0;
    if (!is_group(agg_intf)) {
        return -1;
    }
    for (uint32_t n = 0; n <= 26; ++n) {
        if ((tables.standby[trunk_of(agg_intf)][0] >> n & 1) != 0) {
            *intf = n;
            return 0;
        }
    }
    return 0;
}

adp_status_t GET_AGG_MANAGE_INTF(adp_intf_t agg_intf, adp_intf_t *intf) {
    *intf = is_group(agg_intf) ? tables.manager[trunk_of(agg_intf)] : 0;
    return is_group(agg_intf) ? 0 : -1;
}

uint32_t manager_of(uint32_t agg) {
    uint32_t intf = 0;
    GET_AGG_MANAGE_INTF(agg, &intf);
    return intf;
}

uint32_t answering_member_of(uint32_t agg) {
    uint32_t intf = manager_of(agg);
    if (intf == 0) {
        GET_AGG_CONFIG_MIN_INTF(agg, &intf);
    }
    return intf;
}

adp_status_t SET_AGG_MANAGE_INTF(adp_intf_t agg_intf, adp_intf_t intf) {
    if (!is_group(agg_intf)) {
        return -1;
    }
    tables.manager[trunk_of(agg_intf)] = intf;
    return 0;
}

adp_status_t adp_get_agg_link_staus(uint32_t group, uint32_t *state) {
    if (group < 1 || group > 8) {
        return -1;
    }
    *state = static_cast<uint32_t>(tables.is_up[group]);
    return 0;
}

namespace {

adp_status_t refuse_list(uint32_t max, uint32_t *count, uint32_t *list) {
    *count = 0;
    std::fill_n(list, std::min(max, 26u), 0);
    return -1;
}

}  // namespace

adp_status_t adp_get_agg_group(adp_intf_t agg_intf, uint32_t max, uint32_t *count, adp_intf_t *list) {
    if (!is_group(agg_intf)) {
        return refuse_list(max, count, list);
    }
    const adp_agg_record_t &group = tables.groups[trunk_of(agg_intf)];
    *count = static_cast<uint32_t>(group.count);
    if (max < *count) {
        return -1;
    }
    for (uint32_t n = 0; n < *count; ++n) {
        list[n] = static_cast<uint32_t>(adp_phy_2_intf_id(group.ports[n]));
    }
    return 0;
}

adp_status_t GET_AGG_GROUP(adp_intf_t agg_intf, uint32_t *count, adp_intf_t *list) {
    return adp_get_agg_group(agg_intf, 8, count, list);
}

adp_status_t adp_get_agg_config_group(adp_intf_t agg_intf, uint32_t max, uint32_t *count, adp_intf_t *list) {
    if (!is_group(agg_intf)) {
        return refuse_list(max, count, list);
    }
    if (max < static_cast<uint32_t>(tables.groups[trunk_of(agg_intf)].count)) {
        return -1;
    }
    const auto &standby = tables.standby[trunk_of(agg_intf)];
    if (standby[0] == 0 && standby[1] == 0) {
        return adp_get_agg_group(agg_intf, max, count, list);
    }
    uint32_t found = 0;
    for (uint32_t n = 0; n <= 26; ++n) {
        if ((standby[0] >> n & 1) == 0) {
            continue;
        }
        if (found == max) {
            return -1;
        }
        list[found++] = n;
    }
    *count = found;
    return 0;
}

adp_status_t GET_AGG_CONFIG_GROUP(adp_intf_t agg_intf, uint32_t *count, adp_intf_t *list) {
    return adp_get_agg_config_group(agg_intf, 26, count, list);
}

Members active_members(uint32_t agg) {
    Members members;
    members.status = GET_AGG_GROUP(agg, &members.count, members.slots.data());
    return members;
}

Members configured_members(uint32_t agg) {
    Members members;
    members.status = GET_AGG_CONFIG_GROUP(agg, &members.count, members.slots.data());
    return members;
}

adp_status_t adp_get_agg_group_by_map(adp_intf_t agg_intf, uint32_t *bitmap) {
    if (!is_group(agg_intf)) {
        bitmap[0] = bitmap[1] = 0;
        return -1;
    }
    const Members members = active_members(agg_intf);
    if (members.status != 0) {
        return -1;
    }
    bitmap[0] = bitmap[1] = 0;
    for (uint32_t n = 0; n < 8; ++n) {
        const uint32_t member = members.slots[n];
        if (member != 0 && member < 64) {
            bitmap[member / 32] |= 1u << member % 32;
        }
    }
    return 0;
}

adp_status_t adp_register_agg_event_cb(adp_agg_event_cb_t callback) {
    tables.agg_handler = callback;
    return 0;
}

// Creation and deletion

namespace {

void reset_group(uint32_t agg, uint8_t in_use) {
    tables.groups[trunk_of(agg)] = {};
    tables.groups[trunk_of(agg)].in_use = in_use;
    tables.standby[trunk_of(agg)] = {};
    tables.manager[trunk_of(agg)] = 0;
    for (uint32_t n = 1; n < tables.trunk_map.size(); ++n) {
        if (tables.trunk_map[n] == agg) {
            tables.trunk_map[n] = 0;
        }
    }
}

adp_status_t on_trunk(uint32_t agg, int32_t (*driver_call)(uint32_t, uint32_t, int32_t), uint8_t in_use) {
    if (!is_group(agg)) {
        return -1;
    }
    const int32_t result = driver_call(0, 0, static_cast<int32_t>(trunk_of(agg)));
    if (result == 0) {
        reset_group(agg, in_use);
    }
    return result;
}

adp_status_t change_standby(uint32_t agg, std::array<uint32_t, 2> words, bool adds) {
    if ((words[0] | words[1]) == 0) {
        return 0;
    }
    if (!is_group(agg)) {
        return -1;
    }
    for (size_t n = 0; n < words.size(); ++n) {
        uint32_t &word = tables.standby[trunk_of(agg)][n];
        word = adds ? word | words[n] : word & ~words[n];
    }
    return 0;
}

}  // namespace

adp_status_t adp_create_agg_group(adp_intf_t agg_intf) {
    return on_trunk(agg_intf, user_trunk_create_id, 1);
}

adp_status_t adp_delete_agg_group(adp_intf_t agg_intf) {
    return on_trunk(agg_intf, user_trunk_destroy, 0);
}

adp_status_t adp_add_agg_standby_member(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    return change_standby(agg_intf, {word0, word1}, true);
}

adp_status_t adp_del_agg_standby_member(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    return change_standby(agg_intf, {word0, word1}, false);
}

}  // namespace reference
