/**
 * @file dot1x.h
 * Port and MAC authorisation (IEEE 802.1X): the authenticator's decisions, carried into the switch.
 *
 * A port is authorised by its learning mode, an address by a static entry. The library keeps no state and undoes
 * nothing after a failure. It reaches the MAC table through the device's own services.
 *
 * In learning mode 8 the switch hands frames from unknown sources to the CPU, where every program that receives frames
 * gets them. Such a program has to look at the port's mode, adp_intf_learn_get(): in this mode it must not act on the
 * frame of a station without an entry on the port, see adp_get_intf_by_addr(), except to let the station in. Otherwise
 * a station that was not let in reaches the CPU's services, and through a program that passes frames on, other hosts.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/** A port's mode. */
enum adp_dot1x_mode {
    ADP_DOT1X_UNAUTHORIZED = 0, /**< learning mode 8; learned addresses are flushed */
    ADP_DOT1X_AUTHORIZED = 1,   /**< learning mode 5, or 8 with the learn flag; nothing is flushed */
    ADP_DOT1X_BLOCKED = 2       /**< learning mode 0; learned addresses are flushed */
};

/**
 * Sets a port's mode.
 *
 * Calls adp_intf_learn_set(intf, learning mode), then in modes 0 and 2 the service set_mac_tbl_clear_by_port(intf, 7,
 * 3).
 *
 * @param intf    user port or aggregation interface
 * @param mode    enum adp_dot1x_mode, low byte used
 * @param unused  not used
 * @param learn   in mode 1 non-zero for learning mode 8, 0 for 5
 * @return 0; 401 when the learning mode could not be set, and nothing is flushed; 402 when the flush failed: the new
 *         learning mode stays; 403 for another mode, with nothing changed
 */
adp_status_t adp_set_port_dot1x_mode(int32_t intf, uint32_t mode, uint32_t unused, uint32_t learn);

/**
 * Authorises a port (mode 1) or withdraws its authorisation (mode 0). Otherwise as adp_set_port_dot1x_mode().
 *
 * @param intf   user port or aggregation interface
 * @param state  1 in the low byte for authorised
 * @param learn  for an authorised port non-zero for learning mode 8, 0 for 5
 * @return as adp_set_port_dot1x_mode()
 */
adp_status_t adp_set_port_dot1x_authorized_state(int32_t intf, uint32_t state, uint32_t learn);

/**
 * Authorises a MAC address on a port, or withdraws its authorisation.
 *
 * Service calls: onu_mac2str(mac); del_mac_addr(text, vid, 1), result ignored; if authorised,
 * get_group_by_interface(intf, &group) and add_mac_static_addr(text, target, vid, 1). The target is the port. For a
 * port of a group it is the lowest of the group's active members, unless the list's first slot is empty.
 *
 * @param intf        user port
 * @param vid         VLAN id, low 16 bits used
 * @param mac         MAC address
 * @param authorised  0 in the low byte withdraws the authorisation
 * @return 0; 403 with nothing changed when the address has no text form; 405 when the static entry could not be added:
 *         the address is then deleted
 */
adp_status_t adp_set_mac_dot1x_authorized_state(adp_intf_t intf, uint32_t vid, const uint8_t mac[6],
                                                uint32_t authorised);

ADP_END_DECLS
