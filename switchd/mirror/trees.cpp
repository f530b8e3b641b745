// The chip's spanning-tree groups, brought to what is wanted: first what closes ports, later what opens them.
#include "switchd/mirror/trees.h"

#include <adp/stg.h>

#include <set>

#include "switchd/mirror/failures.h"
#include "switchd/ports/port_name.h"

namespace switchd {

bool Trees::set_state(int32_t group, uint32_t port, adp_stg_state state, Remarks &remarks) {
    if (!check(adp_set_port_mstp_state(group, port, state), name_of({port, 0}),
               "does not take its state in spanning-tree group " + std::to_string(group), remarks)) {
        return false;
    }
    TreeStates &states = present_.states[group];
    if (state == ADP_STG_STATE_FORWARDING) {
        states.erase(port);
    } else {
        states[port] = state;
    }
    return true;
}

bool Trees::move(uint16_t vid, int32_t group, Remarks &remarks) {
    // If the library's table said that the VLAN is in a group, the call would begin with opening all ports of that
    // group.
    aiVlanStg[vid] = 0;
    if (!check(adp_add_msti_member(group, vid), vlan_text(vid),
               "cannot be moved into spanning-tree group " + std::to_string(group), remarks)) {
        return false;
    }
    if (group == 0) {
        present_.vlans.erase(vid);
    } else {
        present_.vlans[vid] = group;
    }
    return true;
}

/** Whether every port is at least as closed as wanted. */
bool Trees::close_group(int32_t group, const TreeStates &states, Remarks &remarks) {
    if (!present_.states.contains(group)) {
        if (!check(adp_create_mstp_instance(group), "spanning-tree group " + std::to_string(group), "cannot be made",
                   remarks)) {
            return false;
        }
        present_.states[group] = {};  // all ports forward in a new group
    }
    bool is_closed = true;
    for (const auto &[port, state] : states) {
        if (state < state_of(present_.states.at(group), port)) {
            is_closed = set_state(group, port, state, remarks) && is_closed;
        }
    }
    return is_closed;
}

void Trees::close(const std::map<uint16_t, VlanState> &wanted, Remarks &remarks) {
    choice_ = tree_choice_of(wanted, present_);
    std::map<int32_t, bool> is_closed;
    for (const auto &[group, states] : choice_.states) {
        is_closed[group] = close_group(group, states, remarks);
    }
    for (const auto &[vid, group] : choice_.vlans) {
        if (group != 0 && group != present_.group_of(vid) && is_closed[group]) {
            move(vid, group, remarks);
        }
    }
}

IntfSet Trees::allowed_members(uint16_t vid, const VlanState &wanted) const {
    const TreeStates &now = present_.states_of(vid);
    const bool goes_to_default = choice_.vlans.at(vid) == 0;
    IntfSet allowed = wanted.members;
    for (const auto &[port, state] : wanted.not_forwarding) {
        if (goes_to_default || state < state_of(now, port)) {
            allowed &= ~set_of(port);
        }
    }
    return allowed;
}

void Trees::open_group(int32_t group, const TreeStates &states, Remarks &remarks) {
    const TreeStates before = present_.states.at(group);
    for (const auto &[port, state] : before) {
        const adp_stg_state wanted = state_of(states, port);
        if (state < wanted) {
            set_state(group, port, wanted, remarks);
        }
    }
}

void Trees::open(const std::map<uint16_t, VlanState> &wanted, const std::map<uint16_t, VlanState> &present,
                 Remarks &remarks) {
    std::set<int32_t> must_stay_closed;  // groups with VLANs for which a call has failed
    for (const auto &[vid, vlan] : present) {
        const int32_t now = present_.group_of(vid);
        const auto chosen = choice_.vlans.find(vid);
        if (chosen == choice_.vlans.end()) {  // it should have been removed
            must_stay_closed.insert(now);
            continue;
        }
        const bool is_safe = (vlan.members & ~allowed_members(vid, wanted.at(vid))) == 0;
        const bool goes = chosen->second == 0 && now != 0 && is_safe;
        if (!is_safe || (now != chosen->second && !(goes && move(vid, 0, remarks)))) {
            must_stay_closed.insert(now);
        }
    }
    for (const auto &[group, states] : choice_.states) {
        if (present_.states.contains(group) && !must_stay_closed.contains(group)) {
            open_group(group, states, remarks);
        }
    }
}

}  // namespace switchd
