"""The switch tag in tshark: every field of every frame in samples/cpu-port.pcapng, see record_sample.py."""
import os
import pathlib
import subprocess

import pytest

HERE = pathlib.Path(__file__).resolve().parent
SAMPLE = HERE / "samples" / "cpu-port.pcapng"
SECONDS = 60

ALL_PORTS = ",".join(map(str, range(1, 27)))
FROM_CPU, TO_CPU = "1", "2"
TAG_FIELDS = ("direction", "word1", "opcode", "flags", "destination", "port", "ports1", "word2", "ports2", "word",
              "reserved", "ingress", "from", "to", "summary", "type", "length", "trailer")
INNER_FIELDS = ("vlan.id", "vlan.priority", "arp.dst.proto_ipv4", "ip.src", "udp.dstport", "stp.bridge.hw", "data.data")
NOTES = ("truncated", "bare", "length.bad", "snapped", "reserved.set", "dropped", "no_port", "unknown_port", "bad_map")
FIELDS_OF_FRAMES = (*(f"adp_tag.{name}" for name in TAG_FIELDS), *INNER_FIELDS)
FIELDS = (*FIELDS_OF_FRAMES, *(f"adp_tag.{name}" for name in NOTES), "frame.protocols", "frame.cap_len", "frame.len",
          "_ws.col.Info")

# What else is said of a frame: the notes on its tag, the dissectors of the frame in it, and their part of the info column.
ELSE = ("notes", "protocols", "info")
ARP = {"arp.dst.proto_ipv4": "192.0.2.1", "protocols": "arp", "info": "Who has 192.0.2.1? Tell 192.0.2.7"}
UDP = {"ip.src": "192.0.2.7", "udp.dstport": "9", "data.data": "6869", "protocols": "ip:udp:data",
       "info": "1024 → 9 Len=2"}
BPDU = {"stp.bridge.hw": "02:00:00:00:00:01", "protocols": "llc:stp",
        "info": "Conf. Root = 32768/0/02:00:00:00:00:01  Cost = 0  Port = 0x8001"}
TYPE_ARP, TYPE_IPV4, TYPE_VLAN = "0x0806", "0x0800", "0x8100"


def transmitted(word1, opcode, summary, word2="0x00000000", flags="0x00000000", **fields):
    second = "ports2" if opcode in (4, 7) else "word2"
    return {"direction": FROM_CPU, "word1": word1, "opcode": str(opcode), "flags": flags, second: word2,
            "summary": summary, **fields}


def received(ingress, user_port, summary, vid="1", priority="0", **fields):
    return {"direction": TO_CPU, "word": f"0x{ingress:08x}", "reserved": "0x00000000", "ingress": str(ingress),
            **({"from": str(user_port)} if user_port else {}), "summary": summary, "type": TYPE_VLAN, "vlan.id": vid,
            "vlan.priority": priority, **fields}


FLAGS = "0x0000000c"  # the library's
FRAMES = {
    "opcode 0": transmitted("0x00000005", 0, "dropped", destination="0x00000005", type=TYPE_ARP, notes="dropped", **ARP),
    "opcode 1": transmitted("0x38000000", 1, "switched", flags=FLAGS, destination="0x00000000", type=TYPE_ARP, **ARP),
    "opcode 2": transmitted("0x40000005", 2, "dropped", destination="0x00000005", type=TYPE_ARP, notes="dropped", **ARP),
    "opcode 3": transmitted("0x60000019", 3, "to port 22", port="25", to="22", length="38", trailer="00" * 8, **BPDU),
    "opcode 4": transmitted("0x99000020", 4, "to ports 2,21-26", "0x0000001f", FLAGS, ports1="0x01000020",
                            to="2,21,22,23,24,25,26", type=TYPE_VLAN, **{"vlan.id": "100", "vlan.priority": "0"}, **ARP),
    "opcode 5": transmitted("0xa000001d", 5, "to port 26", port="29", to="26", type=TYPE_IPV4, **UDP),
    "opcode 6": transmitted("0xc0000004", 6, "to port 1", port="4", to="1", type=TYPE_ARP, **ARP),
    "opcode 7": transmitted("0xf9fffff0", 7, "to ports 1-26", "0x0000001f", FLAGS, ports1="0x01fffff0", to=ALL_PORTS,
                            type=TYPE_ARP, **ARP),
    "interface without a port": transmitted("0xc1ffffff", 6, "to chip port 33554431", port="33554431", type=TYPE_ARP,
                                            notes="unknown_port", **ARP),
    "ARP from a port": received(10, 7, "from port 7", **ARP),
    "UDP from a port of word 2": received(25, 22, "from port 22", **UDP),
    "BPDU from a port": received(29, 26, "from port 26", **BPDU),
    "tagged": received(10, 7, "from port 7", "100", "5", **ARP),
    "another TPID": {**received(4, 1, "from port 1", **ARP), "type": "0x9a00"},
    "chip port without a user port": received(40, None, "from chip port 40", "100", notes="unknown_port", **ARP),
    "from the CPU port": received(0, None, "from the CPU port", "100", **ARP),
    "bitmap with unknown ports": transmitted("0x80000020", 4, "to ports 2,22 and chip port 56", "0x80000001",
                                             ports1="0x00000020", to="2,22", type=TYPE_ARP, notes="unknown_port", **ARP),
    "empty bitmap": transmitted("0xe0000000", 7, "to no port", ports1="0x00000000", type=TYPE_ARP, notes="no_port",
                                **ARP),
    "all flags": transmitted("0x7e000005", 3, "to port 2", "0xffffffff", "0x0000000f", port="5", to="2", type=TYPE_ARP,
                             **ARP),
    "cut in word 1": {"notes": "truncated"},
    "cut in word 2": {"notes": "truncated"},
    "no type": transmitted("0xc0000004", 6, "to port 1", port="4", to="1", notes="bare"),
    "half a type": {"direction": TO_CPU, "word": "0x00000004", "reserved": "0x00000000", "ingress": "4", "from": "1",
                    "summary": "from port 1", "notes": "bare"},
    "a length beyond the end": transmitted("0xc0000004", 6, "to port 1", port="4", to="1", length="38",
                                           notes="length.bad", protocols="llc:stp", info="[Malformed Packet]"),
    "malformed IP": transmitted("0xc0000004", 6, "to port 1", port="4", to="1", type=TYPE_IPV4, protocols="ip",
                                info="[Malformed Packet]"),
}


def output(folder, program, *arguments):
    """What a program prints on standard output; it reads no settings of the user's."""
    environment = {**os.environ, "HOME": str(folder), "XDG_CONFIG_HOME": str(folder), "LC_ALL": "C.UTF-8"}
    ended = subprocess.run([program, *arguments], env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                           text=True, timeout=SECONDS, check=True)
    assert "Lua" not in ended.stderr
    return ended.stdout


@pytest.fixture(name="tshark", scope="module")
def tshark_with_the_dissector(tmp_path_factory):
    """{comment of a frame: {field: value}} of a capture, the fields that the frame has."""
    folder = tmp_path_factory.mktemp("settings")

    def read(*options, capture=SAMPLE):
        chosen = [word for field in ("frame.comment", *FIELDS) for word in ("-e", field)]
        lines = output(folder, "tshark", "-X", f"lua_script:{HERE / 'adp_switch_tag.lua'}", "-r", str(capture),
                       "-T", "fields", *chosen, *options).splitlines()
        rows = [line.split("\t") for line in lines]
        return {row[0]: {name: value for name, value in zip(FIELDS, row[1:], strict=True) if value} for row in rows}

    return read


@pytest.fixture(name="sample", scope="module")
def frames_of_the_sample(tshark):
    return tshark()


def notes_of(frame):
    """The dissector's notes on a frame."""
    return [name for name in NOTES if f"adp_tag.{name}" in frame]


def test_every_field_of_every_frame(sample):
    shown = {comment: {name.removeprefix("adp_tag."): value for name, value in frame.items() if name in FIELDS_OF_FRAMES}
             for comment, frame in sample.items()}
    assert shown == {comment: {name: value for name, value in given.items() if name not in ELSE}
                     for comment, given in FRAMES.items()}


def test_what_is_wrong_is_noted(sample):
    assert {comment: " ".join(notes_of(frame)) for comment, frame in sample.items()} == {
        comment: given.get("notes", "") for comment, given in FRAMES.items()}


def test_the_inner_frame_has_its_own_dissectors(sample):
    shown = {comment: [name for name in frame["frame.protocols"].split(":") if name not in ("eth", "ethertype", "vlan")]
             for comment, frame in sample.items()}
    assert shown == {comment: ":".join(filter(None, ["adp_tag", given.get("protocols")])).split(":")
                     for comment, given in FRAMES.items()}


def test_the_ports_are_in_front_of_the_info_column(sample):
    assert {comment: frame["_ws.col.Info"].rstrip() for comment, frame in sample.items()} == {
        comment: f"[{given.get('summary', 'switch tag cut off')}] {given.get('info', '')}".rstrip()
        for comment, given in FRAMES.items()}


def test_frames_are_filtered_by_user_port(tshark):
    assert list(tshark("-Y", "adp_tag.to == 21")) == ["opcode 4", "opcode 7"]
    assert list(tshark("-Y", "adp_tag.from == 7")) == ["ARP from a port", "tagged"]


@pytest.mark.parametrize("chip_ports, to, sender, unknown", [
    ("1-32", "to ports 5,24-29", "from port 10", False),
    ("29,25-28, 24 ,5", "to ports 1-7", "from chip port 10", False),
    ("10", "to chip ports 5,24-29", "from port 1", True),
    ("", "to chip ports 5,24-29", "from chip port 10", True),
])
def test_the_map_is_a_preference(tshark, chip_ports, to, sender, unknown):
    frames = tshark("-o", f"adp_tag.chip_ports:{chip_ports}")
    assert frames["opcode 4"]["adp_tag.summary"] == to
    assert frames["ARP from a port"]["adp_tag.summary"] == sender
    assert notes_of(frames["opcode 4"]) == (["unknown_port"] if unknown else [])


@pytest.mark.parametrize("chip_ports", ["29-4", "4,,5", "1-64"])
def test_a_map_that_cannot_be_read_is_noted(tshark, chip_ports):
    frames = tshark("-o", f"adp_tag.chip_ports:{chip_ports}")
    assert all("bad_map" in notes_of(frame) for frame in frames.values())
    assert frames["opcode 6"]["adp_tag.summary"] == "to chip port 4"


def test_the_direction_is_a_preference(tshark):
    frames = tshark("-o", "adp_tag.direction:To the CPU")
    to_cpu = frames["opcode 6"]
    assert [to_cpu[f"adp_tag.{name}"] for name in ("direction", "reserved", "ingress")] == [TO_CPU, "0x03000000", "4"]
    assert "reserved.set" in notes_of(to_cpu)
    assert notes_of(frames["cut in word 1"]) == ["truncated"]
    from_cpu = tshark("-o", "adp_tag.direction:From the CPU")["ARP from a port"]
    assert [from_cpu[f"adp_tag.{name}"] for name in ("direction", "opcode")] == [FROM_CPU, "0"]


@pytest.mark.parametrize("octets", [16, 24, 40])
def test_a_capture_of_the_first_octets_is_no_malformed_tag(tshark, tmp_path, octets):
    capture = tmp_path / "snapped.pcapng"
    output(tmp_path, "editcap", "-s", str(octets), str(SAMPLE), str(capture))
    for comment, frame in tshark(capture=capture).items():
        is_snapped = int(frame["frame.cap_len"]) < int(frame["frame.len"])
        assert ("snapped" in notes_of(frame)) == is_snapped, comment
        if is_snapped:
            assert not {"truncated", "bare", "length.bad"} & set(notes_of(frame)), comment
