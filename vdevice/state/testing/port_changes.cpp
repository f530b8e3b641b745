// Changes of ports, rates, queues and priorities.
#include "vdevice/state/testing/changes.h"

namespace vdevice::state::test {
namespace {

const Words kWeights{1, 2, 3, 4, 5, 6, 7, 8};

constexpr Change kOfPorts[] = {
    VDEVICE_CHANGE(user_port_speed_set, 0, 0, kPort, 100, 0),
    VDEVICE_CHANGE(user_port_duplex_set, 0, 0, kPort, 0, 0),
    VDEVICE_CHANGE(user_port_autoneg_set, 0, 0, kPort, 0),
    VDEVICE_CHANGE(user_port_ability_advert_set, 0, 0, kPort, 1),
    VDEVICE_CHANGE(user_port_enable_set, 0, 0, kPort, 0),
    VDEVICE_CHANGE(user_port_loopback_set, 0, 0, kPort, 1),
    VDEVICE_CHANGE(user_port_pause_set, 0, 0, kPort, 1, 0),
    VDEVICE_CHANGE(user_port_jumboframe_set, 0, 0, kPort, 0),
    VDEVICE_CHANGE(user_port_mdix_set, 0, 0, kPort, 1),
    VDEVICE_CHANGE(user_port_learn_set, 0, 0, kPort, 0),
    VDEVICE_CHANGE(user_eee_portEnable_set, 0, 0, kPort, 1),
    VDEVICE_CHANGE(user_port_egress_set, 0, 0, kPort, 0, adp_port_set_t{{1}}),
    // A port without a wire is a port, too.
    VDEVICE_CHANGE(user_port_jumboframe_set, 0, 0, 31, 0),
    VDEVICE_CHANGE(user_port_untagged_vlan_set, 0, 0, kPort, kOtherVid),
    VDEVICE_CHANGE(user_vlan_control_port_set, 0, 0, kPort, 5, -1),
    VDEVICE_CHANGE(user_port_dtag_mode_set, 0, 0, kPort, 1),
    VDEVICE_CHANGE(user_port_tpid_set, 0, 0, kPort, 0x9100, 0),
    VDEVICE_CHANGE(user_port_packetstat_clear, 0, 0, kPort),
    VDEVICE_CHANGE(User_switch_port_control_l2mc_enable, 0, kPort, 0, 0),
    VDEVICE_CHANGE(User_switch_port_control_ipmc_set, 0, kPort, 0, 0),
    VDEVICE_CHANGE(User_switch_ipmc_lookup_miss_action, 0, 0, kPort, 1),
    VDEVICE_CHANGE(User_switch_ip6mc_lookup_miss_action, 0, 0, kPort, 1),
};

constexpr Change kOfRates[] = {
    VDEVICE_CHANGE(user_rate_bandwidth_set, 0, 0, kPort, 2, 1000, 0),
    VDEVICE_CHANGE(user_rate_stormsel_set, 0, 0, kPort, 2, 0),
    VDEVICE_CHANGE(user_rate_stormControlEnable_set, 0, 0, kPort, 2, 0),
    VDEVICE_CHANGE(user_rate_stormExceedFlag_reset, 0, 0, kOtherPort),
    VDEVICE_CHANGE(user_rate_stormCountMode_set, 0, 0, 2, 1),
    VDEVICE_CHANGE(user_port_ingress_rate_set, 0, 0, kPort, 1000, 0),
    VDEVICE_CHANGE(user_port_ingress_rate_set, 0, 0, kPort, 1000, 10),
    VDEVICE_CHANGE(user_port_egress_rate_set, 0, 0, kPort, 1000, 0),
    VDEVICE_CHANGE(user_cosq_config_set, 0, 0, 4),
    VDEVICE_CHANGE(user_cosq_mapping_set, 0, 0, 1, 7),
    VDEVICE_CHANGE(user_cosq_port_mapping_set, 0, 0, kPort, 1, 1),
    VDEVICE_CHANGE(user_cosq_port_sched_set, 0, 0, 2, 1, kWeights.data(), 0),
    VDEVICE_CHANGE(user_cosq_port_sched_set, 0, 0, 2, 0, Words{}.data(), 9),
    VDEVICE_CHANGE(user_qos_schedule_set, kPort, 2, 9, 0),
    VDEVICE_CHANGE(user_qos_default_cos_src_init),
    VDEVICE_CHANGE(user_qos_trust_sel_group_init),
    VDEVICE_CHANGE(user_qos_cpu_weight_init),
    VDEVICE_CHANGE(user_qos_pri_queue_map_set, 0, 0, 1, 7),
};

constexpr Change kOfPriorities[] = {
    VDEVICE_CHANGE(user_qos_dscp_map_set, 0, 0, 1, 7),
    VDEVICE_CHANGE(user_qos_pri_remap_set, 0, kPort, 1, 7, 0, 0, 0, 0),
    VDEVICE_CHANGE(user_qos_port_cos_set, kPort, 3),
    VDEVICE_CHANGE(user_port_dscp_map_set, 0, 0, kPort, 1, 2, 3),
    // A port's own row is kept when it says the same as the chip's, which can change later.
    VDEVICE_CHANGE(user_port_dscp_map_set, 0, 0, kPort, 1, -1, 0),
    VDEVICE_CHANGE(user_port_dscp_map_mode_set, 0, 0, kPort, 0),
    VDEVICE_CHANGE(user_port_untagged_priority_set, 0, 0, kPort, 3),
};

}  // namespace

std::vector<Change> port_changes() {
    std::vector<Change> changes(std::begin(kOfPorts), std::end(kOfPorts));
    changes.insert(changes.end(), std::begin(kOfRates), std::end(kOfRates));
    changes.insert(changes.end(), std::begin(kOfPriorities), std::end(kOfPriorities));
    return changes;
}

}  // namespace vdevice::state::test
