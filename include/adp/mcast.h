/**
 * @file mcast.h
 * Multicast groups for IGMP and MLD snooping (RFC 4541), and the switches of multicast forwarding.
 *
 * A group is an address in a VLAN and the ports that get its frames. The snooping software keeps the groups; the
 * library keeps none. VLAN ids are cut to their low 16 bits. The group's address goes to the driver as an 8-byte key,
 * the address and two zero bytes. "The driver's result" is its result unchanged.
 *
 * The numbering of ports differs by call. The calls that create a group and delete members send user-port numbers to
 * the driver. The call that adds members sends physical ports, which is what the driver's look-up gives.
 *
 * A list with an aggregation group outside 1..8 is refused with -1 before any driver call.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/** What happens to multicast frames of unknown groups: the driver's codes, as the virtual device has them. */
enum adp_mcast_miss {
    ADP_MCAST_MISS_FLOOD = 0, /**< they are flooded */
    ADP_MCAST_MISS_DROP = 1,  /**< they are dropped */
    ADP_MCAST_MISS_TO_CPU = 2 /**< the CPU gets them */
};

/**
 * Creates a group.
 *
 * Driver calls: User_mcast_addr_t_init(0, entry, key, vid), then User_mcast_addr_add(0, 0, entry) with a bit for the
 * number of each listed user port; an aggregation interface sets the bits of its configured members. Numbers above 63
 * and other interface types set no bit.
 *
 * @param mac      group MAC address
 * @param vid      VLAN id, low 16 bits used
 * @param count    number of interfaces listed
 * @param members  user ports and aggregation interfaces
 * @return User_mcast_addr_add()'s result; -1 without a driver call for a listed group outside 1..8
 */
adp_status_t adp_create_igmpsn_group(const uint8_t mac[6], uint32_t vid, uint32_t count,
                                     ADP_COUNT(count) const adp_intf_t *members);

/**
 * Deletes a group. Driver call: User_mcast_addr_remove(0, 0, key, vid).
 *
 * @param mac  group MAC address
 * @param vid  VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_delete_igmpsn_group(const uint8_t mac[6], uint32_t vid);

/**
 * Reads a group's multicast group index.
 *
 * Driver call: User_mcast_port_get(0, 0, key, vid, entry). The output is written whatever the driver's result, from an
 * entry that was zeroed before.
 *
 * @param mac         group MAC address
 * @param vid         VLAN id, low 16 bits used
 * @param[out] index  multicast group index, 0 after a failure
 * @return the driver's result
 */
adp_status_t adp_get_igmpsn_group(const uint8_t mac[6], uint32_t vid, uint32_t *index);

/**
 * Adds member ports to a group.
 *
 * Driver calls: User_mcast_port_get(0, 0, key, vid, entry), whose result is ignored, then User_mcast_port_add(0, 0,
 * entry) with a bit added for the physical port of each listed user port; a port that does not translate adds none. An
 * aggregation interface adds nothing: list its members, or create the group again. With VLAN 0 the call then prints
 * "Mcast Add Port Error tVlanId = %d *vid_p = %u\n" on standard error.
 *
 * @param mac        group MAC address
 * @param vid        VLAN id, low 16 bits used
 * @param count      number of interfaces listed
 * @param members    user ports and aggregation interfaces
 * @param shown_vid  VLAN id that the message shows; read only with VLAN 0
 * @return User_mcast_port_add()'s result; 201 for a listed interface of another type, with the group read but not
 *         changed; -1 without a driver call for a listed group outside 1..8
 */
adp_status_t adp_add_igmpsn_member(const uint8_t mac[6], uint32_t vid, uint32_t count,
                                   ADP_COUNT(count) const adp_intf_t *members, const uint16_t *shown_vid);

/**
 * Deletes member ports from a group.
 *
 * Driver calls: User_mcast_port_get(0, 0, key, vid, entry), whose result is ignored, then User_mcast_port_remove(0, 0,
 * entry) whose first 64 port bits are the ports to remove, numbered as in adp_create_igmpsn_group(). With an empty list
 * these bits stay as they were read.
 *
 * @param mac      group MAC address
 * @param vid      VLAN id, low 16 bits used
 * @param count    number of interfaces listed
 * @param members  user ports and aggregation interfaces
 * @return User_mcast_port_remove()'s result; -1 without a driver call for a listed group outside 1..8
 */
adp_status_t adp_del_igmpsn_member(const uint8_t mac[6], uint32_t vid, uint32_t count,
                                   ADP_COUNT(count) const adp_intf_t *members);

/**
 * Sets a control of the handling of IGMP packets. Unlike adp_switch_control_set(), it gives the driver's own result.
 *
 * Driver call: user_switch_control_set(0, 0, control, value).
 *
 * @param control  enum adp_switch_control, or another number of the driver
 * @param value    its new value, see the control
 * @return the driver's result
 */
adp_status_t adp_set_vlan_igmp_pkt_action(uint32_t control, uint32_t value);

/**
 * Reads a control of the handling of IGMP packets. Driver call: user_switch_control_get(0, 0, control, value).
 *
 * @param control     enum adp_switch_control, or another number of the driver
 * @param[out] value  written by the driver: see the control
 * @return the driver's result
 */
adp_status_t adp_get_vlan_igmp_pkt_action(uint32_t control, uint32_t *value);

/**
 * Turns forwarding by L2 multicast entries on or off for a port. Driver call: User_switch_port_control_l2mc_enable(0,
 * port, 0, enable).
 *
 * @param intf    user port; any other interface is passed on as physical port -1
 * @param enable  0 off, otherwise on
 * @return the driver's result
 */
adp_status_t adp_control_port_l2mc_enable(adp_intf_t intf, uint32_t enable);

/**
 * Reads whether a port forwards by L2 multicast entries. Driver call: User_switch_port_control_l2mc_get(0, port, 0,
 * enable).
 *
 * @param intf         user port; any other interface is passed on as physical port -1
 * @param[out] enable  written by the driver: 0 off, otherwise on
 * @return the driver's result
 */
adp_status_t adp_control_port_l2mc_get_status(adp_intf_t intf, uint32_t *enable);

/**
 * Reads whether a port forwards by IPv4 multicast entries. Driver call: User_switch_port_control_ipmc_get(0, port, 0,
 * enable).
 *
 * @param intf         user port; any other interface is passed on as physical port -1
 * @param[out] enable  written by the driver: 0 off, otherwise on
 * @return the driver's result
 */
adp_status_t adp_control_port_ipmc_get_status(adp_intf_t intf, uint32_t *enable);

/**
 * Turns forwarding by IPv4 multicast entries on or off for a port. Driver call: User_switch_port_control_ipmc_set(0,
 * port, 0, enable).
 *
 * @param intf    user port; any other interface is passed on as physical port -1
 * @param enable  0 off, otherwise on
 * @return the driver's result
 */
adp_status_t adp_control_port_ipmc_set_enable(adp_intf_t intf, uint32_t enable);

/**
 * Turns IPv4 multicast forwarding off. Driver call: User_switch_ipmc_set(0, 0, 0).
 *
 * @return the driver's result
 */
adp_status_t adp_control_ipmc_set_disable(void);

/**
 * Turns IPv4 multicast forwarding on. Driver call: User_switch_ipmc_set(0, 0, 1).
 *
 * @return the driver's result
 */
adp_status_t adp_control_ipmc_set_enable(void);

/**
 * Sets the IPv6 multicast forwarding mode. Driver call: User_switch_ip6mc_mode_set(0, 0, mode).
 *
 * @param mode  passed through; on the virtual device 0 off, any other value on
 * @return the driver's result
 */
adp_status_t adp_control_ip6mc_mode_enable(uint32_t mode);

/**
 * Sets what happens to IPv4 multicast frames of unknown groups, on every user port.
 *
 * Driver call for each of user ports 1 to 26, whatever the number of ports in the map:
 * User_switch_ipmc_lookup_miss_action(0, 0, port, action), its result ignored.
 *
 * @param action  enum adp_mcast_miss
 * @return 0
 */
adp_status_t adp_control_ipmc_lookup_miss_action(uint32_t action);

/**
 * Sets what happens to IPv6 multicast frames of unknown groups, on every user port.
 *
 * Driver call for each of user ports 1 to 26, whatever the number of ports in the map:
 * User_switch_ip6mc_lookup_miss_action(0, 0, port, action), its result ignored.
 *
 * @param action  enum adp_mcast_miss
 * @return 0
 */
adp_status_t adp_control_ip6mc_lookup_miss_action(uint32_t action);

ADP_END_DECLS
