// Finds the tables of the loaded library, and reads the port map.
#include "tools/adpsh/audit_tables.h"

#include "calls/exported.h"

#include <algorithm>

namespace adpsh {

namespace {

template <typename T>
void find_address(const char *name, T &address) {
    const exported::Table *const table = exported::find_table(name);
    address = table == nullptr ? nullptr : static_cast<T>(table->address);
}

}  // namespace

AuditTables loaded_tables() {
    AuditTables tables;
    find_address("adp_max_phy_port_num", tables.last_row);
    find_address("intf_to_phy_port", tables.port_map);
    find_address("intf_map_trunk", tables.port_groups);
    find_address("agg_info", tables.records);
    find_address("agg_standby_members", tables.configured);
    find_address("agg_manage_intf", tables.managers);
    find_address("aiVlanStg", tables.vlan_groups);
    find_address("acl_fp_list_head", tables.rules);
    find_address("g_stFpInfo", tables.submodules);
    return tables;
}

size_t AuditTables::row_count() const {
    return last_row == nullptr ? 0 : size_t{std::min(*last_row, kMostRows - 1)} + 1;
}

std::span<const adp_port_row_t> AuditTables::rows() const {
    if (port_map == nullptr || *port_map == nullptr) {
        return {};
    }
    return {*port_map, row_count()};
}

std::span<const uint32_t> AuditTables::groups_by_port() const {
    if (port_groups == nullptr || *port_groups == nullptr) {
        return {};
    }
    return {*port_groups, row_count()};
}

std::optional<uint32_t> AuditTables::user_port_of(uint32_t phy) const {
    const auto map = rows();
    for (uint32_t row = 1; row < map.size(); ++row) {
        if (map[row].phy == phy) {
            return row;
        }
    }
    return std::nullopt;
}

std::string port_text(size_t row) {
    return row == 0 ? "the CPU port" : "user port " + std::to_string(row);
}

}  // namespace adpsh
