"""The daemon under valgrind, from its start to its end: no error, no leak."""
import contextlib
import json
import signal
import socket
import struct
import subprocess

from testing.daemon import BOARD, BROADCAST, DEADLINE, PAYLOAD, Control, datagram, station, tag, wait_until

ERRORS = 99
VALGRIND = ("valgrind", "--leak-check=full", "--errors-for-leak-kinds=definite", "--show-leak-kinds=definite",
            f"--error-exitcode={ERRORS}", "--child-silent-after-fork=yes")  # fmt: skip
SLOWDOWN = 2
CALLS = [("add-address", 5, 24), ("enable", 24, 1), ("meter", 1, 5), ("rule", 768, 23, 53, 0, 5),
         ("destroy-rule", 768), ("group-vlan", 7), ("storm-limit", 23, 1, 100), ("send-event", 3, 1),
         ("receive-event", 3), ("trunk", 1)]  # fmt: skip
ODD_REQUESTS = (b"\n", b"{\n", b'{"command": 3}\n', b'{"command": "none"}\n', b'{"x":' + b"[" * 5000 + b"\n",
                b"\xff\xfe\n", b'{"command": "pull", "port": "x"}\n')  # fmt: skip

STREAMS = ("watch", "follow", "capture")
ARGUMENTS = {"explain": {"port": 1, "frame": (BROADCAST + station(1) + tag(0x8100, 1) + datagram()).hex()}}


def send_frames(device):
    one, two, cpu = device.nics("host1", "host2", "eth0")
    for length in (46, 300, 1500, 8000):
        one.send(BROADCAST + station(1) + b"\x08\x00" + bytes(length))
        two.send(station(1) + station(2) + tag(0x8100, 1) + datagram(max(length, 46)))
        cpu.send(BROADCAST + station(9) + bytes(length))
    one.send(station(7) + station(1) + b"\x08\x00")
    wait_until(lambda: device.counters(1)["rx_frames"] >= 4, "the frames")


def make_calls(device):
    for words in CALLS:
        subprocess.run(**device.calling(*words), timeout=DEADLINE, check=False, capture_output=True)
    assert device.call("enable", 24, 1) == "0"


def listen(device):
    """Clients that are told what happens, and leave in the middle of it."""
    controls = [Control(device) for _ in STREAMS]
    for control, command in zip(controls, STREAMS):
        control.say(json.dumps({"command": command}).encode() + b"\n")
        assert "error" not in control.hear()
    send_frames(device)
    for control in controls:
        assert "error" not in control.hear()


def ask_everything(device):
    control = Control(device)
    for form in ("json", "text"):
        control.say(b'{"command": "help"}\n')
        for subject in control.hear()["subjects"]:
            if subject["name"] not in STREAMS and (not subject["arguments"] or subject["arguments"].startswith("[")):
                request = {"command": subject["name"], "form": form, **ARGUMENTS.get(subject["name"], {})}
                control.say(json.dumps(request).encode() + b"\n")
                answer = control.hear()
                assert "error" not in answer, answer
    for request in ODD_REQUESTS:
        control.say(request)
        assert "error" in control.hear()


def use_bad_cables(device):
    """Frames that pass, that are lost, that come twice, that are cut off, and that wait when the device ends."""
    for port, words in (("1", ("--duplicate", "50%", "--corrupt", "50%")), ("2", ("--loss", "50%", "--delay", "10s")),
                        ("2", ("--delay", "10s", "--rate", "1M"))):  # fmt: skip
        assert device.control("cable", port, *words).returncode == 0
        send_frames(device)
    wait_until(lambda: any(row["waiting"] for row in device.ask("cables")["cables"]), "a frame to wait")


def storm(device):
    """Clients that come and go, in the middle of what they say."""
    for name, words in (("control", b'{"command": "macs"}\n{"comm'), ("driver", struct.pack(">3I", 0x61647001, 0, 7))):
        for count in range(100):
            with socket.socket(socket.AF_UNIX) as client, contextlib.suppress(BlockingIOError, BrokenPipeError):
                client.setblocking(False)
                client.connect(f"{device.run_dir}/{name}")
                client.send(words[: count % (len(words) + 1)])


def flap(device):
    batch = ["link del port3"]
    for number in range(20):
        batch += [f"link set host2 {'up' if number % 2 else 'down'}"]
    for _ in range(3):
        batch += ["link add port3 type veth peer name host3", "link set host3 up", "link del port3"]
    batch += ["link add port3 type veth peer name host3"]
    batch += [f"link set dev eth0 alias {number}" for number in range(1000)]
    device.process.send_signal(signal.SIGSTOP)
    subprocess.run(["ip", "-batch", "-"], input="\n".join(batch) + "\n", text=True, check=True)
    device.process.send_signal(signal.SIGCONT)
    assert device.control("pull", "2").returncode == 0
    assert device.control("plug", "2").returncode == 0
    wait_until(lambda: any("had to drop" in line["text"] for line in device.ask("log")["log"]), "the overrun")
    wait_until(lambda: device.port(3)["present"] and device.port(2)["up"], "the links")


def test_no_error_and_no_leak_from_start_to_end(start, tmp_path):
    report = tmp_path / "report"
    device = start("--create-interfaces", *BOARD, under=[*VALGRIND, f"--log-file={report}"])
    device.wait_ready()
    for work in (send_frames, make_calls, ask_everything, storm, use_bad_cables, flap, listen, use_bad_cables):
        work(device)
    device.process.send_signal(signal.SIGTERM)
    _, errors = device.process.communicate(timeout=SLOWDOWN * DEADLINE)
    assert errors == ""
    assert device.process.returncode == 0, report.read_text(encoding="utf-8")
    assert "ERROR SUMMARY: 0 errors" in report.read_text(encoding="utf-8")


def test_a_leak_would_be_seen(tmp_path):
    report = tmp_path / "report"
    leak = "import ctypes\nfor _ in range(10):\n    ctypes.CDLL(None).malloc(12345)"
    done = subprocess.run([*VALGRIND, f"--log-file={report}", "/usr/bin/python3", "-I", "-S", "-c", leak],
                          timeout=SLOWDOWN * DEADLINE, check=False)  # fmt: skip
    assert done.returncode == ERRORS
    assert "are definitely lost" in report.read_text(encoding="utf-8")
