// Each exported and each internal table.
#include "tests/differential/table_compare.h"

#include <adp/adp.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "calls/describe.h"
#include "src/core/group_tables.h"
#include "src/port/hold.h"
#include "tests/differential/reference/tables.h"

namespace differential {
namespace {

using reference::tables;

const std::vector<FpInfo> submodules_at_start(std::begin(g_stFpInfo), std::end(g_stFpInfo));

/** Empty if the rows are equal; otherwise the first byte that differs, with those after it in its row. */
template <typename Rows>
std::string compare_rows(const char *name, const void *library, const Rows &model) {
    const auto rows = std::as_bytes(std::span(model));
    const std::span other(static_cast<const std::byte *>(library), rows.size());
    if (rows.empty() || std::memcmp(rows.data(), library, rows.size()) == 0) {
        return "";
    }
    const auto [own, at] = std::mismatch(rows.begin(), rows.end(), other.begin());
    constexpr size_t kShown = 16;
    const size_t size = sizeof *std::data(model);
    const auto byte = static_cast<size_t>(own - rows.begin());
    const size_t count = std::min(kShown, size - byte % size);
    return std::string(name) + "[" + std::to_string(byte / size) + "] from byte " + std::to_string(byte % size) +
           ": library " + calls::hex_text(&*at, count) + ", model " + calls::hex_text(&*own, count);
}

template <typename T>
std::string compare_map(const char *name, const T *library, bool has_model, const std::vector<T> &model) {
    if ((library != nullptr) != has_model) {
        return std::string(name) + (library != nullptr ? " exists" : " is null") + " in the library";
    }
    return compare_rows(name, library, model);
}

std::string compare_rules() {
    const adp_list_link_t *link = acl_fp_list_head.next;
    for (const FpListNode *model : tables.rules) {
        if (link == &acl_fp_list_head) {
            return "acl_fp_list_head: the library has fewer rules than the model";
        }
        if (link->next->prev != link || link->prev->next != link) {
            return "acl_fp_list_head: a node's neighbours do not lead back to it";
        }
        const auto *node = reinterpret_cast<const FpListNode *>(link);
        std::string difference = compare_rows("a rule", &node->entity, std::span(&model->entity, 1));
        if (!difference.empty()) {
            return difference;
        }
        link = link->next;
    }
    return link == &acl_fp_list_head ? "" : "acl_fp_list_head: the library has more rules than the model";
}

}  // namespace

std::string table_difference() {
    const std::span agg_handler(&tables.agg_handler, 1);
    const std::span link_handler(&tables.link_handler, 1);
    for (const std::string &difference :
         {compare_rows("adp_max_phy_port_num", &adp_max_phy_port_num, std::span(&tables.max_port, 1)),
          compare_map("intf_to_phy_port", intf_to_phy_port, tables.has_map, tables.map),
          compare_map("intf_map_trunk", intf_map_trunk, tables.has_trunk_map, tables.trunk_map),
          compare_rows("agg_info", agg_info, tables.groups),
          compare_rows("agg_standby_members", agg_standby_members, tables.standby),
          compare_rows("agg_manage_intf", agg_manage_intf, tables.manager),
          compare_rows("agg_event_handle", &agg_event_handle, agg_handler),
          compare_rows("link_event_handle", &link_event_handle, link_handler),
          compare_rows("g_intf_link_data", g_intf_link_data, tables.link_data),
          compare_rows("g_stFpInfo", g_stFpInfo, submodules_at_start),
          compare_rows("the hold states", adp::port_hold_state, tables.hold),
          compare_rows("the groups' link status", adp::agg_link_status, tables.is_up),
          compare_rows("aiVlanStg", aiVlanStg, tables.vlan_stg), compare_rules()}) {
        if (!difference.empty()) {
            return difference;
        }
    }
    return "";
}

}  // namespace differential
