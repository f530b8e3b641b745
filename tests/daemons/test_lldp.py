"""lldpd on the switch and on its hosts, and on the members of a group."""

import pytest
from adp.lab.lldp import Lldpd
from adp.lab.process import poll_until
from bench import await_equal

GROUP = """
[groups.agg1]
members = ["swp7", "swp8"]
mode = "static"
"""
ALONE, PULLED, MEMBERS = 1, 5, (7, 8)
PORTS = (ALONE, PULLED, *MEMBERS)
FOUND_SECONDS, AGED_SECONDS = 15.0, 15.0

pytestmark = pytest.mark.needs("lldpd")


@pytest.fixture
def switch(make_switch):
    made = make_switch(PORTS, GROUP)
    made.raise_ports(*(f"swp{port}" for port in PORTS))
    return made


def test_each_end_sees_the_other_and_forgets_it_without_a_cable(switch):
    here = switch.add(Lldpd(switch.namespace, "switch", "swp*"))
    there = {
        port: switch.add(Lldpd(host.namespace, f"host-{port}", host.nic.interface))
        for port, host in switch.hosts.items()
    }
    seen = {f"swp{port}": {(f"host-{port}", f"host{port}")} for port in PORTS}
    await_equal(here.neighbours, seen, "The switch sees each host at its port, also at a group's member", FOUND_SECONDS)
    for port, host in there.items():
        await_equal(host.neighbours, {f"host{port}": {("switch", f"swp{port}")}}, f"Host {port} sees the switch")

    switch.pull(PULLED)
    del seen[f"swp{PULLED}"]
    await_equal(here.neighbours, seen, "The switch forgets the host whose cable was pulled", AGED_SECONDS)
    poll_until(lambda: not there[PULLED].neighbours(), AGED_SECONDS, "The host forgets the switch")
    assert all(there[port].neighbours() for port in PORTS if port != PULLED)
