// What the calls on a single port have in common.
#pragma once

#include <stdint.h>

#include "vdevice/chip/switch.h"

namespace vdevice::driver {

/** Hands an existing port to the operation, which gives the status. */
template <typename Operation>
chip::Status with_port(const chip::Switch &chip, int32_t port, Operation operation) {
    return chip::Switch::has_port(port) ? operation(chip.port(port)) : chip::Status::kNoPort;
}

/** Reads a value of a port. */
template <typename Out, typename Value>
chip::Status read_port(const chip::Switch &chip, int32_t port, Out &out, Value value) {
    return with_port(chip, port, [&](const chip::Port &state) {
        out = value(state);
        return chip::Status::kOk;
    });
}

/** Makes a change of a port that has nothing to refuse. */
template <typename Change>
chip::Status set_port(chip::Switch &chip, int32_t port, Change change) {
    return chip.change_port(port, [&](chip::Port &state) {
        change(state);
        return chip::Status::kOk;
    });
}

/** Changes a port that must not be the CPU's. */
template <typename Change>
chip::Status change_user_port(chip::Switch &chip, int32_t port, Change change) {
    const chip::Status status = chip::Switch::chip_ports().check_user_port(port);
    return status == chip::Status::kOk ? chip.change_port(port, change) : status;
}

}  // namespace vdevice::driver
