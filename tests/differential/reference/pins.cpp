// I/O pins.
#include "platform/netlink_api.h"
#include "tests/differential/reference/tables.h"

namespace reference {
namespace {

constexpr uint32_t kInput = 0x2000;
constexpr uint32_t kOutput = 0x2004;
constexpr uint32_t kDirection = 0x2008;

adp_status_t change_bit(uint32_t address, uint32_t pin, uint32_t value) {
    uint32_t word = 0;
    user_pci_read(0, 0, address, &word);
    if (value == 1) {
        word |= 1u << pin % 32;
    } else if (value == 0) {
        word &= ~(1u << pin % 32);
    }
    return user_pci_write(0, 0, address, &word);
}

}  // namespace

adp_status_t hal_gpio_register_init() {
    const uint32_t pins = 9;
    return user_pci_write(0, 0, kDirection, &pins);
}

adp_status_t hal_set_gpio_direct(uint32_t pin, uint32_t value) {
    return change_bit(kDirection, pin, value);
}

adp_status_t hal_set_gpio_write_bit(uint32_t pin, uint32_t value) {
    return change_bit(kOutput, pin, value);
}

int32_t hal_get_gpio_val(uint32_t pin) {
    uint32_t word = 0;
    user_pci_read(0, 0, kInput, &word);
    return pin < 4 ? static_cast<int32_t>(word >> pin & 1) : 0;
}

adp_status_t hal_reverse_gpio(uint32_t pin) {
    uint32_t word = 0;
    user_pci_read(0, 0, kOutput, &word);
    word ^= 1u << pin % 32;
    return user_pci_write(0, 0, kOutput, &word);
}

}  // namespace reference
