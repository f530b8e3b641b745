"""What somebody who sees adpsh for the first time types, and what the answer must contain."""
import json
import os
import pty
import select
import subprocess

import pytest

from conftest import PROGRAMS, READY_SECONDS, run

# Lines, and texts that their answer must contain. No device is running.
ALONE = {
    "help": ["Commands:", "help vlan ", "device"],
    "?": ["Commands:"],
    "? vlan": ["adp_vlan_create", "Example:"],
    "help port": ["adp_set_phy_port_attr", "Example:"],
    "help ADP_E_DRIVER": ["ADP_E_DRIVER = 102", "a driver call failed"],
    "help ADP_ATTR_SPEED": ["of enum adp_port_attr", "Mb/s"],
    "help adp_l2_entry_t": ["mac[6]", "MAC address, network order", "physical port"],
    "help adp_storm_code": ["ADP_STORM_BROADCAST", "ADP_STORM_UNKNOWN_UNICAST"],
    "help adp_set_port_mstp_state": ["usage: adp_set_port_mstp_state stg intf state", "ADP_STG_STATE_FORWARDING"],
    "help vlan_exists": ["-11", "a result of the virtual device: the VLAN exists already"],
    "help -12": ["vlan_missing = -12", "the VLAN does not exist"],
    "help 102": ["ADP_E_DRIVER = 102"],
    "ADP_E_DRIVER": ["unknown call 'ADP_E_DRIVER'; 'help ADP_E_DRIVER' describes it"],
    "adp_l2_entry_t": ["'help adp_l2_entry_t' describes it"],
    "show ports": ["'show' lists the library's tables", "'device'"],
    "adp_intf_pvid_set 1 100": ["did you mean 'adp_intf_pivd_set'"],
    "adp_vlan_port_set 100 1,2 1": ["commas separate the items inside brackets"],
    "help speed": ["adp_set_phy_port_attr", "ADP_ATTR_SPEED"],
    "help pvid": ["adp_intf_pivd_set"],
    "help xyzzy": ["unknown call 'xyzzy'"],
    "help vlna": ["help vlan "],
    "calls speed": ["adp_set_phy_port_attr intf selector value mode"],
    "calls pvid": ["adp_intf_pivd_set intf vid"],
    "calls tpid": ["adp_double_tag_tipd_set", "adp_double_tag_tpid_get"],
    "calls spanning": ["adp_set_port_mstp_state stg intf state"],
    "calls xyzzy": ["no call matches", "help"],
    "adp_vlan_crate 5": ["did you mean 'adp_vlan_create'"],
    "adp_vlan_port_get": ["usage: adp_vlan_port_get vid [members] [untagged] -> members untagged"],
    "vlan": ["unknown call 'vlan'", "help vlan"],
    "portz": ["'help portz' searches for it"],
    "device": ["no vdeviced is running there", "Start it", "VDEVICE_DIR"],
    "device ports": ["no vdeviced is running there"],
    "vlans": ["unknown call 'vlans'", "device vlans"],
    "show intf_to_phy_port": ["null", "map"],
    "{1-4}": ["a line begins with the name of a call", "help"],
    "adp_vlan_create 100": ["= -1", "user_vlan_create gave -1: the call did not reach the device; "
                            "start vdeviced, or name its folder with --run-dir"],
    "adp_intf_2_phy_id agg1": ["= -1"],
    "adp_vlan_port_set 100 {1} {}": ["the port map of this process is empty", "'map'"],
    "adp_set_port_mstp_state 0 1 forwarding": ["is neither a number nor a constant", "ADP_STG_STATE_FORWARDING"],
    "adp_set_phy_port_attr 1 ADP_ATTR_SPED 100 0": ["did you mean 'ADP_ATTR_SPEED'"],
    "adp_set_phy_port_attr 1 speed 100 0": ["one of ADP_ATTR_SPEED, "],
}


@pytest.mark.parametrize("line", ALONE)
def test_without_a_device(nowhere, line):
    ended = run(nowhere, "--keep-going", text=line + "\n")
    for text in ALONE[line]:
        assert text in ended.stdout + ended.stderr
    assert ended.returncode == 0


# Each on a map of its own, in this order: what one creates stays.
BESIDE_A_DEVICE = [
    ("adp_vlan_create 300", ["= 0 (success)"]),
    ("adp_vlan_create 300", ["= -11 (vlan_exists of the virtual device: the VLAN exists already)"]),
    ("adp_vlan_port_set 300 {1-4,7} {1,2}", ["= 0 (success)"]),
    ("adp_vlan_port_get 300", ["members = {1-4,7}", "untagged = {1,2}"]),
    ("adp_vlan_port_set 300 {1,40} {1}", ["'members': port 40 is beyond the map, which has user ports 1 to 26", "= 0"]),
    ("adp_vlan_port_set 300 {1,30-31} {1}", ["ports 30, 31 are beyond the map"]),
    ("adp_set_port_pri_trust_mode 7 44",
     ["= 102 (ADP_E_DRIVER: a driver call failed: user_port_dscp_map_mode_set on user port 7 (physical port 10) gave -3, "
      "bad_argument of the virtual device: "]),
    ("adp_set_port_mstp_state 0 3 ADP_STG_STATE_BLOCKING", ["= 0"]),
    ("adp_set_phy_port_attr 40 ADP_ATTR_SPEED 100 0",
     ["'intf': port 40 is beyond the map, which has user ports 1 to 26", "on port -1 (no port) gave -4"]),
    ("adp_stg_stp_get 0 3", ["state = 1 (ADP_STG_STATE_BLOCKING)"]),
    ("adp_get_port_stat 1 ADP_COUNTER_RX_FRAMES", ["= 0", "value = 0"]),
    ("device vlans", ["300"]),
    ("vlans", ["300"]),
    ("ports", ["port"]),
    ("device", ["vlans", "macs"]),
    ("device portz", ["unknown command 'portz'", "did you mean 'ports'?"]),
    ("portz", ["unknown call 'portz'; did you mean 'ports'?"]),
    ("overview", ["'help overview' searches for it, and 'device' lists what the device answers"]),
    ("adp_set_port_mstp_state 3 1 ADP_STG_STATE_BLOCKING", ["stg_missing of the virtual device"]),
]


def test_beside_a_device(device):
    for line, texts in BESIDE_A_DEVICE:
        ended = run(device, "--map", "--keep-going", line)
        for text in texts:
            assert text in ended.stdout + ended.stderr, (line, ended.stdout, ended.stderr)


def test_a_result_in_json(device):
    ended = run(device, "--json", "--map", "--trace", "adp_vlan_destroy 4000", "adp_set_port_pri_trust_mode 7 44",
                "adp_get_port_pri_trust_mode 7", "vlans")
    refused, failed, read, vlans = map(json.loads, ended.stdout.splitlines())
    assert (refused["result"], refused["result_name"]) == (-12, "vlan_missing")
    assert refused["meaning"] == "the VLAN does not exist"
    assert refused["trace"] == ["user_vlan_destroy(unit=0, zero=0, vid=4000) -> -12 (vlan_missing)"]
    assert (failed["result"], failed["result_name"]) == (102, "ADP_E_DRIVER")
    assert failed["failed"] == {"call": "user_port_dscp_map_mode_set", "port": 10, "result": -3, "name": "bad_argument"}
    assert (read["result_name"], read["failed"]) == ("ADP_OK", None)
    assert read["outputs"]["mode"] == 1 and read["names"] == {"mode": "ADP_TRUST_TAG"}
    assert vlans["device"] == "vlans" and vlans["value"]["vlans"][0]["vid"] == 1


def topics(environment):
    overview = run(environment, "help").stdout
    return [line.split()[1] for line in overview[overview.index("Topics"):].splitlines()[1:]]


def test_every_topic_names_calls_that_exist_and_an_example_that_works(device):
    names = topics(device)
    assert {"vlan", "port", "mac", "storm"} <= set(names)
    for name in names:
        topic = json.loads(run(device, "--json", f"help {name}").stdout)
        assert topic["help"] == name and topic["calls"] and topic["example"]
        about = run(device, "--json", *(f"help {call}" for call in topic["calls"]))
        assert about.returncode == 0, about.stdout
        for record in map(json.loads, run(device, "--json", "--map", *topic["example"]).stdout.splitlines()):
            assert record.get("result") == 0 and record["result_name"] in ("ADP_OK", None), (name, record)


def test_the_warning_about_the_map_is_given_once(nowhere):
    ended = run(nowhere, text="adp_set_phy_port_attr 1 ADP_ATTR_SPEED 100 0\nadp_set_phy_port_attr 2 0 100 0\n")
    assert ended.stderr.count("warning: the port map") == 1


# Arguments of the program without the quotes that make them a line.
UNQUOTED = [
    (["adp_intf_2_phy_id", "2"], ["= 5"]),
    (["adp_api_xlate_port_pbmp_p2a", "{1, 2}"], ["bitmap = {4,5}"]),
    (["help", "vlan"], ["adp_vlan_create"]),
    (["help", "adp_vlan_create"], ["usage: adp_vlan_create vid"]),
    (["map", "adp_intf_2_phy_id", "2", "adp_intf_2_phy_id 3"], ["= 5", "= 6"]),
    (["device", "vlans"], ["no vdeviced is running there"]),
]


def test_lines_without_quotes(nowhere):
    for words, texts in UNQUOTED:
        ended = run(nowhere, "--map", *words)
        for text in texts:
            assert text in ended.stdout + ended.stderr, (words, ended)


def test_a_line_as_an_argument_and_options(nowhere):
    assert "= 4" in run(nowhere, "--map", "adp_intf_2_phy_id 1").stdout
    assert run(nowhere, "--version").stdout.startswith("adpsh ")
    elsewhere = run(nowhere, "--run-dir", "/nonexistent", "device ports")
    assert elsewhere.returncode == 1 and "/nonexistent/control" in elsewhere.stderr


@pytest.mark.parametrize("form", [[], ["--json"]])
@pytest.mark.parametrize("line", ["adp_intf_2_phy_id 1", "help", "echo text"])
def test_a_full_disk_is_no_success(nowhere, form, line):
    with open("/dev/full", "w", encoding="utf-8") as full:
        ended = run(nowhere, "--keep-going", *form, line, stdout=full)
    assert ended.returncode == 1
    assert "cannot write the answers to standard output: No space left on device" in ended.stderr


@pytest.mark.parametrize("option", ["--help", "--version"])
def test_a_full_disk_is_no_success_for_help_either(nowhere, option):
    with open("/dev/full", "w", encoding="utf-8") as full:
        ended = run(nowhere, option, stdout=full)
    assert ended.returncode == 1
    assert ended.stderr == "adpsh: cannot write to standard output: No space left on device\n"


def at_terminal(environment, typed):
    """What stands on the terminal at the end."""
    ours, theirs = pty.openpty()
    process = subprocess.Popen([os.path.join(PROGRAMS, "adpsh")], env={**environment, "TERM": "vt100"}, stdin=theirs,
                               stdout=theirs, stderr=theirs)
    os.close(theirs)
    os.write(ours, typed.encode())
    seen = b""
    while select.select([ours], [], [], READY_SECONDS)[0]:
        try:
            seen += os.read(ours, 4096)
        except OSError:  # the terminal's other end is closed
            break
    assert process.wait(READY_SECONDS) == 0
    os.close(ours)
    return seen.decode()


def test_the_terminal_says_how_to_begin(nowhere):
    assert at_terminal(nowhere, "quit\n").count("'help' lists commands and topics") == 1
    assert at_terminal(nowhere, "\n\nquit\n").count("'help' lists commands and topics") == 2


# What is typed up to a tab and behind it, and what the completed line gives.
COMPLETED = {
    "adp_set_port_mstp_state 0 1 ADP_STG_STATE_FO\t": "= 0 (success)",
    "adp_add_port_mirror 1 2 ADP_MIRROR_IN\t 1": "= 0 (success)",
    "adp_create_agg_group ag\t4": "= 0 (success)",
    "adp_add_port_mirror 1 2 ADP_MIRROR_INGRESS|ADP_MIRROR_EG\t 1": "= 0 (success)",
    "adp_set_port_mstp_state 0 state=ADP_STG_STATE_FO\t 1": "= 0 (success)",
    "help adp_l2_ent\t": "MAC address, network order",
    "help spanning\t": "adp_create_mstp_instance 1",
    "device vla\t": "* default VLAN",
    "adp_vlan_port_get 33\t": "= 0 (success)",
}


@pytest.mark.parametrize("typed", COMPLETED)
def test_completion(device, typed):
    run(device, "adp_vlan_create 3333")
    assert COMPLETED[typed] in at_terminal(device, f"map\n{typed}\nquit\n")
