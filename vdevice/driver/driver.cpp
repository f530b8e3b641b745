// Construction, and the calls on a single port's state.
#include "vdevice/driver/driver.h"

#include <utility>

#include "vdevice/driver/check.h"

namespace vdevice::driver {

using chip::Port;
using chip::Status;

Driver::Driver(chip::Switch &chip, Board board, Clock clock) : chip_{chip}, board_{board}, clock_{std::move(clock)} {}

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

int32_t Driver::user_port_enable_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t enable) {
    return on_chip(unit, zero, [&] { return chip_.set_enabled(port, enable != 0); });
}

int32_t Driver::user_port_enable_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *enable) {
    return read_port(unit, zero, port, enable, [](const Port &state) { return state.enabled ? 1U : 0U; });
}

int32_t Driver::user_port_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) {
    return read_port(unit, zero, port, status, [](const Port &state) { return state.is_up() ? 1U : 0U; });
}

// The fibre side of any port reports the port's link, whatever its medium: that is what the election of a group's
// management interface reads of copper ports too.
int32_t Driver::user_fiberport_link_status_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *status) {
    return user_port_link_status_get(unit, zero, port, status);
}

}  // namespace vdevice::driver
