"""Recordings are replayed by the program, on a device where each test has a VLAN of its own.

    VDEVICE_PROGRAMS=build/host python3 -m adp.lab.isolate python3 -m pytest tools/adptrace/replay
"""
import itertools
import json
import pathlib

import pytest
from adp.lab.nic import Nic
from testing.programs import BUILD, DIFFERS, EQUAL, TROUBLE, record, replay
from testing.recordings import Recording, small_life

SAMPLES = pathlib.Path(__file__).parents[1] / "recording/samples"
FRAME = "0180c2000001020304050607" + "0800" + "00" * 50


@pytest.fixture(name="vid")
def next_vid(counter=itertools.count(100)):
    return next(counter)


def members(device, vid):
    return [vlan["members"] for vlan in device.ask("vlans")["vlans"] if vlan["vid"] == vid]


@pytest.mark.parametrize("header", [{"byte_order": "little", "word_bits": 64}, {"byte_order": "big", "word_bits": 32}])
def test_a_new_device_answers_as_the_recorded_one(device, vid, tmp_path, header):
    path = small_life(vid, **header).write(tmp_path / "life")
    assert replay(device, path) == (EQUAL, ["Made 5 library calls and 4 driver calls: no difference."], "")
    assert members(device, vid) == [[1, 26]]


def test_without_a_driver_the_recording_answers(device, vid, tmp_path):
    path = small_life(vid).write(tmp_path / "life")
    assert replay(device, path, "--driver=recorded") == (
        EQUAL, ["Made 5 library calls and 4 driver calls: no difference."], "")
    assert members(device, vid) == []


@pytest.mark.parametrize("line, member, value, said", [
    (4, "arguments", {"vid": 101}, "line 5: call 2, user_vlan_create, within call 1, adp_vlan_create: the argument vid"),
    (5, "arguments", {"unit": 0, "zero": 0, "vid": 101}, "line 5: call 2, user_vlan_create, within call 1"),
    (5, "call", "user_vlan_destroy", "line 5: call 2, user_vlan_destroy, within call 1, adp_vlan_create: the call"),
    (7, "result", 102, "line 4: call 1, adp_vlan_create: the result"),
    (9, "arguments", {"unit": 0, "zero": 0, "vid": 100, "members": [4, 28], "untagged": [4]}, "line 9: call 4"),
    (15, "outputs", {"list": 7}, "line 12: call 5, adp_stg_list: the output count"),
    (3, "board", [{}] * 27, "line 9: call 4, user_vlan_port_set, within call 3, adp_vlan_port_set: the argument")])
def test_what_was_changed_by_hand_is_found_where_it_is(device, tmp_path, line, member, value, said):
    life = small_life()
    life.lines[line - 1][member] = value
    status, lines, _errors = replay(device, life.write(tmp_path / "life"), "--driver=recorded")
    assert status == DIFFERS
    assert lines[0].startswith(said), lines
    assert lines[0].endswith(" differs") and lines[1].startswith("  recorded: ") and lines[2].startswith("  replayed: ")
    assert lines[3].endswith(": 1 difference.")


@pytest.mark.parametrize("line, member, value, said", [
    (6, "result", -1, "line 5: call 2, user_vlan_create, within call 1, adp_vlan_create: the result"),
    (14, "outputs", {"list": 7, "count": 2}, "line 13: call 6, user_stg_list, within call 5, adp_stg_list: the output")])
def test_another_answer_of_the_driver_is_found(device, vid, tmp_path, line, member, value, said):
    life = small_life(vid)
    life.lines[line - 1][member] = value
    status, lines, _errors = replay(device, life.write(tmp_path / "life"))
    assert status == DIFFERS
    assert lines[0].startswith(said), lines


def test_a_call_that_was_removed_or_added_is_found(device, tmp_path):
    removed = small_life()
    del removed.lines[4:6]
    status, lines, _errors = replay(device, removed.write(tmp_path / "removed"), "--driver=recorded")
    assert status == DIFFERS
    assert lines[:2] == ["line 4: call 1, adp_vlan_create: the number of calls within it differs", "  recorded: no call"]
    added = small_life()
    added.lines[6:6] = [{"begin": 99, "within": 1, "thread": 1, "at": 1, "call": "sys_trace_get", "arguments": {}},
                        {"end": 99, "at": 1, "result": 0, "outputs": {}}]
    status, lines, _errors = replay(device, added.write(tmp_path / "added"), "--driver=recorded")
    assert status == DIFFERS
    assert lines[0] == "line 7: call 99, sys_trace_get, within call 1, adp_vlan_create: the call differs"
    assert lines[2] == "  replayed: no call"


def test_going_on_counts_the_differences(device, vid, tmp_path):
    life = small_life(vid)
    for line in (5, 9):
        life.lines[line - 1]["arguments"]["vid"] = 7
    status, lines, _errors = replay(device, life.write(tmp_path / "life"), "--keep-going")
    assert status == DIFFERS
    assert lines[-1] == "Made 5 library calls and 4 driver calls: 2 differences."


@pytest.mark.parametrize("option", ["--until=7", "--until-call=2"])
def test_it_stops_where_it_is_told_to(device, vid, tmp_path, option):
    path = small_life(vid).write(tmp_path / "life")
    assert replay(device, path, option) == (
        EQUAL, ["Made 1 library call and 1 driver call, the last adp_vlan_create of line 4: no difference."], "")
    assert members(device, vid) == [[]]


def test_frames_are_not_sent_unless_they_are_wanted(device, tmp_path):
    life = Recording()
    life.call("adp_pkt_init", {}, result=3)
    life.call("adp_transmit_frame", {"frame": FRAME, "length": 64, "unused": 0, "intf": 1, "opcode": 3})
    path = life.write(tmp_path / "life")
    cpu = Nic(device.namespace, "eth0", outgoing=True)
    assert replay(device, path)[0] == EQUAL
    assert [frame for frame in cpu.waiting() if frame.hex().startswith(FRAME[:24])] == []
    assert replay(device, path, "--send-frames")[0] == EQUAL
    assert cpu.receive(bytes.fromhex(FRAME[:24]), 5).hex().startswith(FRAME[:24] + "8874")
    cpu.close()


def test_the_driver_calls_alone_bring_a_device_to_the_same_state(device, vid, tmp_path):
    path = small_life(vid).write(tmp_path / "life")
    assert replay(device, path, "--driver-only") == (EQUAL, ["Made 4 driver calls: no difference."], "")
    assert members(device, vid) == [[1, 26]]
    status, lines, _errors = replay(device, path, "--driver-only")  # the VLAN is there already
    assert status == DIFFERS
    assert lines[0] == "line 5: call 2, user_vlan_create, within call 1, adp_vlan_create: the result differs"
    assert lines[-1] == "Made 4 driver calls: 1 difference."


def test_trouble_is_a_sentence(device, tmp_path):
    def trouble(path, *options):
        status, lines, errors = replay(device, path, *options)
        assert status == TROUBLE
        return (lines + errors.splitlines())[0]

    good = small_life().write(tmp_path / "good")
    assert "/nonesuch" in trouble("/nonesuch")
    assert trouble(good, "--library=/nonesuch").startswith("adptrace: /nonesuch cannot be loaded: ")
    assert trouble(good, "--driver=/nonesuch").startswith("adptrace: /nonesuch cannot be loaded: ")
    assert trouble(good, "--process=9") == "adptrace: the recording has no process 9."
    assert trouble(good, "--until-call=99") == "adptrace: the process has no call 99."
    assert trouble(good, "--kep-going").startswith("adptrace: there is no option --kep-going; did you mean")
    unknown = Recording()
    unknown.call("adp_of_next_year", {})
    assert trouble(unknown.write(tmp_path / "unknown")) == (
        "adptrace: line 4: this adptrace does not know the call 'adp_of_next_year'; a newer one is needed.")


@pytest.mark.skipif(BUILD.name == "asan", reason="the sanitizer ends the program before it crashes")
def test_a_crash_of_the_library_is_a_sentence(device, tmp_path):
    life = Recording()
    life.call("adp_get_max_phy_port_num", {"port_count": None})
    assert replay(device, life.write(tmp_path / "life"), "--driver=recorded") == (
        TROUBLE, [], "adptrace: line 4: adp_get_max_phy_port_num crashed.\n")


def test_a_call_that_had_not_returned_is_made_if_wanted(device, tmp_path):
    life = small_life()
    life.begin("user_vlan_create", {"unit": 0, "zero": 0, "vid": 5}, within=life.begin("adp_vlan_create", {"vid": 5}))
    path = life.write(tmp_path / "life")
    status, lines, _errors = replay(device, path, "--driver=recorded")
    assert status == EQUAL
    assert lines[0] == "line 22: call 10, adp_vlan_create had not returned, and is not made (--crash makes it)."
    assert replay(device, path, "--driver=recorded", "--crash")[:2] == (
        EQUAL, ["Made 6 library calls and 5 driver calls: no difference."])


@pytest.mark.parametrize("sample", ["version-1-host", "version-1-target"])
def test_a_recording_of_either_byte_order_is_replayed_on_each(device, sample):
    status, lines, _errors = replay(device, SAMPLES / f"{sample}.adptrace", "--driver=recorded")
    assert status == EQUAL, lines
    assert lines[-1] == "Made 19 library calls and 12 driver calls: no difference."


def test_a_recorded_program_is_replayed_without_a_difference(device, tmp_path):
    path = record(device, tmp_path / "recording", *BUILD.command("acl"))
    for options in ([], ["--driver=recorded"], ["--driver-only"]):
        device.restart()
        status, lines, errors = replay(device, path, *options)
        assert (status, errors) == (EQUAL, ""), lines[:4]
        assert lines[-1].endswith(": no difference.")
    lines = pathlib.Path(path).read_text(encoding="ascii").splitlines()
    changed = next(at for at, line in enumerate(lines) if '"user_field_qualify_SrcIp"' in line)
    call = json.loads(lines[changed])
    call["arguments"]["data"] += 1
    lines[changed] = json.dumps(call)
    pathlib.Path(path).write_text("\n".join(lines) + "\n", encoding="ascii")
    status, said, _errors = replay(device, path, "--driver=recorded")
    assert status == DIFFERS
    assert said[0].startswith(f"line {changed + 1}: ") and said[0].endswith("the argument data differs")
