/**
 * @file vlan_tag.h
 * Handling of VLAN tags: translation on ingress and egress, VLANs by IPv4 subnet, double tags and tag protocol
 * identifiers (IEEE 802.1Q, provider bridges).
 *
 * The library keeps no table. It cuts VLAN ids, TPIDs and modes to their low 16 bits and passes all other arguments
 * through; "passed through" marks them below. Their meaning is the driver's, and so are their names: those of the
 * driver call. On the virtual device kind and action are 0, a priority is 0..7 or all ones to keep the frame's, a port
 * of the type adp_word_t is a physical port, and an address or mask is a number, 192.0.2.0 being 0xC0000200.
 *
 * Every driver call is made with unit 0 and a second argument 0, which the descriptions leave out. "The driver's
 * result" is its result unchanged.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/** An interface's double-tag modes: the driver's codes, as the virtual device has them. */
enum adp_double_tag_mode {
    ADP_DOUBLE_TAG_OFF = 0,      /**< one tag, which names the VLAN */
    ADP_DOUBLE_TAG_PROVIDER = 1, /**< towards the provider: the outer tag is the service's */
    ADP_DOUBLE_TAG_CUSTOMER = 2  /**< towards the customer: all tags are payload */
};

#define ADP_KEEP_PRIORITY 0xFFFFFFFFu /**< priority of an entry on the virtual device: the frame's stays */

/**
 * Adds an ingress translation: frames that a port receives in one VLAN enter another.
 *
 * Driver call: user_vlan_translate_add(kind, port, action, old_vid, new_vid, priority).
 *
 * @param kind      passed through: how the entry is found; 0 on the virtual device
 * @param port      passed through; the physical port on the virtual device
 * @param action    passed through: what becomes of the tag; 0 on the virtual device
 * @param old_vid   VLAN id of the received tag, low 16 bits used
 * @param new_vid   VLAN id that the frame gets, low 16 bits used
 * @param priority  passed through: 802.1p priority that the frame gets, 0..7 or ADP_KEEP_PRIORITY on the virtual device
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_add(adp_word_t kind, adp_word_t port, adp_word_t action, uint32_t old_vid,
                                    uint32_t new_vid, adp_word_t priority);

/**
 * Deletes an ingress translation. Driver call: user_vlan_translate_delete(kind, port, old_vid).
 *
 * @param kind     passed through: how the entry is found; 0 on the virtual device
 * @param port     passed through; the physical port on the virtual device
 * @param old_vid  VLAN id of the received tag, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_delete(adp_word_t kind, adp_word_t port, uint32_t old_vid);

/**
 * Deletes every ingress translation. Driver call: user_vlan_translate_delete_all().
 *
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_delete_all(void);

/**
 * Reads an ingress translation. Driver call: user_vlan_translate_get(port, old_vid, new_vid, priority).
 *
 * @param port           passed through; the physical port on the virtual device
 * @param old_vid        VLAN id of the received tag, low 16 bits used
 * @param[out] new_vid   written by the driver: VLAN id that the frame gets
 * @param[out] priority  written by the driver: 0..7, or ADP_KEEP_PRIORITY on the virtual device
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_get(adp_word_t port, uint32_t old_vid, uint32_t *new_vid, uint32_t *priority);

/**
 * Adds an egress translation: frames of one VLAN leave a port in another.
 *
 * Driver call: user_vlan_translate_egress_add(kind, port, old_vid, new_vid, priority).
 *
 * @param kind      passed through: how the entry is found; 0 on the virtual device
 * @param port      passed through; the physical port on the virtual device
 * @param old_vid   VLAN id inside the switch, low 16 bits used
 * @param new_vid   VLAN id of the sent tag, low 16 bits used
 * @param priority  passed through: 802.1p priority of the sent tag, 0..7 or ADP_KEEP_PRIORITY on the virtual device
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_egress_add(adp_word_t kind, adp_word_t port, uint32_t old_vid, uint32_t new_vid,
                                           adp_word_t priority);

/**
 * Deletes an egress translation. Driver call: user_vlan_translate_egress_delete(kind, port, old_vid).
 *
 * @param kind     passed through: how the entry is found; 0 on the virtual device
 * @param port     passed through; the physical port on the virtual device
 * @param old_vid  VLAN id inside the switch, low 16 bits used
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_egress_delete(adp_word_t kind, adp_word_t port, uint32_t old_vid);

/**
 * Deletes every egress translation. Driver call: user_vlan_translate_egress_delete_all().
 *
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_egress_delete_all(void);

/**
 * Reads an egress translation. Driver call: user_vlan_translate_egress_get(port, old_vid, new_vid, priority).
 *
 * @param port           passed through; the physical port on the virtual device
 * @param old_vid        VLAN id inside the switch, low 16 bits used
 * @param[out] new_vid   written by the driver: VLAN id of the sent tag
 * @param[out] priority  written by the driver: 0..7, or ADP_KEEP_PRIORITY on the virtual device
 * @return the driver's result
 */
adp_status_t adp_vlan_translate_egress_get(adp_word_t port, uint32_t old_vid, uint32_t *new_vid, uint32_t *priority);

/**
 * Puts the untagged frames of an IPv4 subnet into a VLAN.
 *
 * Driver call: user_vlan_ip4_add(port, address, mask, vid, priority, flags).
 *
 * @param port      passed through; the physical port on the virtual device
 * @param address   passed through: the subnet's IPv4 address, a number on the virtual device: 0xC0000200 for 192.0.2.0
 * @param mask      passed through: the subnet's mask, in the same form: 0xFFFFFF00 for 24 bits
 * @param vid       VLAN id, low 16 bits used
 * @param priority  passed through: 802.1p priority that the frame gets, 0..7 or ADP_KEEP_PRIORITY on the virtual device
 * @param flags     passed through; 0 on the virtual device
 * @return the driver's result
 */
adp_status_t adp_vlan_ip4_add(adp_word_t port, adp_word_t address, adp_word_t mask, uint32_t vid, adp_word_t priority,
                              adp_word_t flags);

/**
 * Deletes a subnet's entry. Driver call: user_vlan_ip4_delete(port, address, mask).
 *
 * @param port     passed through; the physical port on the virtual device
 * @param address  passed through: the subnet's IPv4 address, a number on the virtual device: 0xC0000200 for 192.0.2.0
 * @param mask     passed through: the subnet's mask, in the same form: 0xFFFFFF00 for 24 bits
 * @return the driver's result
 */
adp_status_t adp_vlan_ip4_delete(adp_word_t port, adp_word_t address, adp_word_t mask);

/**
 * Deletes every subnet's entry. Driver call: user_vlan_ip4_delete_all().
 *
 * @return the driver's result
 */
adp_status_t adp_vlan_ip4_delete_all(void);

/**
 * Adds a double-tag entry to an interface: frames with a customer's VLAN id get the service's tag in front.
 *
 * Driver call: user_vlan_dtag_add(kind, port, action, inner_vid, outer_vid, priority), on a group for each active
 * member.
 *
 * @param kind       passed through: how the entry is found; 0 on the virtual device
 * @param intf       user port or aggregation interface
 * @param action     passed through: what becomes of the tags; 0 on the virtual device
 * @param inner_vid  the customer's VLAN id, low 16 bits used
 * @param outer_vid  the service's VLAN id, low 16 bits used
 * @param priority   passed through: 802.1p priority of the service's tag, 0..7 or ADP_KEEP_PRIORITY on the virtual
 *                   device
 * @return user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
 *         outside 1..8
 */
adp_status_t adp_vlan_dtag_add(adp_word_t kind, adp_intf_t intf, adp_word_t action, uint32_t inner_vid,
                               uint32_t outer_vid, adp_word_t priority);

/**
 * Deletes a double-tag entry from an interface.
 *
 * Driver call: user_vlan_dtag_delete(kind, port, inner_vid), on a group for each active member.
 *
 * @param kind       passed through: how the entry is found; 0 on the virtual device
 * @param intf       user port or aggregation interface
 * @param inner_vid  the customer's VLAN id, low 16 bits used
 * @return user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
 *         outside 1..8
 */
adp_status_t adp_vlan_dtag_delete(adp_word_t kind, adp_intf_t intf, uint32_t inner_vid);

/**
 * Deletes every double-tag entry. Driver call: user_vlan_dtag_delete_all().
 *
 * @return the driver's result
 */
adp_status_t adp_vlan_dtag_delete_all(void);

/**
 * Reads a double-tag entry of an interface.
 *
 * Driver call: user_vlan_dtag_get(port, inner_vid, outer_vid, priority), on a group for its management interface.
 *
 * @param intf            user port or aggregation interface
 * @param inner_vid       the customer's VLAN id, low 16 bits used
 * @param[out] outer_vid  the service's VLAN id, written by the driver
 * @param[out] priority   written by the driver: 0..7, or ADP_KEEP_PRIORITY on the virtual device
 * @return 0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_vlan_dtag_get(adp_intf_t intf, uint32_t inner_vid, uint32_t *outer_vid, uint32_t *priority);

/**
 * Sets an interface's double-tag mode.
 *
 * Driver call: user_port_dtag_mode_set(port, mode), on a group for each active member.
 *
 * @param intf  user port or aggregation interface
 * @param mode  enum adp_double_tag_mode, low 16 bits used
 * @return user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
 *         outside 1..8
 */
adp_status_t adp_double_tag_set(adp_intf_t intf, uint32_t mode);

/**
 * Reads an interface's double-tag mode.
 *
 * Driver call: user_port_dtag_mode_get(port, mode), on a group for its management interface. Without one, unlike in the
 * other calls, nothing is read: the result is 0 and the output stays as it was.
 *
 * @param intf       user port or aggregation interface
 * @param[out] mode  written by the driver, enum adp_double_tag_mode
 * @return 0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_double_tag_get(adp_intf_t intf, uint32_t *mode);

/**
 * Sets an interface's tag protocol identifier (TPID).
 *
 * Driver call: user_port_tpid_set(port, tpid, option), on a group for each active member.
 *
 * @param intf    user port or aggregation interface
 * @param tpid    EtherType of the outer tag, low 16 bits used
 * @param option  passed through; ignored by the virtual device
 * @return user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group
 *         outside 1..8
 */
adp_status_t adp_double_tag_tipd_set(adp_intf_t intf, uint32_t tpid, adp_word_t option);

/**
 * Reads an interface's tag protocol identifier (TPID).
 *
 * Driver call: user_port_tpid_get(port, tpid), on a group for its management interface.
 *
 * @param intf       user port or aggregation interface
 * @param[out] tpid  EtherType of the outer tag, written by the driver
 * @return 0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_double_tag_tpid_get(adp_intf_t intf, uint32_t *tpid);

ADP_END_DECLS
