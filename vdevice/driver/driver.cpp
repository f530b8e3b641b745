// Construction, and what the calls on a single port have in common.
#include "vdevice/driver/driver.h"

#include <utility>

#include "vdevice/driver/check.h"

namespace vdevice::driver {

using chip::Port;
using chip::Status;

Driver::Driver(chip::Switch &chip, Board board, Clock clock) : chip_{chip}, board_{board}, clock_{std::move(clock)} {
    for (int user_port = 1; user_port <= board.user_ports; ++user_port) {
        const uint32_t speed = Board::max_speed(user_port);
        chip_.change_port(*board.chip_port(user_port), [&](Port &port) {
            port.phy = chip::Phy{speed};
            return Status::kOk;
        });
    }
}

int32_t Driver::read_port(uint32_t unit, uint32_t zero, int32_t port, uint32_t *out,
                          const std::function<uint32_t(const Port &)> &value) const {
    return on_chip(unit, zero, [&] {
        if (out == nullptr) {
            return Status::kBadArgument;
        }
        if (!chip::Switch::has_port(port)) {
            return Status::kNoPort;
        }
        *out = value(chip_.port(port));
        return Status::kOk;
    });
}

int32_t Driver::look_at_port(uint32_t unit, uint32_t zero, int32_t port,
                             const std::function<Status(const Port &)> &read) const {
    return on_chip(unit, zero, [&] { return chip::Switch::has_port(port) ? read(chip_.port(port)) : Status::kNoPort; });
}

int32_t Driver::write_port(uint32_t unit, uint32_t zero, int32_t port, const std::function<Status(Port &)> &change) {
    return on_chip(unit, zero, [&] { return chip_.change_port(port, change); });
}

int32_t Driver::write_user_port(uint32_t unit, uint32_t zero, int32_t port,
                                const std::function<Status(Port &)> &change) {
    return on_chip(unit, zero, [&] {
        const Status status = chip::Switch::chip_ports().check_user_port(port);
        return status == Status::kOk ? chip_.change_port(port, change) : status;
    });
}

}  // namespace vdevice::driver
