/**
 * @file l2.h
 * Layer 2: port isolation and switch controls here; MAC addresses, multicast groups and 802.1X in headers of their own,
 * which this one includes.
 *
 * Every driver call is made with unit 0 and a second argument 0, which the descriptions leave out; 0 is its success.
 * Nothing takes a lock.
 */
#pragma once

#include <adp/dot1x.h>
#include <adp/mac.h>
#include <adp/mcast.h>
#include <adp/types.h>

ADP_BEGIN_DECLS

/** Switch controls that have an effect: the driver's numbers, as the virtual device has them. It keeps 0 to 255. */
enum adp_switch_control {
    ADP_CONTROL_MLD = 89,      /**< MLD messages go to the CPU: 0 off, otherwise on */
    ADP_CONTROL_IGMP = 92,     /**< IGMP messages go to the CPU: 0 off, otherwise on */
    ADP_CONTROL_MIRRORS = 125, /**< frames are mirrored: 0 off, otherwise on */
    ADP_CONTROL_HASH = 136, /**< which end of a flow chooses a group's port: 0x50 source, 0x60 destination, 0x70 both */
    ADP_CONTROL_LOCAL_GROUPS = 215 /**< frames to 224.0.0.0/24 go to the CPU: 0 off, otherwise on */
};

/**
 * Sets the user ports that an interface may send to.
 *
 * The bitmap is translated to physical ports; interfaces that do not translate are dropped. Driver call:
 * user_port_egress_set(port, 0, ports), on a group for each configured member.
 *
 * @param intf   user port or aggregation interface
 * @param word0  bit n for user port n
 * @param word1  bit n for user port 32 + n
 * @return 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t hal_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1);

/**
 * Reads the user ports that an interface may send to.
 *
 * Driver call: user_port_egress_get(port, 0, ports), on a group for its management interface.
 *
 * @param intf         user port or aggregation interface
 * @param[out] bitmap  two words, bit n of word n / 32 for user port n; written even after a failure of the driver call,
 *                     from a set cleared before it
 * @return 0; 102 when the driver call failed; without writing 201 for another type; -1 with both words 0 for a group
 *         outside 1..8
 */
adp_status_t hal_get_port_isolate(adp_intf_t intf, uint32_t bitmap[2]);

/**
 * The same as hal_set_port_isolate().
 *
 * @param intf   user port or aggregation interface
 * @param word0  bit n for user port n
 * @param word1  bit n for user port 32 + n
 * @return as hal_set_port_isolate()
 */
adp_status_t adp_set_port_isolate(adp_intf_t intf, uint32_t word0, uint32_t word1);

/**
 * The same as hal_get_port_isolate().
 *
 * @param intf         user port or aggregation interface
 * @param[out] bitmap  two words, bit n of word n / 32 for user port n
 * @return as hal_get_port_isolate()
 */
adp_status_t adp_get_port_isolatestatus(adp_intf_t intf, uint32_t bitmap[2]);

/**
 * Writes a switch control.
 *
 * Driver call: user_switch_control_set(control, value).
 *
 * @param control  enum adp_switch_control, or another number of the driver
 * @param value    its new value, see the control
 * @return 0; 102 when the driver call failed
 */
adp_status_t adp_switch_control_set(uint32_t control, uint32_t value);

/**
 * Reads a switch control.
 *
 * Driver call: user_switch_control_get(control, value).
 *
 * @param control     enum adp_switch_control, or another number of the driver
 * @param[out] value  written by the driver: see the control
 * @return the driver's result
 */
adp_status_t adp_switch_control_get(uint32_t control, uint32_t *value);

/**
 * Turns the trap that sends frames for the device's own MAC address to the CPU on or off.
 *
 * Driver call: user_selfmac_trap_to_cpu(enable, option).
 *
 * @param enable   passed through; 0 off, otherwise on
 * @param unused   not used
 * @param unused2  not used
 * @param option   passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_selfmac_trap_tocpu(uint32_t enable, uint32_t unused, uint32_t unused2, adp_word_t option);

/**
 * Writes a VLAN control of a user port.
 *
 * Driver call: user_vlan_control_port_set(port, control, value).
 *
 * @param intf     user port
 * @param control  the driver's control number; 0..31 on the virtual device
 * @param value    its new value, passed through; any number on the virtual device
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t hal_vlan_control_port_set(adp_intf_t intf, uint32_t control, int32_t value);

/**
 * Reads a VLAN control of a user port.
 *
 * Driver call: user_vlan_control_port_get(port, control, value).
 *
 * @param intf        user port
 * @param control     the driver's control number; 0..31 on the virtual device
 * @param[out] value  written by the driver; 0 at power-on on the virtual device
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t hal_vlan_control_port_get(adp_intf_t intf, uint32_t control, uint32_t *value);

ADP_END_DECLS
