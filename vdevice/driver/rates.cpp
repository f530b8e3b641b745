// Limits on what ports let in: storm control and the ingress policer.
#include <vector>

#include "vdevice/chip/rates/storm_control.h"
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {
namespace {

using chip::Counting;
using chip::Limiter;
using chip::Port;
using chip::PortStorm;
using chip::Status;
using chip::StormType;
using chip::StormTypeEntry;

/** In place of a type or a code: all of them. */
constexpr uint32_t kAllTypes = 0;

/** Hands the type of this number to the operation. */
template <typename Operation>
Status with_type(uint32_t number, Operation operation) {
    const std::optional<StormType> type = chip::find_storm_type(number);
    return type ? operation(*type) : Status::kStormType;
}

/** The types that a selector names: one by its storm code, or all of them; none if it means nothing. */
std::vector<StormType> selected_types(uint32_t selector) {
    std::vector<StormType> types;
    for (const StormTypeEntry &entry : chip::kStormTypeTable) {
        if (selector == kAllTypes || selector == entry.code) {
            types.push_back(entry.type);
        }
    }
    return types;
}

Status read_limit(const Limiter &limiter, uint32_t *rate, uint32_t *burst) {
    if (rate == nullptr || burst == nullptr) {
        return Status::kBadArgument;
    }
    *rate = limiter.limit().rate;
    *burst = limiter.limit().depth;
    return Status::kOk;
}

Status write_flag(uint32_t *out, bool value) {
    if (out == nullptr) {
        return Status::kBadArgument;
    }
    *out = value ? 1 : 0;
    return Status::kOk;
}

}  // namespace

int32_t Driver::user_rate_bandwidth_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t rate,
                                        uint32_t burst) {
    return write_user_port(unit, zero, port, [&](Port &state) {
        return with_type(type, [&](StormType found) {
            return state.storm.of(found).limiter.set({rate, burst}, clock_());
        });
    });
}

int32_t Driver::user_rate_bandwidth_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t *rate,
                                        uint32_t *burst) {
    return look_at_port(unit, zero, port, [&](const Port &state) {
        return with_type(type, [&](StormType found) { return read_limit(state.storm.of(found).limiter, rate, burst); });
    });
}

int32_t Driver::user_rate_stormsel_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t value) {
    return write_user_port(unit, zero, port, [&](Port &state) {
        return with_type(type, [&](StormType found) {
            if (value > 1) {
                return Status::kBadArgument;
            }
            state.storm.set_in_joint(found, value != 0);
            return Status::kOk;
        });
    });
}

int32_t Driver::user_rate_stormsel_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t type, uint32_t *value) {
    return look_at_port(unit, zero, port, [&](const Port &state) {
        return with_type(type, [&](StormType found) { return write_flag(value, state.storm.is_in_joint(found)); });
    });
}

int32_t Driver::user_rate_stormControlEnable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t type,
                                                 uint32_t enable) {
    return write_user_port(unit, zero, port, [&](Port &state) {
        if (type == kAllTypes) {
            for (PortStorm::Kind &kind : state.storm.kinds()) {
                kind.enabled = enable != 0;
            }
            return Status::kOk;
        }
        return with_type(type, [&](StormType found) {
            state.storm.of(found).enabled = enable != 0;
            return Status::kOk;
        });
    });
}

int32_t Driver::user_rate_stormExceedFlag_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t storm_code,
                                              uint32_t *flag) {
    return look_at_port(unit, zero, port, [&](const Port &state) {
        const std::optional<StormType> type = chip::find_storm_code(storm_code);
        return type ? write_flag(flag, state.storm.of(*type).exceeded) : Status::kStormType;
    });
}

int32_t Driver::user_rate_stormExceedFlag_reset(uint32_t unit, uint32_t zero, int32_t port) {
    return write_user_port(unit, zero, port, [](Port &state) {
        for (PortStorm::Kind &kind : state.storm.kinds()) {
            kind.exceeded = false;
        }
        return Status::kOk;
    });
}

int32_t Driver::user_rate_stormCountMode_set(uint32_t unit, uint32_t zero, uint32_t selector, uint32_t mode) {
    return on_chip(unit, zero, [&] {
        const std::vector<StormType> types = selected_types(selector);
        if (types.empty()) {
            return Status::kStormType;
        }
        if (mode > static_cast<uint32_t>(Counting::kFrames)) {
            return Status::kBadArgument;
        }
        for (const StormType type : types) {
            chip_.set_storm_counting(type, static_cast<Counting>(mode), clock_());
        }
        return Status::kOk;
    });
}

// All types can be asked for their mode as long as they have one in common.
int32_t Driver::user_rate_stormCountMode_get(uint32_t unit, uint32_t zero, uint32_t selector, uint32_t *mode) {
    return read_word(unit, zero, mode, [&](uint32_t &out) {
        const std::vector<StormType> types = selected_types(selector);
        if (types.empty()) {
            return Status::kStormType;
        }
        const Counting first = chip_.storm_counting(types.front());
        for (const StormType type : types) {
            if (chip_.storm_counting(type) != first) {
                return Status::kStormType;
            }
        }
        out = static_cast<uint32_t>(first);
        return Status::kOk;
    });
}

int32_t Driver::user_port_ingress_rate_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t rate, uint32_t burst) {
    return write_user_port(unit, zero, port, [&](Port &state) { return state.policer.set({rate, burst}, clock_()); });
}

int32_t Driver::user_port_ingress_rate_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *rate,
                                           uint32_t *burst) {
    return look_at_port(unit, zero, port, [&](const Port &state) { return read_limit(state.policer, rate, burst); });
}

}  // namespace vdevice::driver
