// Each exported and each internal table.
#include "tests/differential/table_compare.h"

#include <adp/adp.h>

#include <cstring>
#include <vector>

#include "src/core/group_tables.h"
#include "src/port/hold.h"
#include "tests/differential/reference/tables.h"

namespace differential {
namespace {

using reference::tables;

const std::vector<FpInfo> submodules_at_start(std::begin(g_stFpInfo), std::end(g_stFpInfo));

template <typename T>
std::string element_text(const T &value) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&value);
    std::string text;
    char pair[4];
    for (size_t n = 0; n < sizeof value && n < 64; ++n) {
        snprintf(pair, sizeof pair, n % 4 == 3 ? "%02x " : "%02x", bytes[n]);
        text += pair;
    }
    return text;
}

template <typename T>
std::string compare_rows(const char *name, const T *library, const T *model, size_t count) {
    if (count == 0 || std::memcmp(library, model, count * sizeof(T)) == 0) {
        return "";
    }
    size_t row = 0;
    while (std::memcmp(library + row, model + row, sizeof(T)) == 0) {
        ++row;
    }
    return std::string(name) + "[" + std::to_string(row) + "]: library " + element_text(library[row]) + ", model " +
           element_text(model[row]);
}

template <typename T>
std::string compare_map(const char *name, const T *library, bool has_model, const std::vector<T> &model) {
    if ((library != nullptr) != has_model) {
        return std::string(name) + (library != nullptr ? " exists" : " is null") + " in the library";
    }
    return compare_rows(name, library, model.data(), model.size());
}

std::string compare_states() {
    for (uint32_t index = 1; index <= adp::kHoldStates; ++index) {
        const auto found = tables.hold.find(index);
        const int model = found == tables.hold.end() ? 0 : found->second;
        const int library = static_cast<int>(adp::port_hold_state[index - 1]);
        if (library != model) {
            return "hold state of " + std::to_string(index) + ": library " + std::to_string(library) + ", model " +
                   std::to_string(model);
        }
    }
    for (uint32_t group = 0; group <= ADP_AGG_GROUPS; ++group) {
        const auto found = tables.is_up.find(group);
        const int model = found == tables.is_up.end() ? 0 : found->second;
        if (adp::agg_link_status[group] != model) {
            return "link status of group " + std::to_string(group) + " differs";
        }
    }
    return "";
}

std::string compare_rules() {
    const adp_list_link_t *link = acl_fp_list_head.next;
    for (size_t n = 0; n < tables.rules.size(); ++n) {
        if (link == &acl_fp_list_head) {
            return "acl_fp_list_head: the library has " + std::to_string(n) + " rules, the model " +
                   std::to_string(tables.rules.size());
        }
        if (link->next->prev != link || link->prev->next != link) {
            return "acl_fp_list_head: a node's neighbours do not lead back to it";
        }
        const auto *node = reinterpret_cast<const FpListNode *>(link);
        const std::string difference = compare_rows("acl_fp_list_head", &node->entity, &tables.rules[n]->entity, 1);
        if (!difference.empty()) {
            const auto *a = reinterpret_cast<const uint8_t *>(&node->entity);
            const auto *b = reinterpret_cast<const uint8_t *>(&tables.rules[n]->entity);
            size_t byte = 0;
            while (a[byte] == b[byte]) {
                ++byte;
            }
            return "rule " + std::to_string(n) + ", byte " + std::to_string(byte) + ": " + difference;
        }
        link = link->next;
    }
    return link == &acl_fp_list_head ? "" : "acl_fp_list_head: the library has more rules than the model";
}

std::string compare_vlans() {
    static std::vector<int16_t> model(ADP_VLANS);
    model.assign(ADP_VLANS, 0);
    for (const auto &[vlan, group] : tables.vlan_stg) {
        model[vlan] = group;
    }
    return compare_rows("aiVlanStg", aiVlanStg, model.data(), model.size());
}

std::string compare_handlers() {
    if (agg_event_handle != tables.agg_handler) {
        return "agg_event_handle differs";
    }
    return link_event_handle != tables.link_handler ? "link_event_handle differs" : "";
}

}  // namespace

std::string table_difference() {
    if (adp_max_phy_port_num != tables.max_port) {
        return "adp_max_phy_port_num: library " + std::to_string(adp_max_phy_port_num) + ", model " +
               std::to_string(tables.max_port);
    }
    const auto all = {
        +[] { return compare_map("intf_to_phy_port", intf_to_phy_port, tables.has_map, tables.map); },
        +[] { return compare_map("intf_map_trunk", intf_map_trunk, tables.has_trunk_map, tables.trunk_map); },
        +[] { return compare_rows("agg_info", agg_info, tables.groups.data(), tables.groups.size()); },
        +[] {
            return compare_rows("agg_standby_members", &agg_standby_members[0][0], tables.standby[0].data(),
                                tables.standby.size() * 2);
        },
        +[] { return compare_rows("agg_manage_intf", agg_manage_intf, tables.manager.data(), tables.manager.size()); },
        +[] {
            return compare_rows("g_intf_link_data", g_intf_link_data, tables.link_data.data(), tables.link_data.size());
        },
        +[] {
            return compare_rows("g_stFpInfo", static_cast<const FpInfo *>(g_stFpInfo), submodules_at_start.data(),
                                submodules_at_start.size());
        },
        &compare_handlers,
        &compare_states,
        &compare_vlans,
        &compare_rules,
    };
    for (const auto &compare : all) {
        std::string difference = compare();
        if (!difference.empty()) {
            return difference;
        }
    }
    return "";
}

}  // namespace differential
