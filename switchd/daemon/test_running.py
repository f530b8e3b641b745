"""A running daemon and its switch: what commands do, and whom 802.1X lets in, seen on the hosts' cables."""
import json
import select
import signal
import socket
import subprocess
import time

import pytest

from conftest import BOARD, SECONDS

QUIET_SECONDS = 0.3
EXPERIMENT = 0x88B5  # IEEE 802, local experimental
OTHER_STATION = "02:00:00:00:00:77"


def ip(*words):
    subprocess.run(["ip", *words], check=True)


def octets(mac):
    return bytes.fromhex(mac.replace(":", ""))


class Host:
    """The far end of a cable; each frame is another one."""

    number = 0

    def __init__(self, interface):
        self.socket = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, 0)
        self.socket.bind((interface, EXPERIMENT))
        self.mac = self.socket.getsockname()[4].hex(":")

    def send(self, source=None):
        Host.number += 1
        frame = b"\xff" * 6 + octets(source or self.mac) + EXPERIMENT.to_bytes(2, "big") + b"%046d" % Host.number
        self.socket.send(frame)
        return frame

    def hears(self, frame, seconds):
        end = time.monotonic() + seconds
        while select.select([self.socket], [], [], max(0, end - time.monotonic()))[0]:
            if self.socket.recv(2000) == frame:
                return True
        return False


def passes(sender, receiver, source=None):
    return receiver.hears(sender.send(source), QUIET_SECONDS)


def wait_until(condition, what):
    end = time.monotonic() + SECONDS
    while not condition():
        assert time.monotonic() < end, f"waited {SECONDS} s for {what}"
        time.sleep(0.02)


def asked(switchd, *words):
    said = switchd.run("--json", *words)
    assert said.returncode == 0, said.stderr
    return json.loads(said.stdout)


def port(switchd, name):
    return next(row for row in asked(switchd, "status", "ports")["ports"] if row["name"] == name)


def is_forwarding(switchd):
    """Whether the switch has the bridge with both ports."""
    status = asked(switchd, "status")
    states = {row["name"]: row["state"] for bridge in status["bridges"] for row in bridge["ports"]}
    return status["state"]["synced"] and states == {"swp1": "forwarding", "swp2": "forwarding"}


@pytest.fixture(name="bridge")
def bridge_of_two_ports(switchd):
    """Starts a daemon, and brings swp1 and swp2 into br100."""
    for number in (1, 2):
        ip("link", "set", f"host{number}", "up")
    ip("link", "add", "br100", "type", "bridge", "stp_state", "0", "mcast_snooping", "0")

    def start(settings=""):
        switchd.file.write_text(BOARD + settings, encoding="utf-8")
        process = switchd.start()
        assert process.first_line == "adp-switchd: ready\n", process.stderr.read()
        for name in ("swp1", "swp2"):
            ip("link", "set", name, "master", "br100", "up")
        ip("link", "set", "br100", "up")
        wait_until(lambda: is_forwarding(switchd), "the bridge in hardware")
        return process

    yield start
    subprocess.run(["ip", "link", "del", "br100"], check=True)


def is_let_in(guest, other, *source):
    """Whether the guest's frames come through, each of them."""
    return all(other.hears(guest.send(*source), SECONDS) for _ in range(2))


def is_kept_out(guest, other, *source):
    """Whether none of the guest's frames comes through."""
    return not any(passes(guest, other, *source) for _ in range(2))


def test_a_port_opens_for_whoever_is_let_in_and_closes_with_its_link(switchd, bridge):
    process = bridge('[ports.swp1]\ndot1x = "port"\n')
    guest, other = Host("host1"), Host("host2")
    assert is_kept_out(guest, other)
    assert port(switchd, "swp1")["dot1x"] == {"control": "port", "open": False, "stations": []}
    assert switchd.run("authorize", "swp1", guest.mac).stdout == f"{guest.mac} is let in on swp1.\n"
    assert is_let_in(guest, other) and is_let_in(guest, other, OTHER_STATION)
    assert port(switchd, "swp1")["dot1x"] == {"control": "port", "open": True, "stations": [guest.mac]}
    ip("link", "set", "host1", "down")
    wait_until(lambda: not port(switchd, "swp1")["dot1x"]["open"], "the port to close")
    ip("link", "set", "host1", "up")
    wait_until(lambda: port(switchd, "swp1")["link"], "the link")
    guest = Host("host1")
    assert is_kept_out(guest, other)
    switchd.run("authorize", "swp1")
    assert is_let_in(guest, other)
    assert switchd.run("unauthorize", "swp1").stdout == "swp1 is closed.\n"
    assert is_kept_out(guest, other)
    assert switchd.stop(process)[0] == 0


def test_stations_are_let_in_one_by_one(switchd, bridge):
    process = bridge('[ports.swp1]\ndot1x = "stations"\n')
    guest, other = Host("host1"), Host("host2")
    assert is_kept_out(guest, other)
    switchd.run("authorize", "swp1", guest.mac)
    wait_until(lambda: passes(guest, other), "the station's entry")
    assert is_kept_out(guest, other, OTHER_STATION)
    time.sleep(2)  # the look at what the switch has learned leaves the entry alone
    assert is_let_in(guest, other)
    switchd.run("unauthorize", "swp1", guest.mac)
    assert is_kept_out(guest, other)
    assert switchd.stop(process)[0] == 0


@pytest.mark.parametrize("control", ["port", "stations"])
def test_who_is_let_in_stays_in_when_the_daemon_is_killed(switchd, bridge, control):
    settings = f'[ports.swp1]\ndot1x = "{control}"\n'
    killed = bridge(settings)
    guest, other = Host("host1"), Host("host2")
    switchd.run("authorize", "swp1", guest.mac)
    wait_until(lambda: passes(guest, other), "the guest to be let in")
    assert switchd.stop(killed, signal.SIGKILL)[0] == -signal.SIGKILL
    assert is_let_in(guest, other)
    following = switchd.start()
    assert following.first_line == "adp-switchd: ready\n", following.stderr.read()
    assert port(switchd, "swp1")["dot1x"]["stations"] == [guest.mac]
    wait_until(lambda: asked(switchd, "status")["state"]["synced"], "the daemon to be in sync")
    assert is_let_in(guest, other)
    assert control == "port" or is_kept_out(guest, other, OTHER_STATION)
    assert switchd.stop(following)[0] == 0


def test_a_closed_port_lets_nobody_reach_the_switch_itself(switchd, bridge):
    process = bridge('[ports.swp1]\ndot1x = "port"\n')
    guest, bridged = Host("host1"), Host("br100")
    assert is_kept_out(guest, bridged)
    switchd.run("authorize", "swp1")
    wait_until(lambda: passes(guest, bridged), "the guest to be let in")
    assert is_let_in(guest, bridged)
    switchd.run("unauthorize", "swp1")
    assert is_kept_out(guest, bridged)
    assert switchd.stop(process)[0] == 0


def test_control_begins_and_ends_with_the_file(switchd, bridge):
    process = bridge()
    guest, other = Host("host1"), Host("host2")
    assert is_let_in(guest, other)
    switchd.file.write_text(BOARD + '[ports.swp1]\ndot1x = "port"\n', encoding="utf-8")
    process.send_signal(signal.SIGHUP)
    wait_until(lambda: port(switchd, "swp1")["dot1x"] is not None, "the control")
    assert is_kept_out(guest, other)
    switchd.file.write_text(BOARD, encoding="utf-8")
    process.send_signal(signal.SIGHUP)
    wait_until(lambda: port(switchd, "swp1")["dot1x"] is None, "its end")
    assert is_let_in(guest, other)
    assert switchd.stop(process)[0] == 0


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGKILL])
def test_control_ends_with_the_next_daemon_that_has_none(switchd, bridge, number):
    switchd.stop(bridge('[ports.swp1]\ndot1x = "port"\n'), number)
    process = bridge()
    guest, other = Host("host1"), Host("host2")
    wait_until(lambda: passes(guest, other), "the port to open")
    assert switchd.stop(process)[0] == 0


def test_interfaces_with_tags_come_and_go_by_command(switchd, bridge):
    process = bridge()
    assert switchd.run("add", "swp1.200").returncode == 0
    ip("link", "show", "swp1.200")
    assert switchd.run("remove", "swp1.200").returncode == 0
    assert subprocess.run(["ip", "link", "show", "swp1.200"], check=False, capture_output=True).returncode != 0
    for words in (("add", "swp1"), ("add", "swp9.200"), ("add", "eth0.200"), ("add", "swp1.4001"), ("add", "swp1.0"),
                  ("remove", "swp1.300"), ("authorize", "swp1"), ("authorize", "swp9"), ("authorize", "swp1", "x"),
                  ("statistics", "swp9")):
        said = switchd.run(*words)
        assert said.returncode == 1 and said.stdout == "" and said.stderr.endswith(".\n"), (words, said)
    assert switchd.stop(process)[0] == 0


def mtu(name):
    link, = json.loads(subprocess.check_output(["ip", "-j", "link", "show", name]))
    return link["mtu"]


def test_the_mtu_is_the_file_s(switchd, bridge):
    process = bridge('interfaces = ["swp1.200"]\n[ports.swp1]\nmtu = 1400\n')
    assert (mtu("swp1"), mtu("swp1.200"), mtu("swp2")) == (1400, 1400, 1500)
    switchd.file.write_text(BOARD + "[ports.swp2]\nmtu = 2000\n", encoding="utf-8")
    process.send_signal(signal.SIGHUP)
    wait_until(lambda: mtu("swp2") == 2000, "the MTU")
    assert switchd.stop(process)[0] == 0


def test_counters_are_those_of_the_hardware(switchd, bridge):
    process = bridge()
    guest, other = Host("host1"), Host("host2")
    before = asked(switchd, "statistics", "swp1")["statistics"][0]["rx_broadcast"]
    assert passes(guest, other)
    after, = asked(switchd, "statistics", "swp1")["statistics"]
    assert (after["name"], after["rx_broadcast"]) == ("swp1", before + 1)
    assert [row["name"] for row in asked(switchd, "statistics")["statistics"]] == ["swp1", "swp2", "swp3", "swp4"]
    assert "RX FRAMES" in switchd.run("statistics").stdout
    assert switchd.run("resync").returncode == 0
    text = switchd.run("status").stdout
    assert "br100" in text and "in sync with the kernel" in text and "FRAMES OF THE CPU" in text
    assert switchd.stop(process)[0] == 0
