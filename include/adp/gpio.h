/**
 * @file gpio.h
 * The switch chip's general-purpose I/O pins, bit n of three 32-bit registers for pin n: input 0x2000, output 0x2004,
 * direction 0x2008.
 *
 * Registers are read with user_pci_read(0, 0, address, &value) and written with user_pci_write(0, 0, address, &value).
 * The result of a read is ignored: after a failure the value counts as 0. Nothing here takes a lock: of two callers
 * that change pins of one register at once, one can lose its change.
 */
#pragma once

#include <adp/types.h>

ADP_BEGIN_DECLS

/**
 * Sets the directions of the board's pins: writes 9 (pins 0 and 3) into the direction register.
 *
 * @return the write's result
 */
adp_status_t hal_gpio_register_init(void);

/**
 * Sets a pin's bit in the direction register: reads the register, changes the bit, writes it.
 *
 * @param pin    pin number, 0..31; others are taken modulo 32
 * @param value  1 sets the bit, 0 clears it, any other value leaves it as read
 * @return the write's result
 */
adp_status_t hal_set_gpio_direct(uint32_t pin, uint32_t value);

/**
 * Sets a pin's bit in the output register: reads the register, changes the bit, writes it.
 *
 * @param pin    pin number, 0..31; others are taken modulo 32
 * @param value  1 sets the bit, 0 clears it, any other value leaves it as read
 * @return the write's result
 */
adp_status_t hal_set_gpio_write_bit(uint32_t pin, uint32_t value);

/**
 * Reads a pin's level from the input register, of which only bits 3..0 are used.
 *
 * @param pin  pin number, not taken modulo 32; 0..3 can be read
 * @return 0 or 1; always 0 for pins 4 and up, and when the register cannot be read
 */
int32_t hal_get_gpio_val(uint32_t pin);

/**
 * Inverts a pin's bit in the output register: reads the register, inverts the bit, writes it.
 *
 * @param pin  pin number, 0..31; others are taken modulo 32
 * @return the write's result
 */
adp_status_t hal_reverse_gpio(uint32_t pin);

/**
 * The same as hal_gpio_register_init().
 *
 * @return as hal_gpio_register_init()
 */
adp_status_t adp_gpio_register_init(void);

/**
 * The same as hal_set_gpio_direct().
 *
 * @param pin    pin number, 0..31; others are taken modulo 32
 * @param value  1 sets the bit, 0 clears it, any other value leaves it as read
 * @return as hal_set_gpio_direct()
 */
adp_status_t adp_set_gpio_direct(uint32_t pin, uint32_t value);

/**
 * The same as hal_set_gpio_write_bit().
 *
 * @param pin    pin number, 0..31; others are taken modulo 32
 * @param value  1 sets the bit, 0 clears it, any other value leaves it as read
 * @return as hal_set_gpio_write_bit()
 */
adp_status_t adp_set_gpio_write_bit(uint32_t pin, uint32_t value);

/**
 * The same as hal_get_gpio_val().
 *
 * @param pin  pin number, not taken modulo 32; 0..3 can be read
 * @return as hal_get_gpio_val()
 */
int32_t adp_get_gpio_val(uint32_t pin);

/**
 * The same as hal_reverse_gpio().
 *
 * @param pin  pin number, 0..31; others are taken modulo 32
 * @return as hal_reverse_gpio()
 */
adp_status_t adp_reverse_gpio(uint32_t pin);

ADP_END_DECLS
