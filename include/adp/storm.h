/**
 * @file storm.h
 * Storm control (limits on a port's broadcast, multicast and unknown unicast frames) and the ingress limit.
 *
 * Every call begins with a devId: 1 means that there is nothing to do, and the call returns 0 at once, whatever its
 * other arguments; every other value is accepted and ignored. A storm code names the type of frames in its low byte: 1,
 * 2, 4 and 8 are the driver's types 3, 2, 4 and 1, all others its type 0. Rates and bursts are the driver's.
 *
 * Every driver call is made with unit 0 and a second argument 0, which the descriptions leave out. Interface types
 * other than user port and aggregation interface give 201 without a driver call, a group outside 1..8 whose tables are
 * looked at -1 likewise.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define ADP_STORM_NO_DEVICE 1u /**< devId for which nothing is done */

/**
 * Limits an interface's frames of a storm type.
 *
 * Driver call: user_rate_bandwidth_set(port, type, rate, burst), on a group for each non-empty slot among the first
 * count slots of the configured members.
 *
 * @param dev_id  1 for nothing
 * @param intf    user port or aggregation interface
 * @param code    storm code, low byte used
 * @param rate    the driver's unit; kilobits per second on the virtual device
 * @param burst   the driver's unit; kilobits on the virtual device
 * @return 0; 102 when a driver call failed: members before that one keep the new limit; 201, -1
 */
adp_status_t adp_set_storm_control(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t rate, uint32_t burst);

/**
 * Reads an interface's limit of a storm type, of a group its management interface's (without one the CPU port's).
 *
 * Driver call: user_rate_bandwidth_get(port, type, rate, burst).
 *
 * @param dev_id      1 for nothing
 * @param intf        user port or aggregation interface
 * @param code        storm code, low byte used
 * @param[out] rate   written by the driver
 * @param[out] burst  written by the driver
 * @return 0; 102 when the driver call failed; 201, -1
 */
adp_status_t adp_get_storm_control(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t *rate, uint32_t *burst);

/**
 * Selects whether a user port's limit counts frames of a storm type. Driver call: user_rate_stormsel_set(port, type,
 * value).
 *
 * @param dev_id  1 for nothing
 * @param intf    user port
 * @param code    storm code, low byte used
 * @param value   the driver's
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201
 */
adp_status_t adp_set_storm_seltype(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t value);

/**
 * Reads that selection. Driver call: user_rate_stormsel_get(port, type, value).
 *
 * @param dev_id      1 for nothing
 * @param intf        user port
 * @param code        storm code, low byte used
 * @param[out] value  written by the driver
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201
 */
adp_status_t adp_get_storm_seltype(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t *value);

/**
 * Turns a user port's storm control of a type on or off. Driver call: user_rate_stormControlEnable_set(port, type,
 * enable).
 *
 * @param dev_id  1 for nothing
 * @param intf    user port
 * @param code    storm code, low byte used
 * @param enable  0 off, otherwise on
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201
 */
adp_status_t adp_set_stormcontrol_enable(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t enable);

/**
 * Reads whether a user port's limit was exceeded. Driver call: user_rate_stormExceedFlag_get(port, code, flag), with
 * the caller's code untranslated.
 *
 * @param dev_id     1 for nothing
 * @param intf       user port
 * @param code       storm code, low byte used
 * @param[out] flag  written by the driver
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201
 */
adp_status_t adp_get_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf, uint32_t code, uint32_t *flag);

/**
 * Clears an interface's exceeded flags.
 *
 * Driver call: user_rate_stormExceedFlag_reset(port), on a group for each non-empty one of the first eight slots of the
 * configured members, whatever their count.
 *
 * @param dev_id  1 for nothing
 * @param intf    user port or aggregation interface
 * @return 0; 102 when a driver call failed, members behind that one keep their flags; 201, -1
 */
adp_status_t adp_reset_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf);

/**
 * Sets how storm limits count. Driver call: user_rate_stormCountMode_set(a, c).
 *
 * @param dev_id  1 for nothing
 * @param a       the driver's, low byte used
 * @param unused  not used
 * @param c       the driver's
 * @return 0; 102 when the driver call failed
 */
adp_status_t adp_set_storm_counting_mode(uint32_t dev_id, uint32_t a, uint32_t unused, uint32_t c);

/**
 * Reads how storm limits count. Driver call: user_rate_stormCountMode_get(a, c).
 *
 * @param dev_id  1 for nothing
 * @param a       the driver's, whole
 * @param unused  not used
 * @param[out] c  written by the driver
 * @return 0; 102 when the driver call failed
 */
adp_status_t adp_get_storm_counting_mode(uint32_t dev_id, uint32_t a, uint32_t unused, uint32_t *c);

/**
 * Limits what a user port receives. Driver call: user_port_ingress_rate_set(port, rate, burst).
 *
 * @param dev_id  1 for nothing
 * @param intf    user port
 * @param rate    the driver's unit; kilobits per second on the virtual device
 * @param burst   the driver's unit; kilobits on the virtual device
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201
 */
adp_status_t adp_set_ingress_limit(uint32_t dev_id, adp_intf_t intf, uint32_t rate, uint32_t burst);

/**
 * Reads a user port's ingress limit. Driver call: user_port_ingress_rate_get(port, rate, burst).
 *
 * @param dev_id      1 for nothing
 * @param intf        user port
 * @param[out] rate   written by the driver
 * @param[out] burst  written by the driver
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201
 */
adp_status_t adp_get_ingress_limit(uint32_t dev_id, adp_intf_t intf, uint32_t *rate, uint32_t *burst);

ADP_END_DECLS
