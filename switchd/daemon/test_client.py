"""What is typed beside the daemon, beside none, and what hostapd's events become."""
import json
import os
import pathlib
import socket
import subprocess
import threading

import pytest

from conftest import PROGRAMS, SECONDS

HOOK = pathlib.Path(__file__).with_name("adp-switchd-dot1x")

# What is typed, and what the answer must say. No daemon is running.
ALONE = [
    ("status", ["no adp-switchd is running there. Start it, with 'systemctl start adp-switchd'", "--run-dir"]),
    ("status --json", ["no adp-switchd is running there"]),
    ("staus", ["unknown command 'staus', did you mean 'status'?"]),
    ("xyzzy", ["unknown command 'xyzzy'; 'adp-switchd --help' lists them."]),
    ("status goups", ["there is no status of 'goups', did you mean 'groups'?"]),
    ("status everything", ["there is no status of 'everything'; 'adp-switchd --help'"]),
    ("add", ["an argument is missing: 'adp-switchd add PORT.VLAN'."]),
    ("authorize swp1 02:00:00:00:00:01 now", ["too many arguments: 'adp-switchd authorize PORT [MAC]'."]),
    ("resync now", ["too many arguments: 'adp-switchd resync'."]),
    ("--json", ["--json is for a command: 'adp-switchd status --json'"]),
    ("--check status", ["are for the daemon, without a command"]),
    ("--log-level loud", ["the log level is error, warning, notice or info, not 'loud'"]),
    ("--confg x", ["unrecognized option '--confg'"]),
]


@pytest.mark.parametrize("typed, texts", ALONE)
def test_without_a_daemon(switchd, typed, texts):
    said = switchd.run(*typed.split())
    assert said.returncode == 1 and said.stdout == ""
    for text in texts:
        assert text in said.stderr, said.stderr


def test_help_and_version_need_no_daemon(switchd):
    text = switchd.run("--help").stdout
    for word in ("--config=FILE", "status [SUBJECT]", "authorize PORT [MAC]", "/run/adp-switchd", "not_in_hardware"):
        assert word in text
    assert max(map(len, text.splitlines())) < 80
    assert switchd.run("--version").stdout.startswith("adp-switchd ")


class FalseDaemon:
    """Answers each client with the same octets, and keeps what it was asked."""

    def __init__(self, switchd, answer):
        switchd.run_dir.mkdir(mode=0o700)
        self.asked, self.answer = [], answer
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(str(switchd.run_dir / "control"))
        self.listener.listen()
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()

    def serve(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            with client:
                self.asked.append(json.loads(client.makefile().readline()))
                client.sendall(self.answer)

    def end(self):
        self.listener.shutdown(socket.SHUT_RDWR)  # wakes the thread
        self.thread.join(SECONDS)
        self.listener.close()


@pytest.fixture(name="serve")
def false_daemons(switchd):
    daemons = []

    def serve(answer):
        daemons.append(FalseDaemon(switchd, answer))
        return daemons[-1]

    yield serve
    for daemon in daemons:
        daemon.end()


def test_an_answer_is_printed_as_text_or_as_json(switchd, serve):
    daemon = serve(b'{"state": {"synced": true}, "groups": [{"name": "agg1", "mode": "lacp", "up": false}]}\n')
    assert switchd.run("status").stdout.startswith("in sync with the kernel; ")
    assert switchd.run("status", "groups").stdout.splitlines()[1].split() == ["agg1", "lacp", "no", "-"]
    assert json.loads(switchd.run("--json", "status", "groups").stdout)["groups"][0]["name"] == "agg1"
    assert switchd.run("status", "bridges").stdout == "none\n"
    assert daemon.asked == [{"command": "status", "arguments": []}] * 4


def test_a_refusal_is_told(switchd, serve):
    serve(b'{"error": "swp9 is not controlled.\\u001b[2J"}\n')
    said = switchd.run("authorize", "swp9", "02:00:00:00:00:01")
    assert (said.returncode, said.stdout, said.stderr) == (1, "", "adp-switchd: swp9 is not controlled.\\x1b[2J\n")


@pytest.mark.parametrize("answer", [b"", b"x\n", b"[]\n", b"\xff\n", b"[" * 100000 + b"\n", b"{" * 100000 + b"\n"])
def test_a_false_answer_is_an_error(switchd, serve, answer):
    serve(answer)
    said = switchd.run("status")
    assert said.returncode == 1 and said.stdout == "" and said.stderr.startswith("adp-switchd: the daemon at ")


def test_a_full_disk_is_no_success(switchd, serve):
    serve(b'{"text": "made"}\n')
    with open("/dev/full", "w", encoding="utf-8") as full:
        said = subprocess.run([f"{PROGRAMS}/adp-switchd", "resync"], env=switchd.environment, stdout=full,
                              stderr=subprocess.PIPE, text=True, timeout=SECONDS, check=False)
    assert (said.returncode, said.stderr) == (1, "adp-switchd: cannot print the answer.\n")


def test_a_running_daemon_is_asked(switchd):
    process = switchd.start()
    assert process.first_line == "adp-switchd: ready\n"
    with socket.socket(socket.AF_UNIX) as client:
        client.connect(str(switchd.run_dir / "control"))
        client.settimeout(SECONDS)
        lines = client.makefile()
        for request in (b"x", b"[]", b"{}", b'{"command": "status", "arguments": ["goups"]}', b'{"command": "none"}', b'{"command": "add", "arguments": 7}', b"\xff"):
            client.sendall(request + b"\n")
            assert "error" in json.loads(lines.readline()), request
    assert switchd.stop(process)[0] == 0


def hook(switchd, *words):
    return subprocess.run([HOOK, *words], env={**switchd.environment, "PATH": f"{PROGRAMS}:{os.environ['PATH']}"},
                          capture_output=True, text=True, timeout=SECONDS, check=False)


def test_hostapds_events_open_and_close(switchd, serve):
    daemon = serve(b'{"text": "done"}\n')
    station = "02:00:00:00:00:01"
    for event in ("CTRL-EVENT-EAP-SUCCESS", "AP-STA-CONNECTED", "AP-STA-DISCONNECTED"):
        said = hook(switchd, "swp3", event, station)
        assert (said.returncode, said.stderr) == (0, "")
    assert [(row["command"], row["arguments"]) for row in daemon.asked] == [("authorize", ["swp3", station]),
                                                                            ("unauthorize", ["swp3", station])]


def test_other_events_of_hostapd_change_nothing(switchd):
    for words in ((), ("swp3",), ("swp3", "CTRL-EVENT-EAP-STARTED", "02:00:00:00:00:01"), ("swp3", "AP-ENABLED"),
                  ("swp3", "x; reboot", "$(reboot)")):
        said = hook(switchd, *words)
        assert (said.returncode, said.stdout, said.stderr) == (0, "", ""), words


def test_the_hook_tells_when_no_daemon_is_there(switchd):
    said = hook(switchd, "swp3", "AP-STA-CONNECTED", "02:00:00:00:00:01")
    assert said.returncode == 1 and "no adp-switchd is running there" in said.stderr
