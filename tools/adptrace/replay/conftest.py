"""The device that the tests share."""
import os

import pytest
from adp.lab.device import Device
from testing.programs import DEVICE_BUILD

os.environ.setdefault("ASAN_OPTIONS", "detect_leaks=0")  # a new port map does not free the one before


@pytest.fixture(name="device", scope="module")
def make_device():
    device = Device(DEVICE_BUILD, user_ports=26)
    yield device
    device.close()
