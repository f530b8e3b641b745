/**
 * @file storm.h
 * Storm control (limits on a port's broadcast, multicast and unknown unicast frames) and the ingress limit.
 *
 * Every call begins with a device id: with 1 it returns 0 at once and does nothing, whatever its other arguments; every
 * other id is accepted and ignored. The low byte of a storm code, enum adp_storm_code, names the type of frames. The
 * driver gets its own number of the type; for any other code it gets 0.
 *
 * Rates and bursts have the driver's unit: on the virtual device kilobits per second and kilobits, or frames per second
 * and frames, see adp_set_storm_counting_mode().
 *
 * Every driver call is made with unit 0 and a second argument 0, which the descriptions leave out.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define ADP_STORM_NO_DEVICE 1u /**< device id for which nothing is done */

/** The types of frames that are limited, as the virtual device has them. */
enum adp_storm_code {
    ADP_STORM_BROADCAST = 1,       /**< broadcast frames; the driver's type 3 */
    ADP_STORM_MULTICAST = 2,       /**< multicast frames; the driver's type 2 */
    ADP_STORM_UNKNOWN_UNICAST = 4, /**< unicast frames to unknown addresses; the driver's type 4 */
    ADP_STORM_TOGETHER = 8         /**< the three together; the driver's type 1 */
};

/** What storm limits count, as the virtual device has it. */
enum adp_storm_counting {
    ADP_STORM_COUNT_OCTETS = 0, /**< octets: rates are kilobits per second, bursts kilobits */
    ADP_STORM_COUNT_FRAMES = 1  /**< frames: rates are frames per second, bursts frames */
};

/**
 * Limits an interface's frames of a storm type.
 *
 * Driver call: user_rate_bandwidth_set(port, type, rate, burst), on a group for each configured member.
 *
 * @param dev_id      1 for nothing
 * @param intf        user port or aggregation interface
 * @param storm_code  enum adp_storm_code, low byte used
 * @param rate        in the driver's unit; 0 is no limit on the virtual device
 * @param burst       in the driver's unit; 0 lets the virtual device choose
 * @return 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_set_storm_control(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t rate,
                                   uint32_t burst);

/**
 * Reads an interface's limit of a storm type.
 *
 * Driver call: user_rate_bandwidth_get(port, type, rate, burst), on a group for its management interface.
 *
 * @param dev_id      1 for nothing
 * @param intf        user port or aggregation interface
 * @param storm_code  enum adp_storm_code, low byte used
 * @param[out] rate   written by the driver, in the driver's unit; 0 is no limit on the virtual device
 * @param[out] burst  written by the driver, in the driver's unit
 * @return 0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_get_storm_control(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t *rate,
                                   uint32_t *burst);

/**
 * Selects whether a user port's limit counts frames of a storm type.
 *
 * Driver call: user_rate_stormsel_set(port, type, selected).
 *
 * @param dev_id      1 for nothing
 * @param intf        user port
 * @param storm_code  enum adp_storm_code, low byte used
 * @param selected    passed through; on the virtual device 1 counted, 0 not
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_set_storm_seltype(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t selected);

/**
 * Reads whether a user port's limit counts frames of a storm type.
 *
 * Driver call: user_rate_stormsel_get(port, type, selected).
 *
 * @param dev_id         1 for nothing
 * @param intf           user port
 * @param storm_code     enum adp_storm_code, low byte used
 * @param[out] selected  written by the driver; on the virtual device 1 counted, 0 not
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_get_storm_seltype(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t *selected);

/**
 * Turns a user port's storm control of a type on or off.
 *
 * Driver call: user_rate_stormControlEnable_set(port, type, enable).
 *
 * @param dev_id      1 for nothing
 * @param intf        user port
 * @param storm_code  enum adp_storm_code, low byte used
 * @param enable      0 off, otherwise on
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_set_stormcontrol_enable(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t enable);

/**
 * Reads whether a user port's limit was exceeded. The driver gets the code of the caller, not its own type.
 *
 * Driver call: user_rate_stormExceedFlag_get(port, storm_code, flag).
 *
 * @param dev_id      1 for nothing
 * @param intf        user port
 * @param storm_code  enum adp_storm_code, low byte used
 * @param[out] flag   written by the driver; 1 exceeded on the virtual device
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_get_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf, uint32_t storm_code, uint32_t *flag);

/**
 * Clears an interface's exceeded flags.
 *
 * Driver call: user_rate_stormExceedFlag_reset(port), on a group for each non-empty one of the first eight slots of the
 * configured members, whatever their count.
 *
 * @param dev_id  1 for nothing
 * @param intf    user port or aggregation interface
 * @return 0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8
 */
adp_status_t adp_reset_storm_exceed_flag(uint32_t dev_id, adp_intf_t intf);

/**
 * Sets how storm limits count, for all ports. Driver call: user_rate_stormCountMode_set(storm_code, mode).
 *
 * @param dev_id      1 for nothing
 * @param storm_code  passed through, low byte used; enum adp_storm_code, or 0 for all types on the virtual device
 * @param unused      not used
 * @param mode        passed through; enum adp_storm_counting
 * @return 0; 102 when the driver call failed
 */
adp_status_t adp_set_storm_counting_mode(uint32_t dev_id, uint32_t storm_code, uint32_t unused, uint32_t mode);

/**
 * Reads how storm limits count. Driver call: user_rate_stormCountMode_get(storm_code, mode).
 *
 * @param dev_id      1 for nothing
 * @param storm_code  passed through whole; enum adp_storm_code, or 0 for all types on the virtual device
 * @param unused      not used
 * @param[out] mode   written by the driver, enum adp_storm_counting
 * @return 0; 102 when the driver call failed
 */
adp_status_t adp_get_storm_counting_mode(uint32_t dev_id, uint32_t storm_code, uint32_t unused, uint32_t *mode);

/**
 * Limits what a user port receives. Driver call: user_port_ingress_rate_set(port, rate, burst).
 *
 * @param dev_id  1 for nothing
 * @param intf    user port
 * @param rate    in the driver's unit; kilobits per second on the virtual device, where 0 is no limit
 * @param burst   in the driver's unit; kilobits on the virtual device, which chooses for 0
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_set_ingress_limit(uint32_t dev_id, adp_intf_t intf, uint32_t rate, uint32_t burst);

/**
 * Reads a user port's ingress limit. Driver call: user_port_ingress_rate_get(port, rate, burst).
 *
 * @param dev_id      1 for nothing
 * @param intf        user port
 * @param[out] rate   written by the driver, in its unit; kilobits per second on the virtual device, where 0 is no limit
 * @param[out] burst  written by the driver, in its unit; kilobits on the virtual device
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_get_ingress_limit(uint32_t dev_id, adp_intf_t intf, uint32_t *rate, uint32_t *burst);

ADP_END_DECLS
