"""The calls of adp/gpio.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import c_int32, c_uint32

from ..call import Call, Status
from ..parameters import Value

__all__ = [
    "hal_gpio_register_init",
    "hal_set_gpio_direct",
    "hal_set_gpio_write_bit",
    "hal_get_gpio_val",
    "hal_reverse_gpio",
    "gpio_register_init",
    "set_gpio_direct",
    "set_gpio_write_bit",
    "get_gpio_val",
    "reverse_gpio",
]

_hal_gpio_register_init: Call[None] = Call("hal_gpio_register_init", Status)


def hal_gpio_register_init() -> None:
    """Sets the directions of the board's pins: writes 9 (pins 0 and 3) into the direction register.

    status: the write's result
    """
    _hal_gpio_register_init()


_hal_set_gpio_direct: Call[None] = Call("hal_set_gpio_direct", Status, Value("pin", c_uint32), Value("value", c_uint32))


def hal_set_gpio_direct(pin: int, value: int) -> None:
    """Sets a pin's bit in the direction register: reads the register, changes the bit, writes it.

    pin: pin number, 0..31; others are taken modulo 32
    value: 1 sets the bit, 0 clears it, any other value leaves it as read
    status: the write's result
    """
    _hal_set_gpio_direct(pin, value)


_hal_set_gpio_write_bit: Call[None] = Call(
    "hal_set_gpio_write_bit",
    Status,
    Value("pin", c_uint32),
    Value("value", c_uint32),
)


def hal_set_gpio_write_bit(pin: int, value: int) -> None:
    """Sets a pin's bit in the output register: reads the register, changes the bit, writes it.

    pin: pin number, 0..31; others are taken modulo 32
    value: 1 sets the bit, 0 clears it, any other value leaves it as read
    status: the write's result
    """
    _hal_set_gpio_write_bit(pin, value)


_hal_get_gpio_val: Call[int] = Call("hal_get_gpio_val", c_int32, Value("pin", c_uint32))


def hal_get_gpio_val(pin: int) -> int:
    """Reads a pin's level from the input register, of which only bits 3..0 are used.

    pin: pin number, not taken modulo 32; 0..3 can be read
    result: 0 or 1; always 0 for pins 4 and up, and when the register cannot be read
    """
    return _hal_get_gpio_val(pin)


_hal_reverse_gpio: Call[None] = Call("hal_reverse_gpio", Status, Value("pin", c_uint32))


def hal_reverse_gpio(pin: int) -> None:
    """Inverts a pin's bit in the output register: reads the register, inverts the bit, writes it.

    pin: pin number, 0..31; others are taken modulo 32
    status: the write's result
    """
    _hal_reverse_gpio(pin)


_gpio_register_init: Call[None] = Call("adp_gpio_register_init", Status)


def gpio_register_init() -> None:
    """The same as hal_gpio_register_init().

    status: as hal_gpio_register_init()
    """
    _gpio_register_init()


_set_gpio_direct: Call[None] = Call("adp_set_gpio_direct", Status, Value("pin", c_uint32), Value("value", c_uint32))


def set_gpio_direct(pin: int, value: int) -> None:
    """The same as hal_set_gpio_direct().

    pin: pin number, 0..31; others are taken modulo 32
    value: 1 sets the bit, 0 clears it, any other value leaves it as read
    status: as hal_set_gpio_direct()
    """
    _set_gpio_direct(pin, value)


_set_gpio_write_bit: Call[None] = Call(
    "adp_set_gpio_write_bit",
    Status,
    Value("pin", c_uint32),
    Value("value", c_uint32),
)


def set_gpio_write_bit(pin: int, value: int) -> None:
    """The same as hal_set_gpio_write_bit().

    pin: pin number, 0..31; others are taken modulo 32
    value: 1 sets the bit, 0 clears it, any other value leaves it as read
    status: as hal_set_gpio_write_bit()
    """
    _set_gpio_write_bit(pin, value)


_get_gpio_val: Call[int] = Call("adp_get_gpio_val", c_int32, Value("pin", c_uint32))


def get_gpio_val(pin: int) -> int:
    """The same as hal_get_gpio_val().

    pin: pin number, not taken modulo 32; 0..3 can be read
    result: as hal_get_gpio_val()
    """
    return _get_gpio_val(pin)


_reverse_gpio: Call[None] = Call("adp_reverse_gpio", Status, Value("pin", c_uint32))


def reverse_gpio(pin: int) -> None:
    """The same as hal_reverse_gpio().

    pin: pin number, 0..31; others are taken modulo 32
    status: as hal_reverse_gpio()
    """
    _reverse_gpio(pin)
