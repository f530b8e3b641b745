// What the chip has now, read through the library.
#include "switchd/mirror/reader.h"

#include <adp/adp.h>

#include <algorithm>
#include <array>
#include <vector>

#include "switchd/mirror/table_walk.h"

namespace switchd {
namespace {

void read_vlans(const Plan &plan, SwitchReading &reading) {
    uint32_t default_vid = reading.default_vid;
    if (adp_vlan_default_get(&default_vid) == ADP_OK) {
        reading.default_vid = static_cast<uint16_t>(default_vid);
    }
    for (uint16_t vid = 1; vid <= kLastVid; ++vid) {
        adp_ports_t members = {};
        adp_ports_t untagged = {};
        if (adp_vlan_port_get(vid, members, untagged) == ADP_OK && (members[0] != 0 || vid != reading.default_vid)) {
            reading.state.vlans[vid] = {members[0] & plan.all(), untagged[0] & plan.all(), {}};
        }
    }
}

PortSettings read_port(const Plan &plan, uint32_t port) {
    uint32_t pvid = 0;
    uint32_t mode = ADP_LEARN_NORMAL;
    uint32_t may_send_to[2] = {};
    adp_intf_pivd_get(port, &pvid);
    adp_intf_learn_get(port, &mode);
    adp_get_port_isolatestatus(port, may_send_to);
    return {static_cast<uint16_t>(pvid), learning_of(mode), may_send_to[0] & plan.all()};
}

std::vector<int32_t> read_tree_groups() {
    const int32_t count = std::clamp(adp_get_max_stg(), 0, ADP_STG_SUPPORTED);
    std::vector<int32_t> groups(static_cast<size_t>(count));
    if (count > 0 && adp_get_stg_each_time_list(groups.data(), 0, static_cast<uint32_t>(count)) != ADP_OK) {
        groups.clear();
    }
    return groups;
}

TreeStates read_states(const Plan &plan, int32_t group) {
    TreeStates states;
    for (uint32_t port = 1; port <= plan.user_ports; ++port) {
        uint32_t state = ADP_STG_STATE_FORWARDING;
        if (adp_stg_stp_get(group, port, &state) == ADP_OK && state < ADP_STG_STATE_FORWARDING) {
            states[port] = static_cast<adp_stg_state>(state);
        }
    }
    return states;
}

void read_vlans_of_group(int32_t group, TreeGroups &trees) {
    constexpr uint32_t kChunk = 1024;
    const int32_t count = std::clamp(adp_get_stg_max_vlan(group), 0, ADP_VLANS);
    for (uint32_t chunk = 0; chunk * kChunk < static_cast<uint32_t>(count); ++chunk) {
        std::array<uint16_t, kChunk> vids{};
        adp_get_stg_vlan_each_time_list(group, vids.data(), chunk, kChunk);
        for (const uint16_t vid : vids) {
            if (vid != 0) {
                trees.vlans[vid] = group;
            }
        }
    }
}

void read_trees(const Plan &plan, TreeGroups &trees) {
    trees.states[0] = {};
    for (const int32_t group : read_tree_groups()) {
        trees.states[group] = read_states(plan, group);
        if (group != 0) {
            read_vlans_of_group(group, trees);
        }
    }
}

/** Filters are somebody else's. */
void read_addresses(const Plan &plan, SwitchState &state) {
    constexpr uint32_t kFilters = ADP_MAC_FLAG_DROP_TO | ADP_MAC_FLAG_DROP_FROM;
    TableWalk walk;
    adp_l2_entry_t entry;
    while (walk.next(entry) == TableWalk::Step::kEntry) {
        const VlanMac key{entry.vid, mac_of(entry)};
        if (is_group(entry)) {
            state.groups[key] = ports_of(entry, plan.user_ports);
        } else if ((entry.flags & ADP_MAC_FLAG_STATIC) != 0 && (entry.flags & kFilters) == 0) {
            state.addresses[key] = intf_of(entry);
        }
    }
}

bool is_control_on(adp_switch_control control) {
    uint32_t value = 0;
    return adp_get_vlan_igmp_pkt_action(control, &value) == ADP_OK && value != 0;
}

}  // namespace

Learning learning_of(uint32_t mode) {
    switch (mode) {
        case ADP_LEARN_CLOSED:
        case ADP_LEARN_PENDING:
            return Learning::kClosed;
        case ADP_LEARN_OFF:
            return Learning::kOff;
        default:
            return Learning::kOn;
    }
}

SwitchReading read_whole_switch(const Plan &plan) {
    SwitchReading reading;
    SwitchState &state = reading.state;
    read_vlans(plan, reading);
    for (uint32_t port = 1; port <= plan.user_ports; ++port) {
        state.ports[port] = read_port(plan, port);
    }
    read_trees(plan, reading.trees);
    for (auto &[vid, vlan] : state.vlans) {
        vlan.not_forwarding = reading.trees.states_of(vid);
    }
    read_addresses(plan, state);
    adp_get_mac_age_time(&state.ageing_seconds);
    state.igmp_to_cpu = is_control_on(ADP_CONTROL_IGMP);
    state.mld_to_cpu = is_control_on(ADP_CONTROL_MLD);
    return reading;
}

SwitchState read_switch(const Plan &plan) {
    return read_whole_switch(plan).state;
}

}  // namespace switchd
