// Rates: storm control, the ingress limit and the egress shaper of ports.
#include <utility>
#include <vector>

#include "vdevice/chip/rates/storm_control.h"
#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"

namespace vdevice::driver {
namespace {

using chip::Counting;
using chip::Port;
using chip::PortStorm;
using chip::RateLimit;
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

Status read_limit(const RateLimit &limit, uint32_t &rate, uint32_t &burst) {
    rate = limit.rate;
    burst = limit.depth;
    return Status::kOk;
}

class Rates : public RatesCalls {
  public:
    Rates(chip::Switch &chip, Clock clock) : chip_{chip}, clock_{std::move(clock)} {}

    Status user_rate_bandwidth_set(int32_t port, uint32_t type, uint32_t rate, uint32_t burst) override {
        return change_storm(port, type, [&](PortStorm &storm, StormType found) {
            return storm.of(found).limiter.set({rate, burst}, clock_());
        });
    }

    Status user_rate_bandwidth_get(int32_t port, uint32_t type, uint32_t &rate, uint32_t &burst) override {
        return read_storm(port, type, [&](const PortStorm &storm, StormType found) {
            return read_limit(storm.of(found).limiter.limit(), rate, burst);
        });
    }

    Status user_rate_stormsel_set(int32_t port, uint32_t type, uint32_t value) override {
        return change_storm(port, type, [&](PortStorm &storm, StormType found) {
            if (value > 1) {
                return Status::kBadArgument;
            }
            storm.set_in_joint(found, value != 0);
            return Status::kOk;
        });
    }

    Status user_rate_stormsel_get(int32_t port, uint32_t type, uint32_t &value) override {
        return read_storm(port, type, [&](const PortStorm &storm, StormType found) {
            value = storm.is_in_joint(found);
            return Status::kOk;
        });
    }

    Status user_rate_stormControlEnable_set(int32_t port, uint32_t type, uint32_t enable) override {
        if (type == kAllTypes) {
            return change_all_storms(port, [&](PortStorm::Kind &kind) { kind.enabled = enable != 0; });
        }
        return change_storm(port, type, [&](PortStorm &storm, StormType found) {
            storm.of(found).enabled = enable != 0;
            return Status::kOk;
        });
    }

    Status user_rate_stormExceedFlag_get(int32_t port, uint32_t code, uint32_t &flag) override {
        return with_port(chip_, port, [&](const Port &state) {
            const std::optional<StormType> type = chip::find_storm_code(code);
            if (!type) {
                return Status::kStormType;
            }
            flag = state.storm.of(*type).exceeded;
            return Status::kOk;
        });
    }

    Status user_rate_stormExceedFlag_reset(int32_t port) override {
        return change_all_storms(port, [](PortStorm::Kind &kind) { kind.exceeded = false; });
    }

    Status user_rate_stormCountMode_set(uint32_t selector, uint32_t mode) override {
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
    }

    // All types can be asked for their mode as long as they have one in common.
    Status user_rate_stormCountMode_get(uint32_t selector, uint32_t &mode) override {
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
        mode = static_cast<uint32_t>(first);
        return Status::kOk;
    }

    Status user_port_ingress_rate_set(int32_t port, uint32_t rate, uint32_t burst) override {
        return change_user_port(chip_, port, [&](Port &state) { return state.policer.set({rate, burst}, clock_()); });
    }

    Status user_port_ingress_rate_get(int32_t port, uint32_t &rate, uint32_t &burst) override {
        return with_port(chip_, port,
                         [&](const Port &state) { return read_limit(state.policer.limit(), rate, burst); });
    }

    Status user_port_egress_rate_set(int32_t port, uint32_t rate, uint32_t burst) override {
        return chip_.set_shaper(clock_(), port, {rate, burst});
    }

    Status user_port_egress_rate_get(int32_t port, uint32_t &rate, uint32_t &burst) override {
        return with_port(chip_, port, [&](const Port &) {
            const RateLimit *shaper = chip_.queues().port(port).shaper();
            return read_limit(shaper == nullptr ? RateLimit{0, 0} : *shaper, rate, burst);
        });
    }

  private:
    template <typename Operation>
    Status change_storm(int32_t port, uint32_t type, Operation operation) {
        return change_user_port(chip_, port, [&](Port &state) {
            return with_type(type, [&](StormType found) { return operation(state.storm, found); });
        });
    }

    template <typename Operation>
    Status read_storm(int32_t port, uint32_t type, Operation operation) const {
        return with_port(chip_, port, [&](const Port &state) {
            return with_type(type, [&](StormType found) { return operation(state.storm, found); });
        });
    }

    template <typename Change>
    Status change_all_storms(int32_t port, Change change) {
        return change_user_port(chip_, port, [&](Port &state) {
            for (PortStorm::Kind &kind : state.storm.kinds()) {
                change(kind);
            }
            return Status::kOk;
        });
    }

    chip::Switch &chip_;
    Clock clock_;
};

}  // namespace

std::unique_ptr<RatesCalls> rates(chip::Switch &chip, Clock clock) {
    return std::make_unique<Rates>(chip, std::move(clock));
}

}  // namespace vdevice::driver
