/**
 * @file vlan_tag.h
 * Handling of VLAN tags: translation on ingress and egress, VLANs by IPv4 subnet, double tags and tag protocol
 * identifiers (IEEE 802.1Q, provider bridges).
 *
 * The library keeps no table. Arguments named by a letter belong to the driver and are passed through; those marked
 * "low 16 bits used" are cut. What the virtual device takes them for is said in its document. Every driver call is made
 * with unit 0 and a second argument 0, which the descriptions leave out. "The driver's result" means its result
 * unchanged.
 *
 * The set calls on an aggregation interface make the driver call for each non-empty slot among the first count slots of
 * the active members. The first failure ends the walk with 102 and leaves the members before it changed; without
 * members the result is 0, for a group outside 1..8 -1. The reads are answered by the group's management interface;
 * when there is none that is interface 0, which translates to the CPU port. Other interface types give 201 without a
 * driver call.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/**
 * Adds an ingress translation. Driver call: user_vlan_translate_add(a, b, c, d, e, f).
 *
 * @param a  the driver's
 * @param b  the driver's
 * @param c  the driver's
 * @param d  VLAN id, low 16 bits used
 * @param e  VLAN id, low 16 bits used
 * @param f  the driver's
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_add(adp_word_t a, adp_word_t b, adp_word_t c, uint32_t d, uint32_t e, adp_word_t f);

/**
 * Deletes an ingress translation. Driver call: user_vlan_translate_delete(a, b, c).
 *
 * @param a  the driver's
 * @param b  the driver's
 * @param c  VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_delete(adp_word_t a, adp_word_t b, uint32_t c);

/**
 * Deletes every ingress translation. Driver call: user_vlan_translate_delete_all().
 *
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_delete_all(void);

/**
 * Reads an ingress translation. Driver call: user_vlan_translate_get(a, b, c, d).
 *
 * @param a       the driver's
 * @param b       VLAN id, low 16 bits used
 * @param[out] c  written by the driver
 * @param[out] d  written by the driver
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_get(adp_word_t a, uint32_t b, uint32_t *c, uint32_t *d);

/**
 * Adds an egress translation. Driver call: user_vlan_translate_egress_add(a, b, c, d, e).
 *
 * @param a  the driver's
 * @param b  the driver's
 * @param c  VLAN id, low 16 bits used
 * @param d  VLAN id, low 16 bits used
 * @param e  the driver's
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_egress_add(adp_word_t a, adp_word_t b, uint32_t c, uint32_t d, adp_word_t e);

/**
 * Deletes an egress translation. Driver call: user_vlan_translate_egress_delete(a, b, c).
 *
 * @param a  the driver's
 * @param b  the driver's
 * @param c  VLAN id, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_egress_delete(adp_word_t a, adp_word_t b, uint32_t c);

/**
 * Deletes every egress translation. Driver call: user_vlan_translate_egress_delete_all().
 *
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_egress_delete_all(void);

/**
 * Reads an egress translation. Driver call: user_vlan_translate_egress_get(a, b, c, d).
 *
 * @param a       the driver's
 * @param b       VLAN id, low 16 bits used
 * @param[out] c  written by the driver
 * @param[out] d  written by the driver
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_egress_get(adp_word_t a, uint32_t b, uint32_t *c, uint32_t *d);

/**
 * Puts the untagged frames of an IPv4 subnet into a VLAN. Driver call: user_vlan_ip4_add(a, b, c, d, e, f).
 *
 * @param a  the driver's
 * @param b  the driver's
 * @param c  the driver's
 * @param d  VLAN id, low 16 bits used
 * @param e  the driver's
 * @param f  the driver's
 * @return the driver's result
 */
adp_status_t adp_vlan_ip4_add(adp_word_t a, adp_word_t b, adp_word_t c, uint32_t d, adp_word_t e, adp_word_t f);

/**
 * Deletes a subnet's entry. Driver call: user_vlan_ip4_delete(a, b, c).
 *
 * @param a  the driver's
 * @param b  the driver's
 * @param c  the driver's
 * @return the driver's result
 */
adp_status_t adp_vlan_ip4_delete(adp_word_t a, adp_word_t b, adp_word_t c);

/**
 * Deletes every subnet's entry. Driver call: user_vlan_ip4_delete_all().
 *
 * @return the driver's result
 */
adp_status_t adp_vlan_ip4_delete_all(void);

/**
 * Adds a double-tag entry on an interface. Driver call: user_vlan_dtag_add(a, port, b, c, d, e).
 *
 * @param a     the driver's
 * @param intf  user port or aggregation interface
 * @param b     the driver's
 * @param c     VLAN id, low 16 bits used
 * @param d     VLAN id, low 16 bits used
 * @param e     the driver's
 * @return user port: the driver's result; aggregation interface: 0, 102 or -1; another type: 201
 */
adp_status_t adp_vlan_dtag_add(adp_word_t a, adp_intf_t intf, adp_word_t b, uint32_t c, uint32_t d, adp_word_t e);

/**
 * Deletes a double-tag entry from an interface. Driver call: user_vlan_dtag_delete(a, port, c).
 *
 * @param a     the driver's
 * @param intf  user port or aggregation interface
 * @param c     VLAN id, low 16 bits used
 * @return user port: the driver's result; aggregation interface: 0, 102 or -1; another type: 201
 */
adp_status_t adp_vlan_dtag_delete(adp_word_t a, adp_intf_t intf, uint32_t c);

/**
 * Deletes every double-tag entry. Driver call: user_vlan_dtag_delete_all().
 *
 * @return the driver's result
 */
adp_status_t adp_vlan_dtag_delete_all(void);

/**
 * Reads a double-tag entry of an interface. Driver call: user_vlan_dtag_get(port, vlan, c, d).
 *
 * @param intf    user port or aggregation interface
 * @param vlan    VLAN id, low 16 bits used
 * @param[out] c  written by the driver
 * @param[out] d  written by the driver
 * @return 0; 102 when the driver call failed; without a driver call -1 for a group outside 1..8, 201 for another type
 */
adp_status_t adp_vlan_dtag_get(adp_intf_t intf, uint32_t vlan, uint32_t *c, uint32_t *d);

/**
 * Sets an interface's double-tag mode. Driver call: user_port_dtag_mode_set(port, mode).
 *
 * @param intf  user port or aggregation interface
 * @param mode  the driver's, low 16 bits used
 * @return user port: the driver's result; aggregation interface: 0, 102 or -1; another type: 201
 */
adp_status_t adp_double_tag_set(adp_intf_t intf, uint32_t mode);

/**
 * Reads an interface's double-tag mode. Driver call: user_port_dtag_mode_get(port, mode).
 *
 * @param intf       user port or aggregation interface
 * @param[out] mode  written by the driver
 * @return 0, also without a read for a group that has no management interface; 102 when the driver call failed; without
 *         a driver call -1 for a group outside 1..8, 201 for another type
 */
adp_status_t adp_double_tag_get(adp_intf_t intf, uint32_t *mode);

/**
 * Sets an interface's tag protocol identifier (TPID). Driver call: user_port_tpid_set(port, tpid, c).
 *
 * @param intf  user port or aggregation interface
 * @param tpid  EtherType of the outer tag, low 16 bits used
 * @param c     the driver's
 * @return user port: the driver's result; aggregation interface: 0, 102 or -1; another type: 201
 */
adp_status_t adp_double_tag_tipd_set(adp_intf_t intf, uint32_t tpid, adp_word_t c);

/**
 * Reads an interface's tag protocol identifier (TPID). Driver call: user_port_tpid_get(port, tpid).
 *
 * @param intf       user port or aggregation interface
 * @param[out] tpid  written by the driver
 * @return 0; 102 when the driver call failed; without a driver call -1 for a group outside 1..8, 201 for another type
 */
adp_status_t adp_double_tag_tpid_get(adp_intf_t intf, uint32_t *tpid);

ADP_END_DECLS
