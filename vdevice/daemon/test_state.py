"""vdevctl state: the whole of what a device keeps, and what differs between two states."""
import json
import os
import subprocess
from pathlib import Path

import pytest

from testing.daemon import DEADLINE, PROGRAMS

TOO_DEEP = '{"state": 1, "a": ' + "[" * 100 + "]" * 100 + "}"


def compare(*words):
    done = subprocess.run([f"{PROGRAMS}/vdevctl", *words], capture_output=True, text=True, timeout=DEADLINE, check=False)
    return done.returncode, done.stdout, done.stderr


@pytest.fixture(name="save")
def make_saver(device, tmp_path):
    def save(name):
        file = tmp_path / name
        file.write_text(device.control("state", "--json").stdout, encoding="utf-8")
        return str(file)
    return save


def test_the_same_state_is_the_same_text(device):
    first = device.control("state", "--json")
    assert (first.returncode, first.stderr) == (0, "")
    assert device.control("state", "--json").stdout == first.stdout
    state = json.loads(first.stdout)
    assert state["board"] == {"user_ports": 4, "first_port": 23}
    assert list(state["ports"])[:5] == ["1", "2", "3", "4", "chip 1"] and state["ports"]["1"]["pvid"] == 1


def test_the_text_is_what_differs_from_power_on(device):
    assert device.control("state").stdout == "All is as after power-on.\n"
    assert device.call("tags", 23, 2, 0x9100) == "0"
    assert device.call("trunk", 25, 24) == "0"
    assert device.control("state").stdout.splitlines() == [
        "SETTING: AFTER POWER-ON / NOW", "ports 1 double_tag: off / external", "ports 1 tpid: 33024 / 37120",
        "trunks 0: - / balance 3, configured none, exists yes, members {3,2}"]


def test_states_are_compared(device, save):
    before = save("before")
    assert device.control("state", "--diff", before).returncode == 0
    assert device.call("stp-state", 0, 24, 1) == "0"
    after = save("after")
    line = "spanning_tree 0 ports 2: forwarding / blocking\n"
    assert compare("state", "--diff", before, after) == (1, line, "")
    assert compare("state", f"--diff={before}", after) == (1, line, "")
    assert compare("state", "--diff", after, after) == (0, "", "")
    now = device.control("state", "--diff", before)
    assert (now.returncode, now.stdout, now.stderr) == (1, line, "")


def test_what_changes_by_itself_is_no_difference(device, save):
    before = save("before")
    device.control("gpio", "3", "1")
    after = device.ask("state")
    assert after["running"]["pins"] == 8 and after["running"] != json.loads(Path(before).read_text())["running"]
    assert device.control("state", "--diff", before).returncode == 0


@pytest.mark.parametrize("content, problem", [
    ("", "is no state that 'vdevctl --json state' printed."),
    ("{}", "is no state that 'vdevctl --json state' printed."),
    ('{"state": "1"}', "is no state that 'vdevctl --json state' printed."),
    ('{"state": 1', "is no state that 'vdevctl --json state' printed."),
    (TOO_DEEP, "is no state that 'vdevctl --json state' printed."),
    ('{"state": 2}', "the states have different forms, 2 and 1, since other versions of the device printed them."),
])
def test_what_is_no_state_is_told(tmp_path, content, problem):
    good, bad = tmp_path / "good", tmp_path / "bad"
    good.write_text('{"state": 1}', encoding="utf-8")
    bad.write_text(content, encoding="utf-8")
    status, output, errors = compare("state", "--diff", str(bad), str(good))
    assert (status, output) == (2, "") and errors.startswith("vdevctl: ") and errors.endswith(f"{problem}\n")
    assert len(errors.splitlines()) == 1


def test_files_are_bounded(tmp_path):
    large = tmp_path / "large"
    large.touch()
    os.truncate(large, (64 << 20) + 1)
    for file in (str(large), "/dev/zero"):
        assert compare("state", "--diff", file, file) == (
            2, "", f"vdevctl: {file} has more than 64 MiB, and no state is so large.\n")


@pytest.mark.parametrize("words, problem", [
    (("state", "--diff", "/nowhere", "/nowhere"), "cannot read /nowhere: No such file or directory."),
    (("state", "--diff", "/", "/"), "cannot read /: Is a directory."),
    (("state", "--diff", "a", "b", "c"), "states are compared with 'vdevctl state --diff FILE [FILE]'."),
    (("ports", "--diff", "a"), "states are compared with 'vdevctl state --diff FILE [FILE]'."),
    (("state", "--diff"), "option '--diff' requires an argument"),
])
def test_trouble_is_told(words, problem):
    status, output, errors = compare(*words)
    assert (status, output) == (2, "") and problem in errors


def test_no_device_is_trouble(run_dir, tmp_path):
    state = tmp_path / "state"
    state.write_text('{"state": 1}', encoding="utf-8")
    status, _, errors = compare("--run-dir", run_dir, "state", "--diff", str(state))
    assert status == 2 and "no vdeviced is running there" in errors


def test_hostile_names_stay_on_their_line(tmp_path):
    first, second = tmp_path / "first", tmp_path / "second"
    first.write_text(r'{"state": 1, "a\n\u001b[2J": "\n"}', encoding="utf-8")
    second.write_text('{"state": 1}', encoding="utf-8")
    assert compare("state", "--diff", str(first), str(second)) == (1, "a\\n\\x1b[2J: \\n / -\n", "")
