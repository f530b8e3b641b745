/**
 * @file mcast.h
 * Multicast groups for IGMP and MLD snooping (RFC 4541), and the switches of multicast forwarding.
 *
 * A group is an address in a VLAN and the ports that get its frames. The snooping software owns the groups; the library
 * keeps none. VLAN ids are cut to their low 16 bits. The group's address goes to the driver as an 8-byte key, the
 * address and two zero bytes. "The driver's result" means its result unchanged.
 *
 * The numbering of ports differs by call: those that create a group and delete members send user-port numbers, the one
 * that adds members sends physical ports, which is what the driver's look-up gave it.
 *
 * A list that names an aggregation group outside 1..8 is refused with -1 before any driver call.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/**
 * Creates a group.
 *
 * Driver calls: User_mcast_addr_t_init(0, entry, key, vid), then User_mcast_addr_add(0, 0, entry) with the bits of the
 * listed user ports' numbers; an aggregation interface gives those of its configured members. Numbers above 63 and
 * other interface types give none.
 *
 * @param mac    group MAC address
 * @param vid    VLAN id, low 16 bits used
 * @param count  number of interfaces listed
 * @param list   user ports and aggregation interfaces
 * @return User_mcast_addr_add()'s result; -1 without a driver call for a listed group outside 1..8
 */
adp_status_t adp_create_igmpsn_group(const uint8_t mac[6], uint32_t vid, uint32_t count,
                                     ADP_COUNT(count) const adp_intf_t *list);

/**
 * Deletes a group. Driver call: User_mcast_addr_remove(0, 0, key, vid).
 *
 * @param mac  group MAC address
 * @param vid  VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_delete_igmpsn_group(const uint8_t mac[6], uint32_t vid);

/**
 * Tells a group's multicast group index.
 *
 * Driver call: User_mcast_port_get(0, 0, key, vid, entry). The output is written whatever the driver said, from an
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
 * entry) with the bits of the listed user ports' physical ports added; ports that do not translate give none. An
 * aggregation interface adds nothing: list its members, or create the group anew. With VLAN 0 the call then prints
 * "Mcast Add Port Error tVlanId = %d *vid_p = %u\n" on standard error.
 *
 * @param mac    group MAC address
 * @param vid    VLAN id, low 16 bits used
 * @param count  number of interfaces listed
 * @param list   user ports and aggregation interfaces
 * @param vid_p  shown by that message; read only then
 * @return User_mcast_port_add()'s result; 201 for a listed interface of another type: the group was read, but is not
 *         changed; -1 without a driver call for a listed group outside 1..8
 */
adp_status_t adp_add_igmpsn_member(const uint8_t mac[6], uint32_t vid, uint32_t count,
                                   ADP_COUNT(count) const adp_intf_t *list, const uint16_t *vid_p);

/**
 * Deletes member ports from a group.
 *
 * Driver calls: User_mcast_port_get(0, 0, key, vid, entry), whose result is ignored, then
 * User_mcast_port_remove(0, 0, entry) whose first 64 bits name the ports that leave, as in adp_create_igmpsn_group().
 * An empty list leaves them as they were read.
 *
 * @param mac    group MAC address
 * @param vid    VLAN id, low 16 bits used
 * @param count  number of interfaces listed
 * @param list   user ports and aggregation interfaces
 * @return User_mcast_port_remove()'s result; -1 without a driver call for a listed group outside 1..8
 */
adp_status_t adp_del_igmpsn_member(const uint8_t mac[6], uint32_t vid, uint32_t count,
                                   ADP_COUNT(count) const adp_intf_t *list);

/**
 * Sets a control of the handling of IGMP packets. Driver call: user_switch_control_set(0, 0, control, value).
 *
 * @param control  the driver's number of the control
 * @param value    new value
 * @return the driver's result, unlike adp_switch_control_set()
 */
adp_status_t adp_set_vlan_igmp_pkt_action(uint32_t control, uint32_t value);

/**
 * Reads a control of the handling of IGMP packets. Driver call: user_switch_control_get(0, 0, control, value).
 *
 * @param control     the driver's number of the control
 * @param[out] value  written by the driver
 * @return the driver's result
 */
adp_status_t adp_get_vlan_igmp_pkt_action(uint32_t control, uint32_t *value);

/**
 * Lets a port forward by L2 multicast entries. Driver call: User_switch_port_control_l2mc_enable(0, port, 0, value).
 *
 * @param intf   user port; any other interface is handed on as physical port -1
 * @param value  0 off, otherwise on
 * @return the driver's result
 */
adp_status_t adp_control_port_l2mc_enable(adp_intf_t intf, uint32_t value);

/**
 * Tells whether a port forwards by L2 multicast entries. Driver call: User_switch_port_control_l2mc_get(0, port, 0,
 * value).
 *
 * @param intf        user port; any other interface is handed on as physical port -1
 * @param[out] value  written by the driver
 * @return the driver's result
 */
adp_status_t adp_control_port_l2mc_get_status(adp_intf_t intf, uint32_t *value);

/**
 * Tells whether a port forwards by IPv4 multicast entries. Driver call: User_switch_port_control_ipmc_get(0, port, 0,
 * value).
 *
 * @param intf        user port; any other interface is handed on as physical port -1
 * @param[out] value  written by the driver
 * @return the driver's result
 */
adp_status_t adp_control_port_ipmc_get_status(adp_intf_t intf, uint32_t *value);

/**
 * Lets a port forward by IPv4 multicast entries. Driver call: User_switch_port_control_ipmc_set(0, port, 0, value).
 *
 * @param intf   user port; any other interface is handed on as physical port -1
 * @param value  0 off, otherwise on
 * @return the driver's result
 */
adp_status_t adp_control_port_ipmc_set_enable(adp_intf_t intf, uint32_t value);

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
 * @param mode  the driver's
 * @return the driver's result
 */
adp_status_t adp_control_ip6mc_mode_enable(uint32_t mode);

/**
 * Sets what happens to IPv4 multicast frames of unknown groups, on every user port.
 *
 * Driver call for each of user ports 1 to 26, whatever the number of ports in the map:
 * User_switch_ipmc_lookup_miss_action(0, 0, port, action), its result ignored.
 *
 * @param action  the driver's code
 * @return 0
 */
adp_status_t adp_control_ipmc_lookup_miss_action(uint32_t action);

/**
 * Sets what happens to IPv6 multicast frames of unknown groups, on every user port.
 *
 * Driver call for each of user ports 1 to 26, whatever the number of ports in the map:
 * User_switch_ip6mc_lookup_miss_action(0, 0, port, action), its result ignored.
 *
 * @param action  the driver's code
 * @return 0
 */
adp_status_t adp_control_ip6mc_lookup_miss_action(uint32_t action);

ADP_END_DECLS
