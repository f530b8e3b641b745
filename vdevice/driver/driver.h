// The driver calls and the device's services, carried out on the virtual switch chip. Calls that are not overridden
// here answer kNotSupported.
#pragma once

#include <functional>

#include "generated/driver_calls.h"
#include "vdevice/chip/switch.h"
#include "vdevice/driver/board.h"
#include "vdevice/driver/codes.h"
#include "vdevice/driver/event_queue.h"
#include "vdevice/driver/journal.h"
#include "vdevice/driver/list_handles.h"
#include "vdevice/driver/switch_controls.h"

namespace vdevice::driver {

class Driver : public DriverCalls {
  public:
    using Clock = std::function<chip::Time()>;

    /** The chip must outlive the driver; @p clock stamps log lines and events. */
    Driver(chip::Switch &chip, Board board, Clock clock);

    const Board &board() const { return board_; }
    const Journal &journal() const { return journal_; }
    const EventQueue &events() const { return events_; }
    EventQueue &events() { return events_; }
    /** What sys_trace_get() answers. */
    void set_trace(int32_t trace) { trace_ = trace; }

    // VLANs
    int32_t user_vlan_create(uint32_t unit, uint32_t zero, uint32_t vid) override;
    int32_t user_vlan_createEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid) override;
    int32_t user_vlan_destroy(uint32_t unit, uint32_t zero, uint32_t vid) override;
    int32_t user_vlan_destroyEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid) override;
    int32_t user_vlan_port_add(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *ports,
                               const uint32_t *untagged) override;
    int32_t user_vlan_port_addEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid,
                                 const uint32_t *ports, const uint32_t *untagged) override;
    int32_t user_vlan_port_remove(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *ports) override;
    int32_t user_vlan_port_removeEx(uint32_t unit, uint32_t zero, uint32_t first_vid, uint32_t last_vid,
                                    const uint32_t *ports) override;
    int32_t user_vlan_port_set(uint32_t unit, uint32_t zero, uint32_t vid, const uint32_t *members,
                               const uint32_t *untagged) override;
    int32_t user_vlan_port_get(uint32_t unit, uint32_t zero, uint32_t vid, uint32_t *members,
                               uint32_t *untagged) override;
    int32_t user_vlan_default_set(uint32_t unit, uint32_t zero, uint32_t vid) override;
    int32_t user_vlan_default_get(uint32_t unit, uint32_t zero, uint32_t *vid) override;
    int32_t user_port_untagged_vlan_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t vid) override;
    int32_t user_port_untagged_vlan_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *vid) override;

    // Ports: driver_port.cpp
    int32_t user_port_enable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable) override;
    int32_t user_port_enable_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) override;
    int32_t user_port_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) override;
    int32_t user_fiberport_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) override;
    int32_t user_port_speed_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t speed, uint32_t mode) override;
    int32_t user_port_speed_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *speed) override;
    int32_t user_port_speed_max(uint32_t unit, uint32_t zero, int32_t port, uint32_t *speed) override;
    int32_t user_port_duplex_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t duplex, uint32_t mode) override;
    int32_t user_port_duplex_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *duplex) override;
    int32_t user_port_autoneg_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable) override;
    int32_t user_port_autoneg_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) override;
    int32_t user_port_ability_advert_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t abilities) override;
    int32_t user_port_ability_advert_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *abilities) override;
    int32_t user_port_loopback_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) override;
    int32_t user_port_loopback_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) override;
    int32_t user_port_pause_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t transmit,
                                uint32_t receive) override;
    int32_t user_port_pause_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) override;
    int32_t user_port_pause_get_stat(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) override;
    int32_t user_port_jumboframe_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t value) override;
    int32_t user_port_jumboframe_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *value) override;
    int32_t user_port_mdix_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) override;
    int32_t user_port_mdix_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) override;
    int32_t user_port_link_medium_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *medium) override;
    int32_t user_eee_portEnable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable) override;
    int32_t user_eee_portEnable_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) override;
    int32_t User_port_cablediag(uint32_t unit, uint32_t zero, int32_t port, netlink_cable_diag_t *result) override;

    // What ports let pass: driver_port_rules.cpp
    int32_t user_port_learn_set(uint32_t unit, uint32_t zero, int32_t port, int32_t mode) override;
    int32_t user_port_learn_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) override;
    int32_t user_port_egress_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t module,
                                 adp_port_set_t egress) override;
    int32_t user_port_egress_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t module,
                                 uint32_t *egress) override;
    int32_t user_port_untagged_priority_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority) override;
    int32_t user_port_untagged_priority_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *priority) override;
    int32_t user_vlan_control_port_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t control,
                                       int32_t value) override;
    int32_t user_vlan_control_port_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t control,
                                       uint32_t *value) override;

    // Storm control and ingress limits: driver_limits.cpp
    int32_t user_rate_bandwidth_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t rate,
                                    uint32_t burst) override;
    int32_t user_rate_bandwidth_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t *rate,
                                    uint32_t *burst) override;
    int32_t user_rate_stormsel_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t value) override;
    int32_t user_rate_stormsel_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t *value) override;
    int32_t user_rate_stormControlEnable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type,
                                             uint32_t enable) override;
    int32_t user_rate_stormExceedFlag_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t storm_code,
                                          uint32_t *flag) override;
    int32_t user_rate_stormExceedFlag_reset(uint32_t unit, uint32_t zero, int32_t port) override;
    int32_t user_rate_stormCountMode_set(uint32_t unit, uint32_t zero, uint32_t selector, uint32_t mode) override;
    int32_t user_rate_stormCountMode_get(uint32_t unit, uint32_t zero, uint32_t selector, uint32_t *mode) override;
    int32_t user_port_ingress_rate_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t rate,
                                       uint32_t burst) override;
    int32_t user_port_ingress_rate_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *rate,
                                       uint32_t *burst) override;

    // Counters: driver_statistics.cpp
    int32_t user_port_packetstat_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type,
                                     uint64_t *value) override;
    int32_t user_port_packetstat_clear(uint32_t unit, uint32_t zero, int32_t port) override;
    int32_t user_stat_port_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t selector, uint64_t *value) override;

    // Trunks, controls and traps: driver_trunk.cpp
    int32_t user_trunk_init(uint32_t unit, uint32_t zero) override;
    int32_t user_trunk_create_id(uint32_t unit, uint32_t zero, int32_t trunk) override;
    int32_t user_trunk_destroy(uint32_t unit, uint32_t zero, int32_t trunk) override;
    int32_t user_trunk_set(uint32_t unit, uint32_t zero, int32_t trunk, adp_agg_record_t record) override;
    int32_t user_trunk_send_data_to_kernel(uint32_t unit, uint32_t zero, int32_t trunk,
                                           adp_agg_record_t record) override;
    int32_t user_trunk_loadbalance_set(uint32_t unit, uint32_t zero, int32_t trunk, uint32_t mode) override;
    int32_t user_switch_control_set(uint32_t unit, uint32_t zero, uint32_t control, uint32_t value) override;
    int32_t user_switch_control_get(uint32_t unit, uint32_t zero, uint32_t control, uint32_t *value) override;
    int32_t user_trunk_trap_lacp(uint32_t unit, uint32_t zero, uint32_t value, adp_word_t option) override;
    int32_t user_eoam_trap_set(uint32_t unit, uint32_t zero, uint32_t value, adp_word_t option) override;
    int32_t user_selfmac_trap_to_cpu(uint32_t unit, uint32_t zero, uint32_t value, adp_word_t option) override;

    // The field processor: driver_field.cpp and, the conditions, driver_field_qualify.cpp
    int32_t user_field_init(uint32_t unit, uint32_t zero) override;
    int32_t user_field_entry_create_id(int32_t handle, uint32_t unit, int32_t group, uint32_t entry) override;
    int32_t user_field_entry_prio_set(int32_t handle, uint32_t unit, uint32_t entry, int32_t priority) override;
    int32_t user_field_set_double_entry(int32_t handle, uint32_t unit, uint32_t entry) override;
    int32_t user_field_set_select_tempate_idx(int32_t handle, uint32_t unit, uint32_t entry, uint32_t index) override;
    int32_t user_field_entry_install(int32_t handle, uint32_t unit, uint32_t entry) override;
    int32_t user_field_entry_destroy(int32_t handle, uint32_t unit, uint32_t entry) override;
    int32_t user_field_action_add(int32_t handle, uint32_t unit, uint32_t entry, uint32_t type, const uint8_t *param,
                                  const uint8_t *param2) override;
    int32_t user_field_action_remove_all(int32_t handle, uint32_t unit, uint32_t entry) override;
    int32_t user_field_qualify_clear(int32_t handle, uint32_t unit, uint32_t entry) override;
    int32_t user_field_qualify_SrcIp6(int32_t handle, uint32_t unit, uint32_t entry, const uint8_t *data,
                                      const uint8_t *mask) override;
    int32_t user_field_qualify_DstIp6(int32_t handle, uint32_t unit, uint32_t entry, const uint8_t *data,
                                      const uint8_t *mask) override;
    int32_t user_field_qualify_SrcMac(int32_t handle, uint32_t unit, uint32_t entry, const uint8_t *data,
                                      const uint8_t *mask) override;
    int32_t user_field_qualify_DstMac(int32_t handle, uint32_t unit, uint32_t entry, const uint8_t *data,
                                      const uint8_t *mask) override;
    int32_t user_field_qualify_SrcIp(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                     uint32_t mask) override;
    int32_t user_field_qualify_DstIp(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                     uint32_t mask) override;
    int32_t user_field_qualify_InPorts(int32_t handle, uint32_t unit, uint32_t entry, adp_port_set_t data,
                                       adp_port_set_t mask) override;
    int32_t user_field_qualify_OuterVlanId(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                           uint32_t mask) override;
    int32_t user_field_qualify_OuterVlanPri(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                            uint32_t mask) override;
    int32_t user_field_qualify_InnerVlan(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                         uint32_t mask) override;
    int32_t user_field_qualify_InnerVlanId(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                           uint32_t mask) override;
    int32_t user_field_qualify_InnerVlanPri(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                            uint32_t mask) override;
    int32_t user_field_qualify_L4SrcPort(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                         uint32_t mask) override;
    int32_t user_field_qualify_L4DstPort(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                         uint32_t mask) override;
    int32_t user_field_qualify_EtherType(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                         uint32_t mask) override;
    int32_t user_field_qualify_IpProtocol(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                          uint32_t mask) override;
    int32_t user_field_qualify_DSCP(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                    uint32_t mask) override;
    int32_t user_field_qualify_Ip6TrafficClass(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data,
                                               uint32_t mask) override;
    int32_t user_field_qualify_iptype(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data) override;
    int32_t user_field_qualify_FrameType(int32_t handle, uint32_t unit, uint32_t entry, uint32_t data) override;
    int32_t user_field_meter_entry_set(uint32_t unit, uint32_t rate, uint32_t meter) override;
    int32_t user_field_meter_destroy(int32_t handle, uint32_t unit, uint32_t entry) override;
    int32_t user_field_meter_ifg_exclude_init() override;
    int32_t user_field_get_statistics(int32_t handle, uint32_t unit, int32_t counter, int32_t type,
                                      int32_t *count) override;
    int32_t user_field_clear_statistics(int32_t handle, uint32_t unit, int32_t counter, int32_t type) override;
    int32_t user_field_lookupMissAct_set(int32_t handle, uint32_t unit, int32_t port, uint32_t action) override;

    // Addresses: driver_mac.cpp
    int32_t user_mac_addr_add(uint32_t unit, adp_l2_entry_t entry) override;
    int32_t user_mac_addr_delete(uint32_t unit, const uint8_t *key, uint32_t vid, adp_word_t option) override;
    int32_t user_mac_addr_get(uint32_t unit, const uint8_t *key, uint32_t vid, adp_l2_entry_t *entry) override;
    int32_t user_netlink_mac_nextValidAddr_get(uint32_t unit, adp_word_t index, adp_l2_entry_t *entry,
                                               adp_word_t option) override;
    int32_t user_mac_age_time_set(uint32_t unit, uint32_t seconds) override;
    int32_t user_mac_age_time_get(uint32_t unit, uint32_t *seconds) override;
    int32_t user_l2_cache_size_get(uint32_t unit, uint32_t zero, uint32_t *size) override;
    int32_t user_mac_table_show(uint32_t unit, adp_word_t first, adp_word_t third, adp_word_t fourth) override;
    int32_t user_mac_mcast_table_show(uint32_t unit, adp_word_t first, adp_word_t third, adp_word_t fourth) override;

    // driver_mac_delete.cpp
    int32_t user_l2_addr_del_all_addr_by_lrntype(uint32_t unit, uint32_t zero, uint32_t type) override;
    int32_t user_l2_addr_delete_by_vlan(uint32_t unit, uint32_t zero, uint32_t vid, uint32_t all) override;
    int32_t user_l2_addr_delete_static_by_vlan(uint32_t unit, uint32_t zero, uint32_t vid, uint32_t flags) override;
    int32_t user_l2_addr_delete_by_mac(uint32_t unit, uint32_t zero, const uint8_t *key, uint32_t all) override;
    int32_t user_l2_addr_delete_static_by_mac(uint32_t unit, uint32_t zero, const uint8_t *key,
                                              uint32_t flags) override;
    int32_t user_l2_addr_delete_by_port(uint32_t unit, uint32_t zero, int32_t module, int32_t port,
                                        uint32_t all) override;
    int32_t user_l2_addr_delete_static_by_port(uint32_t unit, uint32_t zero, int32_t module, int32_t port) override;
    int32_t user_l2_addr_delete_by_vlan_port(uint32_t unit, uint32_t zero, uint32_t vid, int32_t module, int32_t port,
                                             uint32_t all) override;
    int32_t user_l2_addr_delete_static_by_vlan_port(uint32_t unit, uint32_t zero, uint32_t vid, int32_t port) override;
    int32_t user_l2_addr_delete_by_vlan_trunk(uint32_t unit, uint32_t zero, uint32_t vid, int32_t trunk,
                                              uint32_t all) override;
    int32_t user_l2_addr_delete_dynaic_by_mac_port(uint32_t unit, uint32_t zero, const uint8_t *key, int32_t port,
                                                   adp_word_t option) override;
    int32_t user_l2_addr_delete_static_by_mac_port(uint32_t unit, uint32_t zero, const uint8_t *key, int32_t port,
                                                   adp_word_t option) override;
    int32_t user_l2_addr_delete_all_by_mac_port(uint32_t unit, uint32_t zero, const uint8_t *key,
                                                int32_t port) override;
    int32_t user_l2_addr_delete_trunk_dynamic_by_port_mac_vlan(uint32_t unit, uint32_t zero, const uint8_t *key,
                                                               int32_t port, uint32_t vid) override;
    int32_t user_l2_addr_delete_trunk_static_by_port_mac_vlan(uint32_t unit, uint32_t zero, const uint8_t *key,
                                                              int32_t port, uint32_t vid) override;
    int32_t user_l2_addr_delete_all_dynamic_by_port_mac_vlan(uint32_t unit, uint32_t zero, const uint8_t *key,
                                                             int32_t port, uint32_t vid) override;

    // driver_mac_limit.cpp
    int32_t user_mac_learn_limit_set(uint32_t unit, netlink_learn_limit_t limit) override;
    int32_t user_mac_learn_limit_get(uint32_t unit, netlink_learn_limit_t *limit) override;
    int32_t user_mac_learn_count_get_by_port(int32_t port, uint32_t *count) override;
    int32_t user_mac_violate_count_get_by_port(int32_t port, uint32_t *count) override;
    int32_t user_mac_violate_del_by_port(int32_t port) override;

    // Multicast groups: driver_group.cpp
    int32_t User_mcast_addr_t_init(uint32_t unit, netlink_mcast_entry_t *entry, const uint8_t *key,
                                   uint32_t vid) override;
    int32_t User_mcast_addr_add(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry) override;
    int32_t User_mcast_addr_remove(uint32_t unit, uint32_t zero, const uint8_t *key, uint32_t vid) override;
    int32_t User_mcast_port_get(uint32_t unit, uint32_t zero, const uint8_t *key, uint32_t vid,
                                netlink_mcast_entry_t *entry) override;
    int32_t User_mcast_port_add(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry) override;
    int32_t User_mcast_port_remove(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry) override;
    int32_t user_mac_mcast_addr_add(uint32_t unit, adp_l2_entry_t entry) override;
    int32_t user_mac_mcast_addr_delete(uint32_t unit, const uint8_t *key, uint32_t vid, adp_word_t option) override;
    int32_t user_mac_mcast_addr_get(uint32_t unit, const uint8_t *key, uint32_t vid, adp_l2_entry_t *entry) override;
    int32_t user_is_mcast_addr_exist_by_vlan(uint32_t unit, uint32_t vid, uint32_t second, adp_word_t option) override;
    int32_t user_is_mcast_addr_exist_vlan_is(uint32_t unit, adp_word_t first, adp_word_t third,
                                             adp_word_t fourth) override;

    // driver_group_rules.cpp
    int32_t User_switch_port_control_l2mc_enable(uint32_t unit, int32_t port, uint32_t zero, uint32_t value) override;
    int32_t User_switch_port_control_l2mc_get(uint32_t unit, int32_t port, uint32_t zero, uint32_t *value) override;
    int32_t User_switch_port_control_ipmc_set(uint32_t unit, int32_t port, uint32_t zero, uint32_t value) override;
    int32_t User_switch_port_control_ipmc_get(uint32_t unit, int32_t port, uint32_t zero, uint32_t *value) override;
    int32_t User_switch_ipmc_set(uint32_t unit, uint32_t zero, uint32_t enable) override;
    int32_t User_switch_ip6mc_mode_set(uint32_t unit, uint32_t zero, uint32_t mode) override;
    int32_t User_switch_ipmc_lookup_miss_action(uint32_t unit, uint32_t zero, int32_t port, uint32_t action) override;
    int32_t User_switch_ip6mc_lookup_miss_action(uint32_t unit, uint32_t zero, int32_t port, uint32_t action) override;

    // Reserved addresses and start-up: driver_start.cpp
    int32_t user_l2_bpdu_get(uint32_t unit, uint32_t zero, uint32_t index, uint8_t *mac) override;
    int32_t user_l2_bpdu_set(uint32_t unit, uint32_t zero, uint32_t index, const uint8_t *mac) override;
    int32_t user_lldp_init(uint32_t unit, uint32_t zero) override;
    int32_t user_igmp_snooping_init(uint32_t unit, uint32_t zero) override;
    int32_t User_mcast_init(uint32_t unit, uint32_t zero) override;
    int32_t user_dos_attack_prevent_init(uint32_t unit, uint32_t zero) override;

    // Mirrors and registers: driver_mirror.cpp
    int32_t user_mirror_init(uint32_t unit, uint32_t zero) override;
    int32_t user_mirror_port_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t session, int32_t destination,
                                 uint32_t mode) override;
    int32_t user_set_flow_mirror(uint32_t unit, uint32_t zero, uint32_t session, int32_t port) override;
    int32_t user_set_mirror_disable(uint32_t unit, uint32_t zero, uint32_t session, adp_word_t value) override;
    int32_t user_check_set_mirror_disable(uint32_t unit, uint32_t zero, uint32_t session, adp_word_t value) override;
    int32_t user_pci_read(uint32_t unit, uint32_t zero, uint32_t address, uint32_t *value) override;
    int32_t user_pci_write(uint32_t unit, uint32_t zero, uint32_t address, const uint32_t *value) override;

    // Egress queues, schedulers and shapers: driver_queues.cpp
    int32_t user_cosq_config_set(uint32_t unit, uint32_t zero, uint32_t queues) override;
    int32_t user_cosq_port_sched_set(uint32_t unit, uint32_t zero, uint32_t port_mask, uint32_t mode,
                                     const uint32_t weights[NETLINK_QUEUES], uint32_t delay) override;
    int32_t user_cosq_port_sched_get(uint32_t unit, uint32_t zero, uint32_t port_mask, uint32_t *mode,
                                     uint32_t weights[NETLINK_QUEUES], uint32_t *delay) override;
    int32_t user_qos_schedule_set(uint32_t port, uint32_t queue, uint32_t weight, uint32_t flags) override;
    int32_t user_qos_schedule_get(uint32_t port, uint32_t queue, uint32_t *weight, uint32_t flags) override;
    int32_t user_qos_cpu_weight_init() override;
    int32_t user_port_egress_rate_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t rate,
                                      uint32_t burst) override;
    int32_t user_port_egress_rate_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *rate,
                                      uint32_t *burst) override;

    // Spanning-tree groups: driver_stg.cpp
    int32_t user_stg_init(uint32_t unit, uint32_t zero) override;
    int32_t user_stg_create_id(uint32_t unit, uint32_t zero, int32_t stg) override;
    int32_t user_stg_destroy(uint32_t unit, uint32_t zero, int32_t stg) override;
    int32_t user_stg_vlan_add(uint32_t unit, uint32_t zero, int32_t stg, uint32_t vid) override;
    int32_t user_stg_vlan_remove(uint32_t unit, uint32_t zero, int32_t stg, uint32_t vid) override;
    int32_t user_stg_stp_set(uint32_t unit, uint32_t zero, int32_t stg, int32_t port, uint32_t state) override;
    int32_t user_stg_stp_get(uint32_t unit, uint32_t zero, int32_t stg, int32_t port, uint32_t *state) override;
    int32_t user_stg_default_get(uint32_t unit, uint32_t zero, uint32_t *stg) override;
    int32_t user_stg_max_support_count_get(uint32_t unit, uint32_t zero, uint32_t *count) override;
    int32_t user_stg_stg_count_get(uint32_t unit, uint32_t zero, uint32_t *count) override;
    int32_t user_stg_vlan_count_get(uint32_t unit, uint32_t zero, int32_t stg, uint32_t *count) override;

    // Lists of them: driver_stg_lists.cpp
    int32_t user_stg_each_time_list(uint32_t unit, uint32_t zero, int32_t *groups, uint32_t chunk_index,
                                    uint32_t chunk_size) override;
    int32_t user_stg_vlan_each_time_list(uint32_t unit, uint32_t zero, int32_t stg, uint16_t *vlans,
                                         uint32_t chunk_index, uint32_t chunk_size) override;
    int32_t user_stg_list(uint32_t unit, uint32_t zero, adp_word_t *list, int32_t *count) override;
    int32_t user_stg_list_destroy(uint32_t unit, uint32_t zero, adp_word_t list, int32_t count) override;
    int32_t user_stg_vlan_list(uint32_t unit, uint32_t zero, int32_t stg, adp_word_t *list, int32_t *count) override;
    int32_t user_stg_vlan_list_destroy(uint32_t unit, uint32_t zero, adp_word_t list, int32_t count) override;

    // Translation and subnets: driver_translate.cpp
    int32_t user_vlan_translate_add(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port, adp_word_t action,
                                    uint32_t old_vid, uint32_t new_vid, adp_word_t priority) override;
    int32_t user_vlan_translate_delete(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port,
                                       uint32_t old_vid) override;
    int32_t user_vlan_translate_delete_all(uint32_t unit, uint32_t zero) override;
    int32_t user_vlan_translate_get(uint32_t unit, uint32_t zero, adp_word_t port, uint32_t old_vid, uint32_t *new_vid,
                                    uint32_t *priority) override;
    int32_t user_vlan_translate_egress_add(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port,
                                           uint32_t old_vid, uint32_t new_vid, adp_word_t priority) override;
    int32_t user_vlan_translate_egress_delete(uint32_t unit, uint32_t zero, adp_word_t kind, adp_word_t port,
                                              uint32_t old_vid) override;
    int32_t user_vlan_translate_egress_delete_all(uint32_t unit, uint32_t zero) override;
    int32_t user_vlan_translate_egress_get(uint32_t unit, uint32_t zero, adp_word_t port, uint32_t old_vid,
                                           uint32_t *new_vid, uint32_t *priority) override;
    int32_t user_vlan_ip4_add(uint32_t unit, uint32_t zero, adp_word_t port, adp_word_t address, adp_word_t mask,
                              uint32_t vid, adp_word_t priority, adp_word_t flags) override;
    int32_t user_vlan_ip4_delete(uint32_t unit, uint32_t zero, adp_word_t port, adp_word_t address,
                                 adp_word_t mask) override;
    int32_t user_vlan_ip4_delete_all(uint32_t unit, uint32_t zero) override;

    // Double tags: driver_double_tag.cpp
    int32_t user_vlan_dtag_add(uint32_t unit, uint32_t zero, adp_word_t kind, int32_t port, adp_word_t action,
                               uint32_t inner_vid, uint32_t outer_vid, adp_word_t priority) override;
    int32_t user_vlan_dtag_delete(uint32_t unit, uint32_t zero, adp_word_t kind, int32_t port,
                                  uint32_t inner_vid) override;
    int32_t user_vlan_dtag_delete_all(uint32_t unit, uint32_t zero) override;
    int32_t user_vlan_dtag_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t inner_vid, uint32_t *outer_vid,
                               uint32_t *priority) override;
    int32_t user_port_dtag_mode_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) override;
    int32_t user_port_dtag_mode_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) override;
    int32_t user_port_tpid_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t tpid, adp_word_t option) override;
    int32_t user_port_tpid_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *tpid) override;

    // Priorities: driver_priority.cpp
    int32_t user_cosq_mapping_set(uint32_t unit, uint32_t zero, uint32_t priority, uint32_t queue) override;
    int32_t user_cosq_mapping_get(uint32_t unit, uint32_t zero, uint32_t priority, uint32_t *queue) override;
    int32_t user_cosq_port_mapping_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority,
                                       uint32_t queue) override;
    int32_t user_cosq_port_mapping_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority,
                                       uint32_t *queue) override;
    int32_t user_qos_pri_queue_map_set(adp_word_t unit, adp_word_t zero, adp_word_t priority,
                                       adp_word_t queue) override;
    int32_t user_qos_pri_queue_map_get(adp_word_t unit, adp_word_t zero, adp_word_t priority, uint32_t *queue) override;
    int32_t user_port_dscp_map_set(uint32_t unit, uint32_t zero, int32_t port, int32_t dscp, int32_t mapped,
                                   uint32_t priority) override;
    int32_t user_port_dscp_map_get(uint32_t unit, uint32_t zero, int32_t port, int32_t dscp, uint8_t *mapped,
                                   uint8_t *priority) override;
    int32_t user_qos_dscp_map_set(adp_word_t unit, adp_word_t zero, adp_word_t dscp, adp_word_t priority) override;
    int32_t user_qos_dscp_map_get(adp_word_t unit, adp_word_t zero, adp_word_t dscp, uint32_t *priority) override;
    int32_t user_port_dscp_map_mode_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) override;
    int32_t user_port_dscp_map_mode_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) override;
    int32_t user_qos_pri_remap_set(uint32_t unit, adp_word_t port, adp_word_t priority, adp_word_t new_priority,
                                   adp_word_t further1, adp_word_t further2, adp_word_t further3,
                                   adp_word_t further4) override;
    int32_t user_qos_port_cos_set(int32_t port, uint32_t value) override;
    int32_t user_qos_port_cos_get(int32_t port, uint32_t *value) override;
    int32_t user_qos_default_cos_src_init() override;
    int32_t user_qos_remark_inner_tag_src_init() override;
    int32_t user_qos_trust_sel_group_init() override;

    // The device's services
    int32_t log_line(int32_t level, int32_t module, const char *word, const char *text) override;
    int32_t sys_trace_get() override;
    int32_t sys_trace_add_log(const char *prefix, const char *message) override;
    int32_t equeue_send_ucast(uintptr_t queue, const uintptr_t *message, int32_t timeout) override;
    int32_t link_event_handle_cb(uint32_t intf, int32_t status) override;
    int32_t get_vlan_info(uint32_t vid, uint8_t *record) override;
    int32_t get_group_by_interface(uint32_t intf, uint32_t *group) override;
    int32_t add_mac_static_addr(const char *mac, uint32_t intf, uint32_t vid, uint32_t flag) override;
    int32_t del_mac_addr(const char *mac, uint32_t vid, uint32_t flag) override;
    int32_t set_mac_tbl_clear_by_port(uint32_t intf, uint32_t scope, uint32_t kind) override;

  private:
    chip::PortSet interfaces_of(const chip::PortSet &chip_ports) const;
    int32_t read_port(uint32_t unit, uint32_t zero, int32_t port, uint32_t *out,
                      const std::function<uint32_t(const chip::Port &)> &value) const;
    /** Hands the port to what reads it, which writes the outputs. */
    int32_t look_at_port(uint32_t unit, uint32_t zero, int32_t port,
                         const std::function<chip::Status(const chip::Port &)> &read) const;
    int32_t write_port(uint32_t unit, uint32_t zero, int32_t port,
                       const std::function<chip::Status(chip::Port &)> &change);
    /** The same, but not for the CPU port. */
    int32_t write_user_port(uint32_t unit, uint32_t zero, int32_t port,
                            const std::function<chip::Status(chip::Port &)> &change);
    chip::Status open_list(ListHandles::Kind kind, size_t size, adp_word_t *list, int32_t *count);
    int32_t read_change(uint32_t unit, uint32_t zero, const chip::VidMap &table, int32_t port, uint32_t vid,
                        uint32_t *new_vid, uint32_t *priority) const;

    std::optional<chip::PortSet> scheduled_ports(uint32_t port_mask) const;

    using FieldReader = chip::FieldWords (*)(const uint8_t *bytes);

    chip::FieldTable &fields() { return chip_.fields().table(); }
    int32_t qualify(int32_t handle, uint32_t unit, uint32_t entry, const chip::Qualifier &qualifier);
    int32_t qualify_bytes(int32_t handle, uint32_t unit, uint32_t entry, chip::Field field, FieldReader read,
                          const uint8_t *data, const uint8_t *mask);
    int32_t qualify_kind(int32_t handle, uint32_t unit, uint32_t entry, chip::Field field, bool exists, uint32_t kind);

    class Key;
    int32_t delete_set(uint32_t unit, uint32_t zero, const Key &key);
    int32_t delete_one(uint32_t unit, uint32_t zero, const Key &key);
    void show_entries(adp_word_t vid, bool groups);
    std::string line_of(const chip::MacEntry &entry) const;

    template <typename Operation>
    int32_t with_front_ports(uint32_t unit, uint32_t zero, const netlink_mcast_entry_t *entry, Operation operation);
    template <typename Operation>
    int32_t with_group(uint32_t unit, uint32_t zero, const uint8_t *key, uint32_t vid, const void *out,
                       Operation operation);
    int32_t set_group_miss(uint32_t unit, uint32_t zero, int32_t port, uint32_t action,
                           chip::GroupMiss chip::PortGroupRules::*rule);

    chip::Switch &chip_;
    Board board_;
    Clock clock_;
    Journal journal_;
    EventQueue events_;
    SwitchControls controls_;
    ListHandles lists_;
    int32_t trace_ = 0;
};

}  // namespace vdevice::driver
