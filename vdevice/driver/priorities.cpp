// Priorities: where those of frames come from, and the maps that make others of them.
#include "vdevice/driver/driver.h"
#include "vdevice/driver/port_access.h"

namespace vdevice::driver {
namespace {

using chip::DscpMap;
using chip::DscpRow;
using chip::Port;
using chip::Status;
using chip::Switch;

/** Ports and code points: all of them. A mapped code point: the one that it is without a map. */
constexpr int32_t kEvery = -1;

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

class Priorities : public PrioritiesCalls {
  public:
    explicit Priorities(Switch &chip) : chip_{chip} {}

    Status user_qos_dscp_map_set(uint32_t dscp, uint32_t priority) override {
        const Status status = DscpMap::check(dscp, 0, priority);
        if (status == Status::kOk) {
            dscps().set_priority(dscp, static_cast<uint8_t>(priority));
        }
        return status;
    }

    Status user_qos_dscp_map_get(uint32_t dscp, uint32_t &priority) override {
        const Status status = DscpMap::check(dscp, 0, 0);
        if (status == Status::kOk) {
            priority = dscps().row(dscp).priority;
        }
        return status;
    }

    Status user_qos_pri_remap_set(uint32_t port, uint32_t priority, uint32_t new_priority, uint32_t /*further1*/,
                                  uint32_t /*further2*/, uint32_t /*further3*/, uint32_t /*further4*/) override {
        return chip_.change_port(static_cast<int32_t>(port), [&](Port &state) {
            if (priority >= chip::kPriorities || new_priority >= chip::kPriorities) {
                return Status::kBadArgument;
            }
            state.remap.to[priority] = static_cast<uint8_t>(new_priority);
            return Status::kOk;
        });
    }

    // A port has one priority of its own: that of its untagged frames is its class of service too.
    Status user_qos_port_cos_set(int32_t port, uint32_t value) override {
        return user_port_untagged_priority_set(port, value);
    }

    Status user_qos_port_cos_get(int32_t port, uint32_t &value) override {
        return user_port_untagged_priority_get(port, value);
    }

    Status user_port_dscp_map_set(int32_t port, int32_t dscp, int32_t mapped, uint32_t priority) override {
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
            set_row(dscps(), port, at, wanted_row(at, mapped, priority));
        }
        return Status::kOk;
    }

    Status user_port_dscp_map_get(int32_t port, int32_t dscp, uint8_t &mapped, uint8_t &priority) override {
        if (dscp < 0 || static_cast<uint32_t>(dscp) >= chip::kDscps) {
            return Status::kBadArgument;
        }
        const Status status = check_map_port(port);
        if (status == Status::kOk) {
            const auto at = static_cast<uint32_t>(dscp);
            const DscpRow row = port == kEvery ? dscps().row(at) : dscps().row(port, at);
            mapped = row.mapped;
            priority = row.priority;
        }
        return status;
    }

    Status user_port_dscp_map_mode_set(int32_t port, uint32_t mode) override {
        return chip_.change_port(port, [&](Port &state) {
            if (mode >= chip::kTrustModes) {
                return Status::kBadArgument;
            }
            state.trust = static_cast<chip::Trust>(mode);
            return Status::kOk;
        });
    }

    Status user_port_dscp_map_mode_get(int32_t port, uint32_t &mode) override {
        return read_port(chip_, port, mode, [](const Port &state) { return static_cast<uint32_t>(state.trust); });
    }

    Status user_port_untagged_priority_set(int32_t port, uint32_t priority) override {
        return chip_.change_port(port, [&](Port &state) {
            if (priority >= chip::kPriorities) {
                return Status::kBadArgument;
            }
            state.untagged_priority = priority;
            return Status::kOk;
        });
    }

    Status user_port_untagged_priority_get(int32_t port, uint32_t &priority) override {
        return read_port(chip_, port, priority, [](const Port &state) { return state.untagged_priority; });
    }

  private:
    DscpMap &dscps() { return chip_.priority_rules().dscps; }

    Switch &chip_;
};

}  // namespace

std::unique_ptr<PrioritiesCalls> priorities(Switch &chip) {
    return std::make_unique<Priorities>(chip);
}

}  // namespace vdevice::driver
