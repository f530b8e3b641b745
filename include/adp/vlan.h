/**
 * @file vlan.h
 * VLANs (IEEE 802.1Q): membership, the system's default VLAN and each interface's port VLAN id. Translation and double
 * tags have a header of their own, which this one includes.
 *
 * VLAN ids are cut to their low 16 bits before they reach the driver, which checks their range. The library keeps no
 * VLAN table of its own. Every driver call is made with unit 0 and a second argument 0; "the driver's result" is its
 * result unchanged, 0 for success.
 */
#pragma once

#include <adp/types.h>
#include <adp/vlan_tag.h>

ADP_BEGIN_DECLS

/**
 * Creates a VLAN.
 *
 * Driver call: user_vlan_create(0, 0, vid).
 *
 * @param vid  VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_create(uint32_t vid);

/**
 * Destroys a VLAN.
 *
 * Driver call: user_vlan_destroy(0, 0, vid).
 *
 * @param vid  VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_destroy(uint32_t vid);

/**
 * Creates the VLANs that a pair of ids names: what the pair means is the driver's, a range on the virtual device.
 *
 * Driver call: user_vlan_createEx(0, 0, first_vid, last_vid).
 *
 * @param first_vid  VLAN id, low 16 bits used
 * @param last_vid   VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_createEx(uint32_t first_vid, uint32_t last_vid);

/**
 * Destroys the VLANs that a pair of ids names.
 *
 * Driver call: user_vlan_destroyEx(0, 0, first_vid, last_vid).
 *
 * @param first_vid  VLAN id, low 16 bits used
 * @param last_vid   VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_destroyEx(uint32_t first_vid, uint32_t last_vid);

/**
 * Adds ports to a VLAN. The port arguments are passed through untranslated.
 *
 * Driver call: user_vlan_port_add(0, 0, vid, ports, untagged).
 *
 * @param vid       VLAN id, low 16 bits used
 * @param ports     address of a 256-bit set of physical ports, 0 for the empty set
 * @param untagged  the ports among these that send the VLAN untagged, address of a set in the same form
 * @return the driver's result
 */
adp_status_t adp_vlan_port_add(uint32_t vid, ADP_PORTS adp_word_t ports, ADP_PORTS adp_word_t untagged);

/**
 * Adds ports to the VLANs that a pair of ids names. Otherwise as adp_vlan_port_add().
 *
 * Driver call: user_vlan_port_addEx(0, 0, first_vid, last_vid, ports, untagged).
 *
 * @param first_vid  VLAN id, low 16 bits used
 * @param last_vid   VLAN id, low 16 bits used
 * @param ports      as in adp_vlan_port_add()
 * @param untagged   as in adp_vlan_port_add()
 * @return the driver's result
 */
adp_status_t adp_vlan_port_addEx(uint32_t first_vid, uint32_t last_vid, ADP_PORTS adp_word_t ports,
                                 ADP_PORTS adp_word_t untagged);

/**
 * Removes ports from a VLAN. The port argument is passed through untranslated.
 *
 * Driver call: user_vlan_port_remove(0, 0, vid, ports).
 *
 * @param vid    VLAN id, low 16 bits used
 * @param ports  as in adp_vlan_port_add()
 * @return the driver's result
 */
adp_status_t adp_vlan_port_remove(uint32_t vid, ADP_PORTS adp_word_t ports);

/**
 * Removes ports from the VLANs that a pair of ids names.
 *
 * Driver call: user_vlan_port_removeEx(0, 0, first_vid, last_vid, ports).
 *
 * @param first_vid  VLAN id, low 16 bits used
 * @param last_vid   VLAN id, low 16 bits used
 * @param ports      as in adp_vlan_port_add()
 * @return the driver's result
 */
adp_status_t adp_vlan_port_removeEx(uint32_t first_vid, uint32_t last_vid, ADP_PORTS adp_word_t ports);

/**
 * Sets the system's default VLAN.
 *
 * Driver call: user_vlan_default_set(0, 0, vid).
 *
 * @param vid  VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_default_set(uint32_t vid);

/**
 * Reads the system's default VLAN.
 *
 * Driver call: user_vlan_default_get(0, 0, vid).
 *
 * @param[out] vid  written by the driver: VLAN id
 * @return the driver's result
 */
adp_status_t adp_vlan_default_get(uint32_t *vid);

/**
 * Sets a VLAN's member and untagged ports, given as sets of interface numbers.
 *
 * Both sets are translated to physical ports; interfaces that do not translate are dropped. Bit 0 is the CPU port and
 * translates once its map row exists. Driver call: user_vlan_port_set(0, 0, vid, members, untagged).
 *
 * @param vid       VLAN id, low 16 bits used
 * @param members   256-bit set of member interfaces, bit n of word n / 32 for interface n
 * @param untagged  256-bit set of the interfaces that send the VLAN untagged
 * @return the driver's result
 */
adp_status_t adp_vlan_port_set(uint32_t vid, const adp_ports_t members, const adp_ports_t untagged);

/**
 * Reads a VLAN's member and untagged ports as sets of interface numbers.
 *
 * The driver fills both sets with physical ports. Then both are translated in place, whatever its result: after a
 * failure they hold the translation of what they held before. Ports without a map row are dropped. Driver call:
 * user_vlan_port_get(0, 0, vid, members, untagged).
 *
 * @param vid               VLAN id, low 16 bits used
 * @param[in,out] members   256-bit set of member interfaces
 * @param[in,out] untagged  256-bit set of untagged interfaces
 * @return the driver's result
 */
adp_status_t adp_vlan_port_get(uint32_t vid, ADP_INOUT adp_ports_t members, ADP_INOUT adp_ports_t untagged);

/**
 * Sets an interface's port VLAN id (PVID).
 *
 * Driver call for a user port: user_port_untagged_vlan_set(0, 0, port, vid). On a group it is made for each active
 * member, but the port is the translation of the group itself, -1: a driver that checks its ports refuses the call.
 *
 * @param intf  user port or aggregation interface
 * @param vid   VLAN id, low 16 bits used
 * @return user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
 *         outside 1..8
 */
adp_status_t adp_intf_pivd_set(adp_intf_t intf, uint32_t vid);

/**
 * Reads an interface's port VLAN id (PVID).
 *
 * Driver call: user_port_untagged_vlan_get(0, 0, port, vid), on a group for its management interface, without one for
 * its lowest configured member.
 *
 * @param intf      user port or aggregation interface
 * @param[out] vid  written by the driver: VLAN id
 * @return 0; 102 when the driver call failed; 203 for a group with neither; 201 for another type, -1 for a group
 *         outside 1..8
 */
adp_status_t adp_intf_pivd_get(adp_intf_t intf, uint32_t *vid);

ADP_END_DECLS
