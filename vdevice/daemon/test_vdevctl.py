"""vdevctl: its commands, its help, and what it refuses."""
import re
import subprocess
from pathlib import Path

import pytest

from testing.daemon import DEADLINE, PROGRAMS


@pytest.fixture(name="device", scope="module")
def share_device(standing_device):
    return standing_device


@pytest.mark.parametrize("words", [("pull", "5"), ("pull", "0"), ("plug", "-1"), ("gpio", "32", "1"),
                                   ("gpio", "3", "2")])
def test_impossible_commands_are_refused_with_a_sentence(device, words):
    result = device.control(*words)
    assert result.returncode == 1
    assert result.stderr.startswith("vdevctl: The ") and result.stderr.endswith(".\n")


@pytest.mark.parametrize("command", ["ports", "vlans", "macs", "mcast", "limits", "counters", "log", "events", "trunks", "reserved",
                                     "mirrors", "gpio", "fields", "meters", "storm", "queues", "groups", "translations",
                                     "priorities", "version"])
def test_every_table_is_shown(device, command):
    assert device.control(command).returncode == 0
    assert isinstance(device.ask(command), dict)


def test_no_device_is_told(run_dir):
    result = subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", run_dir, "ports"], capture_output=True, text=True,
                            timeout=DEADLINE)
    assert result.returncode == 1
    assert "no vdeviced is running there" in result.stderr


@pytest.mark.parametrize("words", [("none",), ("pull",), ("pull", "x"), ("pull", "1", "2"), ("gpio", "3"), ("ports", "1"),
                                   ("trace", "99999999999"), ()])
def test_wrong_commands_are_refused_with_a_sentence(device, words):
    result = device.control(*words)
    assert result.returncode == 1 and result.stdout == ""
    assert result.stderr.startswith("vdevctl: ") and result.stderr.endswith(".\n")
    assert device.port(1)["pulled"] is False


def test_the_help_lists_the_devices_commands(device):
    subjects = device.ask("help")["subjects"]
    names = [subject["name"] for subject in subjects]
    assert {"ports", "gpio", "pull", "help"} < set(names)
    shown = device.control("--help")
    assert (shown.returncode, shown.stderr) == (0, "")
    lines = shown.stdout.split("Commands:\n")[1].splitlines()
    assert [line.split()[0] for line in lines] == names
    assert "  pull PORT                   pull a user port's cable" in lines
    assert all(line.endswith(subject["help"]) for line, subject in zip(lines, subjects))


def test_the_help_says_when_no_device_runs(run_dir):
    result = subprocess.run([f"{PROGRAMS}/vdevctl", "--help", "--run-dir", run_dir], capture_output=True, text=True,
                            timeout=DEADLINE)
    assert result.returncode == 0
    assert "--json" in result.stdout and "no vdeviced is running there" in result.stdout


def test_the_document_lists_the_devices_commands(device):
    document = Path(__file__).parents[2].joinpath("docs", "reference", "vdevctl.md").read_text(encoding="utf-8")
    table = document.split("| command | answer |\n")[1].split("\n\n")[0]
    rows = re.findall(r"^\| (`.*?) \|", table, re.MULTILINE)
    documented = {usage.split()[0] for row in rows for usage in re.findall("`(.*?)`", row)}
    assert documented == {subject["name"] for subject in device.ask("help")["subjects"]}
