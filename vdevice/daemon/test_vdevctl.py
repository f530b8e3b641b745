"""vdevctl: its commands, its help, and what it refuses."""
import json
import os
import re
import signal
import socket
import subprocess
import threading
from pathlib import Path
from time import monotonic

import pytest

from testing.daemon import BROADCAST, DEADLINE, PAYLOAD, PROGRAMS, station


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
                                     "priorities", "state", "version", "cables"])
def test_every_table_is_shown(device, command):
    assert device.control(command).returncode == 0
    assert isinstance(device.ask(command), dict)


def test_no_device_is_told(run_dir):
    result = subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", run_dir, "ports"], capture_output=True, text=True,
                            timeout=DEADLINE)
    assert result.returncode == 1
    assert "no vdeviced is running there" in result.stderr


@pytest.mark.parametrize("words", [("none",), ("pull",), ("pull", "x"), ("pull", "1", "2"), ("gpio", "3"), ("version", "1"),
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


def test_a_mistyped_command_or_option_is_suggested(device):
    assert device.control("portz").stderr == "vdevctl: unknown command 'portz', did you mean 'ports'?\n"
    assert "did you mean '--vlan'?" in device.control("macs", "--vlna", "1").stderr


def test_the_help_of_a_command_shows_its_options(device):
    shown = device.control("help", "counters").stdout
    assert shown.startswith("  counters [PORTS]")
    for option in ("--port PORTS", "--nonzero", "--rate TIME", "--since FILE"):
        assert f"  {option} " in shown
    assert "--" not in device.control("help", "version").stdout
    assert device.control("help", "portz").returncode == 1


def test_rows_are_asked_for(device):
    assert [row["port"] for row in device.ask("counters", "1-2,4")["counters"]] == [1, 2, 4]
    assert [row["port"] for row in device.ask("ports", "--port", "cpu,3")["ports"]] == [0, 3]
    lines = device.control("counters", "2").stdout.splitlines()
    assert len(lines) == 3 and lines[1].split()[0] == "2" and lines[2] == "1 of 5 rows"
    assert device.ask("vlans", "2-4094")["vlans"] == []
    assert len(device.ask("log", "--last", "1")["log"]) == 1
    refused = device.control("ports", "--port", "1-")
    assert refused.returncode == 1 and "1-4,7" in refused.stderr


def test_counts_have_rates_and_differences(device, tmp_path):
    one, two = device.nics("host1", "host2")
    before = tmp_path / "before.json"
    before.write_text(device.control("--json", "counters").stdout, encoding="utf-8")
    for _ in range(3):
        one.send(BROADCAST + station(1) + PAYLOAD)
        assert two.receive() is not None
    rows = device.ask("counters", "--since", str(before), "--nonzero")["counters"]
    assert {row["port"]: (row["rx_frames"], row["tx_frames"]) for row in rows if row["port"] == 1} == {1: (3, 0)}
    assert all(row["tx_frames"] >= 3 for row in rows if row["port"] == 2)
    shown = device.control("counters", "1", f"--since={before}").stdout
    assert shown.splitlines()[1].split()[:3] == ["1", "3", "180"] and "counts over" in shown
    begin = monotonic()
    shown = device.control("--rate", "100ms", "counters").stdout
    passed = float(re.search(r"counts per second, over (\S+) s$", shown, re.MULTILINE)[1])
    assert 0.1 <= passed <= round(monotonic() - begin, 1)
    begin, sent = monotonic(), 0
    busy = subprocess.Popen([f"{PROGRAMS}/vdevctl", "--run-dir", device.run_dir, "--json", "counters", "1", "--rate", "2s"],
                            stdout=subprocess.PIPE, text=True)
    while busy.poll() is None:
        one.send(BROADCAST + station(1) + PAYLOAD)
        sent += 1
        threading.Event().wait(0.02)
    pace = sent / (monotonic() - begin)
    row, = json.loads(busy.communicate()[0])["counters"]
    assert pace / 4 < row["rx_frames"] <= sent / 2 and row["rx_octets"] >= 60 * row["rx_frames"] - 60
    assert device.control("vlans", "--rate", "1ms").stderr == "vdevctl: The command 'vlans' has no counts to compare.\n"
    for time in ("0", "x", "1h", "-1s"):
        assert "--rate takes a time" in device.control("counters", "--rate", time).stderr
    assert "cannot compare with" in device.control("counters", "--since", "/dev/null").stderr
    assert "cannot read /nowhere: No such file" in device.control("counters", "--since", "/nowhere").stderr


def test_counts_are_cleared(device):
    one, two = device.nics("host1", "host2")
    for nic in (one, two):
        nic.send(BROADCAST + station(3) + PAYLOAD)
    two.receive()
    one.receive()
    assert device.control("clear", "counters", "1").stdout == ""
    assert device.counters(1)["rx_frames"] == 0 and device.counters(2)["rx_frames"] > 0
    assert device.ask("macs")["moved"] > 0
    assert device.control("clear", "counters").returncode == 0
    rows = device.ask("counters", "--nonzero")["counters"]
    assert all(row["rx_frames"] < 3 for row in rows), "but for what the kernel sends by itself"
    assert device.ask("macs")["moved"] == 0
    assert [entry["mac"] for entry in device.ask("macs", "--mac", "02:00:00:00:00:03")["macs"]] != []
    for words in (("clear",), ("clear", "macs"), ("clear", "counters", "9"), ("clear", "counters", "x")):
        assert device.control(*words).returncode == 1


def test_versions(device, run_dir):
    ours, devices = device.control("--version").stdout.splitlines()
    assert re.fullmatch(r"vdevctl \d+\.\d+\.\d+", ours) and devices.startswith("virtual device ")
    result = subprocess.run([f"{PROGRAMS}/vdevctl", "--version", "--run-dir", run_dir], capture_output=True, text=True,
                            timeout=DEADLINE)
    assert (result.returncode, result.stdout) == (0, ours + "\nno device is running\n")


@pytest.mark.parametrize("words", [("ports",), ("--json", "ports"), ("--help",), ("--version",), ("metrics",)])
def test_an_answer_that_cannot_be_printed_is_told(device, words):
    with open("/dev/full", "w", encoding="utf-8") as full:
        result = subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", device.run_dir, *words], stdout=full,
                                stderr=subprocess.PIPE, text=True, timeout=DEADLINE)
    assert (result.returncode, result.stderr) == (1, "vdevctl: cannot print the answer: No space left on device.\n")


@pytest.mark.parametrize("restore_signals", [True, False])
def test_a_reader_that_has_gone_away_is_no_error(device, restore_signals):
    reader, writer = os.pipe()
    os.close(reader)
    with open(writer, "w", encoding="utf-8") as closed:
        result = subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", device.run_dir, "metrics"], stdout=closed,
                                stderr=subprocess.PIPE, text=True, timeout=DEADLINE, restore_signals=restore_signals)
    assert result.stderr == "" and result.returncode in (1, -signal.SIGPIPE)


def test_logged_texts_forge_no_lines(device):
    assert device.call("log-hostile-text") == "0"
    line, remark = device.control("log", "--last", "1").stdout.splitlines()
    assert line.endswith(r"5/1 A\x1b[2J up\n    9.000000  5/0 PORT port1: link down\xc2\x9b\xff") and remark.endswith(" rows")
    logged, = device.ask("log", "--last", "1")["log"]
    assert logged["word"] == "A\x1b[2J" and logged["text"].startswith("up\n"), "as it was logged"


HOSTILE = "\x1b]0;title\x07\x9b31m\u202eright\r"


@pytest.mark.parametrize("words, member", [(("ports",), "text"), (("ports",), "error"), (("--json", "ports"), "text"),
                                           (("--help",), "text"), (("--help",), "error"), (("--version",), "text")])
def test_a_hostile_server_does_not_reach_the_terminal(run_dir, words, member):
    os.mkdir(run_dir)
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(run_dir + "/control")
        listener.listen()

        def answer():
            client, _ = listener.accept()
            with client:
                client.recv(65536)
                client.sendall(json.dumps({member: HOSTILE + "\n"}, ensure_ascii=False).encode() + b"\n")

        server = threading.Thread(target=answer)
        server.start()
        result = subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", run_dir, *words], capture_output=True,
                                timeout=DEADLINE)
        server.join()
    printed = (result.stdout + result.stderr).decode("ascii")
    assert "right" in printed or words == ("--version",)
    assert all(letter == "\n" or letter.isprintable() for letter in printed)


def test_metrics_are_what_prometheus_reads(device):
    parser = pytest.importorskip("prometheus_client.parser")
    result = device.control("metrics")
    families = {family.name: family for family in parser.text_string_to_metric_families(result.stdout)}
    declared = re.findall(r"^# TYPE (\S+) (\S+)$", result.stdout, re.MULTILINE)
    assert len(declared) == len({name for name, _ in declared}) == len(families)
    for name, kind in declared:
        assert re.fullmatch("(adp|process)_[a-z_]+", name) and name.endswith("_total") == (kind == "counter")
        family = families[name.removesuffix("_total")]
        assert family.type == kind and family.documentation and family.samples
        labels = [tuple(sorted(sample.labels.items())) for sample in family.samples]
        assert len(labels) == len(set(labels)) and all(sample.name == name for sample in family.samples)

    def value(name, **labels):
        sample, = (sample for sample in families[name].samples if sample.labels == labels)
        return sample.value

    device.nics("host1")
    assert value("adp_port_receive_frames", port="3") == device.counters(3)["rx_frames"]
    assert value("adp_port_dropped_frames", port="cpu", reason="bad_opcode") == 0
    assert value("adp_table_capacity_entries", table="mac") == 8192
    assert value("adp_build_info", version=device.ask("version")["version"]) == 1
    assert value("process_open_fds") >= 5 and value("process_resident_memory_bytes") > 1 << 20
    assert isinstance(device.ask("metrics")["metrics"], list)
