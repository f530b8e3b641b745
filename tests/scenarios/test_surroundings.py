"""Faults around the library: a device that dies, an interface that is missing, a socket refused. Each gives the
contract's result, and the calling process goes on.
"""

import contextlib
import os

import pytest
from adp.lab import Lab
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet
from adp.lab.netns import NetNamespace
from adp.testing.cpu import Cpu


PORTS = (1, 5, 22)
VLAN = 100
DRIVER_FAILED = 102
NO_SOCKET = "adp_pkt_init:443 init send packet socket error !~\n"
WITHOUT_RAW_SOCKETS = ("setpriv", "--bounding-set", "-net_raw", "--inh-caps", "-net_raw", "--")
FRAME = ethernet(BROADCAST, bytes.fromhex("02adffffff01"), ETHERTYPE_EXPERIMENT, b"<nowhere>".ljust(46, b"."))
MINIMAL_MAP = ("adp_set_max_phy_port_num 26", "adp_add_cpu_port 0 0 0 0 0", "adp_add_phy_port 22 0 0 25 0")


@pytest.fixture(scope="module")
def small_lab(device_build):
    """A device of its own, which is killed."""
    with Lab(device_build, PORTS) as bench:
        yield bench


@pytest.fixture
def fresh_cpu(small_lab, build):
    with contextlib.closing(Cpu(small_lab, build)) as cpu:
        cpu.set_up()
        yield cpu


@pytest.fixture
def crashing_lab(small_lab):
    yield small_lab
    small_lab.device.restart()
    small_lab.await_links()


def reaches_port_22(bench, cpu):
    frame = ethernet(BROADCAST, bench.mac(), ETHERTYPE_EXPERIMENT, bench.marker())
    assert cpu.transmit(frame, (22,)) == 0
    return bench.arrivals(frame[14:]) == {22: [frame]}


def test_calls_fail_while_the_device_is_away_and_work_when_it_is_back(crashing_lab, fresh_cpu):
    cpu = fresh_cpu
    assert cpu.result("adp_vlan_create", VLAN) == 0
    crashing_lab.device.crash()
    assert cpu.result("adp_vlan_create", VLAN) < 0
    assert cpu.read_vlan(VLAN)[0] < 0
    assert cpu.result("adp_intf_pivd_get", 22) == DRIVER_FAILED
    assert cpu.result("check_port_vlan_ability", 22, VLAN) == -1
    assert cpu.transmit(FRAME, (22,), VLAN, 2) == -1
    assert cpu.transmit(FRAME, (22,), VLAN, 0) == -1
    # Without a VLAN nothing is asked of the device: the frame goes to eth0, and its cable leads nowhere.
    assert cpu.transmit(FRAME, (22,)) == 0
    crashing_lab.device.restart()
    crashing_lab.await_links()
    assert cpu.result("adp_vlan_create", VLAN) == 0
    assert cpu.read_vlan(VLAN) == (0, set(), set())
    assert reaches_port_22(crashing_lab, cpu)


def test_device_that_dies_during_a_call_fails_that_call(crashing_lab, fresh_cpu):
    crashing_lab.device.pause()
    fresh_cpu.shell.begin(f"adp_vlan_create {VLAN}")
    assert not fresh_cpu.shell.has_answered(0.3), "the device is paused and cannot have answered"
    crashing_lab.device.crash()
    assert fresh_cpu.shell.finish()["result"] < 0
    assert fresh_cpu.result("adp_get_max_phy_port_num") == 0, "the process goes on"


def test_library_starts_without_a_device(crashing_lab, build):
    crashing_lab.device.crash()
    with contextlib.closing(Cpu(crashing_lab, build)) as cpu:
        cpu.set_up()
        assert cpu.result("adp_vlan_create", VLAN) < 0
        crashing_lab.device.restart()
        assert cpu.result("adp_vlan_create", VLAN) == 0


@pytest.fixture
def cpu_without_eth0(small_lab, build):
    with contextlib.closing(NetNamespace("a place without eth0")) as elsewhere:
        with contextlib.closing(Cpu(small_lab, build, namespace=elsewhere)) as cpu:
            yield cpu


def test_missing_interface_fails_every_frame(cpu_without_eth0):
    cpu = cpu_without_eth0
    for line in MINIMAL_MAP:
        assert cpu.result(line) == 0
    assert cpu.result("adp_pkt_init") > 0
    answer = cpu.call("get_nic_index", "eth0")
    assert answer["result"] == -1
    assert answer["printed"]["stdout"] == f" ioctl failed: \r\n{os.strerror(19)}\r\n\r\n"
    assert cpu.transmit(FRAME, (22,)) == -1
    assert cpu.transmit_single(FRAME, 22, 5)["result"] == -1


def test_loopback_has_an_index(cpu_without_eth0):
    assert cpu_without_eth0.result("get_nic_index", "lo") == 1


@pytest.fixture
def unprivileged_cpu(small_lab, build):
    with contextlib.closing(Cpu(small_lab, build, before=WITHOUT_RAW_SOCKETS)) as cpu:
        yield cpu


def test_refused_socket_is_told_and_fails_every_frame(unprivileged_cpu):
    cpu = unprivileged_cpu
    for line in MINIMAL_MAP:
        assert cpu.result(line) == 0
    answer = cpu.call("adp_pkt_init")
    assert (answer["printed"]["stdout"], answer["result"]) == (NO_SOCKET, len(NO_SOCKET))
    assert cpu.transmit(FRAME, (22,)) == -1
    assert cpu.transmit_single(FRAME, 22, 5)["result"] == -1


def test_frames_before_the_send_socket_is_opened_fail(small_lab, build):
    with contextlib.closing(Cpu(small_lab, build)) as cpu:
        for line in MINIMAL_MAP:
            assert cpu.result(line) == 0
        assert cpu.transmit(FRAME, (22,)) == -1
        frame = ethernet(BROADCAST, small_lab.mac(), ETHERTYPE_EXPERIMENT, small_lab.marker())
        assert cpu.transmit_single(frame, 22, 5)["result"] == 0, "this call brings a socket of its own"
        assert small_lab.arrivals(frame[14:]) == {22: [frame]}
        assert cpu.result("adp_pkt_init") > 0
        assert reaches_port_22(small_lab, cpu)


def test_interface_that_is_down_fails_every_frame(small_lab, fresh_cpu):
    small_lab.device.namespace.ip("link set eth0 down")
    try:
        assert fresh_cpu.transmit(FRAME, (22,)) == -1
        assert fresh_cpu.transmit_single(FRAME, 22, 5)["result"] == -1
    finally:
        small_lab.device.namespace.ip("link set eth0 up")
        small_lab.await_links()
    assert reaches_port_22(small_lab, fresh_cpu)


def test_malformed_lines_are_refused_and_the_next_one_runs(fresh_cpu):
    for line in ("adp_vlan_crate 5", "adp_vlan_create", "adp_vlan_create five", "adp_transmit_frame zz 60 0 1 5", "{"):
        assert fresh_cpu.shell.ask(line).get("error"), line
    assert fresh_cpu.result("adp_intf_2_phy_id", 22) == 25


def test_device_ends_when_asked(device_build, build):
    with Lab(device_build, (1,), user_ports=1) as bench:
        assert bench.device.end() == 0
        assert "driver" not in os.listdir(bench.device.run_dir)
        assert "cpu0" not in bench.device.namespace.ip("link show"), "the device takes its interfaces with it"
