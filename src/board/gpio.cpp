// The chip's I/O pins, by read-modify-write of its registers.
#include <adp/gpio.h>
#include <netlink_api.h>

namespace adp {
namespace {

constexpr uint32_t kInput = 0x2000;
constexpr uint32_t kOutput = 0x2004;
constexpr uint32_t kDirection = 0x2008;

constexpr uint32_t kPins = 32;
constexpr uint32_t kInputPins = 4;
constexpr uint32_t kBoardDirections = 1u << 0 | 1u << 3;

constexpr uint32_t bit_of(uint32_t pin) {
    return 1u << pin % kPins;
}

uint32_t read_register(uint32_t address) {
    uint32_t value = 0;
    user_pci_read(0, 0, address, &value);
    return value;
}

adp_status_t write_register(uint32_t address, uint32_t value) {
    return user_pci_write(0, 0, address, &value);
}

adp_status_t write_bit(uint32_t address, uint32_t pin, uint32_t value) {
    const uint32_t old = read_register(address);
    switch (value) {
        case 0:
            return write_register(address, old & ~bit_of(pin));
        case 1:
            return write_register(address, old | bit_of(pin));
        default:
            return write_register(address, old);
    }
}

}  // namespace
}  // namespace adp

using namespace adp;

adp_status_t hal_gpio_register_init() {
    return write_register(kDirection, kBoardDirections);
}

adp_status_t hal_set_gpio_direct(uint32_t pin, uint32_t value) {
    return write_bit(kDirection, pin, value);
}

adp_status_t hal_set_gpio_write_bit(uint32_t pin, uint32_t value) {
    return write_bit(kOutput, pin, value);
}

// The writes take pins modulo 32. Here a pin beyond the register reads 0, not the level of a lower pin.
int32_t hal_get_gpio_val(uint32_t pin) {
    const uint32_t levels = read_register(kInput);
    return pin < kInputPins && (levels & bit_of(pin)) != 0 ? 1 : 0;
}

adp_status_t hal_reverse_gpio(uint32_t pin) {
    return write_register(kOutput, read_register(kOutput) ^ bit_of(pin));
}

adp_status_t adp_gpio_register_init() {
    return hal_gpio_register_init();
}

adp_status_t adp_set_gpio_direct(uint32_t pin, uint32_t value) {
    return hal_set_gpio_direct(pin, value);
}

adp_status_t adp_set_gpio_write_bit(uint32_t pin, uint32_t value) {
    return hal_set_gpio_write_bit(pin, value);
}

int32_t adp_get_gpio_val(uint32_t pin) {
    return hal_get_gpio_val(pin);
}

adp_status_t adp_reverse_gpio(uint32_t pin) {
    return hal_reverse_gpio(pin);
}
