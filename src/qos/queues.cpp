// Egress queues: their set-up, scheduling and the ports' shapers.
#include <adp/qos.h>
#include <netlink_api.h>

#include "core/resolve.h"

static_assert(sizeof(adp_queue_weights_t) == 32);

namespace adp {
namespace {

constexpr uint32_t kMaskBits = 32;
constexpr uint32_t kRefusedMode = 3;
constexpr uint32_t kNoDelay = 0;
constexpr adp_queue_weights_t kNoWeights = {};

/** Contract: schedulers are addressed by interface number, shapers by port. */
constexpr uint32_t mask_of(Intf intf) {
    return number(intf) < kMaskBits ? 1u << number(intf) : 0;
}

// Contract: the driver reads into the block that is then written, so its weights replace those of the caller.
int32_t write_weights(uint32_t mask, adp_queue_weights_t &weights) {
    uint32_t mode = 0;
    uint32_t delay = 0;
    const int32_t result = user_cosq_port_sched_get(0, 0, mask, &mode, weights.weight, &delay);
    return result != 0 ? result : user_cosq_port_sched_set(0, 0, mask, mode, weights.weight, delay);
}

int32_t write_mapping(uint32_t mask, uint32_t priority, uint32_t queue) {
    return user_cosq_port_mapping_set(0, 0, static_cast<int32_t>(mask), priority, queue);
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t adp_qos_init() {
    const int32_t result = user_cosq_config_set(0, 0, ADP_QUEUES);
    user_qos_default_cos_src_init();
    user_qos_remark_inner_tag_src_init();
    user_qos_trust_sel_group_init();
    user_field_meter_ifg_exclude_init();
    user_qos_cpu_weight_init();
    return driver_status(result);
}

adp_status_t adp_set_port_queue_sch_mode(adp_intf_t intf, uint32_t mode) {
    if (mode == kRefusedMode) {
        return ADP_E_SCHEDULING_MODE;
    }
    const adp_status_t refusal = check_user_port(Intf(intf));
    if (refusal != ADP_OK) {
        return refusal;
    }
    return driver_status(user_cosq_port_sched_set(0, 0, mask_of(Intf(intf)), mode, kNoWeights.weight, kNoDelay));
}

adp_status_t adp_set_queue_weight_pri(adp_intf_t intf, uint32_t queue, uint32_t is_mapping,
                                      adp_queue_weights_t weights) {
    const adp_status_t refusal = check_user_port(Intf(intf));
    if (refusal != ADP_OK) {
        return refusal;
    }
    const uint32_t mask = mask_of(Intf(intf));
    return driver_status(low8(is_mapping) != 0 ? write_mapping(mask, weights.weight[0], queue)
                                               : write_weights(mask, weights));
}

adp_status_t adp_cosq_sched_set(uint32_t port, uint32_t queue, uint32_t weight, uint32_t flags) {
    user_qos_schedule_set(port, queue, weight, flags);
    return ADP_OK;
}

adp_status_t adp_cosq_sched_get(uint32_t port, uint32_t queue, uint32_t *weight, uint32_t flags) {
    *weight = 0;
    user_qos_schedule_get(port, queue, weight, flags);
    return ADP_OK;
}

adp_status_t adp_set_port_egress_shaper(adp_intf_t intf, uint32_t rate, uint32_t burst) {
    return on_port_only(Intf(intf), user_port_egress_rate_set, rate, burst);
}

adp_status_t adp_get_port_egress_shaper(adp_intf_t intf, uint32_t *rate, uint32_t *burst) {
    return on_port_only(Intf(intf), user_port_egress_rate_get, rate, burst);
}

adp_status_t adp_set_queue_drop_method() {
    return ADP_OK;
}

adp_status_t adp_set_queue_wred_drop_probability() {
    return ADP_OK;
}

adp_status_t adp_set_queue_shaper() {
    return ADP_OK;
}

adp_status_t adp_get_queue_shaper() {
    return ADP_OK;
}
