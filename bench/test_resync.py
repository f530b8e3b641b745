"""What the benchmark of adp-switchd's restart makes of its readings, and the size of its configuration."""

import tomllib

import pytest

from bench.problem import BenchError
from bench.resync import address_lines, bridge_lines, calls_in, configuration, is_synced, row_of

TRACE = """\
7 connect(5, {sa_family=AF_UNIX, sun_path="/tmp/run/keeper"}, 110) = 0
7 sendto(5, "x", 1, MSG_NOSIGNAL, NULL, 0) = 1
7 connect(9, {sa_family=AF_UNIX, sun_path="/tmp/device/driver"}, 110) = 0
7 sendto(9, "\\0", 20, MSG_NOSIGNAL, NULL, 0) = 20
7 sendto(8, "\\0", 20, 0, {sa_family=AF_NETLINK}, 12) = 20
8 sendto(9, "\\0", 24, MSG_NOSIGNAL, NULL, 0) = 24
7 +++ killed by SIGKILL +++
""".splitlines()


def test_driver_calls_are_the_messages_to_the_driver():
    assert calls_in(TRACE) == 2


def test_a_trace_without_driver_calls_is_refused():
    with pytest.raises(BenchError):
        calls_in(TRACE[:2])


def test_the_row_has_milliseconds():
    assert row_of([0.3, 0.1, 0.2001]) == [3, 100, 200, 300]


def test_synced_is_what_the_state_says():
    assert is_synced('{"state": {"synced": true}}') and not is_synced('{"state": {"synced": false}}')


def test_the_configuration_has_100_vlans_26_ports_and_1000_addresses():
    assert len(set(tomllib.loads(configuration())["interfaces"])) == 100
    words = [line.split() for line in bridge_lines()]
    assert sum(line[:2] == ["link", "add"] for line in words) == 100
    ports = {line[2] for line in words if line[:2] == ["link", "set"] and line[2].startswith("swp") and "." not in line[2]}
    assert ports == {f"swp{port}" for port in range(1, 27)}
    assert len({line.split()[2] for line in address_lines()}) == 1000
