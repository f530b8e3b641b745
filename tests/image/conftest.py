"""Devices as image/run-device runs them, the cables between them, and hosts.

They are processes with the programs of build/host, in namespaces as a container has them; with ADP_IMAGE, the path of
an image, they are containers of it.
"""

import itertools
import os
import subprocess

import pytest
from adp.lab.host import Station
from adp.lab.netns import NetNamespace
from adp.lab.offload import disable_offloads

pytest.register_assert_rewrite("container", "process")
from container import Container, Engine  # noqa: E402
from process import Process  # noqa: E402

IMAGE = os.environ.get("ADP_IMAGE")


@pytest.fixture(name="engine", scope="session")
def make_engine(tmp_path_factory):
    """Podman with the image, in a storage of its own."""
    if not IMAGE:
        pytest.skip("of containers alone; script/image --check")
    with Engine(IMAGE, tmp_path_factory.mktemp("podman")) as engine:
        yield engine


@pytest.fixture(name="make_device")
def make_maker(request, tmp_path):
    """Starts devices with files in their /etc/adp: make_device({"startup.adpsh": "..."}); waits until they are ready."""
    made = []

    def make(files=None, wait=True):
        etc = tmp_path / f"etc{len(made)}"
        etc.mkdir()
        for name, text in (files or {}).items():
            (etc / name).write_text(text)
        device = Container(request.getfixturevalue("engine"), etc) if IMAGE else Process(etc)
        made.append(device)
        device.start()
        if wait:
            device.await_ready()
        return device

    yield make
    for device in made:
        device.close()


class Cables:
    """Joins devices' ports and hosts with pairs of virtual interfaces, as an engine does."""

    def __init__(self):
        self._numbers = itertools.count()
        self._hosts = []

    def join(self, device, port, other, other_port):
        """A cable between two devices."""
        self._pair(f"eth{port}", device.pid, f"eth{other_port}", other.pid)

    def host(self, device, port, address):
        """A host with an address at the port."""
        namespace = NetNamespace(f"host{next(self._numbers)}")
        self._hosts.append(namespace)
        self._pair(f"eth{port}", device.pid, "eth1", namespace.holder_pid)
        with namespace.entered():
            disable_offloads("eth1")
        station = Station(namespace, "eth1")
        self._hosts[-1] = station
        station.set_address(address)
        return station

    def close(self):
        for host in self._hosts:
            host.close()

    @staticmethod
    def _pair(name, pid, peer, peer_pid):
        command = ["ip", "link", "add", name, "netns", pid, "type", "veth", "peer", "name", peer, "netns", peer_pid]
        subprocess.run([*map(str, command)], check=True)


@pytest.fixture(name="cables")
def make_cables():
    cables = Cables()
    yield cables
    cables.close()
