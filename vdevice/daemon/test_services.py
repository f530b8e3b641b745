"""Pins and the event queue, as the software on the device uses them."""
import pytest


@pytest.fixture(name="device", scope="module")
def share_device(standing_device):
    return standing_device


def test_pins_are_driven_by_hand_and_read_by_software(device):
    assert device.ask("gpio") == {"input": 0, "output": 0, "direction": 0}
    assert device.ask("gpio", "3", "1")["input"] == 8
    assert device.call("read-register", 0x2000) == "8 0"
    assert device.call("write-register", 0x2000, 1) == "-71"
    assert device.call("write-register", 0x2004, 5) == "0"
    assert device.control("gpio", "3", "0").stdout == (
        "direction  0x00000000\noutput     0x00000005\ninput      0x00000000\n")


def test_one_process_reads_the_events_of_another(device):
    nothing = " ".join(["0"] * 13)
    assert device.call("receive-event") == nothing
    assert device.call("send-event") == "1"
    assert len(device.ask("events")["events"]) == 1
    assert device.call("receive-event") == "1 77 1 0 0 0 0 0 0 29 26 1 1"
    assert device.call("receive-event") == nothing
