"""Devices to test, started and cleared away. The tests run in a network namespace of their own:

    VDEVICE_PROGRAMS=build/host unshare -Urn /usr/bin/python3 -m pytest vdevice/daemon
"""
import subprocess
import tempfile

import pytest

from testing.daemon import BOARD, Device, interfaces


@pytest.fixture(name="run_dir")
def make_run_dir():
    with tempfile.TemporaryDirectory(prefix="vdevice-test-") as folder:
        yield folder + "/device"


@pytest.fixture(name="start")
def make_starter(run_dir):
    """Starts devices; whatever a failed test left running or standing is cleared away."""
    started = []

    def start(*options, run_dir=run_dir, under=()):
        started.append(Device(run_dir, *options, under=under))
        return started[-1]

    before = interfaces()
    yield start
    for device in started:
        if device.process.poll() is None:
            device.process.kill()
        device.process.communicate()
    for name in interfaces() - before:
        subprocess.run(["ip", "link", "del", name], check=False, stderr=subprocess.DEVNULL)


@pytest.fixture(name="cables", scope="session")
def make_cables(tmp_path_factory):
    """The board's interfaces, left standing by a device that was killed: making and deleting them takes long. They go
    with the namespace."""
    maker = Device(str(tmp_path_factory.mktemp("cables") / "device"), "--create-interfaces", *BOARD)
    maker.wait_ready()
    maker.process.kill()
    maker.process.communicate()


def pytest_collection_modifyitems(items):
    """Tests of devices that make their interfaces themselves go first."""
    items.sort(key=lambda item: "cables" in item.fixturenames)


@pytest.fixture(name="device")
def make_device(cables, start):
    device = start(*BOARD)
    device.wait_ready()
    yield device
    assert device.stop() == 0


@pytest.fixture(name="standing_device", scope="module")
def make_standing_device(cables, tmp_path_factory):
    """One device for the tests of a module that leave it as it was."""
    device = Device(str(tmp_path_factory.mktemp("standing") / "device"), *BOARD)
    device.wait_ready()
    yield device
    assert device.stop() == 0
