"""The daemon under test, hosts on its cables, and clients of its control socket."""
import json
import os
import select
import signal
import socket
import struct
import subprocess
import time

import pytest

PROGRAMS = os.environ["VDEVICE_PROGRAMS"]
DAEMON = os.environ.get("VDEVICED", f"{PROGRAMS}/vdeviced")
BOARD = ("--user-ports", "4", "--first-port", "23")
DEADLINE = 60.0  # on a machine with much to do
ALL_PROTOCOLS = 0x0003
PACKET_AUXDATA = 8
PACKET_IGNORE_OUTGOING = 23
VLAN_VALID, TPID_VALID = 0x10, 0x40
BROADCAST = b"\xff" * 6
PAYLOAD = b"\x08\x00" + bytes(range(46))


def station(number):
    return bytes([2, 0, 0, 0, 0, number])


def tag(tpid, tci):
    return struct.pack(">HH", tpid, tci)


def datagram(length=46, tos=0):
    """From its type on, with a good header checksum."""
    header = struct.pack(">BBHHHBBHII", 0x45, tos, length, 0, 0, 64, 17, 0, 0x0A000001, 0x0A000002)
    total = sum(struct.unpack(">10H", header))
    checksum = 0xFFFF - (total % 0xFFFF)
    return b"\x08\x00" + header[:10] + struct.pack(">H", checksum) + header[12:] + bytes(length - 20)


def wait_until(condition, what):
    """Polls, because the kernel tells of links when it likes; fails at the deadline."""
    end = time.monotonic() + DEADLINE
    while time.monotonic() < end:
        if condition():
            return
        time.sleep(0.01)
    pytest.fail(f"waited {DEADLINE} s for {what}")


def interfaces():
    return {link["ifname"] for link in json.loads(subprocess.check_output(["ip", "-j", "link"]))}


def carrier(interface):
    link, = json.loads(subprocess.check_output(["ip", "-j", "link", "show", interface]))
    return "LOWER_UP" in link["flags"]


class Nic:
    """A raw socket on a host's end of a cable."""

    standing = {}  # closing a packet socket takes the kernel long

    @classmethod
    def of(cls, interface):
        """The one of this interface, emptied; the interface is up."""
        subprocess.run(["ip", "link", "set", interface, "up"], check=True)
        place = interface, socket.if_nametoindex(interface)
        try:
            while place in cls.standing and cls.standing[place].receive(0) is not None:
                pass
        except OSError:  # the interface was down
            del cls.standing[place]
        if place not in cls.standing:
            cls.standing[place] = cls(interface)
        return cls.standing[place]

    def __init__(self, interface):
        self.socket = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, 0)
        self.socket.setsockopt(socket.SOL_PACKET if hasattr(socket, "SOL_PACKET") else 263, PACKET_AUXDATA, 1)
        self.socket.setsockopt(263, PACKET_IGNORE_OUTGOING, 1)
        self.socket.bind((interface, ALL_PROTOCOLS))

    def send(self, frame):
        self.socket.send(frame)

    def receive(self, deadline=DEADLINE):
        """The next frame with its outer tag in place, or None when none comes in time."""
        if not select.select([self.socket], [], [], deadline)[0]:
            return None
        frame, controls, _, _ = self.socket.recvmsg(10000, 256)
        for _, kind, data in controls:
            if kind == PACKET_AUXDATA:
                status, _, _, _, _, tci, tpid = struct.unpack("=IIIHHHH", data[:20])
                if status & VLAN_VALID:
                    frame = frame[:12] + tag(tpid if status & TPID_VALID else 0x8100, tci) + frame[12:]
        return frame


def count_frames(*nics):
    """How many frames come to each, until none comes for a while."""
    counts = [0] * len(nics)
    while ready := select.select([nic.socket for nic in nics], [], [], 0.2)[0]:
        for index, nic in enumerate(nics):
            counts[index] += nic.socket in ready and nic.receive() is not None
    return counts


class Device:
    def __init__(self, run_dir, *options, under=()):
        """Under is the command line of a program that runs the daemon."""
        self.run_dir = run_dir
        self.process = subprocess.Popen([*under, DAEMON, "--run-dir", run_dir, *options],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def wait_ready(self):
        assert self.process.stdout.readline() == "vdeviced: ready\n", self.process.stderr.read()

    def stop(self):
        self.process.send_signal(signal.SIGTERM)
        _, errors = self.process.communicate(timeout=DEADLINE)
        assert errors == ""
        return self.process.returncode

    def control(self, *words):
        return subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", self.run_dir, *words], capture_output=True,
                              text=True, timeout=DEADLINE)

    def ask(self, *words):
        end = time.monotonic() + DEADLINE
        result = self.control("--json", *words)
        while "gave no answer within" in result.stderr and time.monotonic() < end:  # the device waits for the kernel
            result = self.control("--json", *words)
        assert result.returncode == 0, result.stderr
        return json.loads(result.stdout)

    def calling(self, *words):
        """Arguments for a process of its own that makes a driver call, as a management program would."""
        return {"args": [f"{PROGRAMS}/vdevice_test_caller", *map(str, words)], "text": True,
                "env": {**os.environ, "VDEVICE_DIR": self.run_dir}}

    def call(self, *words):
        return subprocess.check_output(**self.calling(*words), timeout=DEADLINE).strip()

    def port(self, number):
        return next(port for port in self.ask("ports")["ports"] if port["port"] == number)

    def counters(self, number):
        return next(row for row in self.ask("counters")["counters"] if row["port"] == number)

    def nics(self, *interfaces):
        nics = [Nic.of(interface) for interface in interfaces]
        for interface in interfaces:
            number = 0 if interface == "eth0" else int(interface.removeprefix("host"))
            wait_until(lambda number=number: self.port(number)["up"], f"{interface}'s link")
        return nics


class Reader:
    """A vdevctl that is told line by line. It has begun, unless it was refused."""

    started = []

    def __init__(self, device, *words, output=subprocess.PIPE):
        self.place = device.run_dir, next(word for word in words if word in ("watch", "follow", "capture"))
        self.process = subprocess.Popen([f"{PROGRAMS}/vdevctl", "--run-dir", device.run_dir, *words],
                                        stdout=output, stderr=subprocess.PIPE)
        self.started.append(self)
        wait_until(lambda: self._has_begun(device) or self.process.poll() is not None, f"{words} to begin")

    def _has_begun(self, device):
        """As many read as there are of these; the device forgets at once who has left."""
        control = Control(device)
        control.say(b'{"command": "metrics"}\n')
        families = {family["name"]: family["samples"] for family in control.hear()["metrics"]}
        readers = {sample["labels"]["command"]: sample["value"] for sample in families["adp_stream_readers"]}
        return readers[self.place[1]] == sum(other.place == self.place and other.process.poll() is None
                                             for other in self.started)

    def read_until(self, is_enough):
        """The lines that it writes until these are enough."""
        output = b""
        while not is_enough(lines := output[: output.rfind(b"\n") + 1].splitlines()):
            assert select.select([self.process.stdout], [], [], DEADLINE)[0], output
            output += os.read(self.process.stdout.fileno(), 65536)
        return lines

    def interrupt(self):
        self.process.send_signal(signal.SIGINT)
        return self.process.communicate(timeout=DEADLINE)

    def wait(self):
        output, errors = self.process.communicate(timeout=DEADLINE)
        assert (self.process.returncode, errors) == (0, b"")
        return output.decode()


class Control:
    """A client of the control socket that sends what it likes."""

    def __init__(self, device):
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.connect(device.run_dir + "/control")  # waits for its turn, unlike with a timeout
        self.socket.settimeout(DEADLINE)
        self.reader = self.socket.makefile("r")

    def say(self, octets):
        self.socket.sendall(octets)

    def hear(self):
        return json.loads(self.reader.readline())
