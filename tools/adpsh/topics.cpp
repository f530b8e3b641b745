// The list of topics. A test runs every example and looks up every call.
#include "tools/adpsh/topics.h"

#include <algorithm>
#include <array>

namespace adpsh {

namespace {

constexpr std::array kTopics = {
    Topic{"port", "Switches user ports on and off, and sets and reads their speed, duplex, flow control and learning.",
          "adp_set_phy_port_attr adp_get_phy_port_attr adp_intf_learn_set adp_intf_learn_get adp_intf_2_phy_id "
          "adp_phy_2_intf_id adp_intf_cablediag adp_get_port_stat adp_clr_port_stat",
          "adp_set_phy_port_attr 1 ADP_ATTR_ADMIN_STATE 1 0\n"
          "adp_get_phy_port_attr 1 ADP_ATTR_SPEED\n"
          "adp_get_port_stat 1 ADP_COUNTER_RX_FRAMES"},
    Topic{"vlan", "Creates VLANs and says which ports are members, with or without a tag.",
          "adp_vlan_create adp_vlan_port_set adp_vlan_port_get adp_intf_pivd_set adp_intf_pivd_get "
          "adp_vlan_default_set adp_vlan_default_get adp_vlan_createEx adp_vlan_port_add adp_vlan_port_remove "
          "adp_vlan_destroy",
          "adp_vlan_create 100\n"
          "adp_vlan_port_set 100 {1-4,26} {1-4}\n"
          "adp_intf_pivd_set 1 100\n"
          "adp_vlan_port_get 100"},
    Topic{"tag", "Translates VLAN ids at ports, and puts a provider's tag in front of a customer's.",
          "adp_double_tag_set adp_double_tag_get adp_double_tag_tipd_set adp_double_tag_tpid_get adp_vlan_dtag_add "
          "adp_vlan_dtag_get adp_vlan_dtag_delete adp_vlan_translate_add adp_vlan_translate_get "
          "adp_vlan_translate_delete adp_vlan_translate_egress_add adp_vlan_ip4_add adp_vlan_ip4_delete",
          "adp_double_tag_set 2 ADP_DOUBLE_TAG_CUSTOMER\n"
          "adp_double_tag_get 2"},
    Topic{"group", "Aggregates user ports to a group (IEEE 802.1AX), which is then an interface: agg1 to agg8.",
          "adp_create_agg_group adp_add_agg_member adp_add_agg_standby_member SET_AGG_MANAGE_INTF GET_AGG_GROUP "
          "GET_AGG_CONFIG_GROUP GET_INTF_MAPPING_AGGINTF adp_set_agg_loadbalance adp_del_agg_member "
          "adp_delete_agg_group",
          "adp_create_agg_group agg1\n"
          "adp_add_agg_member agg1 [5,6]\n"
          "adp_set_agg_loadbalance agg1 ADP_BALANCE_SRC_DST_IP\n"
          "adp_get_agg_group agg1 8"},
    Topic{"mac", "Adds, finds and deletes entries of the MAC address table, and limits what is learned.",
          "adp_add_mac_addr adp_get_mac_addr adp_get_intf_by_addr adp_filter_mac_addr adp_set_mac_age_time "
          "adp_get_mac_age_time adp_set_mac_limit adp_get_mac_limit adp_del_mac_addr adp_del_mac_addr_by_vlan "
          "adp_del_mac_addr_by_intf adp_del_mac_addr_by_mac",
          "adp_set_mac_age_time 300\n"
          "adp_get_mac_age_time\n"
          "adp_set_mac_limit 16 1 ADP_MAC_SCOPE_INTF"},
    Topic{"multicast", "Sends the frames of a multicast group to the ports that want them (IGMP snooping).",
          "adp_create_igmpsn_group adp_add_igmpsn_member adp_get_igmpsn_group adp_set_vlan_igmp_pkt_action "
          "adp_get_vlan_igmp_pkt_action adp_control_port_l2mc_enable adp_del_igmpsn_member adp_delete_igmpsn_group",
          "adp_create_igmpsn_group 01005e010203 1 [1,2]\n"
          "adp_get_igmpsn_group 01005e010203 1"},
    Topic{"isolation", "Says which ports the frames of a port may leave by.",
          "adp_set_port_isolate adp_get_port_isolatestatus hal_set_port_isolate hal_get_port_isolate",
          "adp_get_port_isolatestatus 1"},
    Topic{"mirror", "Copies the frames of a port to another one.",
          "adp_add_port_mirror adp_set_flow_mirror adp_set_mirror_disable adp_del_port_mirror",
          "adp_add_port_mirror 1 24 ADP_MIRROR_INGRESS 1"},
    Topic{"rule", "Installs rules of the field processor: what frames match, and what becomes of them.",
          "adp_fp_init adp_fp_add_entity_qualify adp_fp_add_entity_action adp_fp_add_entity_rule "
          "adp_fp_get_statistics adp_fp_lookupMissAct_set adp_fp_delete_entity_rule adp_add_remark_rule "
          "adp_del_remark_rule",
          "adp_fp_init\n"
          "adp_fp_lookupMissAct_set 3 ADP_FP_MISS_NONE"},
    Topic{"priority", "Chooses the priority of frames, and the queue of a priority.",
          "adp_set_port_pri_trust_mode adp_get_port_pri_trust_mode adp_set_port_cos_map adp_get_port_cos_map "
          "adp_create_dot1p_map adp_get_dot1p_map adp_create_dscp_map adp_get_dscp_map adp_cosq_port_mapping_set "
          "adp_dscp_map_set adp_dscp_map_get",
          "adp_set_port_pri_trust_mode 1 ADP_TRUST_DSCP\n"
          "adp_get_port_pri_trust_mode 1\n"
          "adp_get_dot1p_map ADP_MAP_DOT1P"},
    Topic{"queue", "Says in which order the queues of a port send, and how fast.",
          "adp_qos_init adp_set_port_queue_sch_mode adp_set_queue_weight_pri adp_cosq_sched_set adp_cosq_sched_get "
          "adp_set_port_egress_shaper adp_get_port_egress_shaper",
          "adp_set_port_egress_shaper 1 10000 0\n"
          "adp_get_port_egress_shaper 1"},
    Topic{"storm", "Limits broadcast, multicast and unknown unicast frames, and what a port receives.",
          "adp_set_stormcontrol_enable adp_set_storm_counting_mode adp_set_storm_control adp_get_storm_control "
          "adp_get_storm_exceed_flag adp_reset_storm_exceed_flag adp_set_ingress_limit adp_get_ingress_limit",
          "adp_set_stormcontrol_enable 0 1 ADP_STORM_BROADCAST 1\n"
          "adp_set_storm_control 0 1 ADP_STORM_BROADCAST 1000 0\n"
          "adp_get_storm_control 0 1 ADP_STORM_BROADCAST"},
    Topic{"spanning_tree", "Sets the state of ports in spanning-tree groups and in rings (ITU-T G.8032).",
          "adp_create_mstp_instance adp_add_msti_member adp_set_port_mstp_state adp_stg_stp_get "
          "adp_get_stg_vlan_list adp_del_msti_member adp_delete_mstp_instance adp_set_port_erps_state "
          "adp_get_port_erps_state",
          "adp_create_mstp_instance 1\n"
          "adp_set_port_mstp_state 1 3 ADP_STG_STATE_BLOCKING\n"
          "adp_stg_stp_get 1 3"},
    Topic{"authorisation", "Closes ports until a station is authorised (IEEE 802.1X).",
          "adp_set_port_dot1x_mode adp_set_port_dot1x_authorized_state adp_set_mac_dot1x_authorized_state",
          "adp_set_port_dot1x_mode 4 ADP_DOT1X_AUTHORIZED 0 0"},
    Topic{"frame", "Sends frames from the CPU and reads those that it gets.",
          "adp_pkt_init adp_transmit_frame __adp_transmit_frame adp_receive_frame __adp_receive_frame "
          "adp_linkscan_register",
          "adp_linkscan_register print"},
    Topic{"pin", "Sets and reads the pins of the board.",
          "adp_gpio_register_init adp_set_gpio_direct adp_set_gpio_write_bit adp_get_gpio_val adp_reverse_gpio",
          "adp_gpio_register_init\n"
          "adp_get_gpio_val 1"},
    Topic{"start", "Brings the chip and the library to a defined state, once after power-on.",
          "adp_modules_init adp_set_max_phy_port_num adp_add_cpu_port adp_add_phy_port adp_qos_init adp_fp_init",
          "adp_modules_init"},
};

std::vector<std::string> parts(std::string_view text, char separator) {
    std::vector<std::string> found;
    while (!text.empty()) {
        const size_t end = std::min(text.find(separator), text.size());
        found.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return found;
}

}  // namespace

std::span<const Topic> topics() {
    return kTopics;
}

const Topic *find_topic(std::string_view name) {
    const auto *const found =
        std::find_if(kTopics.begin(), kTopics.end(), [name](const Topic &topic) { return topic.name == name; });
    return found == kTopics.end() ? nullptr : found;
}

std::vector<std::string> calls_of(const Topic &topic) {
    return parts(topic.calls, ' ');
}

std::vector<std::string> example_of(const Topic &topic) {
    return parts(topic.example, '\n');
}

}  // namespace adpsh
