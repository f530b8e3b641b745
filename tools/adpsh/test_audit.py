"""The command audit, on a virtual device: after valid calls, after another program's, and without a device."""
import os
import random
import subprocess
import time
from types import SimpleNamespace

import pytest

from audit_life import Life
from json_shell import NAMESPACE, can_isolate, command

OPERATIONS = 60
GROUP = "01005e010203"


def run(environment, *arguments):
    return subprocess.run([*NAMESPACE, *command(), *arguments], env=environment, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=60)


@pytest.fixture(name="device", scope="module")
def make_device(tmp_path_factory):
    """The run folder and the process of a device; it is the host's for the target's shell, too. Its interfaces go with its namespace,
    faster than it could remove them."""
    if not can_isolate():
        pytest.skip("network namespaces are not permitted here")
    folder = str(tmp_path_factory.mktemp("device"))
    with subprocess.Popen([*NAMESPACE, f"{os.environ['VDEVICE_PROGRAMS']}/vdeviced", "--run-dir", folder,
                           "--create-interfaces"], stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          text=True) as process:
        assert process.stdout.readline() == "vdeviced: ready\n", process.stderr.read()
        yield SimpleNamespace(folder=folder, pid=process.pid)
        process.kill()


@pytest.fixture(name="environment")
def make_environment(device, tmp_path):
    """The device as after its start, but for VLANs."""
    environment = {**os.environ, "VDEVICE_DIR": device.folder, "HOME": str(tmp_path)}
    assert run(environment, "adp_modules_init", "adp_del_mac_addr_by_vlan 1 2").returncode == 0
    return environment


@pytest.fixture(name="other")
def make_other(start):
    """Another program on the same device, with tables of its own."""
    other = start()
    assert other.result("map") == 0
    return other


def made(shell, *lines):
    for line in lines:
        assert shell.result(line) == 0, line


def lines_of(shell):
    """The lines of an audit, whose numbers agree with them."""
    answer = shell("audit")
    failed = [row for row in answer["audit"] if row["failed_call"]]
    assert (answer["failed_calls"], answer["differences"]) == (len(failed), len(answer["audit"]) - len(failed))
    assert answer["result"] == (1 if answer["audit"] else 0)
    return [f"{row['topic']}: {row['place']}: {row['text']}" for row in answer["audit"]]


@pytest.mark.parametrize("seed", range(3))
def test_valid_lives_leave_no_difference(mapped, seed):
    life = Life(random.Random(seed))
    for _ in range(OPERATIONS):
        lines = life.next()
        made(mapped, *lines)
        assert lines_of(mapped) == [], lines
    counted = mapped("audit")["summary"]
    assert f"{len(life.rules)} rule" in counted and f"{len(life.snooped)} multicast group" in counted
    assert life.made == {operation.__name__ for operation in life.operations}
    made(mapped, *(f"adp_vlan_destroy {vid}" for vid in life.vlans))


def test_groups_of_vlans_that_another_program_changes_are_found(mapped, other):
    made(mapped, "adp_create_mstp_instance 1", "adp_create_mstp_instance 2", "adp_add_msti_member 1 100",
         "adp_add_msti_member 1 101", "adp_add_msti_member 1 102", "adp_add_msti_member 2 300")
    assert lines_of(mapped) == []
    made(other, "adp_create_mstp_instance 7", "adp_add_msti_member 7 200", "adp_add_msti_member 7 101",
         "adp_del_msti_member 1 102", "adp_delete_mstp_instance 2")
    assert lines_of(mapped) == ["spanning tree: VLAN 101: aiVlanStg has group 1, the driver group 7",
                                "spanning tree: VLAN 102: aiVlanStg has group 1, the driver group 0",
                                "spanning tree: VLAN 200: aiVlanStg has no group, the driver group 7",
                                "spanning tree: VLAN 300: aiVlanStg has group 2, the driver group 0"]


def test_multicast_groups_that_another_program_changes_are_found(mapped, other):
    made(mapped, f"adp_create_igmpsn_group {GROUP} 1 [1,2]", "adp_create_igmpsn_group 01005e010204 1 [3]")
    assert lines_of(mapped) == []
    made(other, f"adp_del_igmpsn_member {GROUP} 1 [2]", "adp_delete_igmpsn_group 01005e010204 1",
         "adp_create_igmpsn_group 01005e010205 1 [4,5]")
    assert lines_of(mapped) == [
        "multicast: 01:00:5e:01:02:03 in VLAN 1: by the lines it has the physical ports {4,5}, in the driver {4}",
        "multicast: 01:00:5e:01:02:04 in VLAN 1: User_mcast_port_get gave -27 (group_missing of the virtual device)",
        "multicast: 01:00:5e:01:02:05 in VLAN 1: in the driver with the physical ports {7,8}, no line has made it"]


def test_addresses_tell_of_trunks_that_another_program_changes(mapped, other):
    made(mapped, "adp_create_agg_group agg1", "adp_add_agg_member agg1 [5,6]", "adp_add_mac_addr 020000000005 agg1 1 1")
    assert lines_of(mapped) == []
    made(other, "adp_create_agg_group agg2", "adp_add_agg_member agg2 [9]", "adp_add_mac_addr 020000000009 agg2 1 1")
    assert lines_of(mapped) == ["trunks: trunk 1: agg_info has no group, the driver has 1 address behind it"]
    made(mapped, "SET_AGG_MANAGE_INTF agg1 9")
    made(other, "adp_del_mac_addr_by_vlan 1 2")
    assert lines_of(mapped) == ["trunks: agg1: agg_manage_intf has interface 0x9, which is no member"]


def test_addresses_that_a_member_learns_without_its_trunk_are_found(device, mapped, other):
    user = [] if os.geteuid() == 0 else ["-U", "--preserve-credentials"]
    subprocess.run(["nsenter", "-t", str(device.pid), *user, "-n", "ip", "link", "set", "host5", "up"], check=True)
    end = time.monotonic() + 10
    while other.outputs("adp_get_phy_port_attr 5 ADP_ATTR_LINK")["value"] != 1:
        assert time.monotonic() < end
    made(mapped, "adp_create_agg_group agg1", "adp_add_agg_member agg1 [5,6]", "adp_add_mac_addr 020000000005 5 1 0")
    assert lines_of(mapped) == []
    made(other, "adp_delete_agg_group agg1", "adp_add_mac_addr 020000000005 5 1 0")
    assert lines_of(mapped) == [
        "trunks: agg1: agg_info has physical port 8, the driver has 1 dynamic address on it and not on trunk 0"]


def test_rows_of_the_port_map_that_the_device_does_not_have_are_found(mapped):
    made(mapped, "adp_add_phy_port 26 0 0 60 0", "adp_add_phy_port 7 0 0 5 0")
    assert lines_of(mapped) == [
        "port map: user port 7: has physical port 5, as user port 2 has",
        "port map: user port 26: user_port_enable_get on physical port 60 gave -4 (no_port of the virtual device)"]


def test_rules_are_compared_as_far_as_the_driver_reads_them(mapped, other):
    rule = "{submodule_type=3 entity_id=1 action_num=1 actions=[{type=205 param=01010101}]}"
    assert mapped.result(f"adp_fp_add_entity_rule {rule}") != 0  # and is in the list all the same
    assert lines_of(mapped) == ["rules: rule 1 of submodule 3: user_field_get_statistics of counter 16843009 gave -59 "
                                "(counter_range of the virtual device)"]
    made(mapped, "adp_fp_delete_entity_rule 3 1 0")
    made(mapped, "adp_fp_add_entity_rule {submodule_type=3 entity_id=1 action_num=1 actions=[{type=201}]}")
    made(other, "adp_fp_init")  # all rules leave the chip, and no driver call tells
    assert lines_of(mapped) == []
    assert "no driver call reads the ports of a trunk or the entries of rules" in mapped("audit")["summary"]


def test_a_missing_device_is_a_line_for_each_failed_call(start, tmp_path):
    lost = start("--map", "--run-dir", str(tmp_path))
    answer = lost("audit")
    assert (answer["result"], answer["differences"]) == (1, 0)
    assert [row["failed_call"]["call"].split()[0] for row in answer["audit"]] == \
        ["user_port_enable_get"] * 27 + ["user_stg_default_get", "user_stg_stg_count_get"]
    assert {row["failed_call"]["result"] for row in answer["audit"]} == {-1}
    assert "compared 0 rows of the port map" in answer["summary"]
    assert "cannot be reached" in answer["printed"]["stderr"]


def test_differences_are_the_exit_status_of_a_script_that_goes_on(environment):
    good = run(environment, "--map", "audit")
    assert (good.returncode, good.stderr) == (0, "")
    assert good.stdout == (
        "0 differences, 0 failed driver calls; compared 27 rows of the port map, 0 addresses of the driver, 0 trunks, "
        "1 spanning-tree group, 4094 VLANs, 0 rules, 0 multicast groups of this shell; no driver call reads the ports "
        "of a trunk or the entries of rules, so these tables are compared with each other\n")
    for options in ((), ("--keep-going",)):
        bad = run(environment, "--map", *options, "SET_AGG_MANAGE_INTF agg1 3", "audit", "SET_AGG_MANAGE_INTF agg1 0",
                  "audit", "echo end")
        assert bad.returncode == 1
        said = bad.stdout.splitlines()
        assert said[1] == "trunks: agg1: agg_manage_intf has interface 0x3, which is no member"
        assert said[2].startswith("1 difference, 0 failed driver calls; ")
        assert said[4].startswith("0 differences, ") and said[5] == "end"


def test_the_audit_takes_no_words(shell):
    assert shell.error("audit trunks") == "usage: audit "
