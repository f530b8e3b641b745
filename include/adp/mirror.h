/**
 * @file mirror.h
 * Mirroring: copies of a port's frames, or of the frames that a rule selects, on another port.
 *
 * Sessions are numbered from 1; the driver counts them from 0, so it gets the number minus 1. An interface that does
 * not translate, such as an aggregation interface, is passed on to the driver as physical port -1. Driver calls are
 * made with unit 0 and a second argument 0, which the descriptions leave out.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define ADP_MIRROR_INGRESS 1u /**< direction flag: frames that the source port receives */
#define ADP_MIRROR_EGRESS 2u  /**< direction flag: frames that the source port sends */

/**
 * Copies a port's frames to another port.
 *
 * Driver call: user_mirror_port_set(source port, session - 1, destination port, mode), mode 2 for ingress, 4 for
 * egress, 6 for both.
 *
 * @param source       user port whose frames are copied
 * @param destination  user port that sends the copies
 * @param directions   ADP_MIRROR_... flags; other bits are ignored
 * @param session      mirror session, from 1; 1..4 on the virtual device
 * @return the driver's result; 0 without a driver call when there is no direction flag
 */
adp_status_t adp_add_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t directions, uint32_t session);

/**
 * Stops copying a port's frames.
 *
 * Driver call: user_mirror_port_set(source port, session - 1, destination port, 0).
 *
 * @param source       user port whose frames are copied
 * @param destination  user port that sends the copies
 * @param unused       not used
 * @param session      mirror session, from 1; 1..4 on the virtual device
 * @return the driver's result
 */
adp_status_t adp_del_port_mirror(adp_intf_t source, adp_intf_t destination, uint32_t unused, uint32_t session);

/**
 * Sets the port to which a session copies the frames that field-processor rules select.
 *
 * Driver call: user_set_flow_mirror(session - 1, port).
 *
 * @param intf     user port that sends the copies
 * @param session  mirror session, from 1; 1..4 on the virtual device
 * @return the driver's result
 */
adp_status_t adp_set_flow_mirror(adp_intf_t intf, uint32_t session);

/**
 * Disables or enables a session. Driver call: user_set_mirror_disable(session - 1, disable).
 *
 * @param session  mirror session, from 1; 1..4 on the virtual device
 * @param unused2  not used
 * @param unused3  not used
 * @param disable  passed through; on the virtual device 0 enables, any other value disables
 * @return the driver's result
 */
adp_status_t adp_set_mirror_disable(uint32_t session, uint32_t unused2, uint32_t unused3, adp_word_t disable);

/**
 * Asks whether adp_set_mirror_disable() with the same arguments would succeed. Driver call:
 * user_check_set_mirror_disable(session - 1, disable).
 *
 * @param session  mirror session, from 1; 1..4 on the virtual device
 * @param unused2  not used
 * @param unused3  not used
 * @param disable  passed through; on the virtual device 0 enables, any other value disables
 * @return the driver's result
 */
adp_status_t adp_check_set_mirror_disable(uint32_t session, uint32_t unused2, uint32_t unused3, adp_word_t disable);

ADP_END_DECLS
