"""Lines with errors, the shell's own commands, and the exit status."""
import os
import pty
import random
import select
import subprocess

import pytest

from json_shell import NAMESPACE, command

REJECTED = {
    "adp_vlan_creat 1": "unknown call 'adp_vlan_creat'; did you mean 'adp_vlan_create'",
    "adp_intf_2_phy_id": "too few arguments; usage: adp_intf_2_phy_id intf",
    "adp_intf_2_phy_id 1 2": "too many arguments; usage: adp_intf_2_phy_id intf",
    "adp_intf_2_phy_id port=1": "adp_intf_2_phy_id has no argument 'port'",
    "adp_intf_2_phy_id intf=1 intf=2": "'intf' is given twice",
    "adp_intf_2_phy_id one": "'intf': 'one' is neither a number nor a constant",
    "adp_intf_2_phy_id ADP_NO_VLN": "did you mean 'ADP_NO_VLAN'?",
    "adp_intf_2_phy_id 0x": "'0x' is neither a number",
    "adp_intf_2_phy_id 4294967296": "'4294967296' is out of range",
    "adp_intf_2_phy_id -2147483649": "'-2147483649' is out of range",
    "adp_intf_2_phy_id {1}": "expected a number, not {1}",
    "adp_intf_2_phy_id 1, 2": "commas separate the items inside brackets",
    "adp_intf_2_phy_id [": "a closing ']' is missing (column 20)",
    "adp_get_agg_group agg1 -1": "the count 4294967295 exceeds the 65536 elements that the shell provides",
    "adp_get_agg_group agg1 65537": "the count 65537 exceeds the 65536",
    "adp_get_agg_group agg1 2 members=[1,2,3]": "'members': expected at most 2 elements, got 3",
    "adp_get_agg_group agg1 2 members=null": "an output cannot be null",
    "adp_api_xlate_port_pbmp_a2p {64}": "a set of 64 has no bit 64",
    "adp_api_xlate_port_pbmp_a2p [1,2,3]": "expected at most 2 elements, got 3",
    "adp_api_xlate_port_pbmp_a2p {a=1}": "expected a set {1, 5-8} of numbers",
    "adp_api_xlate_port_pbmp_a2p {1-64}": "a set of 64 has no bit 64",
    "adp_api_xlate_port_pbmp_a2p {1-4000000000}": "a set of 64 has no bit 4000000000",
    "adp_api_xlate_port_pbmp_a2p {1-99999999999999999999}": "'99999999999999999999' is neither a number",
    "adp_api_xlate_port_pbmp_a2p {7-3}": "the range 7-3 ends before it begins",
    "adp_api_xlate_port_pbmp_a2p {1-}": "'' is neither a number",
    "adp_api_xlate_port_pbmp_a2p {-1}": "a set of 64 has no bit -1",
    "adp_api_xlate_port_pbmp_a2p {1--2}": "a set of 64 has no bit -2",
    "adp_bcmtag_dest_port_intf_2_phy 98000002000000": "expected 8 bytes, got 7",
    "adp_bcmtag_dest_port_intf_2_phy 9800000200000": "expected pairs of hexadecimal digits",
    "adp_bcmtag_dest_port_intf_2_phy 98:00:00:0g": "expected pairs of hexadecimal digits",
    "adp_bcmtag_dest_port_intf_2_phy $NONE": "unknown variable $NONE",
    "adp_dump_packet t 010203 4": "'data': expected 4 elements by the count, got 3",
    "adp_receive_frame 010203 0x7fffffff": "'frame': the count 2147483647 exceeds",
    "adp_receive_frame 010203 out_frame=0": "'out_frame': the call sets this address",
    "adp_linkscan_register 0x1234": "a callback is 'print' or 'none', not 0x1234",
    "__adp_transmit_frame {frame=0102 length=3} null 0 0": "the length exceeds the 2 bytes of the frame",
    "__adp_transmit_frame {frame=0102 sorce=3} null 0 0":
        "adp_tx_frame_t has no field 'sorce'; did you mean 'source'?",
    "__adp_transmit_frame {3} null 0 0": "'3' has no field name",
    "__adp_transmit_frame {frame=0102} {1} 0 0": "expected a list [1, 2, agg1] or null, not {1}",
    "__adp_transmit_frame {frame=0102} [one] 0 0": "'one' is neither a number",
    "__adp_receive_frame {frame=010203040506 vlan_tag=3} 1": "field 'vlan_tag': offset 3 is outside the frame",
    "__adp_receive_frame {vlan_tag=0} 1": "field 'vlan_tag': offset 0 is outside the frame",
    "trace maybe": "usage: trace on|off",
    "set 0102": "usage: set NAME = HEX",
    "sleep 61": "'61' is not a time between 0 and 60 seconds",
    "sleep -1": "is not a time",
    "sleep nan": "is not a time",
    "wait_frame x": "'x' is not a time",
    "show agg_inf": "unknown table 'agg_inf'; did you mean 'agg_info'?",
    "help adp_nothing_like_it": "unknown call 'adp_nothing_like_it'",
    "map 3": "usage: map",
    "device ports": "no vdeviced is running there",
    "device {1}": "usage: device [SUBJECT]",
}


@pytest.mark.parametrize("line", REJECTED)
def test_a_malformed_line_gets_a_message(shell, line):
    assert REJECTED[line] in shell.error(line)
    assert shell.result("adp_intf_2_slot_id 1") == 0


def test_no_interface_to_listen_on(shell):
    assert shell.error("listen") == "cannot listen on eth0: No such device"


def test_an_invalid_address_ends_the_call_and_not_the_shell(environment, start):
    environment["ASAN_OPTIONS"] = "detect_leaks=0"  # the memory of the crashed call is lost
    shell = start()
    assert shell.error("adp_vlan_port_add 100 0x1230 null") == (
        "adp_vlan_port_add crashed: it accessed the invalid address 0x1230; was a number given in place of an "
        "address?")
    assert "start adpsh again" in shell.error("adp_vlan_create 100")
    assert shell("echo still here") == {"echo": "still here"}


def enter(shell):
    """What runs a program inside a shell's namespaces."""
    user = [] if os.geteuid() == 0 else ["-U", "--preserve-credentials"]
    return ["nsenter", "-t", str(shell.process.pid), *user, "-n"]


def test_a_received_frame_is_stored(start):
    shell = start(prologue="ip link add eth0 type veth peer name far && ip link set eth0 up && ip link set far up;")
    assert shell.result("listen") == 0
    frame = "0180c2000000" "aabbccddeeff" "887400000004" "81000064" "0800" + "5a" * 60
    subprocess.run(enter(shell) + [
        "python3", "-c", "import socket; s = socket.socket(socket.AF_PACKET, socket.SOCK_RAW); s.bind(('far', 0)); "
        f"s.send(bytes.fromhex('{frame}'))"], check=True)
    for _ in range(20):  # the kernel sends frames too
        answer = shell("wait_frame 5")
        if answer == {"frame": frame}:
            break
    assert answer == {"frame": frame}
    assert shell.result("map") == 0
    assert shell.outputs("adp_receive_frame $frame")["out_intf"] == 1
    while shell("wait_frame 0.1")["frame"] is not None:
        pass
    assert "unknown variable $frame" in shell.error("adp_receive_frame $frame")


def test_help_is_the_header_text(shell):
    answer = shell("help adp_get_agg_group")
    assert answer["usage"] == "adp_get_agg_group agg_intf max -> count members"
    assert "Lists a group's active members" in answer["doc"]
    assert "adp_get_agg_group" in shell("calls *agg_g*")["calls"]
    assert "agg_info" in shell("show")["tables"]


def test_the_shell_survives_random_lines(mapped):
    # None of these calls takes a word: the shell cannot check an address.
    lines = ["adp_get_agg_group agg1 4 members=[1,2]", "adp_dump_packet \"t\" 01:80:c2 3", "adp_vlan_port_set 1 {1} {2}",
             "__adp_receive_frame {frame=0180c2000000aabbccddeeff88740000000481000064080045 vlan_tag=18} 1",
             "__adp_transmit_frame {frame=0180c2000000aabbccddeeff0800 source=3} [1,agg2] 5 2",
             "adp_receive_frame 0180c2000000aabbccddeeff887400000004 18", "show agg_info", "set A = 0102"]
    source = random.Random(7)
    records = 0
    for _ in range(400):
        line = list(source.choice(lines))
        for _ in range(source.randint(1, 3)):
            at = source.randrange(len(line))
            line[at:at + source.randint(0, 2)] = source.choice(["", "-", "9", "[", "]", "{", "}", ",", "=", "\"", " ",
                                                                "\x7f", "\xff", "null", "ffffffff"])
        text = "".join(line)
        if text.strip() and not text.strip().startswith("#"):
            records += 1
            assert {"error", "result", "value", "show", "tables", "echo", "calls"} & set(mapped(text)), text
    assert records > 300
    assert mapped.result("adp_intf_2_phy_id 1") == 4


def at_terminal(environment, typed, *options):
    """What the shell prints at a terminal."""
    ours, theirs = pty.openpty()
    process = subprocess.Popen(NAMESPACE + command() + list(options), env={**environment, "TERM": "vt100"},
                               stdin=theirs, stdout=theirs, stderr=theirs)
    os.close(theirs)
    os.write(ours, typed.encode())
    seen = b""
    while select.select([ours], [], [], 30)[0]:
        try:
            seen += os.read(ours, 4096)
        except OSError:  # the terminal's other end is closed
            break
    assert process.wait(30) == 0
    os.close(ours)
    return seen.decode()


def test_a_terminal_session(environment):
    seen = at_terminal(environment, "map\nadp_intf_2_phy_id 1\nadp_nothing_like_it\nadp_intf_2_phy_id 2\nquit\n")
    assert "adp> " in seen and "= 4\r\n" in seen
    assert "unknown call 'adp_nothing_like_it'\r\n" in seen and "line 3" not in seen
    assert "= 5\r\n" in seen  # the session continues after a malformed line


def test_a_terminal_session_of_a_program(environment):
    seen = at_terminal(environment, "\n# nothing\necho on\nquit\n", "--json")
    assert '{"line":3,"echo":"on"}\r\n' in seen and "help" not in seen


@pytest.mark.skipif(len(command()) > 1, reason="there is no line editor on the target")
def test_completion_and_history(environment, tmp_path):
    assert "= 4\r\n" in at_terminal(environment, "map\nadp_intf_2_ph\t 1\nquit\n")
    assert (tmp_path / ".adpsh_history").read_text().count("adp_intf_2_phy_id") == 1


def run(environment, *arguments, text=""):
    return subprocess.run(NAMESPACE + command() + list(arguments), env=environment, input=text, text=True,
                          capture_output=True, timeout=60)


def test_a_script_stops_at_the_first_malformed_line(environment):
    ended = run(environment, text="map\n# remark\n\nadp_intf_2_phy_id\nadp_intf_2_phy_id 1\n")
    assert ended.returncode == 1
    assert ended.stderr == "line 4: too few arguments; usage: adp_intf_2_phy_id intf\n"
    assert "= 4" not in ended.stdout


def test_keep_going_skips_malformed_lines(environment):
    ended = run(environment, "--keep-going", text="map\nadp_intf_2_phy_id\nadp_intf_2_phy_id 1\n")
    assert (ended.returncode, ended.stdout.splitlines()[-1]) == (0, "= 4")


def test_a_failed_call_is_not_a_malformed_line(environment):
    ended = run(environment, "--command", "adp_vlan_create 1", "adp_get_agg_group agg9 2")
    assert ended.returncode == 0
    assert ended.stdout.splitlines() == [
        "= -1 (ADP_FAIL: a driver call failed: user_vlan_create gave -1: the call did not reach the device; "
        "start vdeviced, or name its folder with --run-dir)",
        "= -1 (ADP_FAIL: map, socket or frame-path failure, or a list too short: all bits set)",
        "  count = 0", "  members = [0, 0]"]


def test_a_script_file(environment, tmp_path):
    script = tmp_path / "lines"
    script.write_text("map\nadp_intf_2_phy_id 2\nquit\nadp_nothing\n")
    ended = run(environment, "--script", str(script))
    assert (ended.returncode, ended.stdout.splitlines()[-1]) == (0, "= 5")
    missing = run(environment, "--script", str(tmp_path / "none"))
    assert (missing.returncode, missing.stderr) == (1, f"adpsh: cannot read {tmp_path / 'none'}\n")


def test_text_for_people(environment):
    ended = run(environment, "--trace", text="map\nSET_AGG_MANAGE_INTF agg3 9\nadp_intf_pivd_get agg3\n"
                                             "adp_api_xlate_port_pbmp_p2a {1,26}\n")
    assert ended.returncode == 0
    assert ended.stdout.splitlines() == [
        "user ports 1..26 are the physical ports 4..29, the CPU port is 0",
        "= 0 (success)",
        "    user_port_untagged_vlan_get(unit=0, zero=0, port=12) -> -1 {vid=0}",
        "= 102 (ADP_E_DRIVER: a driver call failed: user_port_untagged_vlan_get on user port 9 (physical port 12) gave -1: "
        "the call did not reach the device; "
        "start vdeviced, or name its folder with --run-dir)",
        "  vid = 0",
        "= 0 (success)",
        "  bitmap = {4,29} = [0x20000010, 0x00000000]"]
