// The chip's ports, for tables that keep something for each user port: the CPU port is no user port.
#pragma once

#include <cstdint>

#include "vdevice/chip/port_set.h"
#include "vdevice/chip/status.h"

namespace vdevice::chip {

struct ChipPorts {
    PortSet all;
    int cpu;

    Status check(std::int64_t port) const {
        return port >= 0 && port < PortSet::kSize && all.has(static_cast<int>(port)) ? Status::kOk : Status::kNoPort;
    }
    Status check_user_port(std::int64_t port) const { return port == cpu ? Status::kCpuPort : check(port); }
};

}  // namespace vdevice::chip
