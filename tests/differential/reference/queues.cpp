// Egress queues and shapers.
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

uint32_t mask_of(uint32_t intf) {
    return intf < 32 ? 1u << intf : 0;
}

}  // namespace

adp_status_t adp_qos_init() {
    const int32_t result = user_cosq_config_set(0, 0, 8);
    user_qos_default_cos_src_init();
    user_qos_remark_inner_tag_src_init();
    user_qos_trust_sel_group_init();
    user_field_meter_ifg_exclude_init();
    user_qos_cpu_weight_init();
    return or_102(result);
}

adp_status_t adp_set_port_queue_sch_mode(adp_intf_t intf, uint32_t mode) {
    if (mode == 3) {
        return 501;
    }
    return on_port_only(intf, [&](int32_t /*port*/) {
        const uint32_t weights[8] = {};
        return user_cosq_port_sched_set(0, 0, mask_of(intf), mode, weights, 0);
    });
}

adp_status_t adp_set_queue_weight_pri(adp_intf_t intf, uint32_t value, uint32_t select, adp_queue_weights_t weights) {
    return on_port_only(intf, [&](int32_t /*port*/) {
        if ((select & 0xFF) != 0) {
            return user_cosq_port_mapping_set(0, 0, static_cast<int32_t>(mask_of(intf)), weights.weight[0], value);
        }
        uint32_t mode = 0;
        uint32_t delay = 0;
        const int32_t result = user_cosq_port_sched_get(0, 0, mask_of(intf), &mode, weights.weight, &delay);
        return result != 0 ? result : user_cosq_port_sched_set(0, 0, mask_of(intf), mode, weights.weight, delay);
    });
}

}  // namespace reference
