// Priority maps, trust and the priority of untagged frames.
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

/** What a map of another kind than @p own gets, or what @p row gives for 0..count - 1 until one fails. */
template <typename Row>
adp_status_t each_row(uint32_t type, uint32_t own, uint32_t count, Row row) {
    if (type != own) {
        return type == 2 ? 0 : 101;
    }
    for (uint32_t n = 0; n < count; ++n) {
        if (row(n) != 0) {
            return 102;
        }
    }
    return 0;
}

}  // namespace

adp_status_t adp_create_dot1p_map(uint32_t type, const adp_dot1p_map_entry_t *entries) {
    return each_row(type, 0, 8, [&](uint32_t p) { return user_cosq_mapping_set(0, 0, p, entries[p].queue); });
}

adp_status_t adp_get_dot1p_map(uint32_t type, adp_dot1p_map_entry_t *entries) {
    return each_row(type, 0, 8, [&](uint32_t p) { return user_cosq_mapping_get(0, 0, p, &entries[p].queue); });
}

adp_status_t adp_delete_dot1p_map(uint32_t type) {
    return each_row(type, 0, 8, [&](uint32_t p) { return user_cosq_mapping_set(0, 0, p, p / 2); });
}

adp_status_t adp_create_dscp_map(uint32_t type, const adp_dscp_map_entry_t *entries) {
    return each_row(type, 1, 64, [&](uint32_t d) {
        return user_port_dscp_map_set(0, 0, -1, static_cast<int32_t>(d), entries[d].mapped, entries[d].priority);
    });
}

adp_status_t adp_get_dscp_map(uint32_t type, adp_dscp_map_entry_t *entries) {
    return each_row(type, 1, 64, [&](uint32_t d) {
        return user_port_dscp_map_get(0, 0, -1, static_cast<int32_t>(d), &entries[d].mapped, &entries[d].priority);
    });
}

adp_status_t adp_delete_dscp_map(uint32_t type) {
    return each_row(type, 1, 64, [](uint32_t) { return user_port_dscp_map_set(0, 0, -1, -1, -1, 0); });
}

namespace {

adp_status_t set_untagged(uint32_t intf, uint32_t priority) {
    return on_port_only(intf, [&](int32_t port) { return user_port_untagged_priority_set(0, 0, port, priority); });
}

}  // namespace

adp_status_t adp_add_dot1p_assign(uint32_t type, adp_intf_t intf, uint32_t /*unused3*/, uint32_t /*unused4*/,
                                  uint32_t /*unused5*/, uint32_t priority) {
    return type == 2 ? set_untagged(intf, priority & 0xFF) : type < 2 ? 0 : 101;
}

adp_status_t adp_del_dot1p_assign(uint32_t type, adp_intf_t intf, uint32_t /*unused3*/, uint32_t /*unused4*/,
                                  uint32_t /*unused5*/, uint32_t /*unused6*/) {
    return type == 2 ? set_untagged(intf, 0) : 0;
}

}  // namespace reference
