"""Interfaces that somebody else makes and names, while the device runs; and the machine whose interfaces they are."""
import socket
import struct
import subprocess

import pytest

from testing.daemon import BROADCAST, DEADLINE, PAYLOAD, station, wait_until

MACHINE = "192.0.2.1"


def ip(*words):
    subprocess.run(["ip", *words], check=True)


def make_pair(name, peer):
    ip("link", "add", name, "type", "veth", "peer", "name", peer)
    # What the host says on its own would be in the way.
    for setting, value in (("ipv6/conf/{}/disable_ipv6", "1"), ("ipv4/conf/{}/arp_ignore", "8")):
        with open("/proc/sys/net/" + setting.format(peer), "w", encoding="ascii") as file:
            file.write(value)


@pytest.fixture(name="waiting_device")
def make_waiting_device(start):
    """A device without any user port's interface, whose names are lan1 and lan2."""
    make_pair("cpu0", "eth0")
    device = start("--port-interfaces", "lan", "--user-ports", "2")
    device.wait_ready()
    return device


def test_interfaces_may_come_later_under_a_name_of_their_own(waiting_device):
    device = waiting_device
    assert [port["present"] for port in device.ask("ports")["ports"]] == [True, False, False]
    make_pair("lan1", "host1")
    make_pair("lan2", "host2")
    one, two = device.nics("host1", "host2")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    ip("link", "del", "lan2")
    wait_until(lambda: not device.port(2)["present"], "the interface to be missed")
    make_pair("lan2", "host2")
    _, two = device.nics("host1", "host2")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    assert device.stop() == 0


def test_interfaces_that_are_there_are_taken_up_at_the_start(start):
    make_pair("cpu0", "eth0")
    make_pair("lan1", "host1")
    device = start("--port-interfaces", "lan", "--user-ports", "1")
    device.wait_ready()
    assert [port["present"] for port in device.ask("ports")["ports"]] == [True, True]
    assert device.stop() == 0


def test_the_cpu_port_must_be_there_at_the_start(start):
    device = start("--port-interfaces", "lan", "--user-ports", "1")
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors.startswith("vdeviced: cannot find interface cpu0.")


@pytest.mark.parametrize("name", ["", "a lan", "a/lan", "fourteen-chars"])
def test_impossible_names_are_told(start, name):
    device = start("--port-interfaces", name)
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors == "vdeviced: port-interfaces must be 1 to 13 letters without blanks, '/' and ':'.\n"


def arp_request(sender, wanted):
    addresses = socket.inet_aton(sender), socket.inet_aton(wanted)
    return (BROADCAST + station(1) + struct.pack(">HHHBBH", 0x0806, 1, 0x0800, 6, 4, 1) +
            station(1) + addresses[0] + bytes(6) + addresses[1] + bytes(18))


def test_the_machine_does_not_answer_on_ports_for_its_own_addresses(waiting_device):
    device = waiting_device
    make_pair("lan1", "host1")
    make_pair("lan2", "host2")
    make_pair("management", "operator")
    ip("address", "add", f"{MACHINE}/24", "dev", "management")
    for end in ("management", "operator"):
        ip("link", "set", end, "up")
    one, two = device.nics("host1", "host2")
    request = arp_request("192.0.2.7", MACHINE)
    one.send(request)
    assert two.receive() == request
    assert one.receive(0.3) is None
    assert device.stop() == 0
