// Programming of the hardware trunk from a group's members and their links.
#include "agg/trunk.h"

#include <adp/port.h>
#include <netlink_api.h>

#include "agg/state_change.h"
#include "core/group_tables.h"
#include "core/port_map.h"
#include "port/attributes.h"

namespace adp {
namespace {

constexpr Place kAddWorker = {"hal_add_agg_member_ex", 393};
constexpr Place kDelWorker = {"hal_del_agg_member_ex", 564};
constexpr uint32_t kLinked = 1;  // other values count as down

uint32_t member_count(const adp_agg_record_t &record) {
    return static_cast<uint32_t>(record.count);
}

/** False if the record is full. */
[[gnu::noinline]] bool append(adp_agg_record_t *record, PhyPort port) {
    if (member_count(*record) >= ADP_AGG_MEMBER_BYTES) {
        return false;
    }
    record->ports[record->count++] = static_cast<uint8_t>(number(port));
    return true;
}

// An unmapped interface (-1) matches no byte.
bool is_among(const uint8_t *ports, uint32_t n, PhyPort port) {
    for (uint32_t i = 0; i < n; ++i) {
        if (port == PhyPort(ports[i])) {
            return true;
        }
    }
    return false;
}

bool is_listed(PhyPort port, uint32_t count, const uint32_t *list) {
    for (uint32_t i = 0; i < count; ++i) {
        if (phy_of(Intf(list[i])) == port) {
            return true;
        }
    }
    return false;
}

bool is_linked(PhyPort port) {
    return attribute_or_zero(intf_of(port), ADP_ATTR_LINK) == kLinked;
}

// Contract: listed ports are compared with the old members only, so a port listed twice is appended twice.
bool append_new(adp_agg_record_t *record, uint32_t count, const uint32_t *list) {
    const uint32_t existing = member_count(*record);
    for (uint32_t i = 0; i < count; ++i) {
        const PhyPort port = phy_of(Intf(list[i]));
        if (!is_among(record->ports, existing, port) && !append(record, port)) {
            return false;
        }
    }
    return true;
}

// The driver gets an in-use byte of 0.
adp_agg_record_t without_in_use(const adp_agg_record_t &record) {
    adp_agg_record_t result = record;
    result.in_use = 0;
    for (uint32_t i = member_count(record); i < ADP_AGG_MEMBER_BYTES; ++i) {
        result.ports[i] = 0;
    }
    return result;
}

adp_status_t finish(TrunkId trunk, const adp_agg_record_t &record, Commit commit, int32_t result) {
    if (commit == Commit::kYes && result == 0) {
        agg_info[number(trunk)] = record;
        user_trunk_send_data_to_kernel(0, 0, driver_number(trunk), record);
    }
    return result;
}

// The tables are exported and writable: the count may be more than a record holds.
bool is_sound(const adp_agg_record_t &record) {
    return member_count(record) <= ADP_AGG_MEMBER_BYTES;
}

}  // namespace

adp_status_t hal_add_agg_member_ex(TrunkId trunk, uint32_t count, const uint32_t *list, Commit commit,
                                   uint32_t *changed) {
    adp_agg_record_t record = agg_info[number(trunk)];
    if (!is_sound(record) || !append_new(&record, count, list)) {
        return ADP_FAIL;
    }
    if (record.count == 0) {
        return ADP_OK;
    }
    bool any_linked = false;
    for (uint32_t i = 0; i < member_count(record); ++i) {
        any_linked |= is_linked(PhyPort(record.ports[i]));
    }
    const int32_t result = user_trunk_set(0, 0, driver_number(trunk), without_in_use(record));
    if (any_linked) {
        if (agg_link_status[number(trunk) + 1] == 0) {
            announce_state(trunk, true, kAddWorker, changed);
        }
        send_event(trunk, kAddWorker);
    }
    return finish(trunk, record, commit, result);
}

adp_status_t hal_del_agg_member_ex(TrunkId trunk, uint32_t count, const uint32_t *list, Commit commit,
                                   uint32_t *changed) {
    const adp_agg_record_t &before = agg_info[number(trunk)];
    if (!is_sound(before)) {
        return ADP_FAIL;
    }
    // Contract: a committed removal clears the in-use byte too.
    adp_agg_record_t kept = {};
    adp_agg_record_t linked = {};
    for (uint32_t i = 0; i < member_count(before); ++i) {
        const PhyPort port{before.ports[i]};
        if (!is_listed(port, count, list)) {
            append(&kept, port);
            if (is_linked(port)) {
                append(&linked, port);
            }
        }
    }
    if (linked.count != 0) {
        return finish(trunk, kept, commit, user_trunk_set(0, 0, driver_number(trunk), linked));
    }
    user_trunk_destroy(0, 0, driver_number(trunk));
    const int32_t result = user_trunk_create_id(0, 0, driver_number(trunk));
    if (agg_link_status[number(trunk) + 1] == 1) {
        announce_state(trunk, false, kDelWorker, changed);
        send_event(trunk, kDelWorker);
    }
    return finish(trunk, kept, commit, result);
}

}  // namespace adp
