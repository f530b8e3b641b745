// Members of aggregation groups: added, removed, elected as manager, and their links.
#include <algorithm>

#include "platform/netlink_api.h"
#include "tests/differential/reference/log.h"

namespace reference {
namespace {

using List = std::vector<uint32_t>;

void announce(const char *worker, int line, uint32_t trunk, const char *word) {
    log(5, 5, "UPDOWN", worker, line, "interface %s %d, changed state to %s", "aggregateport",
        static_cast<int>(trunk + 1), word);
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

}  // namespace reference
