// The maps that make priorities and queues of what frames bring with them.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"
#include "vdevice/driver/words.h"

namespace vdevice::driver {
namespace {

using chip::DscpMap;
using chip::DscpRow;
using chip::Port;
using chip::Status;
using chip::Switch;

/** Ports and code points: all of them. A mapped code point: the one that it is without a map. */
constexpr int32_t kEvery = -1;

/** In the place of a port's queue: the port has no row of its own any more. */
constexpr uint32_t kChipsQueue = 0xFFFFFFFF;

/** Whether the port of a call on the DSCP map exists, or means all. */
Status check_map_port(int32_t port) {
    return port == kEvery || Switch::has_port(port) ? Status::kOk : Status::kNoPort;
}

DscpRow wanted_row(uint32_t dscp, int32_t mapped, uint32_t priority) {
    return mapped == kEvery ? DscpMap::power_on_row(dscp)
                            : DscpRow{static_cast<uint8_t>(mapped), static_cast<uint8_t>(priority)};
}

void set_row(DscpMap &map, int32_t port, uint32_t dscp, DscpRow row) {
    if (port == kEvery) {
        map.set(dscp, row);
    } else {
        map.set(port, dscp, row);
    }
}

}  // namespace

int32_t Driver::user_cosq_mapping_set(uint32_t unit, uint32_t zero, uint32_t priority, uint32_t queue) {
    return on_chip(unit, zero, [&] { return chip_.queue_map().set(priority, queue); });
}

int32_t Driver::user_cosq_mapping_get(uint32_t unit, uint32_t zero, uint32_t priority, uint32_t *queue) {
    return read_word(unit, zero, queue, [&](uint32_t &out) {
        if (priority >= chip::kPriorities) {
            return Status::kBadArgument;
        }
        out = chip_.queue_map().queue_of(priority);
        return Status::kOk;
    });
}

int32_t Driver::user_cosq_port_mapping_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority,
                                           uint32_t queue) {
    return on_chip(unit, zero, [&] {
        if (!Switch::has_port(port)) {
            return Status::kNoPort;
        }
        if (queue != kChipsQueue || priority >= chip::kPriorities) {
            return chip_.queue_map().set(port, priority, queue);
        }
        chip_.queue_map().clear(port, priority);
        return Status::kOk;
    });
}

int32_t Driver::user_cosq_port_mapping_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority,
                                           uint32_t *queue) {
    return read_word(unit, zero, queue, [&](uint32_t &out) {
        if (!Switch::has_port(port)) {
            return Status::kNoPort;
        }
        if (priority >= chip::kPriorities) {
            return Status::kBadArgument;
        }
        out = chip_.queue_map().queue_of(port, priority);
        return Status::kOk;
    });
}

int32_t Driver::user_qos_pri_queue_map_set(adp_word_t unit, adp_word_t zero, adp_word_t priority, adp_word_t queue) {
    return user_cosq_mapping_set(number(unit), number(zero), number(priority), number(queue));
}

int32_t Driver::user_qos_pri_queue_map_get(adp_word_t unit, adp_word_t zero, adp_word_t priority, uint32_t *queue) {
    return user_cosq_mapping_get(number(unit), number(zero), number(priority), queue);
}

int32_t Driver::user_port_dscp_map_set(uint32_t unit, uint32_t zero, int32_t port, int32_t dscp, int32_t mapped,
                                       uint32_t priority) {
    return on_chip(unit, zero, [&] {
        const bool every = dscp == kEvery;
        const bool restores = mapped == kEvery;
        const uint32_t first = every ? 0 : static_cast<uint32_t>(dscp);
        Status status = check_map_port(port);
        if (status == Status::kOk) {
            status = DscpMap::check(first, restores ? 0 : static_cast<uint32_t>(mapped), restores ? 0 : priority);
        }
        if (status != Status::kOk) {
            return status;
        }
        const uint32_t end = every ? chip::kDscps : first + 1;
        for (uint32_t at = first; at < end; ++at) {
            set_row(chip_.priority_rules().dscps, port, at, wanted_row(at, mapped, priority));
        }
        return Status::kOk;
    });
}

int32_t Driver::user_port_dscp_map_get(uint32_t unit, uint32_t zero, int32_t port, int32_t dscp, uint8_t *mapped,
                                       uint8_t *priority) {
    return read_word(unit, zero, mapped, [&](uint8_t &out) {
        if (priority == nullptr || dscp < 0 || static_cast<uint32_t>(dscp) >= chip::kDscps) {
            return Status::kBadArgument;
        }
        const Status status = check_map_port(port);
        if (status == Status::kOk) {
            const DscpMap &map = chip_.priority_rules().dscps;
            const auto at = static_cast<uint32_t>(dscp);
            const DscpRow row = port == kEvery ? map.row(at) : map.row(port, at);
            out = row.mapped;
            *priority = row.priority;
        }
        return status;
    });
}

int32_t Driver::user_qos_dscp_map_set(adp_word_t unit, adp_word_t zero, adp_word_t dscp, adp_word_t priority) {
    return on_chip(number(unit), number(zero), [&] {
        const Status status = DscpMap::check(number(dscp), 0, number(priority));
        if (status == Status::kOk) {
            chip_.priority_rules().dscps.set_priority(number(dscp), static_cast<uint8_t>(priority));
        }
        return status;
    });
}

int32_t Driver::user_qos_dscp_map_get(adp_word_t unit, adp_word_t zero, adp_word_t dscp, uint32_t *priority) {
    return read_word(number(unit), number(zero), priority, [&](uint32_t &out) {
        const Status status = DscpMap::check(number(dscp), 0, 0);
        if (status == Status::kOk) {
            out = chip_.priority_rules().dscps.row(number(dscp)).priority;
        }
        return status;
    });
}

int32_t Driver::user_port_dscp_map_mode_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t mode) {
    return write_port(unit, zero, port, [&](Port &state) {
        if (mode >= chip::kTrustModes) {
            return Status::kBadArgument;
        }
        state.trust = static_cast<chip::Trust>(mode);
        return Status::kOk;
    });
}

int32_t Driver::user_port_dscp_map_mode_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) {
    return read_port(unit, zero, port, mode, [](const Port &state) { return static_cast<uint32_t>(state.trust); });
}

int32_t Driver::user_qos_pri_remap_set(uint32_t unit, adp_word_t port, adp_word_t priority, adp_word_t new_priority,
                                       adp_word_t /*further1*/, adp_word_t /*further2*/, adp_word_t /*further3*/,
                                       adp_word_t /*further4*/) {
    return write_port(unit, 0, port_number(port), [&](Port &state) {
        if (number(priority) >= chip::kPriorities || number(new_priority) >= chip::kPriorities) {
            return Status::kBadArgument;
        }
        state.remap.to[number(priority)] = static_cast<uint8_t>(new_priority);
        return Status::kOk;
    });
}

// A port has one priority of its own: that of its untagged frames is its class of service too.
int32_t Driver::user_qos_port_cos_set(int32_t port, uint32_t value) {
    return user_port_untagged_priority_set(0, 0, port, value);
}

int32_t Driver::user_qos_port_cos_get(int32_t port, uint32_t *value) {
    return user_port_untagged_priority_get(0, 0, port, value);
}

int32_t Driver::user_qos_default_cos_src_init() {
    chip_.priority_rules().defaults_to_port = true;
    return kOk;
}

// An inner tag's priority has one source on this chip, which is the inner tag itself: there is nothing to choose.
int32_t Driver::user_qos_remark_inner_tag_src_init() {
    return kOk;
}

int32_t Driver::user_qos_trust_sel_group_init() {
    Switch::all_ports().for_each([&](int port) {
        chip_.change_port(port, [](Port &state) {
            state.trust = chip::Trust::kDot1p;
            return Status::kOk;
        });
    });
    return kOk;
}

}  // namespace vdevice::driver
