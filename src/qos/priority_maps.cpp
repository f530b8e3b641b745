// Maps of the chip: 802.1p priorities to queues, DSCPs to code points and priorities.
#include <adp/priority.h>
#include <netlink_api.h>

#include "core/resolve.h"

static_assert(sizeof(adp_dot1p_map_entry_t) == 8 && sizeof(adp_dscp_map_entry_t) == 3);

namespace adp {
namespace {

constexpr int32_t kAllPorts = -1;
constexpr int32_t kEveryCodePoint = -1;
constexpr uint8_t kDefaultQueue[ADP_PRIORITIES] = {0, 0, 1, 1, 2, 2, 3, 3};

/** Calls step(0) to step(count - 1) until one fails, if the type is that of this map. */
template <typename Step>
adp_status_t for_each_row(uint32_t type, uint32_t own_type, uint32_t count, Step step) {
    if (type == ADP_MAP_NONE) {
        return ADP_OK;
    }
    if (type != own_type) {
        return ADP_E_SELECTOR;
    }
    for (uint32_t row = 0; row < count; ++row) {
        if (step(row) != 0) {
            return ADP_E_DRIVER;
        }
    }
    return ADP_OK;
}

template <typename Step>
adp_status_t for_each_priority(uint32_t type, Step step) {
    return for_each_row(type, ADP_MAP_DOT1P, ADP_PRIORITIES, step);
}

template <typename Step>
adp_status_t for_each_dscp(uint32_t type, Step step) {
    return for_each_row(type, ADP_MAP_DSCP, ADP_DSCP_COUNT, step);
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_create_dot1p_map(uint32_t map_type, const adp_dot1p_map_entry_t entries[ADP_PRIORITIES]) {
    return for_each_priority(
        map_type, [=](uint32_t priority) { return user_cosq_mapping_set(0, 0, priority, entries[priority].queue); });
}

adp_status_t adp_get_dot1p_map(uint32_t map_type, adp_dot1p_map_entry_t entries[ADP_PRIORITIES]) {
    return for_each_priority(
        map_type, [=](uint32_t priority) { return user_cosq_mapping_get(0, 0, priority, &entries[priority].queue); });
}

adp_status_t adp_delete_dot1p_map(uint32_t map_type) {
    return for_each_priority(
        map_type, [](uint32_t priority) { return user_cosq_mapping_set(0, 0, priority, kDefaultQueue[priority]); });
}

adp_status_t adp_create_dscp_map(uint32_t map_type, const adp_dscp_map_entry_t entries[ADP_DSCP_COUNT]) {
    return for_each_dscp(map_type, [=](uint32_t dscp) {
        return user_port_dscp_map_set(0, 0, kAllPorts, static_cast<int32_t>(dscp), entries[dscp].mapped,
                                      entries[dscp].priority);
    });
}

adp_status_t adp_get_dscp_map(uint32_t map_type, adp_dscp_map_entry_t entries[ADP_DSCP_COUNT]) {
    return for_each_dscp(map_type, [=](uint32_t dscp) {
        return user_port_dscp_map_get(0, 0, kAllPorts, static_cast<int32_t>(dscp), &entries[dscp].mapped,
                                      &entries[dscp].priority);
    });
}

// Contract: each write covers all code points, and there is one for each of them.
adp_status_t adp_delete_dscp_map(uint32_t map_type) {
    return for_each_dscp(map_type, [](uint32_t) {
        return user_port_dscp_map_set(0, 0, kAllPorts, kEveryCodePoint, kEveryCodePoint, 0);
    });
}

adp_status_t adp_port_dscp_map_set(uint32_t, int32_t dscp, int32_t mapped, uint32_t priority) {
    return user_port_dscp_map_set(0, 0, kAllPorts, dscp, mapped, priority);
}

adp_status_t adp_port_dscp_map_get(uint32_t, int32_t dscp, uint8_t *mapped, uint8_t *priority) {
    return user_port_dscp_map_get(0, 0, kAllPorts, dscp, mapped, priority);
}

adp_status_t adp_cosq_mapping_set(adp_word_t unit, adp_word_t zero, adp_word_t priority, adp_word_t queue) {
    return user_qos_pri_queue_map_set(unit, zero, priority, queue);
}

adp_status_t adp_cosq_mapping_get(adp_word_t unit, adp_word_t zero, adp_word_t priority, uint32_t *queue) {
    return user_qos_pri_queue_map_get(unit, zero, priority, queue);
}

adp_status_t adp_dscp_map_set(adp_word_t unit, adp_word_t zero, adp_word_t dscp, adp_word_t priority) {
    return user_qos_dscp_map_set(unit, zero, dscp, priority);
}

adp_status_t adp_dscp_map_get(adp_word_t unit, adp_word_t zero, adp_word_t dscp, uint32_t *priority) {
    return user_qos_dscp_map_get(unit, zero, dscp, priority);
}

adp_status_t adp_set_dot1p_pri_remap(adp_word_t port, adp_word_t priority, adp_word_t, adp_word_t new_priority,
                                     adp_word_t option, adp_word_t option2, adp_word_t option3, adp_word_t option4) {
    return user_qos_pri_remap_set(0, port, priority, new_priority, option, option2, option3, option4);
}
