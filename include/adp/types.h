/**
 * @file types.h
 * Types, status codes and marks that every header of the switch adaptation layer shares.
 */
#pragma once

#include <stdint.h>

/* C linkage, and visible outside the library that defines them although its own code is hidden by default. */
#ifdef __cplusplus
/** Opens declarations. */
#define ADP_BEGIN_DECLS \
    extern "C" {        \
    _Pragma("GCC visibility push(default)")
/** Closes declarations. */
#define ADP_END_DECLS             \
    _Pragma("GCC visibility pop") \
    }
#else
#define ADP_BEGIN_DECLS _Pragma("GCC visibility push(default)")
#define ADP_END_DECLS _Pragma("GCC visibility pop")
#endif

/**
 * @name Marks on parameters
 * The code generator reads them, and so do people; for the compiler they are empty.
 *
 * The call reads what a pointer to const addresses and writes what any other pointer addresses. `T x[n]` extends over n
 * elements, `T *x` over one.
 * @{
 */
/** The call reads what the pointer addresses and writes it too. */
#define ADP_INOUT
/** The pointer extends over as many elements as the named parameter of the same call says. */
#define ADP_COUNT(parameter)
/** Likewise, by the low 16 bits of the parameter. */
#define ADP_COUNT16(parameter)
/** Likewise; with a number above most the call reads no element. */
#define ADP_COUNT_UP_TO(most, parameter)
/** The pointer to void extends over one element of this type. */
#define ADP_TYPE(type)
/** The word is the address of a set of ports (adp_ports_t), or null. */
#define ADP_PORTS
/** @} */

ADP_BEGIN_DECLS

/** Result of a call: 0, all bits set, or one of the codes below; many calls return the driver's own result. */
typedef int32_t adp_status_t;

#define ADP_OK 0                      /**< success */
#define ADP_FAIL (-1)                 /**< map, socket or frame-path failure, or a list too short: all bits set */
#define ADP_E_SELECTOR 101            /**< selector, mode or map type out of range, or an unknown submodule */
#define ADP_E_DRIVER 102              /**< a driver call failed, or the call does not fan out over a group */
#define ADP_E_INTF_TYPE 201           /**< neither a user port nor an aggregation interface */
#define ADP_E_NO_MEMBER 203           /**< a group with neither a management interface nor a configured member */
#define ADP_E_DOT1X_LEARN 401         /**< the port's learning mode could not be set */
#define ADP_E_DOT1X_FLUSH 402         /**< the port's address table could not be flushed */
#define ADP_E_DOT1X_MODE 403          /**< bad 802.1X mode, or an address that cannot be formatted */
#define ADP_E_DOT1X_STATIC 405        /**< the static entry could not be added */
#define ADP_E_SCHEDULING_MODE 501     /**< a refused scheduling mode */
#define ADP_E_REMARK_KIND 502         /**< remark kind neither 1 nor 2 (internal to the remark rules) */
#define ADP_E_REMARK_FIELD 503        /**< match field 12 or more (internal to the remark rules) */
#define ADP_E_REMARK_NO_SUBMODULE 504 /**< no table row for the remark submodule */

/**
 * Logical interface number: bits 31..28 are the type, bits 27..0 the index.
 *
 * Type 0 is a user port (1..adp_max_phy_port_num; index 0 is the CPU port's map row), type 1 an aggregation interface,
 * ADP_AGG_INTF(g) for group g = 1..8. Other types are refused.
 *
 * The calls say what they do on a group, an aggregation interface:
 *
 * - "for each active member": for each non-empty slot of the list of GET_AGG_GROUP(), in list order; for each
 *   configured member: of the list of GET_AGG_CONFIG_GROUP(). A list that its call refuses counts as empty. The first
 *   failure ends the call with 102: the members before it stay changed, those after it are left alone. Without members
 *   the result is 0.
 * - "for its management interface": without one for interface 0, the CPU port.
 *
 * A call that returns 201 or, for a group outside 1..8, -1 has made no driver call.
 */
typedef uint32_t adp_intf_t;

#define ADP_INTF_TYPE_SHIFT 28          /**< place of the type */
#define ADP_INTF_INDEX_MASK 0x0FFFFFFFu /**< bits of the index */
#define ADP_INTF_TYPE_USER_PORT 0u      /**< type of a user port */
#define ADP_INTF_TYPE_AGG 1u            /**< type of an aggregation interface */
/** The aggregation interface of group @p group (1..8). */
#define ADP_AGG_INTF(group) (0x10000000u | (group))

#define ADP_AGG_GROUPS 8         /**< aggregation groups, numbered 1..8 (IEEE 802.1AX aggregators) */
#define ADP_AGG_ACTIVE_MAX 8     /**< members that GET_AGG_GROUP reports at most */
#define ADP_AGG_MEMBER_BYTES 11  /**< member port bytes in a group's record */
#define ADP_MEMBER_LIST_SLOTS 26 /**< slots of a member list that GET_AGG_CONFIG_GROUP fills */
#define ADP_USER_PORTS 26        /**< user ports of the board; several tables have this size */

/** VLAN argument that stands for "no VLAN" where a call allows it: all ones. */
#define ADP_NO_VLAN 0xFFFFFFFFu

/** A number or an address. Its meaning is the driver's; the library passes it through. */
typedef uintptr_t adp_word_t;

/** A set of 256 ports or interfaces: bit n of word n / 32 stands for number n. As a parameter it is a pointer. */
typedef uint32_t adp_ports_t[8];

/** The same set as a block that is passed by value. */
typedef struct {
    adp_ports_t word; /**< bit n of word n / 32 for number n */
} adp_port_set_t;

/** A link of a circular doubly linked list; the head is a link of its own and an empty list points to itself. */
typedef struct adp_list_link {
    struct adp_list_link *next; /**< the next link, from the last one the head */
    struct adp_list_link *prev; /**< the one before, from the head the last one */
} adp_list_link_t;

/** One group's record: the trunk record that the driver takes by value, and the rows of agg_info. 16 bytes. */
typedef struct {
    int32_t count;                       /**< number of valid member port bytes */
    uint8_t in_use;                      /**< 1 after creation; nothing reads it back */
    uint8_t ports[ADP_AGG_MEMBER_BYTES]; /**< physical port numbers in the order in which members joined */
} adp_agg_record_t;

/** The driver's L2 (MAC address) table entry, 88 bytes, passed by value on an add. */
typedef struct {
    uint32_t flags;         /**< 0x8 static, 0x1 to a trunk (on add); 0x80 to a trunk (on look-up) */
    uint8_t mac[6];         /**< MAC address, network order */
    uint16_t vid;           /**< VLAN id, IEEE 802.1Q */
    int32_t port;           /**< physical port */
    int32_t reserved16;     /**< 0 on add */
    int32_t trunk;          /**< trunk id, valid when the entry points at a trunk */
    uint32_t reserved24[2]; /**< 0 on add */
    uint32_t index;         /**< L2 table index, from look-ups */
    adp_ports_t ports;      /**< multicast entries: physical ports */
    uint32_t reserved68[5]; /**< 0 on add */
} adp_l2_entry_t;

#define ADP_CABLE_PAIRS 4 /**< wire pairs of a copper port */

/** The driver's result of a cable diagnosis, an element for each wire pair. 32 bytes. */
typedef struct {
    uint32_t state[ADP_CABLE_PAIRS];  /**< the pair's condition, enum adp_cable_pair */
    uint32_t length[ADP_CABLE_PAIRS]; /**< length up to the far end or the fault, in metres */
} adp_cable_diag_t;

ADP_END_DECLS
