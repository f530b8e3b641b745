// The port map: the tables, the calls that fill them and the look-ups in both directions.
#include "core/port_map.h"

#include <stdlib.h>

uint32_t adp_max_phy_port_num;
adp_port_row_t *intf_to_phy_port;
uint32_t *intf_map_trunk;

namespace adp {
namespace {

// The size is checked in 32 bits, so that a 64-bit host refuses what the target refuses.
void *new_table(uint32_t last_row, uint32_t row_bytes) {
    return last_row >= UINT32_MAX / row_bytes ? nullptr : calloc(last_row + 1, row_bytes);
}

/** The row of an interface; null if the number, type bits included, exceeds the map, or without a map. */
adp_port_row_t *find_row(Intf intf) {
    if (number(intf) > adp_max_phy_port_num || intf_to_phy_port == nullptr) {
        return nullptr;
    }
    return &intf_to_phy_port[number(intf)];
}

[[gnu::noinline]] adp_status_t fill_row(Intf intf, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes) {
    adp_port_row_t *row = find_row(intf);
    if (row == nullptr) {
        return ADP_FAIL;
    }
    *row = {word1, word2, phy, attributes};
    return ADP_OK;
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_set_max_phy_port_num(uint32_t port_count) {
    adp_max_phy_port_num = port_count;
    intf_to_phy_port = static_cast<adp_port_row_t *>(new_table(port_count, sizeof *intf_to_phy_port));
    intf_map_trunk = static_cast<uint32_t *>(new_table(port_count, sizeof *intf_map_trunk));
    return intf_to_phy_port == nullptr || intf_map_trunk == nullptr ? ADP_FAIL : ADP_OK;
}

adp_status_t adp_get_max_phy_port_num(uint32_t *port_count) {
    *port_count = adp_max_phy_port_num;
    return ADP_OK;
}

adp_status_t adp_add_cpu_port(uint32_t, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes) {
    return fill_row(Intf(0), word1, word2, phy, attributes);
}

adp_status_t adp_add_phy_port(uint32_t index, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes) {
    return fill_row(Intf(index), word1, word2, phy, attributes);
}

int32_t adp_intf_2_phy_id(adp_intf_t intf) {
    if (kind_of(Intf(intf)) != IntfKind::kUserPort) {
        return number(kPhyNotMapped);
    }
    const adp_port_row_t *row = find_row(Intf(intf));
    return row == nullptr ? number(kPhyNotMapped) : static_cast<int32_t>(row->phy);
}

int32_t adp_phy_2_intf_id(uint32_t phy) {
    const adp_port_row_t *const rows = intf_to_phy_port;
    if (rows != nullptr) {
        const adp_port_row_t *const last = rows + adp_max_phy_port_num;
        for (const adp_port_row_t *row = rows; row <= last; ++row) {
            if (row->phy == phy) {
                return static_cast<int32_t>(row - rows);
            }
        }
    }
    return static_cast<int32_t>(number(kIntfNotFound));
}

int32_t adp_phy_2_intf_id_ex(uint32_t, uint32_t phy) {
    return adp_phy_2_intf_id(phy);
}

int32_t adp_intf_2_slot_id(adp_intf_t) {
    return 0;
}

uint32_t adp_intf_port_attributes(adp_intf_t intf) {
    const adp_port_row_t *row = find_row(Intf(intf));
    return row == nullptr ? 0 : row->attributes;
}

adp_status_t adp_get_phy_port(void) {
    return ADP_OK;
}

adp_status_t adp_del_phy_port(void) {
    return ADP_OK;
}
