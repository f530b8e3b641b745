// Mirror sessions, and the registers behind the general-purpose pins.
#include "vdevice/driver/check.h"
#include "vdevice/driver/driver.h"

namespace vdevice::driver {

using chip::Status;

int32_t Driver::user_mirror_init(uint32_t unit, uint32_t zero) {
    return on_chip(unit, zero, [&] {
        chip_.mirrors().clear();
        return Status::kOk;
    });
}

int32_t Driver::user_mirror_port_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t session, int32_t destination,
                                     uint32_t mode) {
    return on_chip(unit, zero, [&] { return chip_.mirrors().set_port(session, port, destination, mode); });
}

int32_t Driver::user_set_flow_mirror(uint32_t unit, uint32_t zero, uint32_t session, int32_t port) {
    return on_chip(unit, zero, [&] { return chip_.mirrors().set_flow_destination(session, port); });
}

int32_t Driver::user_set_mirror_disable(uint32_t unit, uint32_t zero, uint32_t session, adp_word_t value) {
    return on_chip(unit, zero, [&] { return chip_.mirrors().set_disabled(session, value != 0); });
}

int32_t Driver::user_check_set_mirror_disable(uint32_t unit, uint32_t zero, uint32_t session, adp_word_t value) {
    return on_chip(unit, zero, [&] { return chip_.mirrors().check_disabled(session, value != 0); });
}

int32_t Driver::user_pci_read(uint32_t unit, uint32_t zero, uint32_t address, uint32_t *value) {
    return on_chip(unit, zero,
                   [&] { return value == nullptr ? Status::kBadArgument : chip_.gpio().read(address, *value); });
}

int32_t Driver::user_pci_write(uint32_t unit, uint32_t zero, uint32_t address, const uint32_t *value) {
    return on_chip(unit, zero,
                   [&] { return value == nullptr ? Status::kBadArgument : chip_.gpio().write(address, *value); });
}

}  // namespace vdevice::driver
