"""The daemon with a configuration file, and under a service manager."""
import json
import os
import signal
import socket
import subprocess
import sys

import pytest

from testing.daemon import BOARD, DEADLINE, PROGRAMS, wait_until

FILE = """
user-ports = 4
first-port = 23
ageing-time = 60
[[vlan]]
vid = 10
members = "cpu,1-2"
untagged = 1
[[port]]
ports = 1
pvid = 10
[[port]]
ports = 4
enabled = false
"""


@pytest.fixture(name="file")
def make_file(tmp_path):
    path = tmp_path / "vdeviced.toml"
    path.write_text(FILE, encoding="utf-8")
    return path


@pytest.fixture(name="manager")
def make_manager(tmp_path, monkeypatch):
    """What the daemon tells a service manager."""
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
        manager.bind(str(tmp_path / "notify"))
        manager.settimeout(DEADLINE)
        monkeypatch.setenv("NOTIFY_SOCKET", str(tmp_path / "notify"))
        yield manager


def vid(device, number):
    return [row for row in device.ask("vlans")["vlans"] if row["vid"] == number]


def last_note(device):
    return device.ask("log", "--word", "DAEMON")["log"][-1]["text"]


def reload(device, file, text):
    count = len(device.ask("log", "--word", "DAEMON")["log"])
    file.write_text(text, encoding="utf-8")
    device.process.send_signal(signal.SIGHUP)
    wait_until(lambda: len(device.ask("log", "--word", "DAEMON")["log"]) > count, "the reload")


def test_the_file_is_what_the_device_starts_with(cables, start, file):
    device = start("--config", str(file))
    device.wait_ready()
    assert device.ask("version")["user_ports"] == 4
    assert vid(device, 10) == [{"vid": 10, "default": False, "members": [0, 1, 2], "untagged": [1]}]
    assert (device.port(1)["pvid"], device.port(4)["enabled"]) == (10, False)
    assert device.ask("macs")["age_time"] == 60
    assert device.stop() == 0


def test_options_win_over_the_file(cables, start, file):
    file.write_text("user-ports = 9\nrun-dir = \"/nowhere/at/all\"\n", encoding="utf-8")
    device = start("--config", str(file), *BOARD)
    device.wait_ready()
    assert device.ask("version")["user_ports"] == 4
    assert device.stop() == 0


def test_a_file_is_checked_without_a_device(file, run_dir):
    command = [f"{PROGRAMS}/vdeviced", "--config", str(file), "--check", "--run-dir", run_dir]
    right = subprocess.run(command, capture_output=True, text=True, timeout=DEADLINE)
    assert (right.returncode, right.stdout, right.stderr) == (0, f"{file}: no mistakes\n", "")
    file.write_text(FILE + "[[vlan]]\nvid = 5000\n", encoding="utf-8")
    wrong = subprocess.run(command, capture_output=True, text=True, timeout=DEADLINE)
    line = len(FILE.splitlines()) + 2
    assert (wrong.returncode, wrong.stdout) == (1, "")
    assert wrong.stderr == f"vdeviced: {file}:{line}: VLAN 5000 is not in 1 to 4094.\n"
    assert not os.path.exists(run_dir)


def test_a_file_is_read_again(cables, start, file):
    device = start("--config", str(file), "--log-level", "error")
    device.wait_ready()
    reload(device, file, FILE.replace("vid = 10", "vid = 11").replace("pvid = 10", "pvid = 11")
           .replace("enabled = false", "enabled = true"))
    assert "was read again" in last_note(device)
    assert vid(device, 10) == [] and len(vid(device, 11)) == 1
    assert (device.port(1)["pvid"], device.port(4)["enabled"]) == (11, True)
    reload(device, file, FILE.replace("user-ports = 4", "user-ports = 3"))
    assert "user-ports has changed in the file" in [
        line["text"] for line in device.ask("log", "--word", "DAEMON")["log"]][-2]
    assert device.ask("version")["user_ports"] == 4 and len(vid(device, 10)) == 1
    assert device.stop() == 0


def test_a_file_with_a_mistake_changes_nothing(cables, start, file):
    device = start("--config", str(file))
    device.wait_ready()
    before = device.ask("vlans"), device.port(4)["enabled"]
    for text in (FILE.replace("vid = 10\nm", "vid = 12\nm").replace("false", "maybe"), "\0\xff", FILE + "pvid = 99\n"):
        reload(device, file, text)
        assert last_note(device).startswith("the configuration stays as it was: ")
        assert (device.ask("vlans"), device.port(4)["enabled"]) == before
    file.unlink()
    device.process.send_signal(signal.SIGTERM)
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 0
    lines = errors.splitlines()
    assert len(lines) == 3 and all(line.startswith("vdeviced: the configuration stays as it was: ") for line in lines)


def test_interfaces_have_the_files_names(start, file):
    file.write_text('user-ports = 1\ncreate-interfaces = true\n[[port]]\nports = 1\ninterface = "front"\n'
                    '[[port]]\nports = "cpu"\ninterface = "inside"\n', encoding="utf-8")
    device = start("--config", str(file))
    device.wait_ready()
    assert [row["interface"] for row in device.ask("ports")["ports"]] == ["inside", "front"]
    assert device.stop() == 0


def test_the_log_level_chooses_what_is_written(cables, start):
    device = start(*BOARD, "--log-level", "notice")
    device.wait_ready()
    device.nics("host1")
    device.control("pull", "1")
    device.process.send_signal(signal.SIGTERM)
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert "vdeviced: port1: link down PORT=1 INTERFACE=port1" in errors.splitlines()


def test_a_service_manager_is_told(cables, start, file, manager):
    device = start("--config", str(file))
    device.wait_ready()
    assert manager.recv(4096) == b"READY=1"
    told = [manager.recv(4096)]
    assert told == [b"WATCHDOG=1"], "once a second"
    device.process.send_signal(signal.SIGHUP)
    while not told[-1].startswith(b"RELOADING=1\nMONOTONIC_USEC="):
        told.append(manager.recv(4096))
    assert manager.recv(4096) == b"READY=1"
    assert device.stop() == 0
    while told[-1] != b"STOPPING=1":
        told.append(manager.recv(4096))


JOURNAL = r"""
import json, os, socket, subprocess, sys
subprocess.run(["mount", "-t", "tmpfs", "none", "/run"], check=True)
os.makedirs("/run/systemd/journal")
journal = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
journal.bind("/run/systemd/journal/socket")
journal.settimeout(10)
reader, writer = os.pipe()
where = os.fstat(writer)
device = subprocess.Popen(sys.argv[1:], stdout=subprocess.PIPE, stderr=writer,
                          env={**os.environ, "JOURNAL_STREAM": f"{where.st_dev}:{where.st_ino}"})
os.close(writer)
device.stdout.readline()
subprocess.run(["ip", "link", "set", "host1", "up"], check=True)
entries = [journal.recv(65536).decode() for _ in range(2)]
device.terminate()
device.wait()
print(json.dumps({"entries": entries, "errors": os.read(reader, 65536).decode()}))
"""


def test_a_journal_gets_fields(run_dir):
    told = json.loads(subprocess.check_output(
        ["unshare", "--mount", sys.executable, "-c", JOURNAL, f"{PROGRAMS}/vdeviced", "--run-dir", run_dir,
         "--create-interfaces", "--user-ports", "1"], text=True, timeout=2 * DEADLINE))
    start, link = (dict(line.split("=", 1) for line in entry.splitlines()) for entry in told["entries"])
    assert start["MESSAGE"] == "a device with user ports 1 to 1 runs" and start["VDEVICE_PART"] == "DAEMON"
    assert link.items() >= {"PRIORITY": "5", "SYSLOG_IDENTIFIER": "vdeviced", "VDEVICE_PART": "PORT",
                            "VDEVICE_PORT": "1", "VDEVICE_INTERFACE": "port1", "MESSAGE": "port1: link up"}.items()
    assert told["errors"] == ""


def test_a_file_is_read_again_under_nohup_too(cables, start, file):
    before = signal.signal(signal.SIGHUP, signal.SIG_IGN)
    try:
        device = start("--config", str(file))
        device.wait_ready()
    finally:
        signal.signal(signal.SIGHUP, before)
    reload(device, file, FILE.replace("vid = 10", "vid = 11").replace("pvid = 10", "pvid = 11"))
    assert len(vid(device, 11)) == 1
    assert device.stop() == 0


def test_hangup_ends_a_device_without_a_file(device):
    device.process.send_signal(signal.SIGHUP)
    assert device.process.wait(timeout=DEADLINE) == 0
