"""What capinfos and tshark read in the captures that vdevctl writes."""
import json
import os
import subprocess

import pytest

WRITE_CAPTURE = os.environ["WRITE_CAPTURE"]
SECONDS = 60
INBOUND, OUTBOUND = 1, 2
ARP = "ffffffffffff 020000000001 0806 0001080006040001 020000000001 c0000201 000000000000 c0000202"
FIELDS = ("frame.interface_name", "frame.packet_flags_direction", "frame.time_epoch", "frame.cap_len", "frame.len",
          "frame.comment", "arp.dst.proto_ipv4")


def frame(interface, time, direction=0, octets=ARP, length=42, comment=""):
    return {"interface": interface, "time": time, "direction": direction, "octets": octets, "length": length,
            "comment": comment}


INTERFACES = ["port7", "cpu", "port26"]
# The lengths of frames and comments need each padding.
FRAMES = [
    frame(0, 1700000000_123456789, INBOUND),
    frame(1, 1700000000_123456790, OUTBOUND, comment="sent"),
    frame(2, 4300000000_000000001, OUTBOUND, octets=ARP + "01", length=43, comment="dropped: not a member of VLAN 7"),
    frame(2, 0, octets=ARP + "0102", length=44, comment="Grüße"),
    frame(0, 1700000000_999999999, INBOUND, octets=ARP + "010203", length=9018, comment="five!"),
]


def output(folder, *command, text=None):
    """What a program prints on standard output; it reads no settings of the user's."""
    environment = {**os.environ, "HOME": str(folder), "XDG_CONFIG_HOME": str(folder), "LC_ALL": "C.UTF-8", "TZ": "UTC"}
    return subprocess.run(command, env=environment, input=text, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          timeout=SECONDS, check=True).stdout


@pytest.fixture(name="capture", scope="module")
def written_capture(tmp_path_factory):
    folder = tmp_path_factory.mktemp("pcapng")
    description = json.dumps({"interfaces": INTERFACES, "frames": FRAMES})
    path = folder / "capture.pcapng"
    path.write_bytes(output(folder, WRITE_CAPTURE, text=description.encode()))
    return path


def test_every_field_of_every_frame(capture):
    options = [word for field in FIELDS for word in ("-e", field)]
    lines = output(capture.parent, "tshark", "-r", str(capture), "-T", "fields", *options).decode().splitlines()
    wanted = [[INTERFACES[given["interface"]], f"0x{given['direction']:08x}" if given["direction"] else "",
               f"{given['time'] // 10**9}.{given['time'] % 10**9:09}", str(len(bytes.fromhex(given["octets"]))),
               str(given["length"]), given["comment"], "192.0.2.2"] for given in FRAMES]
    assert [line.split("\t") for line in lines] == wanted


def test_what_stands_in_front_of_the_frames(capture):
    lines = [line.strip() for line in output(capture.parent, "capinfos", str(capture)).decode().splitlines()]
    wanted = ["File type:           Wireshark/... - pcapng", "Number of packets:   5", "File encapsulation:  Ethernet",
              "File timestamp precision:  nanoseconds (9)", "Capture application: write_capture 1.0",
              "Capture oper-sys:    Linux", "Number of interfaces in file: 3"]
    assert [line for line in wanted if line not in lines] == []
    assert [line for line in lines if line.startswith("Name =")] == [f"Name = {name}" for name in INTERFACES]
    assert lines.count("Encapsulation = Ethernet (1 - ether)") == 3
    assert lines.count("Time precision = nanoseconds (9)") == 3


def test_an_empty_capture_is_one(tmp_path):
    path = tmp_path / "empty.pcapng"
    path.write_bytes(output(tmp_path, WRITE_CAPTURE, text=b'{"interfaces": ["port1"], "frames": []}'))
    assert output(tmp_path, "tshark", "-r", str(path)) == b""


def test_a_full_disk_is_told():
    with open("/dev/full", "wb") as full:
        ended = subprocess.run([WRITE_CAPTURE], input=b'{"interfaces": [], "frames": []}', stdout=full,
                               stderr=subprocess.PIPE, timeout=SECONDS, check=False)
    assert (ended.returncode, ended.stderr) == (1, b"cannot write the capture: No space left on device.\n")
