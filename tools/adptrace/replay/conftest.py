"""The device that the tests share."""
import pytest
from adp.lab.device import Device
from testing.programs import DEVICE_BUILD


@pytest.fixture(name="device", scope="module")
def make_device():
    device = Device(DEVICE_BUILD, user_ports=26)
    yield device
    device.close()
