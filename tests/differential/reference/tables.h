/**
 * @file tables.h
 * The reference model's tables and the few rules that all of its functions share.
 *
 * The model is a second library, written from the contract alone and as plainly as that allows: it makes the same
 * driver, service and system calls, so that these can be compared one by one. It uses nothing of the library's code.
 * Where the public header says all of it, the model of a call is generated from the header.
 * In a text that it prints, kAnyNumber stands for a number that the contract leaves open.
 */
#pragma once

#include <adp/adp.h>

#include <stddef.h>
#include <stdint.h>
#include <array>
#include <vector>

#include "generated/reference.h"

namespace reference {

inline constexpr char kAnyNumber[] = "\x01";

struct Tables {
    uint32_t max_port = 0;
    bool has_map = false;
    std::vector<adp_port_row_t> map;
    bool has_trunk_map = false;
    std::vector<uint32_t> trunk_map;
    std::array<uint8_t, 34> hold{}; /**< by combined index, from 1 on: 1 held, 2 disabled */
    std::array<adp_link_data_t, ADP_USER_PORTS + 1> link_data{};
    std::array<uint32_t, ADP_USER_PORTS + 1> last_change{}; /**< by user port */
    adp_link_event_cb_t link_handler = nullptr;
    int32_t socket = -1;
    std::array<adp_agg_record_t, ADP_AGG_GROUPS> groups{};
    std::array<std::array<uint32_t, 2>, ADP_AGG_GROUPS> standby{};
    std::array<uint32_t, ADP_AGG_GROUPS> manager{};
    std::array<int8_t, ADP_AGG_GROUPS + 1> is_up{}; /**< by group number */
    adp_agg_event_cb_t agg_handler = nullptr;
    std::vector<FpListNode *> rules;
    std::array<int16_t, ADP_VLANS> vlan_stg{};
};

extern Tables tables;

/** A member list as the callers of the list accessors have it: zeroed, 26 slots. */
struct Members {
    adp_status_t status = 0;
    uint32_t count = 0;
    std::array<uint32_t, ADP_MEMBER_LIST_SLOTS> slots{};
};

inline uint32_t type_of(uint32_t intf) {
    return intf >> 28;
}
inline uint32_t index_of(uint32_t intf) {
    return intf & 0x0FFFFFFFu;
}
inline bool is_user_port(uint32_t intf) {
    return type_of(intf) == 0;
}
inline bool is_agg(uint32_t intf) {
    return type_of(intf) == 1;
}
inline uint32_t trunk_of(uint32_t intf) {
    return index_of(intf) - 1;
}
inline bool is_group(uint32_t intf) {
    return trunk_of(intf) < ADP_AGG_GROUPS;
}

Members active_members(uint32_t agg);
Members configured_members(uint32_t agg);
/** The management interface, 0 for none. */
uint32_t manager_of(uint32_t agg);
/** The management interface, without one the lowest configured member, 0 for neither. */
uint32_t answering_member_of(uint32_t agg);

/** The driver's type of frames for a storm code. */
uint32_t storm_type(uint32_t code);

/** 0 stays 0, everything else is a driver failure. */
inline adp_status_t or_102(int32_t result) {
    return result == 0 ? 0 : 102;
}

/** Does @p step for the port of each listed interface until one fails, which is 102. */
template <typename Step>
adp_status_t each_member(const Members &members, Step step) {
    for (uint32_t n = 0; n < members.count && n < members.slots.size(); ++n) {
        if (members.slots[n] != 0 && step(adp_intf_2_phy_id(members.slots[n])) != 0) {
            return 102;
        }
    }
    return 0;
}

/** 201 for another type, -1 for a group outside 1..8, else 0. */
inline adp_status_t refusal_of(uint32_t intf) {
    return type_of(intf) > 1 ? 201 : is_agg(intf) && !is_group(intf) ? -1 : 0;
}

/** The rule of most reads: a user port itself, a group's management interface. */
template <typename Step>
adp_status_t on_port_or_manager(uint32_t intf, Step step) {
    const adp_status_t refusal = refusal_of(intf);
    return refusal != 0 ? refusal : step(adp_intf_2_phy_id(is_agg(intf) ? manager_of(intf) : intf));
}

/** The rule of reads that do without a management interface. */
template <typename Step>
adp_status_t on_port_or_answering_member(uint32_t intf, Step step) {
    const adp_status_t refusal = refusal_of(intf);
    if (refusal != 0) {
        return refusal;
    }
    const uint32_t answering = is_agg(intf) ? answering_member_of(intf) : intf;
    return is_agg(intf) && answering == 0 ? 203 : step(adp_intf_2_phy_id(answering));
}

/** On a group: for each listed member until one fails. */
template <typename Step>
adp_status_t on_port_or_members(uint32_t intf, Members (*members_of)(uint32_t), Step step) {
    const adp_status_t refusal = refusal_of(intf);
    if (refusal != 0) {
        return refusal;
    }
    return is_agg(intf) ? each_member(members_of(intf), step) : step(adp_intf_2_phy_id(intf));
}

/** The rule of calls that do not fan out. */
template <typename Step>
adp_status_t on_port_only(uint32_t intf, Step step) {
    if (is_user_port(intf)) {
        return or_102(step(adp_intf_2_phy_id(intf)));
    }
    return is_agg(intf) ? 102 : 201;
}

struct PortSet {
    std::array<uint32_t, 8> word{};
    [[nodiscard]] bool has(uint32_t n) const { return (word[n / 32] >> n % 32 & 1) != 0; }
    void add(int64_t n) {
        if (n >= 0 && n < 256) {
            word[static_cast<size_t>(n) / 32] |= 1u << n % 32;
        }
    }
    [[nodiscard]] static PortSet from(const uint32_t *words);
};
/** Interface numbers to physical ports. */
PortSet to_physical(const PortSet &interfaces);
/** Physical ports to interface numbers. */
PortSet to_interfaces(const PortSet &ports);

/** Takes memory as the library does; false when there is none. What is taken stays taken. */
bool takes_memory();

}  // namespace reference
