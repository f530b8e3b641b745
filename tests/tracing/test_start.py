"""What adp-switchd's calls tell of its start."""

import contextlib

from adp.lab import Lab
from adp.lab.switchd import Switchd
from recorded import library_calls, recording, replay

DEFAULT_VLAN = 1


def test_a_new_switch_is_closed_before_it_is_read(tmp_path):
    path = tmp_path / "start"
    with Lab("host", (), name="start") as lab, recording(path, "adp-switchd", "--config"):
        with contextlib.closing(Switchd(lab.device)):
            pass
    calls = [(name, arguments.get("vid")) for name, arguments in library_calls(path)]
    initialised = calls.index(("adp_modules_init", None))
    closed = calls.index(("adp_vlan_port_set", DEFAULT_VLAN))
    assert [name for name, _ in calls[initialised + 1 : closed]] == ["adp_vlan_default_get"]
    with Lab("host", (), name="replayed") as lab:
        for build in ("host", "mips"):
            status, said = replay(lab.device, build, path, "--driver=recorded")
            assert status == 0, said
