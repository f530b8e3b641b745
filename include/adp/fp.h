/**
 * @file fp.h
 * The field processor, the chip's ACL engine: which feature owns which slice of its entries, rule records and their
 * installation, counters, the look-up miss action, and remark rules.
 *
 * A feature owns a submodule, a row of g_stFpInfo: a field group and a place in it. Each feature numbers its rules
 * itself (entity numbers); the library computes hardware entry numbers from them. In groups 1 and 5 a rule takes two
 * entries, a pair. A caller clears an FpEntity, fills in the key, the priority, qualifiers
 * (adp_fp_add_entity_qualify()) and actions (adp_fp_add_entity_action()), and installs it with
 * adp_fp_add_entity_rule(). The library keeps a copy of every installed rule in acl_fp_list_head, one for each pair of
 * submodule and entity number.
 *
 * Driver calls named here begin with a handle that is always 0 and the unit; the descriptions write these out only
 * where it matters. Nothing here takes a lock: callers serialise all calls into the field processor.
 *
 * "Logs" below means: a log message of level 7, module 18, word "ACL", and a trace entry while sys_trace_get() is not
 * 0. The texts are fixed, function name and source line included.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

#define ADP_FP_SUBMODULES 43      /**< rows of g_stFpInfo */
#define ADP_FP_QUALIFIERS 16      /**< qualifiers that a rule record holds */
#define ADP_FP_ACTIONS 8          /**< actions that a rule record holds */
#define ADP_FP_QUALIFIER_BYTES 64 /**< bytes of a qualifier's data, and of its mask */
#define ADP_FP_ACTION_BYTES 256   /**< bytes of an action's parameter, and of its second one */

#define ADP_FP_SUBMODULE_REMARK 1    /**< the submodule of remark rules */
#define ADP_FP_SUBMODULE_PHYSICAL 16 /**< the submodule whose bitmaps are physical ports already */

/**
 * Qualifier types. A scalar is the first 32-bit word of data and mask, in host byte order. An address is bytes in
 * network order from the start. A bitmap of interfaces is eight words.
 */
enum adp_fp_qualifier {
    ADP_FP_QUALIFY_SRC_IP6 = 0,        /**< IPv6 source address, 16 bytes (RFC 8200) */
    ADP_FP_QUALIFY_DST_IP6 = 1,        /**< IPv6 destination address, 16 bytes */
    ADP_FP_QUALIFY_SRC_MAC = 6,        /**< source MAC address, 6 bytes */
    ADP_FP_QUALIFY_DST_MAC = 7,        /**< destination MAC address, 6 bytes */
    ADP_FP_QUALIFY_SRC_IP = 9,         /**< IPv4 source address, a word (RFC 791) */
    ADP_FP_QUALIFY_DST_IP = 10,        /**< IPv4 destination address, a word */
    ADP_FP_QUALIFY_IN_PORTS = 13,      /**< ingress ports: a 256-bit bitmap of interfaces, translated on installation */
    ADP_FP_QUALIFY_OUTER_VLAN_ID = 18, /**< outer VLAN id (IEEE 802.1Q), low 16 bits used */
    ADP_FP_QUALIFY_OUTER_VLAN_PRI = 19,    /**< outer tag's priority, low 8 bits used */
    ADP_FP_QUALIFY_INNER_VLAN = 21,        /**< inner tag's format, enum adp_fp_inner_tag, low 16 bits used */
    ADP_FP_QUALIFY_INNER_VLAN_ID = 22,     /**< inner VLAN id, low 16 bits used */
    ADP_FP_QUALIFY_INNER_VLAN_PRI = 23,    /**< inner tag's priority, low 8 bits used */
    ADP_FP_QUALIFY_L4_SRC_PORT = 27,       /**< TCP or UDP source port */
    ADP_FP_QUALIFY_L4_DST_PORT = 28,       /**< TCP or UDP destination port */
    ADP_FP_QUALIFY_ETHER_TYPE = 29,        /**< EtherType, low 16 bits used */
    ADP_FP_QUALIFY_IP_PROTOCOL = 30,       /**< IP protocol number, low 8 bits used */
    ADP_FP_QUALIFY_DSCP = 31,              /**< the IPv4 header's byte with the DSCP (RFC 2474), low 8 bits used */
    ADP_FP_QUALIFY_IP_TYPE = 61,           /**< kind of IP packet, enum adp_fp_ip_type, no mask */
    ADP_FP_QUALIFY_FRAME_TYPE = 89,        /**< the frame's encapsulation, enum adp_fp_frame_type, no mask */
    ADP_FP_QUALIFY_IP6_TRAFFIC_CLASS = 332 /**< IPv6 traffic class byte (RFC 8200), low 8 bits used */
};

/** Values of the qualifier of the inner tag's format: the driver's codes, as the virtual device has them. */
enum adp_fp_inner_tag {
    ADP_FP_INNER_TAG_NONE = 0,     /**< there is no inner tag */
    ADP_FP_INNER_TAG_PRIORITY = 1, /**< a tag with VLAN id 0 */
    ADP_FP_INNER_TAG_VLAN = 2      /**< a tag with another VLAN id */
};

/** Values of the qualifier of the kind of IP packet: the driver's codes, as the virtual device has them. */
enum adp_fp_ip_type {
    ADP_FP_IP_TYPE_ANY = 0,    /**< every frame */
    ADP_FP_IP_TYPE_NOT_IP = 1, /**< neither IPv4 nor IPv6 */
    ADP_FP_IP_TYPE_IP = 2,     /**< IPv4 or IPv6 */
    ADP_FP_IP_TYPE_ARP = 3,    /**< ARP */
    ADP_FP_IP_TYPE_IP4 = 5,    /**< IPv4; remark rules use it */
    ADP_FP_IP_TYPE_IP6 = 10    /**< IPv6; remark rules use it */
};

/** Values of the qualifier of the encapsulation: the driver's codes, as the virtual device has them. */
enum adp_fp_frame_type {
    ADP_FP_FRAME_TYPE_ANY = 0,         /**< every frame */
    ADP_FP_FRAME_TYPE_ETHERNET_II = 1, /**< Ethernet II */
    ADP_FP_FRAME_TYPE_LLC = 2,         /**< IEEE 802.3 with LLC */
    ADP_FP_FRAME_TYPE_SNAP = 3         /**< IEEE 802.3 with LLC and SNAP */
};

/**
 * Action types: the driver's codes, as the virtual device has them. The library looks at PORT, PORTS and METER only. A
 * parameter is one word unless stated otherwise.
 */
enum adp_fp_action {
    ADP_FP_ACTION_SET_DSCP = 1,      /**< parameter: the DSCP, 0..63, that IP packets get; remark rules use it */
    ADP_FP_ACTION_SET_PRIORITY = 11, /**< parameter: the priority, 0..7, that frames get; remark rules use it */
    ADP_FP_ACTION_PORT = 30,         /**< to one port alone: parameter the interface, translated on installation */
    ADP_FP_ACTION_PORTS = 33,   /**< to these alone: parameter a 256-bit bitmap of interfaces, translated likewise */
    ADP_FP_ACTION_METER = 53,   /**< meter: parameter the rate, second parameter the index in the submodule */
    ADP_FP_ACTION_PERMIT = 200, /**< nothing, but other rules of the group do not act; no parameter */
    ADP_FP_ACTION_DROP = 201,   /**< frames are dropped; no parameter */
    ADP_FP_ACTION_COPY_TO_CPU = 202, /**< the CPU gets frames as well; no parameter */
    ADP_FP_ACTION_TO_CPU = 203,      /**< the CPU gets frames alone; no parameter */
    ADP_FP_ACTION_SET_VLAN = 204,    /**< parameter: the VLAN, 1..4094, in which frames go on */
    ADP_FP_ACTION_COUNT = 205,       /**< parameter: the counter, 0..255 */
    ADP_FP_ACTION_MIRROR = 206       /**< parameter: the mirror session, 0..3, whose flow mirror gets a copy */
};

/** What a counter of the field processor is read in: the driver's codes, as the virtual device has them. */
enum adp_fp_value {
    ADP_FP_VALUE_FRAMES = 0, /**< frames */
    ADP_FP_VALUE_OCTETS = 1  /**< octets */
};

/** What happens to packets that match no rule: the driver's codes, as the virtual device has them. */
enum adp_fp_miss {
    ADP_FP_MISS_NONE = 0,        /**< nothing */
    ADP_FP_MISS_DROP = 1,        /**< they are dropped */
    ADP_FP_MISS_COPY_TO_CPU = 2, /**< the CPU gets them as well */
    ADP_FP_MISS_TO_CPU = 3       /**< the CPU gets them alone */
};

/** A submodule: which slice of the field processor a feature owns. 24 bytes. */
typedef struct {
    int32_t submodule_type; /**< the row's key */
    int32_t group;          /**< field group 1..9, 0 for none */
    int32_t entries;        /**< number of entities meant for it; nothing checks it */
    int32_t meter_base;     /**< added to the meter index of a meter action, -1 without meters */
    int32_t meter_rate;     /**< rate of a meter action that gives 0, -1 without meters */
    int32_t prio_base;      /**< its place in the group: added to entity numbers and priorities */
} FpInfo;

/** One condition of a rule. */
typedef struct {
    uint32_t type;                        /**< enum adp_fp_qualifier */
    uint8_t data[ADP_FP_QUALIFIER_BYTES]; /**< what is matched */
    uint8_t mask[ADP_FP_QUALIFIER_BYTES]; /**< the bits that count */
} FpQualify;

/** One action of a rule. */
typedef struct {
    uint32_t type;                       /**< enum adp_fp_action, or another code of the driver */
    uint8_t param[ADP_FP_ACTION_BYTES];  /**< a scalar is its first 32-bit word in host byte order */
    uint8_t param2[ADP_FP_ACTION_BYTES]; /**< likewise */
} FpAction;

/** A rule record. The caller clears the whole record before filling it. */
typedef struct {
    uint32_t submodule_type;                /**< key into g_stFpInfo */
    uint32_t unit;                          /**< unit of the driver calls of installation, 0 */
    uint32_t entity_id;                     /**< number inside the submodule */
    uint32_t true_entry;                    /**< hardware entry number; filled in by installation */
    uint32_t priority;                      /**< added to the submodule's prio_base */
    int32_t qualify_num;                    /**< used qualifiers */
    int32_t action_num;                     /**< used actions */
    FpQualify qualifies[ADP_FP_QUALIFIERS]; /**< the first qualify_num are used */
    FpAction actions[ADP_FP_ACTIONS];       /**< the first action_num are used */
} FpEntity;

/** An installed rule in acl_fp_list_head: its link and its record as installed. */
typedef struct {
    adp_list_link_t link; /**< next and previous node, or the head */
    FpEntity entity;      /**< the rule, with its hardware entry number */
} FpListNode;

/** A bitmap of interfaces 0..63, passed by value: bit n of word n / 32 stands for interface n. */
typedef struct {
    uint32_t word[2]; /**< bit n of word n / 32 for interface n */
} FpPortBitmap;

/** What a remark rule's match_field selects. */
enum adp_remark_field {
    ADP_REMARK_DST_MAC = 0,        /**< destination MAC address */
    ADP_REMARK_SRC_MAC = 1,        /**< source MAC address */
    ADP_REMARK_INNER_VLAN_PRI = 2, /**< inner tag's priority */
    ADP_REMARK_INNER_VLAN_ID = 3,  /**< inner VLAN id */
    ADP_REMARK_ETHER_TYPE = 4,     /**< EtherType */
    ADP_REMARK_DST_IP = 5,         /**< IPv4 destination address */
    ADP_REMARK_SRC_IP = 6,         /**< IPv4 source address */
    ADP_REMARK_IP_PROTOCOL = 7,    /**< IP protocol number */
    ADP_REMARK_DSCP = 8,           /**< DSCP of IPv4 packets, 0..63: shifted to its place in the header's byte */
    ADP_REMARK_TRAFFIC_CLASS = 9,  /**< DSCP of IPv6 packets, 0..63: shifted likewise */
    ADP_REMARK_L4_SRC_PORT = 10,   /**< TCP or UDP source port */
    ADP_REMARK_L4_DST_PORT = 11    /**< TCP or UDP destination port */
};

/** What a remark rule's rule_form asks for. */
enum adp_remark_form {
    ADP_REMARK_FORM_FIELD = 1, /**< ports and one field */
    ADP_REMARK_FORM_PORTS = 7  /**< ports only */
};

/** What a remark rule's remark_kind rewrites: the driver's meaning of the actions, as the virtual device has it. */
enum adp_remark_kind {
    ADP_REMARK_KIND_PRIORITY = 1, /**< the priority, by ADP_FP_ACTION_SET_PRIORITY */
    ADP_REMARK_KIND_DSCP = 2      /**< the DSCP, by ADP_FP_ACTION_SET_DSCP */
};

/** A request for a remark rule, 32 bytes. */
typedef struct {
    uint16_t rule_id;        /**< entity number and priority of the rule */
    uint16_t unused2;        /**< not read */
    uint32_t unused4;        /**< not read */
    uint32_t port_bitmap[2]; /**< a 64-bit number, the more significant word first: bit k stands for interface k + 1 */
    uint8_t remark_kind;     /**< enum adp_remark_kind */
    uint8_t unused17;        /**< not read */
    uint8_t remark_value;    /**< the value that matching packets get */
    uint8_t unused19;        /**< not read */
    uint8_t rule_form;       /**< enum adp_remark_form */
    uint8_t match_field;     /**< enum adp_remark_field, read in form 1 */
    uint8_t unused22[2];     /**< not read */
    uint8_t match_value[8];  /**< 6 bytes of a MAC address, or the bytes of one 32-bit word in host byte order */
} RemarkRule;

/**
 * The submodules. Nothing writes the table at run time. Group 8 has none, submodule 25 reserves no entry, submodule 24
 * overlaps 26 to 29, submodules 14 and 15 share a meter, and entity 9 is the first of submodules 42 and 43.
 */
extern FpInfo g_stFpInfo[ADP_FP_SUBMODULES];

/** The installed rules, FpListNode by FpListNode in the order of installation; an empty list points to itself. */
extern adp_list_link_t acl_fp_list_head;

/**
 * Empties the list of rules and initialises the driver's field processor.
 *
 * Nodes in the list are dropped, not freed. Driver call: user_field_init(0, 0). After a negative result it is made
 * again, "%s:[%05d]  error funtion ret=%d \n" is printed with the second result, and it is made a third time.
 *
 * @return 0 if the first driver call was not negative, otherwise the third call's result
 */
adp_status_t adp_fp_init(void);

/**
 * Finds a submodule.
 *
 * @param submodule_type  submodule type, 1..43
 * @return the last row of this type; null when there is none
 */
FpInfo *adp_fp_find_data_by_submodetype(uint32_t submodule_type);

/**
 * The same as adp_fp_find_data_by_submodetype().
 *
 * @param submodule_type  submodule type, 1..43
 * @return as adp_fp_find_data_by_submodetype()
 */
FpInfo *fp_find_data_by_submodetype(uint32_t submodule_type);

/**
 * Computes the hardware entry number of an entity, and logs it (line 864).
 *
 * With n = prio_base + entity_id, in 32 bits: group 1: 2n + 1280, 2: n + 896, 3: n + 768, 4: n + 640, 5: 2n + 1024, 6:
 * n + 512, 7: n + 384, 8: n + 256, any other: n. Nothing is checked.
 *
 * @param submodule  the submodule
 * @param entity_id  its number in the submodule, from 0; in submodules 42 and 43 from 9
 * @return the hardware entry number; for groups 1 and 5 that of the first entry of the pair
 */
uint32_t adp_fp_get_true_entity_id(FpInfo submodule, uint32_t entity_id);

/**
 * Whether a submodule's rules take a pair of entries.
 *
 * @param submodule  the submodule
 * @return 1 in groups 1 and 5, else 0
 */
int32_t adp_fp_is_double_entity(FpInfo submodule);

/**
 * Whether a hardware entry belongs to the groups whose rules take a pair of entries.
 *
 * @param true_entry  hardware entry number, 0..1535
 * @return 1 for 1024..1535, else 0
 */
int32_t adp_fp_is_double_entity_2(uint32_t true_entry);

/**
 * Whether a qualifier belongs on the second entry of a pair.
 *
 * @param submodule     the submodule
 * @param qualify_type  enum adp_fp_qualifier
 * @return 1 in group 1 for types 9, 10, 27, 28, 31, 61 and 332, in group 5 for types 1, 27, 28 and 30; else 0
 */
int32_t adp_fp_is_need_set_next_entity_id(FpInfo submodule, uint32_t qualify_type);

/**
 * Finds an installed rule.
 *
 * @param submodule_type  the rule's submodule, 1..43
 * @param entity_id       its number in the submodule, from 0; in submodules 42 and 43 from 9
 * @return the first node with this pair of numbers; null when there is none
 */
FpListNode *adp_fp_find_list_node_by_entity(uint32_t submodule_type, uint32_t entity_id);

/**
 * Appends a qualifier to a rule record.
 *
 * Data of exactly 2 bytes is a 16-bit number in host byte order and is stored as the first word, extended by zeros; so
 * is a mask of 2 bytes. Otherwise the bytes are copied to the start of the field.
 *
 * @param[in,out] entity  the record
 * @param type            enum adp_fp_qualifier
 * @param data            what is matched
 * @param data_len        its length, 0..64
 * @param mask            the bits that count
 * @param mask_len        its length, 0..64
 * @return the qualifier's index. -1 with the record unchanged when it has 16 qualifiers already, which prints
 *         "%s:[%05d] Fp qualify number=[%d] was full!~\n", when a length is out of range, and when the count is
 *         negative.
 */
int32_t adp_fp_add_entity_qualify(ADP_INOUT FpEntity *entity, uint32_t type,
                                  ADP_COUNT_UP_TO(ADP_FP_QUALIFIER_BYTES, data_len) const void *data, uint32_t data_len,
                                  ADP_COUNT_UP_TO(ADP_FP_QUALIFIER_BYTES, mask_len) const void *mask, int32_t mask_len);

/**
 * Appends an action to a rule record.
 *
 * @param[in,out] entity  the record
 * @param type            enum adp_fp_action, or another code of the driver
 * @param param           parameter, or null for none
 * @param param_len       its length, up to 256; 0 or less copies nothing
 * @param param2          second parameter, or null for none
 * @param param2_len      its length, up to 256; 0 or less copies nothing
 * @return the action's index. -1 with the record unchanged when it has 8 actions already, which prints "%s:[%05d] Fp
 *         qualify number=[%d] was full!~\n" with the record's number of qualifiers, when a parameter that is not null
 *         is too long, and when the count is negative.
 */
int32_t adp_fp_add_entity_action(ADP_INOUT FpEntity *entity, uint32_t type,
                                 ADP_COUNT_UP_TO(ADP_FP_ACTION_BYTES, param_len) const void *param, int32_t param_len,
                                 ADP_COUNT_UP_TO(ADP_FP_ACTION_BYTES, param2_len) const void *param2,
                                 int32_t param2_len);

/**
 * Removes an installed rule.
 *
 * Logs entity and hardware entry t (line 547). Driver calls, all with unit 0 whatever the record's unit:
 * user_field_meter_destroy(t) if the action type is 53, user_field_action_remove_all(t), user_field_qualify_clear(t),
 * user_field_entry_destroy(t). If t is one of 1024..1535, logs (line 567), then the last three calls for t + 1. No
 * failure stops the sequence. The node then leaves the list and is freed.
 *
 * @param submodule_type  the rule's submodule, 1..43
 * @param entity_id       its number in the submodule, from 0; in submodules 42 and 43 from 9
 * @param action_type     ADP_FP_ACTION_METER destroys the rule's meter too, any other number does not
 * @return the results of all driver calls ORed together; 0 without a log line or driver call when there is no such rule
 */
adp_status_t adp_fp_delete_entity_rule(uint32_t submodule_type, uint32_t entity_id, uint32_t action_type);

/**
 * Removes the installed rule that a new record replaces.
 *
 * As adp_fp_delete_entity_rule() (log lines 612 and 636), but the meter is destroyed once for each action of type 53
 * among the argument record's own actions: those of the new rule, not of the installed one.
 *
 * @param entity  submodule_type and entity_id name the rule; the types of the first action_num actions, 8 at most, are
 *                read
 * @return the results of all driver calls ORed together; 0 when there is no such rule
 */
adp_status_t adp_fp_delete_entity_rule_ex(FpEntity entity);

/**
 * Installs a rule in the hardware, in place of the one with the same submodule and entity number, and records it.
 *
 * f is the hardware entry (adp_fp_get_true_entity_id()). "Pair" means that the submodule's group is 1 or 5. S is the
 * status that the call returns: a step replaces it (S =) or ORs its result in (S |=). No failure stops the sequence.
 * Driver calls in order, all with the record's unit:
 *
 * 1. the removal of the installed rule with this key, as adp_fp_delete_entity_rule_ex(), its result ignored;
 * 2. S = user_field_entry_create_id(group, f); pair: S |= the same for f + 1;
 * 3. S |= user_field_entry_prio_set(f, prio_base + priority); pair: the same for f + 1 with its result ignored, then
 *    S = user_field_set_double_entry(f);
 * 4. for each qualifier: if it belongs on f (adp_fp_is_need_set_next_entity_id() is 0),
 *    S = user_field_set_select_tempate_idx(f, 0). Then S = the user_field_qualify_...() call of its type, on f or
 *    f + 1; for type 13 always on f, with both bitmaps translated to physical ports, and S |=. An unknown type prints
 *    "%s:[%05d] set unknow qualify type = [%d]\n" and is skipped;
 * 5. for each action: a meter action (53) first makes S |= user_field_meter_entry_set(unit, rate, index), without
 *    handle: the rate is the parameter or, when that is 0, the submodule's; the index is the second parameter, which is
 *    raised by the submodule's meter_base in the record. Types 30 and 33 write the translated port (30) or ports (33)
 *    into the parameter of action number S: of action 0 while every counted call succeeded, whichever action is being
 *    added. When S is not 0..7, nothing is written. The bitmaps of submodule 16 stay untranslated. Then
 *    S |= user_field_action_add(f, type, both parameters); pair: S |= the same for f + 1;
 * 6. S |= user_field_entry_install(f); pair: S |= the same for f + 1.
 *
 * Bitmaps of interfaces become bitmaps of physical ports; interfaces that are not mapped are dropped, and all of them
 * when the record's unit is not 0. The steps are logged. The record, with the hardware entry number and the parameters
 * as changed, is appended to the list. When there is no memory for it, "%s:[%05d] malloc failed!~\n" is printed and the
 * rule stays installed but unrecorded.
 *
 * @param entity  the rule
 * @return S; with nothing changed and no driver call 101 for a submodule that is not in the table or has no group, -1
 *         for more than 16 qualifiers or 8 actions. A negative count is none.
 */
adp_status_t adp_fp_add_entity_rule(FpEntity entity);

/**
 * Reads a counter of the field processor.
 *
 * Driver call: user_field_get_statistics(counter, type), its result ignored, then logged (line 1311).
 *
 * @param counter  the driver's counter number; 0..255 on the virtual device
 * @param type     enum adp_fp_value
 * @return the count; 0 also when the driver wrote none
 */
int32_t adp_fp_get_statistics(int32_t counter, int32_t type);

/**
 * Clears a counter of the field processor. The order of the arguments differs from adp_fp_get_statistics().
 *
 * Driver call: user_field_clear_statistics(counter, type), then logged (line 1335).
 *
 * @param unused1  not used
 * @param unused2  not used
 * @param counter  the driver's counter number; 0..255 on the virtual device
 * @param type     enum adp_fp_value
 * @return the driver's result
 */
adp_status_t adp_fp_clear_statistics(uint32_t unused1, uint32_t unused2, int32_t counter, int32_t type);

/**
 * Sets what happens to a port's packets that match no rule.
 *
 * Driver call: user_field_lookupMissAct_set(port, miss_action), then logged (line 1349).
 *
 * @param intf         user port; any other interface is passed on as physical port -1
 * @param miss_action  enum adp_fp_miss
 * @return the driver's result
 */
adp_status_t adp_fp_lookupMissAct_set(int32_t intf, uint32_t miss_action);

/**
 * Sets what happens to packets that match no rule, for each interface of a bitmap from 0 to 26 in this order; as
 * adp_fp_lookupMissAct_set(). Higher bits are ignored.
 *
 * @param ports        the interfaces
 * @param miss_action  enum adp_fp_miss
 * @return the last interface's result, which hides earlier failures; 0 when the bitmap is empty
 */
adp_status_t adp_fp_lookupMissAct_pbmp_set(FpPortBitmap ports, uint32_t miss_action);

/**
 * Installs a rule that rewrites a priority-type field of packets from a set of ports, optionally only of packets that
 * match one field.
 *
 * The rule is entity rule_id of submodule 1 with priority rule_id: ingress ports, in form 1 the field, and one action,
 * type 11 for kind 1 and type 1 for every other. Fields 8 and 9 match the kind of IP packet (5 for IPv4, 10 for IPv6)
 * and the value times 4. First of all the record's port_bitmap is shifted left by one bit, in place: a record submitted
 * twice is shifted twice. Driver calls: those of adp_fp_add_entity_rule().
 *
 * @param[in,out] rule  the request
 * @return 0; 101 for a null record and, with nothing installed, for a form other than 1 and 7; 504 when g_stFpInfo has
 *         no submodule 1; 102 when installation gave a negative status; also 102, with the rule installed, for a kind
 *         other than 1 and 2 and, with the rule installed without a field, for a match_field of 12 or more
 */
adp_status_t adp_add_remark_rule(ADP_INOUT RemarkRule *rule);

/**
 * Removes a remark rule, as adp_fp_delete_entity_rule() with submodule 1 and action type 0.
 *
 * @param rule_id  low 16 bits used
 * @return 0, also when there is no such rule; 102 when a driver call was negative
 */
adp_status_t adp_del_remark_rule(uint32_t rule_id);

ADP_END_DECLS
