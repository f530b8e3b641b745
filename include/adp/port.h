/**
 * @file port.h
 * The port frame: the map between logical interface numbers and the switch chip's physical ports.
 *
 * Every call of the library passes through this map. It is set up first, in this order, and never torn down:
 * adp_set_max_phy_port_num(), then adp_add_cpu_port() and adp_add_phy_port() for every row. No call checks the
 * order; before the map exists the look-ups answer "not found". Nothing here takes a lock: the map is written during
 * start-up and only read afterwards. No call of this header makes a driver call.
 */
#ifndef ADP_PORT_H
#define ADP_PORT_H

#include <adp/types.h>

ADP_BEGIN_DECLS

/** A row of the port map, 16 bytes. Row 0 belongs to the CPU port. */
typedef struct {
    uint32_t word1;      /**< first caller word: stored, never read by the library */
    uint32_t word2;      /**< second caller word: stored, never read by the library */
    uint32_t phy;        /**< physical port number of the chip port behind this row */
    uint32_t attributes; /**< caller-defined, returned unchanged by adp_intf_port_attributes() */
} adp_port_row_t;

/** Number of user ports as given to adp_set_max_phy_port_num(); valid map rows are 0..adp_max_phy_port_num. */
extern uint32_t adp_max_phy_port_num;
/** The port map: adp_max_phy_port_num + 1 rows, or null before it exists or after a failed allocation. */
extern adp_port_row_t *intf_to_phy_port;
/**
 * Aggregation interface that each user port belongs to, 0 for none: adp_max_phy_port_num + 1 words indexed like
 * the port map, or null.
 */
extern uint32_t *intf_map_trunk;

/**
 * Creates the port map and the port-to-group map, both cleared.
 *
 * A second call replaces both tables without releasing the old ones.
 *
 * @param n  number of user ports; it is stored first and stays even when an allocation fails
 * @return 0; -1 if either allocation failed (a size that overflows counts as failed): that table is null, the
 *         other one is in place.
 */
adp_status_t adp_set_max_phy_port_num(uint32_t n);

/**
 * Tells the number of user ports.
 *
 * @param[out] n  adp_max_phy_port_num
 * @return 0
 */
adp_status_t adp_get_max_phy_port_num(uint32_t *n);

/**
 * Fills the CPU port's row, row 0.
 *
 * @param unused      not used
 * @param word1       stored for the caller
 * @param word2       stored for the caller
 * @param phy         physical port number of the CPU port
 * @param attributes  caller-defined attribute word
 * @return 0; -1 with nothing changed when the map does not exist
 */
adp_status_t adp_add_cpu_port(uint32_t unused, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes);

/**
 * Fills one row of the port map.
 *
 * @param index       row, 1..adp_max_phy_port_num (row 0 is accepted and is the CPU port's)
 * @param word1       stored for the caller
 * @param word2       stored for the caller
 * @param phy         physical port number
 * @param attributes  caller-defined attribute word
 * @return 0; -1 with nothing changed when the row lies beyond the map or the map does not exist
 */
adp_status_t adp_add_phy_port(uint32_t index, uint32_t word1, uint32_t word2, uint32_t phy, uint32_t attributes);

/**
 * Translates an interface number to its physical port.
 *
 * An aggregation interface is not expanded: it exceeds the maximum and gives -1.
 *
 * @param intf  0 (the CPU port) or a user port, 1..adp_max_phy_port_num
 * @return the row's physical port; -1 when intf, taken whole and unsigned, exceeds adp_max_phy_port_num, when its
 *         type bits are not 0, or when the map does not exist
 */
int32_t adp_intf_2_phy_id(adp_intf_t intf);

/**
 * Finds the interface of a physical port.
 *
 * @param phy  physical port number
 * @return the lowest row whose physical port equals phy, so the CPU port's row 0 wins a tie; -1 (all ones) when
 *         there is none or the map does not exist
 */
int32_t adp_phy_2_intf_id(uint32_t phy);

/**
 * Finds the interface of a physical port of a unit; as adp_phy_2_intf_id(), since there is one unit.
 *
 * @param unused  not used
 * @param phy     physical port number
 * @return as adp_phy_2_intf_id()
 */
int32_t adp_phy_2_intf_id_ex(uint32_t unused, uint32_t phy);

/**
 * Tells an interface's slot: this is a single-slot system.
 *
 * @param intf  any interface number
 * @return always 0
 */
int32_t adp_intf_2_slot_id(adp_intf_t intf);

/**
 * Tells an interface's attribute word.
 *
 * @param intf  0..adp_max_phy_port_num; there is no test of the type bits
 * @return the attribute word given for the row; 0 when intf, taken whole and unsigned, exceeds the maximum or the
 *         map does not exist
 */
uint32_t adp_intf_port_attributes(adp_intf_t intf);

/** Does nothing. @return always 0 */
adp_status_t adp_get_phy_port(void);

/** Does nothing: rows are never removed. @return always 0 */
adp_status_t adp_del_phy_port(void);

/**
 * Turns a bitmap of physical ports into a bitmap of interface numbers, in place.
 *
 * Bits 0..26 are looked at; bits 27..63 are always dropped. A port that no row names keeps its bit. A bit that would
 * land outside the two words is dropped.
 *
 * @param[in,out] bitmap  two words, bit n of word n / 32 for number n
 * @return 0
 */
adp_status_t adp_api_xlate_port_pbmp_a2p(ADP_INOUT uint32_t bitmap[2]);

/**
 * Turns a bitmap of interface numbers into a bitmap of physical ports, in place.
 *
 * Bits 0..26 are looked at; bits 27..63 are always dropped. An interface above the maximum keeps its bit; bit 0 turns
 * into the CPU port's. A bit that would land outside the two words is dropped.
 *
 * @param[in,out] bitmap  two words, bit n of word n / 32 for number n
 * @return 0
 */
adp_status_t adp_api_xlate_port_pbmp_p2a(ADP_INOUT uint32_t bitmap[2]);

ADP_END_DECLS

#endif
