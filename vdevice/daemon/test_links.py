"""The ports' links: cables, hosts, interfaces, and those who watch them."""
import os
import resource
import select
import signal
import subprocess
import time

import pytest

from testing.daemon import BOARD, BROADCAST, DEADLINE, PAYLOAD, Control, carrier, station, wait_until

CHIP_PORTS = 32
DOWN, UP = [24, 1000, 1, 2, 0], [24, 1000, 1, 0, 1]  # port 2, without and with its cable


def test_a_pulled_cable_passes_nothing_until_it_is_plugged(device):
    one, two = device.nics("host1", "host2")
    assert device.control("pull", "2").returncode == 0
    assert not carrier("host2")
    assert device.port(2)["pulled"] and not device.port(2)["up"]
    one.send(BROADCAST + station(1) + PAYLOAD)
    wait_until(lambda: device.counters(1)["rx_frames"] == 1, "the frame to be taken")
    assert device.counters(2)["tx_frames"] == 0
    assert device.control("plug", "2").returncode == 0
    wait_until(lambda: device.port(2)["up"] and carrier("host2"), "the link")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD


def test_a_disabled_ports_host_loses_its_carrier(device):
    one, two = device.nics("host1", "host2")
    assert device.call("enable", 24, 0) == "0"
    assert not carrier("host2")
    assert not device.port(2)["up"]
    assert device.control("pull", "2").returncode == 0
    assert device.call("enable", 24, 1) == "0"
    assert not carrier("host2"), "its cable is out"
    assert device.control("plug", "2").returncode == 0
    wait_until(lambda: device.port(2)["up"] and carrier("host2"), "the link")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD


def test_a_host_going_down_takes_its_link_along(device):
    device.nics("host3")
    subprocess.run(["ip", "link", "set", "host3", "down"], check=True)
    wait_until(lambda: not device.port(3)["link"], "the link to go")
    assert device.port(3)["present"]


def test_an_interface_that_vanishes_may_come_back(start):
    device = start("--create-interfaces", *BOARD)
    device.wait_ready()
    device.nics("host3")
    subprocess.run(["ip", "link", "del", "host3"], check=True)
    wait_until(lambda: not device.port(3)["present"], "the interface to be missed")
    subprocess.run(["ip", "link", "add", "port3", "type", "veth", "peer", "name", "host3"], check=True)
    one, three = device.nics("host1", "host3")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert three.receive() == BROADCAST + station(1) + PAYLOAD


def ip(*words):
    subprocess.run(["ip", *words], check=True)


def make_port_3():
    ip("link", "add", "port3", "type", "veth", "peer", "name", "host3")


def delete_port_3():
    ip("link", "del", "port3")


def make_it_anew():
    delete_port_3()
    make_port_3()


def let_another_take_its_name():
    ip("link", "set", "port3", "down")
    ip("link", "set", "port3", "name", "other3")
    ip("link", "set", "host3", "name", "old3")
    make_port_3()


def swap_the_names_of_two():
    """With their peers, so that host3 stays on port3's cable; the frames must follow the names."""
    for side in ("port", "host"):
        for number in (2, 3):
            ip("link", "set", f"{side}{number}", "down")
        ip("link", "set", f"{side}3", "name", "other3")
        ip("link", "set", f"{side}2", "name", f"{side}3")
        ip("link", "set", "other3", "name", f"{side}2")


def send_it_round():
    """Through another namespace: index and name are the same as before, but the kernel has let go of it."""
    with subprocess.Popen(["unshare", "-n", "sh", "-c", "echo; read line"], text=True, stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE) as other:  # fmt: skip
        other.stdout.readline()
        ip("link", "set", "port3", "netns", str(other.pid))
        subprocess.run(["nsenter", "-n", "-t", str(other.pid), "ip", "link", "set", "port3", "netns", str(os.getpid())],
                       check=True)  # fmt: skip


def nothing():
    pass


def flood():
    """More reports of links than the kernel keeps for a process that does not read them."""
    lines = "".join(f"link set dev eth0 alias {number}\n" for number in range(2000))
    subprocess.run(["ip", "-batch", "-"], input=lines, text=True, check=True)


def losses(device):
    return sum("had to drop reports" in line["text"] for line in device.ask("log")["log"])


def frames_pass(device):
    one, three = device.nics("host1", "host3")
    one.send(BROADCAST + station(1) + PAYLOAD)
    return three.receive() == BROADCAST + station(1) + PAYLOAD


@pytest.mark.parametrize("is_flooded", [False, True])
@pytest.mark.parametrize(
    "change", [make_it_anew, let_another_take_its_name, swap_the_names_of_two, send_it_round, nothing])  # fmt: skip
def test_a_port_is_on_the_interface_that_has_its_name(start, change, is_flooded):
    device = start("--create-interfaces", *BOARD)
    device.wait_ready()
    assert frames_pass(device)
    device.process.send_signal(signal.SIGSTOP)
    if is_flooded:
        flood()
    change()
    device.process.send_signal(signal.SIGCONT)
    if is_flooded:
        wait_until(lambda: losses(device), "the overrun to be noticed")
    assert frames_pass(device)
    assert losses(device) == is_flooded


def test_a_deleted_interface_is_missed_when_its_report_is_lost(start):
    device = start("--create-interfaces", *BOARD)
    device.wait_ready()
    assert frames_pass(device)
    device.process.send_signal(signal.SIGSTOP)
    flood()
    delete_port_3()
    device.process.send_signal(signal.SIGCONT)
    wait_until(lambda: not device.port(3)["present"] and not device.port(3)["up"], "the interface to be missed")
    assert losses(device)
    make_port_3()
    assert frames_pass(device)


def test_a_port_that_leaves_a_bridge_stays(device):
    assert frames_pass(device)
    ip("link", "add", "bridge0", "type", "bridge")
    ip("link", "set", "port3", "master", "bridge0")
    ip("link", "set", "port3", "nomaster")
    ip("link", "del", "bridge0")
    assert frames_pass(device)
    assert not any("gone" in line["text"] for line in device.ask("log")["log"])


def test_an_interface_that_cannot_be_opened_is_tried_again(start):
    device = start("--create-interfaces", *BOARD)
    device.wait_ready()
    delete_port_3()
    wait_until(lambda: not device.port(3)["present"], "the interface to be missed")
    _, hard = resource.prlimit(device.process.pid, resource.RLIMIT_NOFILE)
    resource.prlimit(device.process.pid, resource.RLIMIT_NOFILE, (4, hard))
    make_port_3()
    time.sleep(1.5)
    resource.prlimit(device.process.pid, resource.RLIMIT_NOFILE, (hard, hard))
    assert frames_pass(device)


class Watcher:
    """A process that has registered with the link scan."""

    def __init__(self, device):
        self.process = subprocess.Popen(**{**device.calling("watch"), "text": False}, bufsize=0, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        self.early = []  # told before the call that registers has returned
        while (line := self.line()) != b"0\n":
            self.early.append(line)

    def line(self):
        assert select.select([self.process.stdout], [], [], DEADLINE)[0]
        return self.process.stdout.readline()

    def links(self):
        """The links of all ports, which are told together; what is told before them is skipped."""
        told = [self.next_change()[1]]
        while [words[0] for words in told[-CHIP_PORTS:]] != [*range(CHIP_PORTS)]:
            told.append(self.next_change()[1])
        return told[-CHIP_PORTS:]

    def next_change(self):
        """When it was told, and what: port, speed, duplex, fault, link."""
        words = (self.early.pop(0) if self.early else self.line()).split()
        return float(words[0]), [int(word) for word in words[2:]]

    def stop(self):
        self.process.communicate(b"", timeout=DEADLINE)


def test_link_changes_are_told_within_a_tenth_of_a_second(device):
    device.nics("host2")
    wait_until(lambda: device.port(2)["up"], "the link")
    watcher, control = Watcher(device), Control(device)
    assert UP in watcher.links()

    def after(action, *changes):
        """The slowest of the changes that follow an action, in seconds."""
        begin = time.monotonic()
        action()
        told = [watcher.next_change() for _ in changes]
        assert [change for _, change in told] == list(changes)
        return max(when for when, _ in told) - begin

    def say(line):
        control.say(line)
        assert control.hear() == {}

    times = []
    for _ in range(5):
        times.append(after(lambda: say(b'{"command": "pull", "port": 2}\n'), DOWN))
        times.append(after(lambda: say(b'{"command": "plug", "port": 2}\n'), UP))
    assert sorted(times)[len(times) // 2] < 0.1, times
    host = ["ip", "link", "set", "host2"]
    after(lambda: subprocess.run([*host, "down"], check=True), [24, 1000, 1, 1, 0])
    after(lambda: subprocess.run([*host, "up"], check=True), UP)
    after(lambda: device.call("enable", 24, 0), [24, 1000, 1, 3, 0])
    after(lambda: device.call("enable", 24, 1), UP)
    watcher.stop()


def test_a_watcher_is_told_what_is_when_the_device_is_back(cables, start):
    first = start(*BOARD)
    first.wait_ready()
    first.nics("host2")
    wait_until(lambda: first.port(2)["up"], "the link")
    watcher = Watcher(first)
    assert UP in watcher.links()
    assert first.stop() == 0
    subprocess.run(["ip", "link", "set", "host2", "down"], check=True)
    second = start(*BOARD)
    second.wait_ready()
    assert [24, 1000, 1, 1, 0] in watcher.links()
    second.nics("host2")
    wait_until(lambda: watcher.next_change()[1] == UP, "the link to be told")
    watcher.stop()
    assert second.stop() == 0

