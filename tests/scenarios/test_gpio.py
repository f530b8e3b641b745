"""The chip's pins: outputs are seen from outside, inputs are read by the software."""

import pytest

OUTPUT_PIN, INPUT_PIN = 1, 3
READABLE_PINS = range(4)
BOARD_DIRECTIONS = 0b1001


@pytest.fixture
def pins(lab, cpu):
    """The pins as they are seen from outside; low and directed as on this board, before and afterwards."""

    def calm():
        assert cpu.result("adp_gpio_register_init") == 0
        for pin in (OUTPUT_PIN, 31):
            assert cpu.result("adp_set_gpio_write_bit", pin, 0) == 0
        for pin in (*READABLE_PINS, 5):
            lab.device.control("gpio", pin, 0)

    calm()
    yield lambda: lab.device.control("gpio")
    calm()


def test_directions_of_the_board(pins, cpu):
    assert pins()["direction"] == BOARD_DIRECTIONS
    assert cpu.result("adp_set_gpio_direct", 2, 1) == 0
    assert pins()["direction"] == BOARD_DIRECTIONS | 1 << 2
    assert cpu.result("adp_set_gpio_direct", 2, 5) == 0
    assert pins()["direction"] == BOARD_DIRECTIONS | 1 << 2, "a value other than 0 and 1 changes nothing"
    assert cpu.result("adp_set_gpio_direct", 2, 0) == 0
    assert pins()["direction"] == BOARD_DIRECTIONS


def test_output_is_written_and_turned_over(pins, cpu):
    assert cpu.result("adp_set_gpio_write_bit", OUTPUT_PIN, 1) == 0
    assert cpu.result("adp_set_gpio_write_bit", 63, 1) == 0
    assert pins()["output"] == 1 << OUTPUT_PIN | 1 << 31, "pins count modulo 32"
    assert cpu.result("adp_reverse_gpio", OUTPUT_PIN) == 0
    assert pins()["output"] == 1 << 31
    assert cpu.result("adp_reverse_gpio", OUTPUT_PIN) == 0
    assert pins()["output"] == 1 << OUTPUT_PIN | 1 << 31


def test_input_that_is_driven_is_read(pins, lab, cpu):
    assert [cpu.result("adp_get_gpio_val", pin) for pin in READABLE_PINS] == [0] * len(READABLE_PINS)
    lab.device.control("gpio", INPUT_PIN, 1)
    assert [cpu.result("adp_get_gpio_val", pin) for pin in READABLE_PINS] == [0, 0, 0, 1]
    lab.device.control("gpio", INPUT_PIN, 0)
    assert cpu.result("adp_get_gpio_val", INPUT_PIN) == 0


def test_pins_beyond_the_fourth_always_read_low(pins, lab, cpu):
    lab.device.control("gpio", 5, 1)
    assert pins()["input"] == 1 << 5
    assert cpu.result("adp_get_gpio_val", 5) == 0
