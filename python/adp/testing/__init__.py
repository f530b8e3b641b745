"""Packet tests with pytest: the plugin, its fixtures, and what tests make of them.

    def test_a_vlan_keeps_its_frames(lab, cpu):
        cpu.vlan_create(100)
        cpu.vlan_port_set(100, {1, 2}, set())
        marker = lab.marker()
        frame = Packet(vlan=100).build(marker)
        lab.hosts[1].send(frame)
        assert lab.arrivals(marker) == {2: [frame]}

The modules, each using those before it: `settings` (options), `calls` (calls by name, with values of Python), `cpu` (the
device's CPU, which undoes what a test sets), `packet` (packets by their fields), `crossing` (hosts in a VLAN),
`comparison` and `failures` (what a failed test tells), `plugin` (fixtures, markers, options). Packets, and the fields of
frames that did not arrive, need scapy, which is loaded no sooner.
"""

import pytest

pytest.register_assert_rewrite("adp.testing.cpu", "adp.testing.crossing")
