/**
 * @file library_state.h
 * The library's tables as a whole: their bytes, emptying them, and the default board's port map.
 *
 * On the default board user port i is physical port i + 3 and the CPU port is 0, so that no test passes because two
 * numbers are equal.
 */
#pragma once

#include <adp/adp.h>

#include <stdint.h>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "src/core/group_tables.h"
#include "src/port/hold.h"
#include "tests/support/recording_driver.h"

namespace library_test {

inline constexpr uint32_t kUserPorts = ADP_USER_PORTS;
inline constexpr uint32_t kPortOffset = 3;

/** The nodes of the list of installed rules, in its order. */
inline std::vector<FpListNode *> installed_rules() {
    std::vector<FpListNode *> nodes;
    for (adp_list_link_t *link = acl_fp_list_head.next; link != &acl_fp_list_head; link = link->next) {
        nodes.push_back(reinterpret_cast<FpListNode *>(link));
    }
    return nodes;
}

/** Every byte of the library's tables, for comparing them before and after a call. */
inline std::string table_bytes() {
    std::string bytes;
    const auto add = [&](const void *data, size_t size) { bytes.append(static_cast<const char *>(data), size); };
    add(&adp_max_phy_port_num, sizeof adp_max_phy_port_num);
    if (intf_to_phy_port != nullptr) {
        add(intf_to_phy_port, (adp_max_phy_port_num + 1) * sizeof *intf_to_phy_port);
    }
    if (intf_map_trunk != nullptr) {
        add(intf_map_trunk, (adp_max_phy_port_num + 1) * sizeof *intf_map_trunk);
    }
    add(agg_info, sizeof agg_info);
    add(agg_standby_members, sizeof agg_standby_members);
    add(agg_manage_intf, sizeof agg_manage_intf);
    add(&agg_event_handle, sizeof agg_event_handle);
    add(adp::agg_link_status, sizeof adp::agg_link_status);
    add(&link_event_handle, sizeof link_event_handle);
    add(adp::port_hold_state, sizeof adp::port_hold_state);
    add(g_intf_link_data, sizeof g_intf_link_data);
    add(g_stFpInfo, sizeof g_stFpInfo);
    add(aiVlanStg, sizeof aiVlanStg);
    for (const FpListNode *node : installed_rules()) {
        add(&node->entity, sizeof node->entity);
    }
    return bytes;
}

/** Empties the list of rules and frees its nodes. */
inline void drop_rules() {
    for (FpListNode *node : installed_rules()) {
        free(node);
    }
    acl_fp_list_head = {&acl_fp_list_head, &acl_fp_list_head};
}

inline void drop_map() {
    free(intf_to_phy_port);
    free(intf_map_trunk);
    intf_to_phy_port = nullptr;
    intf_map_trunk = nullptr;
    adp_max_phy_port_num = 0;
}

/** Fills the port map of the default board. */
inline bool fill_default_map(uint32_t user_ports = kUserPorts) {
    drop_map();
    bool good = adp_set_max_phy_port_num(user_ports) == ADP_OK && adp_add_cpu_port(0, 0, 0, 0, 0) == ADP_OK;
    for (uint32_t port = 1; good && port <= user_ports; ++port) {
        good = adp_add_phy_port(port, 0, 0, port + kPortOffset, 0) == ADP_OK;
    }
    return good;
}

/** Clears every table but the port map, and scripts and trace of the recording driver. */
inline void clear_tables() {
    recording::driver().reset();
    std::memset(agg_info, 0, sizeof agg_info);
    std::memset(agg_standby_members, 0, sizeof agg_standby_members);
    std::memset(agg_manage_intf, 0, sizeof agg_manage_intf);
    std::memset(adp::agg_link_status, 0, sizeof adp::agg_link_status);
    agg_event_handle = nullptr;
    link_event_handle = nullptr;
    std::memset(adp::port_hold_state, 0, sizeof adp::port_hold_state);
    std::memset(g_intf_link_data, 0, sizeof g_intf_link_data);
    std::memset(aiVlanStg, 0, sizeof aiVlanStg);
    drop_rules();
}

}  // namespace library_test
