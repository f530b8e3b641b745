"""The driver socket and clients that are none."""
import socket
import struct

import pytest

from testing.daemon import DEADLINE


@pytest.fixture(name="device", scope="module")
def share_device(standing_device):
    return standing_device


class Driver:
    """A client of the driver socket that sends what it likes."""

    MAGIC = 0x61647001

    def __init__(self, device):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(DEADLINE)
        self.socket.connect(device.run_dir + "/driver")

    def say(self, *words):
        self.socket.sendall(struct.pack(f">{len(words)}I", *words))

    def is_closed(self):
        """Reads what is still there; False if nothing comes within the deadline."""
        try:
            while self.socket.recv(4096):
                pass
        except ConnectionResetError:
            pass
        except TimeoutError:
            return False
        return True


def interface_checksum(device):
    """Even a client that was built from other headers is told."""
    client = Driver(device)
    client.say(Driver.MAGIC, 0)
    return struct.unpack(">2I", client.socket.recv(8, socket.MSG_WAITALL))[1]


@pytest.mark.parametrize("greets, words", [
    (False, (0x47455420, 0x2F204854)), (False, (Driver.MAGIC, 0)), (True, (0,)), (True, (0xFFFFFFFF,)), (True, (16385, 0)),
    (True, (1, 0xFFFFFFFF)), (True, (2, 0, 0))])
def test_strangers_at_the_driver_socket_are_closed_alone(device, greets, words):
    silent, stranger = Driver(device), Driver(device)
    silent.say(Driver.MAGIC, interface_checksum(device), 16384)
    if greets:
        stranger.say(Driver.MAGIC, interface_checksum(device))
    stranger.say(*words)
    assert stranger.is_closed()
    assert device.call("enable", 4, 1) == "0"
    assert device.ask("version")["user_ports"] == 4
    silent.say(0)
    assert silent.socket.recv(8, socket.MSG_WAITALL)[:4] == struct.pack(">I", Driver.MAGIC), "it is still served"
