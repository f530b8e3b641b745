/**
 * @file audit_tables.h
 * The library's tables as an audit reads them.
 */
#pragma once

#include <adp/agg.h>
#include <adp/fp.h>
#include <adp/port.h>
#include <adp/stg.h>

#include <stdint.h>
#include <optional>
#include <span>
#include <string>

namespace adpsh {

/** Addresses of the tables; null for one that the loaded library does not have. */
struct AuditTables {
    const uint32_t *last_row = nullptr;         ///< adp_max_phy_port_num
    adp_port_row_t *const *port_map = nullptr;  ///< intf_to_phy_port
    uint32_t *const *port_groups = nullptr;     ///< intf_map_trunk
    const adp_agg_record_t *records = nullptr;  ///< agg_info
    const uint32_t (*configured)[2] = nullptr;  ///< agg_standby_members
    const uint32_t *managers = nullptr;         ///< agg_manage_intf
    const int16_t *vlan_groups = nullptr;       ///< aiVlanStg
    const adp_list_link_t *rules = nullptr;     ///< acl_fp_list_head
    const FpInfo *submodules = nullptr;         ///< g_stFpInfo

    /** The rows of the port map, at most as many as a set of ports has bits. */
    [[nodiscard]] std::span<const adp_port_row_t> rows() const;
    /** The groups of the ports, likewise. */
    [[nodiscard]] std::span<const uint32_t> groups_by_port() const;
    /** The user port of a physical port; nothing without a row. */
    [[nodiscard]] std::optional<uint32_t> user_port_of(uint32_t phy) const;

  private:
    [[nodiscard]] size_t row_count() const;
};

/** The most rows that are compared. */
inline constexpr uint32_t kMostRows = 256;

AuditTables loaded_tables();

/** `the CPU port` or `user port 7`. */
std::string port_text(size_t row);

}  // namespace adpsh
