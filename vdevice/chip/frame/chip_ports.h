// The chip's ports. All but the CPU port are user ports.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "vdevice/chip/frame/port_set.h"
#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {

/** Ports 0 to 31, with or without a cable. */
constexpr size_t kChipPorts = 32;
constexpr PortSet kAllPorts = PortSet::range(0, static_cast<int>(kChipPorts) - 1);
/** The device's own processor is behind it. */
constexpr int kCpuPort = 0;

constexpr bool is_chip_port(int64_t port) {
    return port >= 0 && port < static_cast<int64_t>(kChipPorts);
}

struct ChipPorts {
    PortSet all;
    int cpu;

    Status check(int64_t port) const {
        return port >= 0 && port < PortSet::kSize && all.has(static_cast<int>(port)) ? Status::kOk : Status::kNoPort;
    }
    Status check_user_port(int64_t port) const { return port == cpu ? Status::kCpuPort : check(port); }
};

}  // namespace vdevice::chip
