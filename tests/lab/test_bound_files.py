"""The files that a topology binds to a device."""

import json
import time

SWITCHD_SECONDS = 20.0


def test_lines_for_adpsh_have_the_port_map_and_run_first(labs):
    labs.file("adp_set_port_erps_state 2 1\nadp_vlan_create 300\n", "lines")
    binds = ', binds: ["lines:/etc/adp/startup.adpsh"], exec: ["on-cpu adpsh \'adp_vlan_destroy 300\'"]'
    labs.do("up", labs.switch(device=binds))
    (group,) = json.loads(labs.do("vdevctl", "sw1", "--json", "groups"))["groups"]
    assert group["blocking"] == [2]
    assert "300" not in labs.do("vdevctl", "sw1", "vlans")


def test_adp_switchd_runs_with_its_configuration(labs):
    labs.file("user_ports = 2\n", "switchd.toml")
    labs.do("up", labs.switch(device=', binds: ["switchd.toml:/etc/adp/switchd.toml"]'))
    deadline = time.monotonic() + SWITCHD_SECONDS
    while labs.try_to("exec", "sw1", "ip", "link", "show", "swp2").status != 0 and time.monotonic() < deadline:
        time.sleep(0.1)
    assert "swp2" in labs.do("exec", "sw1", "ip", "link", "show", "swp2")
    assert labs.try_to("exec", "sw1", "ip", "link", "show", "swp3").status != 0
    assert "ended" not in labs.do("ps")
