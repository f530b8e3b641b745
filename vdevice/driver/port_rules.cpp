// What a port lets pass: learning mode, egress set, priority of untagged frames, and the stored VLAN controls.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {

using chip::Port;
using chip::PortSet;
using chip::Status;

int32_t Driver::user_port_learn_set(uint32_t unit, uint32_t zero, int32_t port, int32_t mode) {
    return write_port(unit, zero, port, [&](Port &state) {
        const auto found = chip::find_learn_mode(mode);
        if (!found) {
            return Status::kBadArgument;
        }
        state.learning = *found;
        return Status::kOk;
    });
}

int32_t Driver::user_port_learn_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *mode) {
    return read_port(unit, zero, port, mode, [](const Port &state) { return state.learning.number; });
}

int32_t Driver::user_port_egress_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t module,
                                     adp_port_set_t egress) {
    return on_chip(unit, zero, [&] {
        return module != 0 ? Status::kBadArgument : chip_.set_egress(port, PortSet::from_words(egress.word));
    });
}

int32_t Driver::user_port_egress_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t module, uint32_t *egress) {
    return on_chip(unit, zero, [&] {
        if (module != 0 || egress == nullptr) {
            return Status::kBadArgument;
        }
        if (!chip::Switch::has_port(port)) {
            return Status::kNoPort;
        }
        chip_.port(port).egress.to_words(egress);
        return Status::kOk;
    });
}

int32_t Driver::user_port_untagged_priority_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t priority) {
    return write_port(unit, zero, port, [&](Port &state) {
        if (priority >= chip::kPriorities) {
            return Status::kBadArgument;
        }
        state.untagged_priority = priority;
        return Status::kOk;
    });
}

int32_t Driver::user_port_untagged_priority_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *priority) {
    return read_port(unit, zero, port, priority, [](const Port &state) { return state.untagged_priority; });
}

int32_t Driver::user_vlan_control_port_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t control,
                                           int32_t value) {
    return write_port(unit, zero, port, [&](Port &state) {
        if (control >= Port::kVlanControls) {
            return Status::kBadArgument;
        }
        state.vlan_controls[control] = value;
        return Status::kOk;
    });
}

int32_t Driver::user_vlan_control_port_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t control,
                                           uint32_t *value) {
    if (control >= Port::kVlanControls) {
        return on_chip(unit, zero, [] { return Status::kBadArgument; });
    }
    return read_port(unit, zero, port, value,
                     [&](const Port &state) { return static_cast<uint32_t>(state.vlan_controls[control]); });
}

}  // namespace vdevice::driver
