/**
 * @file qos.h
 * Quality of service: egress queues, their scheduling and shaping here; storm control and priority maps in headers of
 * their own, which this one includes.
 *
 * Every driver call is made with unit 0 and a second argument 0, which the descriptions leave out, except where they
 * say "no unit". No call here reaches a group's members.
 */
#pragma once

#include <adp/priority.h>
#include <adp/storm.h>
#include <adp/types.h>

ADP_BEGIN_DECLS

#define ADP_QUEUES 8 /**< egress queues of a port */

/** A port's scheduling modes: the driver's codes, as the virtual device has them. 3 is refused by the library. */
enum adp_scheduling_mode {
    ADP_SCHEDULING_STRICT = 0,      /**< the highest queue that has a frame */
    ADP_SCHEDULING_ROUND_ROBIN = 1, /**< a frame of each queue in turn */
    ADP_SCHEDULING_WEIGHTED = 2     /**< each queue in turn, by its weight */
};

/** A weight for each queue, from queue 0 on. Passed by value. */
typedef struct {
    uint32_t weight[ADP_QUEUES]; /**< 0..127 on the virtual device */
} adp_queue_weights_t;

/**
 * Initialises quality of service, once: eight queues and the driver's defaults.
 *
 * Driver calls, each made whatever the ones before it returned: user_cosq_config_set(8); without arguments
 * user_qos_default_cos_src_init(), user_qos_remark_inner_tag_src_init(), user_qos_trust_sel_group_init(),
 * user_field_meter_ifg_exclude_init(), user_qos_cpu_weight_init().
 *
 * @return 0; 102 when the first one failed
 */
adp_status_t adp_qos_init(void);

/**
 * Sets a user port's scheduling mode.
 *
 * Driver call: user_cosq_port_sched_set(mask, mode, eight zero weights, 0). The mask has the bit of the interface
 * number, not of the physical port, and none for interface 32 and above.
 *
 * @param intf  user port
 * @param mode  enum adp_scheduling_mode; 3 is refused
 * @return 501 for mode 3, whatever the interface; 0; 102 when the driver call failed, and without one for an
 *         aggregation interface; 201 for another type
 */
adp_status_t adp_set_port_queue_sch_mode(adp_intf_t intf, uint32_t mode);

/**
 * Maps a priority to a queue on a user port, or writes the port's queue weights.
 *
 * Driver call for a mapping: user_cosq_port_mapping_set(mask, first weight, queue). Driver calls for weights:
 * user_cosq_port_sched_get(mask, mode, weights, delay) reads the scheduler into the caller's own block of weights, and
 * user_cosq_port_sched_set(mask, mode, weights, delay) writes that back: a driver that fills the block gets its old
 * weights again. The mask is that of adp_set_port_queue_sch_mode().
 *
 * @param intf        user port
 * @param queue       queue of a mapping, 0..7; otherwise not used
 * @param is_mapping  low byte used: 0 writes the weights, otherwise the call maps a priority
 * @param weights     a weight for each queue; of a mapping the first one is the priority
 * @return 0; 102 when a driver call failed (nothing is written after a failed read), and without one for an aggregation
 *         interface; 201 for another type
 */
adp_status_t adp_set_queue_weight_pri(adp_intf_t intf, uint32_t queue, uint32_t is_mapping,
                                      adp_queue_weights_t weights);

/**
 * Sets the weight of a port's queue.
 *
 * Driver call: user_qos_schedule_set(port, queue, weight, flags), no unit, its result ignored.
 *
 * @param port    passed through; the physical port on the virtual device
 * @param queue   passed through; 0..7 on the virtual device
 * @param weight  passed through; 0..127 on the virtual device
 * @param flags   passed through; ignored by the virtual device
 * @return 0
 */
adp_status_t adp_cosq_sched_set(uint32_t port, uint32_t queue, uint32_t weight, uint32_t flags);

/**
 * Reads the weight of a port's queue.
 *
 * Driver call: user_qos_schedule_get(port, queue, weight, flags), no unit, its result ignored.
 *
 * @param port         passed through; the physical port on the virtual device
 * @param queue        passed through; 0..7 on the virtual device
 * @param[out] weight  set to 0, then written by the driver; 0..127 on the virtual device
 * @param flags        passed through; ignored by the virtual device
 * @return 0
 */
adp_status_t adp_cosq_sched_get(uint32_t port, uint32_t queue, uint32_t *weight, uint32_t flags);

/**
 * Shapes what a user port sends. Driver call: user_port_egress_rate_set(port, rate, burst).
 *
 * @param intf   user port
 * @param rate   in the driver's unit; kilobits per second on the virtual device, where 0 is no limit
 * @param burst  in the driver's unit; kilobits on the virtual device, which chooses for 0
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_set_port_egress_shaper(adp_intf_t intf, uint32_t rate, uint32_t burst);

/**
 * Reads a user port's shaper. Driver call: user_port_egress_rate_get(port, rate, burst).
 *
 * @param intf        user port
 * @param[out] rate   written by the driver, in its unit; kilobits per second on the virtual device, where 0 is no limit
 * @param[out] burst  written by the driver, in its unit; kilobits on the virtual device
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_get_port_egress_shaper(adp_intf_t intf, uint32_t *rate, uint32_t *burst);

/**
 * Does nothing: the library does not set the queues' drop method.
 *
 * @return 0
 */
adp_status_t adp_set_queue_drop_method(void);

/**
 * Does nothing: the library does not set the queues' WRED drop probability.
 *
 * @return 0
 */
adp_status_t adp_set_queue_wred_drop_probability(void);

/**
 * Does nothing: the library does not shape single queues.
 *
 * @return 0
 */
adp_status_t adp_set_queue_shaper(void);

/**
 * Does nothing: the library does not shape single queues.
 *
 * @return 0
 */
adp_status_t adp_get_queue_shaper(void);

ADP_END_DECLS
