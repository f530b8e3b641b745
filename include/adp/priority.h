/**
 * @file priority.h
 * Priority maps: which priority and queue a frame gets from its 802.1p priority (IEEE 802.1Q), its DSCP (RFC 2474) or
 * its port.
 *
 * Driver calls are made with unit 0 and a second argument 0, which the descriptions leave out, except where they say
 * "no unit". A call that writes or reads a map stops at the first failing driver call; entries before it stay written.
 * "The driver's result" is its result unchanged. "Passed through" marks an argument whose meaning is the driver's, and
 * so is its name.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define ADP_PRIORITIES 8  /**< 802.1p priorities 0..7 */
#define ADP_DSCP_COUNT 64 /**< DSCP values 0..63 */

#define ADP_QUEUE_OF_CHIP 0xFFFFFFFFu /**< queue: the chip's map holds for the port again; on the virtual device */
#define ADP_DSCP_ALL (-1)             /**< dscp: every row; on the virtual device */
#define ADP_DSCP_POWER_ON (-1)        /**< mapped: the row as at power-on; on the virtual device */

/** The types of map. Each call acts on its own type only. */
enum adp_map_type {
    ADP_MAP_DOT1P = 0, /**< from the 802.1p priority */
    ADP_MAP_DSCP = 1,  /**< from the DSCP */
    ADP_MAP_NONE = 2   /**< accepted, needs nothing on this chip */
};

/** Which priority of its frames a port trusts: the driver's codes, as the virtual device has them. */
enum adp_trust_mode {
    ADP_TRUST_PORT = 0,       /**< none: the port's own priority */
    ADP_TRUST_TAG = 1,        /**< the tag's */
    ADP_TRUST_DSCP = 2,       /**< the DSCP's */
    ADP_TRUST_DSCP_OR_TAG = 3 /**< the DSCP's, for other frames than IP packets the tag's */
};

/** A row of an 802.1p map, by priority. */
typedef struct {
    uint32_t queue;  /**< queue of the priority */
    uint32_t unused; /**< not read, not written */
} adp_dot1p_map_entry_t;

/** A row of a DSCP map, by DSCP. */
typedef struct {
    uint8_t mapped;   /**< DSCP that the frame leaves with */
    uint8_t priority; /**< priority 0..7 */
    uint8_t unused;   /**< not read, not written */
} adp_dscp_map_entry_t;

/**
 * Writes the 802.1p map. Driver call for priorities 0 to 7: user_cosq_mapping_set(priority, queue).
 *
 * @param map_type  enum adp_map_type
 * @param entries   the map
 * @return 0, for type 2 without a driver call; 101 for any other type than 0 and 2; 102 when a driver call failed
 */
adp_status_t adp_create_dot1p_map(uint32_t map_type, const adp_dot1p_map_entry_t entries[ADP_PRIORITIES]);

/**
 * Reads the 802.1p map. Driver call for priorities 0 to 7: user_cosq_mapping_get(priority, queue).
 *
 * @param map_type         enum adp_map_type
 * @param[in,out] entries  the queues are written by the driver, the unused words left alone
 * @return 0, for type 2 without a driver call; 101 for any other type than 0 and 2; 102 when a driver call failed
 */
adp_status_t adp_get_dot1p_map(uint32_t map_type, ADP_INOUT adp_dot1p_map_entry_t entries[ADP_PRIORITIES]);

/**
 * Restores the default 802.1p map: priorities 0 and 1 to queue 0, 2 and 3 to 1, 4 and 5 to 2, 6 and 7 to 3.
 *
 * Driver call for priorities 0 to 7: user_cosq_mapping_set(priority, queue).
 *
 * @param map_type  enum adp_map_type
 * @return 0, for type 2 without a driver call; 101 for any other type than 0 and 2; 102 when a driver call failed
 */
adp_status_t adp_delete_dot1p_map(uint32_t map_type);

/**
 * Writes the DSCP map of all ports. Driver call for DSCP 0 to 63: user_port_dscp_map_set(-1, dscp, mapped, priority).
 *
 * @param map_type  enum adp_map_type
 * @param entries   the map
 * @return 0, for type 2 without a driver call; 101 for any other type than 1 and 2; 102 when a driver call failed
 */
adp_status_t adp_create_dscp_map(uint32_t map_type, const adp_dscp_map_entry_t entries[ADP_DSCP_COUNT]);

/**
 * Reads the DSCP map. Driver call for DSCP 0 to 63: user_port_dscp_map_get(-1, dscp, mapped, priority).
 *
 * @param map_type         enum adp_map_type
 * @param[in,out] entries  mapped and priority are written by the driver, the unused bytes left alone
 * @return 0, for type 2 without a driver call; 101 for any other type than 1 and 2; 102 when a driver call failed
 */
adp_status_t adp_get_dscp_map(uint32_t map_type, ADP_INOUT adp_dscp_map_entry_t entries[ADP_DSCP_COUNT]);

/**
 * Restores the default DSCP map. Driver call, 64 times the same: user_port_dscp_map_set(-1, -1, -1, 0).
 *
 * @param map_type  enum adp_map_type
 * @return 0, for type 2 without a driver call; 101 for any other type than 1 and 2; 102 when a driver call failed
 */
adp_status_t adp_delete_dscp_map(uint32_t map_type);

/**
 * Assigns a priority to a user port's untagged frames.
 *
 * Driver call for type 2: user_port_untagged_priority_set(port, priority).
 *
 * @param map_type  enum adp_map_type
 * @param intf      user port
 * @param unused3   not used
 * @param unused4   not used
 * @param unused5   not used
 * @param priority  0..7, low byte used
 * @return 0, for types 0 and 1 without a driver call; 101 for a type above 2; for type 2 102 when the driver call
 *         failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_add_dot1p_assign(uint32_t map_type, adp_intf_t intf, uint32_t unused3, uint32_t unused4,
                                  uint32_t unused5, uint32_t priority);

/**
 * Sets the priority of a user port's untagged frames back to 0.
 *
 * Driver call for type 2: user_port_untagged_priority_set(port, 0).
 *
 * @param map_type  enum adp_map_type
 * @param intf      user port
 * @param unused3   not used
 * @param unused4   not used
 * @param unused5   not used
 * @param unused6   not used
 * @return 0, for all types but 2 without a driver call; for type 2 as adp_add_dot1p_assign()
 */
adp_status_t adp_del_dot1p_assign(uint32_t map_type, adp_intf_t intf, uint32_t unused3, uint32_t unused4,
                                  uint32_t unused5, uint32_t unused6);

/**
 * Sets which priority of its frames a user port trusts. Driver call: user_port_dscp_map_mode_set(port, mode).
 *
 * @param intf  user port
 * @param mode  enum adp_trust_mode
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_set_port_pri_trust_mode(adp_intf_t intf, uint32_t mode);

/**
 * Reads which priority of its frames a user port trusts. Driver call: user_port_dscp_map_mode_get(port, mode).
 *
 * @param intf       user port
 * @param[out] mode  written by the driver, enum adp_trust_mode
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_get_port_pri_trust_mode(adp_intf_t intf, uint32_t *mode);

/**
 * Sets the priority of a user port's untagged frames. Driver call: user_port_untagged_priority_set(port, priority).
 *
 * @param intf      user port
 * @param priority  0..7
 * @return 0; 102 when the driver call failed; 201 for an aggregation interface and for another type
 */
adp_status_t adp_set_port_cos_map(adp_intf_t intf, uint32_t priority);

/**
 * Reads the priority of a user port's untagged frames. Driver call: user_port_untagged_priority_get(port, priority).
 *
 * @param intf           user port
 * @param[out] priority  written by the driver, 0..7
 * @return 0; 102 when the driver call failed; 201 for an aggregation interface and for another type
 */
adp_status_t adp_get_port_cos_map(adp_intf_t intf, uint32_t *priority);

/**
 * Sets the queue of a priority on a user port. Driver call: user_cosq_port_mapping_set(port, priority, queue).
 *
 * @param intf      user port
 * @param priority  passed through; 0..7 on the virtual device
 * @param queue     passed through; on the virtual device 0..7, or ADP_QUEUE_OF_CHIP to follow the chip's map again
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_cosq_port_mapping_set(adp_intf_t intf, uint32_t priority, uint32_t queue);

/**
 * Reads the queue of a priority on a user port. Driver call: user_cosq_port_mapping_get(port, priority, queue).
 *
 * @param intf        user port
 * @param priority    passed through; 0..7 on the virtual device
 * @param[out] queue  written by the driver; 0..7 on the virtual device
 * @return 0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type
 */
adp_status_t adp_cosq_port_mapping_get(adp_intf_t intf, uint32_t priority, uint32_t *queue);

/**
 * Sets a row of the DSCP map of all ports. Driver call: user_port_dscp_map_set(-1, dscp, mapped, priority).
 *
 * @param unused    not used
 * @param dscp      passed through; on the virtual device 0..63, or ADP_DSCP_ALL for every row
 * @param mapped    passed through: DSCP that the frame leaves with, 0..63; ADP_DSCP_POWER_ON for the power-on row on
 *                  the virtual device
 * @param priority  passed through; 0..7 on the virtual device
 * @return the driver's result
 */
adp_status_t adp_port_dscp_map_set(uint32_t unused, int32_t dscp, int32_t mapped, uint32_t priority);

/**
 * Reads a row of the DSCP map of all ports. Driver call: user_port_dscp_map_get(-1, dscp, mapped, priority).
 *
 * @param unused         not used
 * @param dscp           passed through; 0..63 on the virtual device
 * @param[out] mapped    written by the driver: DSCP that the frame leaves with, 0..63
 * @param[out] priority  written by the driver, 0..7
 * @return the driver's result
 */
adp_status_t adp_port_dscp_map_get(uint32_t unused, int32_t dscp, uint8_t *mapped, uint8_t *priority);

/**
 * Sets the queue of a priority. The driver gets the caller's unit and zero.
 *
 * Driver call: user_qos_pri_queue_map_set(unit, zero, priority, queue).
 *
 * @param unit      passed through; 0 on the virtual device
 * @param zero      passed through; 0 on the virtual device
 * @param priority  passed through; 0..7 on the virtual device
 * @param queue     passed through; 0..7 on the virtual device
 * @return the driver's result
 */
adp_status_t adp_cosq_mapping_set(adp_word_t unit, adp_word_t zero, adp_word_t priority, adp_word_t queue);

/**
 * Reads the queue of a priority. The driver gets the caller's unit and zero.
 *
 * Driver call: user_qos_pri_queue_map_get(unit, zero, priority, queue).
 *
 * @param unit        passed through; 0 on the virtual device
 * @param zero        passed through; 0 on the virtual device
 * @param priority    passed through; 0..7 on the virtual device
 * @param[out] queue  written by the driver; 0..7 on the virtual device
 * @return the driver's result
 */
adp_status_t adp_cosq_mapping_get(adp_word_t unit, adp_word_t zero, adp_word_t priority, uint32_t *queue);

/**
 * Sets the priority of a DSCP. The driver gets the caller's unit and zero.
 *
 * Driver call: user_qos_dscp_map_set(unit, zero, dscp, priority).
 *
 * @param unit      passed through; 0 on the virtual device
 * @param zero      passed through; 0 on the virtual device
 * @param dscp      passed through; 0..63 on the virtual device
 * @param priority  passed through; 0..7 on the virtual device
 * @return the driver's result
 */
adp_status_t adp_dscp_map_set(adp_word_t unit, adp_word_t zero, adp_word_t dscp, adp_word_t priority);

/**
 * Reads the priority of a DSCP. The driver gets the caller's unit and zero.
 *
 * Driver call: user_qos_dscp_map_get(unit, zero, dscp, priority).
 *
 * @param unit           passed through; 0 on the virtual device
 * @param zero           passed through; 0 on the virtual device
 * @param dscp           passed through; 0..63 on the virtual device
 * @param[out] priority  written by the driver, 0..7
 * @return the driver's result
 */
adp_status_t adp_dscp_map_get(adp_word_t unit, adp_word_t zero, adp_word_t dscp, uint32_t *priority);

/**
 * Remaps a priority in the tags of received frames. The driver call begins with a single 0.
 *
 * Driver call: user_qos_pri_remap_set(0, port, priority, new_priority, option, option2, option3, option4).
 *
 * @param port          passed through; the physical port on the virtual device
 * @param priority      passed through; the tag's priority, 0..7, on the virtual device
 * @param unused        not used
 * @param new_priority  passed through; 0..7 on the virtual device
 * @param option        passed through; ignored by the virtual device
 * @param option2       passed through; ignored by the virtual device
 * @param option3       passed through; ignored by the virtual device
 * @param option4       passed through; ignored by the virtual device
 * @return the driver's result
 */
adp_status_t adp_set_dot1p_pri_remap(adp_word_t port, adp_word_t priority, adp_word_t unused, adp_word_t new_priority,
                                     adp_word_t option, adp_word_t option2, adp_word_t option3, adp_word_t option4);

/**
 * Sets a port's class of service. Driver call: user_qos_port_cos_set(port, cos), no unit.
 *
 * @param intf  user port; any other interface is passed on as physical port -1
 * @param cos   passed through; on the virtual device the priority of untagged frames, 0..7
 * @return the driver's result
 */
adp_status_t adp_port_cos_map_set(adp_intf_t intf, uint32_t cos);

/**
 * Reads a port's class of service. Driver call: user_qos_port_cos_get(port, cos), no unit.
 *
 * @param intf      user port; any other interface is passed on as physical port -1
 * @param[out] cos  written by the driver; on the virtual device the priority of untagged frames, 0..7
 * @return the driver's result
 */
adp_status_t adp_port_cos_map_get(adp_intf_t intf, uint32_t *cos);

/**
 * The same as hal_vlan_control_port_set().
 *
 * @param intf     user port
 * @param control  the driver's control number; 0..31 on the virtual device
 * @param value    its new value, passed through; any number on the virtual device
 * @return as hal_vlan_control_port_set()
 */
adp_status_t adp_vlan_control_port_set(adp_intf_t intf, uint32_t control, int32_t value);

/**
 * The same as hal_vlan_control_port_get().
 *
 * @param intf        user port
 * @param control     the driver's control number; 0..31 on the virtual device
 * @param[out] value  written by the driver; 0 at power-on on the virtual device
 * @return as hal_vlan_control_port_get()
 */
adp_status_t adp_vlan_control_port_get(adp_intf_t intf, uint32_t control, uint32_t *value);

ADP_END_DECLS
