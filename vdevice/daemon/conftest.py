"""Devices to test, started and cleared away. The tests run in a network namespace of their own:

    VDEVICE_PROGRAMS=build/host unshare -Urn /usr/bin/python3 -m pytest vdevice/daemon
"""
import subprocess
import tempfile

import pytest

from testing.daemon import Device, interfaces


@pytest.fixture(name="run_dir")
def make_run_dir():
    with tempfile.TemporaryDirectory(prefix="vdevice-test-") as folder:
        yield folder + "/device"


@pytest.fixture(name="start")
def make_starter(run_dir):
    """Starts devices; whatever a failed test left running or standing is cleared away."""
    started = []

    def start(*options):
        started.append(Device(run_dir, *options))
        return started[-1]

    before = interfaces()
    yield start
    for device in started:
        if device.process.poll() is None:
            device.process.kill()
        device.process.communicate()
    for name in interfaces() - before:
        subprocess.run(["ip", "link", "del", name], check=False, stderr=subprocess.DEVNULL)


@pytest.fixture(name="device")
def make_device(start):
    device = start("--create-interfaces", "--user-ports", "4", "--first-port", "23")
    device.wait_ready()
    yield device
    assert device.stop() == 0
