"""Records samples/cpu-port.pcapng: frames of a device's CPU port with every tag, and malformed ones that no device makes.

    script/build host && PYTHONPATH=python /usr/bin/python3 -B -m adp.lab.isolate \\
        /usr/bin/python3 -B tools/wireshark/record_sample.py

The comment of each frame is its name in test_dissector.py.
"""

import json
import pathlib
import subprocess

from adp.lab import Build, Lab
from adp.lab.frames import BROADCAST, SWITCH_TAG_TYPE, ethernet, internet_checksum, mac, vlan_tag
from adp.lab.nic import Nic

SAMPLE = pathlib.Path(__file__).parent / "samples" / "cpu-port.pcapng"
CPU, HOST = mac("02:00:00:00:00:fe"), mac("02:00:00:00:00:07")
BPDU_ADDRESS = mac("01:80:c2:00:00:00")
VLAN, PRIORITY = 100, 5
SECONDS = 5.0
NO_VLAN = 0xFFFFFFFF
OTHER_TPID = 0x9A00
INTERFACE, INBOUND, OUTBOUND = "eth0", 1, 2
# Frames have times a millisecond apart, so that a sample that is recorded again differs where the device does.
START, STEP = 1_790_000_000_000_000_000, 1_000_000

ARP = bytes.fromhex("0001080006040001020000000007c0000207000000000000c0000201")
BPDU = bytes.fromhex("0000000000" "8000020000000001" "00000000" "8000020000000001" "8001" "0000140002000f00")


def udp():
    """An IPv4 packet from port 1024 to port 9, the discard service."""
    def header(checksum):
        return bytes.fromhex("4500001e000040004011") + checksum + bytes.fromhex("c0000207c0000201")

    return header(internet_checksum(header(b"\0\0")).to_bytes(2, "big")) + bytes.fromhex("04000009000a0000") + b"hi"


def arp(source, tags=b""):
    return ethernet(BROADCAST, source, 0x0806, ARP, tags)


def bpdu(source):
    """A frame with a length, the LLC header of BPDUs, and eight octets of padding."""
    body = bytes.fromhex("424203") + BPDU
    return ethernet(BPDU_ADDRESS, source, len(body), body + bytes(8))


class Recorder:
    """Frames on the CPU's interface, with their names."""

    def __init__(self, lab):
        self._lab = lab
        self._nic = Nic(lab.device.namespace, INTERFACE, outgoing=True)
        self._shell = lab.shell("host")
        self.frames = []
        self.ask("map")
        self.ask("adp_pkt_init")

    def ask(self, *words):
        return self._shell.result(" ".join(map(str, words)))

    def add(self, name, frame, direction):
        self.frames.append({"interface": 0, "time": START + len(self.frames) * STEP, "direction": direction,
                            "octets": frame.hex(), "length": len(frame), "comment": name})

    def _record(self, name, marker, direction):
        frame = self._nic.receive(marker, SECONDS)
        assert frame is not None, f"{name} is not on {INTERFACE}"
        self.add(name, frame, direction)

    def transmitted(self, name, frame, *words):
        """What the library makes of a frame."""
        assert self.ask(*words) == 0
        self._record(name, frame[12:], OUTBOUND)

    def single(self, name, frame, interface, opcode):
        self.transmitted(name, frame, "adp_transmit_frame", frame.hex(), len(frame), 0, interface, opcode)

    def by_mode(self, name, frame, ports, mode):
        self.transmitted(name, frame, "__adp_transmit_frame", f"{{frame={frame.hex()} source=0}}", ports, NO_VLAN, mode)

    def received(self, name, port, frame):
        """What reaches the CPU of a host's frame."""
        self._lab.hosts[port].send(frame)
        self._record(name, frame[14:], INBOUND)


def record_transmitted(recorder):
    frame = arp(CPU)
    recorder.single("opcode 0", frame, 2, 0)
    recorder.by_mode("opcode 1", frame, "null", 1)
    recorder.single("opcode 2", frame, 2, 2)
    recorder.single("opcode 3", bpdu(CPU), 22, 3)
    recorder.by_mode("opcode 4", arp(CPU, vlan_tag(VLAN)), "[2,21,22,23,24,25,26]", 0)
    recorder.single("opcode 5", ethernet(HOST, CPU, 0x0800, udp()), 26, 5)
    recorder.single("opcode 6", frame, 1, 6)
    recorder.by_mode("opcode 7", frame, "null", 0)
    recorder.single("interface without a port", frame, 27, 6)


def record_received(recorder):
    recorder.received("ARP from a port", 7, arp(HOST))
    recorder.received("UDP from a port of word 2", 22, ethernet(BROADCAST, HOST, 0x0800, udp()))
    recorder.received("BPDU from a port", 26, bpdu(HOST))
    assert recorder.ask("adp_vlan_create", VLAN) == 0
    assert recorder.ask("adp_vlan_port_set", VLAN, "{0,7}", "{}") == 0
    recorder.received("tagged", 7, arp(HOST, vlan_tag(VLAN, PRIORITY)))
    assert recorder.ask("adp_double_tag_tipd_set", 1, OTHER_TPID, 0) == 0
    recorder.received("another TPID", 1, arp(HOST))


def add_made(recorder):
    """Frames that no device makes."""
    def tagged(*words, rest=b""):
        words = b"".join(word.to_bytes(4, "big") for word in words)
        return BROADCAST + HOST + SWITCH_TAG_TYPE.to_bytes(2, "big") + words + rest

    behind = arp(HOST)[12:]
    for name, frame in {
            "chip port without a user port": tagged(40, rest=vlan_tag(VLAN) + behind),
            "from the CPU port": tagged(0, rest=vlan_tag(VLAN) + behind),
            "bitmap with unknown ports": tagged(4 << 29 | 1 << 5, 1 << 31 | 1, rest=behind),
            "empty bitmap": tagged(7 << 29, 0, rest=behind),
            "all flags": tagged(3 << 29 | 15 << 25 | 5, 0xFFFFFFFF, rest=behind),
            "cut in word 1": tagged(rest=b"\xb8\0\0"),
            "cut in word 2": tagged(6 << 29 | 4, rest=b"\0\0\0"),
            "no type": tagged(6 << 29 | 4, 0),
            "half a type": tagged(4, rest=b"\x81"),
            "a length beyond the end": tagged(6 << 29 | 4, 0, rest=bytes.fromhex("0026424203") + BPDU[:20]),
            "malformed IP": tagged(6 << 29 | 4, 0, rest=bytes.fromhex("080045")),
    }.items():
        recorder.add(name, frame, 0)


def main():
    with Lab("host", hosts=(1, 7, 22, 26)) as lab:
        recorder = Recorder(lab)
        record_transmitted(recorder)
        record_received(recorder)
    add_made(recorder)
    program = Build("host").command("vdevctl_test_write_capture")
    description = json.dumps({"interfaces": [INTERFACE], "frames": recorder.frames})
    written = subprocess.run(program, input=description.encode(), stdout=subprocess.PIPE, check=True).stdout
    SAMPLE.write_bytes(written)
    print(f"{SAMPLE.name}: {len(recorder.frames)} frames")


if __name__ == "__main__":
    main()
