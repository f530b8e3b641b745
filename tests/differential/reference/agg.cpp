// Aggregation: accessors, creation and membership, election, link changes, counters.
#include <algorithm>
#include <cstdio>

#include "platform/device_services.h"
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

adp_status_t GET_AGG_LINK_STATUS(uint32_t group, uint32_t *state) {
    return adp_get_agg_link_staus(group, state);
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

}  // namespace

adp_status_t adp_create_agg_group(adp_intf_t agg_intf) {
    if (!is_group(agg_intf)) {
        return -1;
    }
    const int32_t result = user_trunk_create_id(0, 0, static_cast<int32_t>(trunk_of(agg_intf)));
    if (result == 0) {
        reset_group(agg_intf, 1);
    }
    return result;
}

adp_status_t adp_delete_agg_group(adp_intf_t agg_intf) {
    if (!is_group(agg_intf)) {
        return -1;
    }
    const int32_t result = user_trunk_destroy(0, 0, static_cast<int32_t>(trunk_of(agg_intf)));
    if (result == 0) {
        reset_group(agg_intf, 0);
    }
    return result;
}

// The two workers

namespace {

using List = std::vector<uint32_t>;

void announce(const char *worker, int line, uint32_t trunk, const char *word) {
    const auto group = static_cast<int>(trunk + 1);
    const char *format = "interface %s %d, changed state to %s";
    if (sys_trace_get() != 0) {
        char prefix[256] = "";
        char message[256] = "";
        snprintf(prefix, sizeof prefix, "%s():%d", worker, line);
        snprintf(message, sizeof message, "interface %s %d, changed state to %s", "aggregateport", group, word);
        sys_trace_add_log(prefix, message);
    }
    Log_logging_func(5, 5, "UPDOWN", format, "aggregateport", group, word);
}

void send_event(const char *worker, uint32_t trunk) {
    adp_agg_event_t event{};
    event.word[16 + trunk] = 0x10000000u | (trunk + 1);
    reference::adp_agg_event_handle(worker, &event);
}

bool has_link(uint8_t port) {
    uint32_t link = 0;
    adp_get_phy_port_attr(static_cast<uint32_t>(adp_phy_2_intf_id(port)), 11, &link);
    return link == 1;
}

bool contains(const List &list, uint8_t port) {
    return std::any_of(list.begin(), list.end(), [&](uint32_t intf) { return adp_intf_2_phy_id(intf) == port; });
}

int32_t commit(uint32_t trunk, int32_t result, bool commits, const adp_agg_record_t &record) {
    if (commits && result == 0) {
        tables.groups[trunk] = record;
        user_trunk_send_data_to_kernel(0, 0, static_cast<int32_t>(trunk), record);
    }
    return result;
}

int32_t add_worker(uint32_t trunk, const List &list, bool commits, uint32_t *changed) {
    adp_agg_record_t record = tables.groups[trunk];
    const adp_agg_record_t before = record;
    for (const uint32_t intf : list) {
        const int32_t port = adp_intf_2_phy_id(intf);
        if (std::find(before.ports, before.ports + before.count, port) != before.ports + before.count) {
            continue;
        }
        if (record.count == ADP_AGG_MEMBER_BYTES) {
            return -1;
        }
        record.ports[record.count++] = static_cast<uint8_t>(port);
    }
    if (record.count == 0) {
        return 0;
    }
    adp_agg_record_t hardware{};
    bool is_linked = false;
    for (; hardware.count < record.count; ++hardware.count) {
        hardware.ports[hardware.count] = record.ports[hardware.count];
        is_linked = has_link(record.ports[hardware.count]) || is_linked;
    }
    const int32_t result = user_trunk_set(0, 0, static_cast<int32_t>(trunk), hardware);
    if (is_linked) {
        if (tables.is_up[trunk + 1] == 0) {
            announce("hal_add_agg_member_ex", 393, trunk, "up");
            tables.is_up[trunk + 1] = 1;
            if (changed != nullptr) {
                *changed = 1;
            }
        }
        send_event("hal_add_agg_member_ex", trunk);
    }
    return commit(trunk, result, commits, record);
}

int32_t delete_worker(uint32_t trunk, const List &list, bool commits, uint32_t *changed) {
    const adp_agg_record_t before = tables.groups[trunk];
    adp_agg_record_t record{};
    adp_agg_record_t hardware{};
    for (int32_t n = 0; n < before.count; ++n) {
        const uint8_t port = before.ports[n];
        if (contains(list, port)) {
            continue;
        }
        record.ports[record.count++] = port;
        if (has_link(port)) {
            hardware.ports[hardware.count++] = port;
        }
    }
    const auto id = static_cast<int32_t>(trunk);
    if (hardware.count > 0) {
        return commit(trunk, user_trunk_set(0, 0, id, hardware), commits, record);
    }
    user_trunk_destroy(0, 0, id);
    const int32_t result = user_trunk_create_id(0, 0, id);
    if (tables.is_up[trunk + 1] == 1) {
        announce("hal_del_agg_member_ex", 564, trunk, "down");
        tables.is_up[trunk + 1] = 0;
        if (changed != nullptr) {
            *changed = 1;
        }
        send_event("hal_del_agg_member_ex", trunk);
    }
    return commit(trunk, result, commits, record);
}

/** A list that names a row beyond the map is refused whole. The row that is written is the trunk map's. */
bool is_in_map(const List &list) {
    return std::all_of(list.begin(), list.end(),
                       [](uint32_t intf) { return index_of(intf) < tables.trunk_map.size(); });
}

List list_of(uint32_t word) {
    List list;
    for (uint32_t n = 0; n <= 26; ++n) {
        if ((word >> n & 1) != 0) {
            list.push_back(n);
        }
    }
    return list;
}

void point_to(uint32_t agg, const List &list) {
    for (const uint32_t intf : list) {
        tables.trunk_map[index_of(intf)] = agg;
    }
}

adp_status_t add_members(uint32_t agg, const List &list) {
    if (!is_group(agg) || !is_in_map(list)) {
        return -1;
    }
    const int32_t result = add_worker(trunk_of(agg), list, true, nullptr);
    if (result == 0) {
        ANEW_SELECT_MANAGE_INTF(agg);
        point_to(agg, list);
    }
    return result;
}

adp_status_t delete_members(uint32_t agg, const List &list, bool elects) {
    if (!is_group(agg) || !is_in_map(list)) {
        return -1;
    }
    const int32_t result = delete_worker(trunk_of(agg), list, true, nullptr);
    if (result == 0 && elects) {
        ANEW_SELECT_MANAGE_INTF(agg);
        point_to(0, list);
    }
    return result;
}

}  // namespace

adp_status_t adp_add_agg_member(adp_intf_t agg_intf, uint32_t count, const adp_intf_t *list) {
    return count == 0 ? 0 : add_members(agg_intf, List(list, list + count));
}

adp_status_t adp_add_agg_member_by_map(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    return (word0 | word1) == 0 ? 0 : add_members(agg_intf, list_of(word0));
}

adp_status_t adp_del_agg_member(adp_intf_t agg_intf, uint32_t count, const adp_intf_t *list) {
    return delete_members(agg_intf, List(list, list + count), count != 0);
}

adp_status_t adp_del_agg_member_by_map(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    return (word0 | word1) == 0 ? 0 : delete_members(agg_intf, list_of(word0), true);
}

adp_status_t adp_add_agg_standby_member(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    if ((word0 | word1) == 0) {
        return 0;
    }
    if (!is_group(agg_intf)) {
        return -1;
    }
    tables.standby[trunk_of(agg_intf)][0] |= word0;
    tables.standby[trunk_of(agg_intf)][1] |= word1;
    return 0;
}

adp_status_t adp_del_agg_standby_member(adp_intf_t agg_intf, uint32_t word0, uint32_t word1) {
    if ((word0 | word1) == 0) {
        return 0;
    }
    if (!is_group(agg_intf)) {
        return -1;
    }
    tables.standby[trunk_of(agg_intf)][0] &= ~word0;
    tables.standby[trunk_of(agg_intf)][1] &= ~word1;
    return 0;
}

adp_status_t ANEW_SELECT_MANAGE_INTF(adp_intf_t agg_intf) {
    if (!is_group(agg_intf)) {
        return -1;
    }
    Members members = active_members(agg_intf);
    if (members.count == 0) {
        members = configured_members(agg_intf);
    }
    uint32_t largest = 0;
    uint32_t smallest_up = 0;
    for (uint32_t n = 0; n < members.count; ++n) {
        const uint32_t member = members.slots[n];
        uint32_t link = 0;
        adp_get_phy_port_attr(member, 14, &link);
        largest = std::max(largest, member);
        if (link != 0 && (smallest_up == 0 || member < smallest_up)) {
            smallest_up = member;
        }
    }
    return SET_AGG_MANAGE_INTF(agg_intf, smallest_up != 0 ? smallest_up : largest);
}

adp_status_t adp_set_agg_loadbalance(adp_intf_t agg_intf, uint32_t mode) {
    const uint32_t hash = mode == 1 || mode == 4 ? 0x60 : mode == 2 || mode == 5 ? 0x50 : 0x70;
    adp_switch_control_set(136, hash);
    return user_trunk_loadbalance_set(0, 0, static_cast<int32_t>(trunk_of(agg_intf)), mode);
}

int32_t adp_agg_event_handle(const char * /*caller*/, const adp_agg_event_t *event) {
    return tables.agg_handler == nullptr ? 0 : tables.agg_handler(event);
}

adp_status_t adp_agg_linkscan_handle(adp_intf_t intf, uint32_t is_up, uint32_t *changed) {
    const int32_t port = adp_intf_2_phy_id(intf);
    for (uint32_t trunk = 0; trunk < 8; ++trunk) {
        const adp_agg_record_t &group = tables.groups[trunk];
        if (std::find(group.ports, group.ports + group.count, port) == group.ports + group.count) {
            continue;
        }
        const uint32_t agg = 0x10000000u | (trunk + 1);
        if (is_up != 0) {
            const int32_t result = add_worker(trunk, {intf}, false, changed);
            if (intf < manager_of(agg)) {
                SET_AGG_MANAGE_INTF(agg, intf);
            }
            return result;
        }
        const int32_t result = delete_worker(trunk, {intf}, false, changed);
        if (intf == manager_of(agg)) {
            ANEW_SELECT_MANAGE_INTF(agg);
        }
        return result;
    }
    return 0;
}

// Counters and traps

adp_status_t adp_get_port_stat(adp_intf_t intf, uint32_t type, uint64_t *out) {
    if (is_user_port(intf)) {
        return or_102(user_port_packetstat_get(0, 0, adp_intf_2_phy_id(intf), type, out));
    }
    if (!is_agg(intf)) {
        return 201;
    }
    if (!is_group(intf)) {
        return -1;
    }
    uint64_t sum = 0;
    const adp_status_t status = each_member(active_members(intf), [&](int32_t port) {
        uint64_t one = 0;
        const int32_t result = user_port_packetstat_get(0, 0, port, type, &one);
        sum += one;
        return result;
    });
    if (status == 0) {
        *out = sum;
    }
    return status;
}

adp_status_t adp_clr_port_stat(adp_intf_t intf) {
    const auto clear = [](int32_t port) { return or_102(user_port_packetstat_clear(0, 0, port)); };
    if (is_user_port(intf)) {
        return clear(adp_intf_2_phy_id(intf));
    }
    if (!is_agg(intf)) {
        return 201;
    }
    return is_group(intf) ? each_member(active_members(intf), clear) : -1;
}

adp_status_t adp_set_trap_lacp_packet(uint32_t value, uint32_t /*unused*/, uint32_t /*unused2*/, adp_word_t option) {
    return user_trunk_trap_lacp(0, 0, value, option);
}

adp_status_t adp_set_trap_eoam_packet(uint32_t value, uint32_t /*unused*/, uint32_t /*unused2*/, adp_word_t option) {
    return user_eoam_trap_set(0, 0, value, option);
}

}  // namespace reference
