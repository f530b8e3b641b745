#!/usr/bin/env python3
"""Writes the seeds of every fuzz target: seeds.py FOLDER makes FOLDER/TARGET/NAME. The
head of a target's source describes its input."""
import pathlib
import struct
import sys

from netlink_seeds import Kernel
from recording_seeds import recording, replay

ADDRESSES = bytes.fromhex("020000000001" "020000000002")


def u16(number):
    return struct.pack(">H", number & 0xFFFF)


def u32(*numbers):
    return b"".join(struct.pack(">I", number & 0xFFFFFFFF) for number in numbers)


def received(port, *rest):
    """A frame from the switch: addresses, receive tag, and what follows."""
    return ADDRESSES + bytes.fromhex("1234ffffff") + bytes([0xC0 | port]) + b"".join(rest)


VLAN_100 = bytes.fromhex("81002064")
VLAN_7 = bytes.fromhex("81000007")
OUTER = bytes.fromhex("910000c8")
IPV4 = bytes.fromhex("0800" "45000020000000004011" "0000c0000201c0000202" "0035003500080000")
IPV6 = bytes.fromhex("86dd" "6000000000081140") + bytes(32) + bytes.fromhex("0035003500080000")
IPV6_OPTIONS = bytes.fromhex("86dd" "6000000000180040") + bytes(32) + bytes.fromhex("11010000") + bytes(24)
ARP = bytes.fromhex("0806") + bytes(28)

FRAMES = {
    "ipv4": received(4, VLAN_100, IPV4),
    "ipv6": received(29, VLAN_100, IPV6),
    "ipv6_options": received(5, VLAN_100, IPV6_OPTIONS),
    "two_tags": received(6, VLAN_100, VLAN_7, IPV4),
    "three_tags": received(6, VLAN_100, VLAN_7, VLAN_7, IPV4),
    "stacked": received(7, OUTER, VLAN_7, IPV6),
    "stacked_alone": received(7, OUTER, IPV4),
    "untagged": received(8, IPV4),
    "arp": received(63, VLAN_7, ARP),
    "tag_alone": received(0),
    "short": received(4)[:17],
}


def frames():
    head = bytes([1, 4])  # a map row and its port
    for name, frame in FRAMES.items():
        yield f"received_{name}", b"\0" + head + bytes(3) + frame
        yield f"parsed_{name}", b"\1" + head + bytes(5) + frame
        yield f"checked_{name}", b"\1" + head + bytes([1, 1, 18, 0, 0]) + frame
    yield "received_hidden", b"\0\1\4" + bytes([3, 0, 7]) + FRAMES["ipv4"]
    yield "tag_at_the_end", b"\1" + head + bytes([1, 1, 17, 0, 0]) + FRAMES["tag_alone"] + b"\1\2"
    for opcode in range(8):
        yield f"opcode_{opcode}", b"\2" + head + u32(opcode << 29 | 0x1800003, 0x80000001)
    managers = bytes(range(1, 9))
    frame = ADDRESSES + VLAN_7 + ARP
    for mode in range(6):
        for failing in (0, 1, 2, 4, 8, 16):
            call = head + bytes([failing]) + managers + u16(mode)
            yield f"list_{mode}_{failing}", b"\3" + call + b"\2\0" + u16(100) + b"\1\3\1\2\x83" + frame
            yield f"flood_{mode}_{failing}", b"\3" + call + b"\2\1" + b"\0\0" + frame
            yield f"one_{mode}_{failing}", b"\4" + call + b"\5" + u16(7) + frame
    yield "short", b"\3" + head + b"\0" + managers + u16(1) + b"\2\1\0\0" + frame[:11]
    for interface in (1, 26, 0x83, 0x41, 0x90, 60):
        yield f"one_{interface}", b"\4" + head + b"\0" + managers + u16(6) + bytes([interface]) + u16(7) + frame


def rules():
    def block(data):
        return bytes([(len(data) + 1) // 2, len(data) % 2]) + data

    def qualifier(kind, data, mask):
        return b"\0\1" + u16(kind) + block(data) + block(mask)

    def action(kind, param, is_null=b"\0"):
        return b"\0\0" + u16(kind) + block(param) + block(b"") + is_null

    def request(number, form, field=0, kind=1, value=bytes([46] * 4)):
        return b"\2" + bytes([number]) + u32(0x80000000, 0x80000001) + bytes([kind, 9, form, field]) + value.ljust(8, b"\0")

    head = b"\xff\0\0"  # no call fails, an empty record
    yield "one_of_each", head + qualifier(7, ADDRESSES[:6], b"\xff" * 6) + action(11, b"\0\0\0\5")
    yield "whole_field", head + qualifier(13, bytes(range(64)), b"\xff" * 64) + action(30, bytes(256), b"\1")
    yield "too_long", head + qualifier(13, bytes(66), b"") + action(30, bytes(258)) + qualifier(1, b"a", b"b")
    yield "full", b"\xff\x0f\x07" + qualifier(1, b"a", b"b") * 3 + action(1, b"c") * 3
    yield "negative", b"\xff\xff\xff" + qualifier(1, b"a", b"b") + action(1, b"c")
    yield "any_length", head + b"\0\1" + u16(1) + b"\xff" + u32(-1) + b"\xff" + u32(0x80000000)
    for field in range(13):
        yield f"field_{field}", head + request(5, 1, field, value=ADDRESSES[:6])
    yield "ports", head + request(1, 7) + request(1, 7, kind=2) + request(2, 3) + b"\1\1"
    yield "wrong_kind", head + request(3, 7, kind=0) + request(4, 1, 12)
    for call in range(6):
        yield f"failing_{call}", bytes([call, 0xFF, 0, 0]) + request(5, 1, 8) + request(5, 7) + b"\1\5"


def shell_line():
    for name, line in {
            "blank": " \t ", "comment": "# a remark {", "words": "call 1 0x2\t-3 agg2 01:80:c2:00:00:00",
            "named": "call vid=100 list = [1]", "lists": "call [1,2 0x3] {4, 5} [] {}",
            "record": "call {flags=8 mac=0102 ports={1,2}}", "text": r'call "a \"b\" \\ \n \r \t c" x # end',
            "nested": "call " + "[" * 16 + "]" * 16, "too_deep": "call " + "[" * 17, "missing": "call [1,",
            "hash": "call a#b \"# no\"", "equals": 'call "a"=1', "carriage": "call 1\r\n"}.items():
        yield name, line.encode()
    yield "control", b"call \x1b[A\0"


MAGIC = 0x61647001
PLAIN, GREETED, FRAMED = b"\0", b"\1", b"\3"


def message(*words):
    return bytes([len(words)]) + u32(*words)


def remote_server():
    whole = u16(0xFFFF)
    calls = b"".join(message(number, 0, 0, 1) for number in range(0, 240, 8))
    yield "calls_of_two_arguments", FRAMED + whole + calls
    yield "calls_in_two_pieces", FRAMED + u16(17) + calls
    for words in range(1, 20):
        yield f"calls_of_{words}_words", FRAMED + whole + b"".join(
            message(number, *[number % 2] * words) for number in range(words, 240, 19))
    yield "text", FRAMED + whole + message(230, 0, 0, 4, 0x61626300) + message(231, 4, 0x61626300, 1)
    yield "watch", FRAMED + whole + message(0xFFFFFF00) + message(0xFFFFFF01, 7)
    yield "no_such_call", FRAMED + whole + message(0xFFFFFFFF) + message(246)
    yield "too_long", GREETED + whole + u32(16385, 1)
    yield "empty", GREETED + whole + u32(0)
    yield "half_a_message", GREETED + whole + u32(4, 1, 2)
    yield "half_a_greeting", PLAIN + u16(2) + u32(MAGIC)
    yield "other_protocol", PLAIN + whole + b"GET / HTTP/1.1\r\n\r\n"


def remote_client():
    for number in range(0, 246, 5):
        call = u32(number) + b"\1" + b"\1\0\xff"
        yield f"answered_{number}", call + FRAMED + message(0, 0)
        yield f"with_outputs_{number}", call + FRAMED + message(0, 1, *range(number % 9))
    call = u32(60) + b"\1" + b"\1\0"
    yield "small_pieces", call + b"\0" + FRAMED + message(0, 1, 7)
    yield "failed", call + b"\xff" + FRAMED + message(-71, 0)
    yield "failed_with_outputs", call + b"\xff" + FRAMED + message(-71, 1, 1)
    yield "too_long", call + b"\xff" + GREETED + u32(16385, 0)
    yield "cut", call + b"\xff" + GREETED + u32(3, 0)
    yield "silent", u32(60) + b"\1" + b"\1\1\xff" + GREETED
    yield "other_protocol", call + b"\xff" + PLAIN + b"HTTP/1.1 400"
    yield "messages", u32(0) + b"\1" + b"\0\0\xff" + FRAMED + message(0) + message(0, 4, 1000, 1, 0, 1) * 3


def driver_calls():
    def call(number, *arguments):
        return u16(number) + b"\0\0" + bytes(arguments)

    frame = ADDRESSES + IPV4
    for first in range(0, 246, 6):
        calls = b"".join(call(number, 4, 1, 1, 2, 3, 1) for number in range(first, first + 6))
        yield f"calls_from_{first}", calls + u16(0xFF04) + bytes([len(frame)]) + frame + u16(0xFFFF) + calls
    for name, content in {"ipv4": VLAN_100 + IPV4, "ipv6": IPV6, "stacked": OUTER + VLAN_7 + ARP,
                          "from_cpu": bytes.fromhex("8874" "9800001000000000") + VLAN_7 + IPV4}.items():
        frame = ADDRESSES + content
        yield f"frame_{name}", b"".join(u16(0xFF00 + port) + bytes([len(frame)]) + frame for port in (0, 4, 5, 31))


def control_line():
    for name, text in {
            "version": '{"command": "version"}', "numbers": '{"command": 1e999, "port": -0}', "array": "[1, 2]",
            "deep": '{"a":' + "[" * 200, "text": r'{"command": "\u00e9\ud800 \n"}', "broken": '{"command"',
            "twice": '{"command": {}, "command": []}', "blank": "",
            "arguments": '{"command": "gpio", "arguments": ["3", 1], "form": "text"}',
            "cable": '{"command": "cable", "arguments": ["3", "--loss=0.1%", "--rate", "100M", "--seed", "7"]}',
            "too_many": '{"command": "pull", "arguments": ["0x1", []]}'}.items():
        yield name, u16(0xFFFF) + text.encode() + b"\n"
    yield "in_two_pieces", u16(9) + b'{"command": "version"}\n{}\n'
    yield "not_text", u16(0xFFFF) + b'{"command": "\xff\xfe"}\n\0\n'
    yield "without_end", u16(3) + b'{"command": "version"}'


def frame_input():
    frame = ADDRESSES + ARP
    first, second = u16(0), u16(1)

    def pcap(order, magic=0xA1B2C3D4, link_type=1, kept=len(frame)):
        head = struct.pack(order + "IHHiIII", magic, 2, 4, 0, 0, 65535, link_type)
        return head + (struct.pack(order + "IIII", 1, 2, kept, len(frame)) + frame) * 2

    def block(order, kind, body, options=b""):
        body += bytes(-len(body) % 4) + options
        length = struct.pack(order + "I", len(body) + 12)
        return struct.pack(order + "I", kind) + length + body + length

    def pcapng(order):
        comment = struct.pack(order + "HH4sHH", 1, 4, b"lost", 0, 0)
        section = block(order, 0x0A0D0D0A, struct.pack(order + "IHHq", 0x1A2B3C4D, 1, 0, -1))
        nanoseconds = struct.pack(order + "HHB3xHH", 9, 1, 9, 0, 0)
        interface = block(order, 1, struct.pack(order + "HHI", 1, 0, 0), nanoseconds)
        head = struct.pack(order + "IIIII", 0, 1, 2, len(frame), len(frame))
        return section + interface + block(order, 6, head + frame, comment) + block(order, 3, u32(1) + frame)

    for name, order in (("little", "<"), ("big", ">")):
        yield f"pcap_{name}", first + pcap(order)
        yield f"pcapng_{name}", second + pcapng(order)
    yield "pcap_of_nanoseconds", second + pcap("<", magic=0xA1B23C4D)
    yield "pcap_of_another_link", first + pcap("<", link_type=113)
    yield "pcap_of_pieces", first + pcap("<", kept=len(frame) - 1)
    yield "pcap_of_a_huge_frame", first + pcap("<", kept=0x7FFFFFFF)
    yield "pcap_cut", second + pcap(">")[:-1]
    yield "pcapng_cut", first + pcapng("<")[:-50]
    yield "beyond_the_end", u16(2) + pcap("<")
    for name, text in {"colons": frame.hex(":"), "lines": frame.hex() + "\n" + frame.hex(" "), "half": "ff f",
                       "lost": "ff::ff", "words": "frame", "blank": " \n"}.items():
        yield name, first + text.encode()


def state_files():
    def pair(first, second):
        return u16(len(first)) + first + second

    vlans = b'{"state": 1, "vlans": {"9": {"members": [1, 2, "cpu"]}, "10": {"members": [1, 2, 3, 4]}}}'
    yield "same", pair(vlans, vlans)
    yield "other_members", pair(vlans, vlans.replace(b"4]", b"5]"))
    yield "missing", pair(vlans, b'{"state": 1, "vlans": {"9": {"members": []}}, "09": null, "a": {}}')
    yield "values", pair(b'{"state": 1, "a": -1, "b": 18446744073709551615, "c": "\\u001b", "d": [{"e": true}]}', vlans)
    yield "deep", pair(vlans, b'{"state": 1, "a": ' + b"[" * 40 + b"]" * 40 + b"}")


def netlink_messages():
    for order, suffix in (("<", "little"), (">", "big")):
        everything = b""
        for name, octets in Kernel(order).messages():
            datagram = u16(len(octets)) + octets
            everything += datagram
            yield f"{name}_{suffix}", datagram
        yield f"everything_{suffix}", everything
        yield f"cut_{suffix}", everything[:-7]


def lacpdu():
    own, partner = 1, 2  # the last octets of the systems' addresses

    def up(port):
        return bytes([3, port, 0x26]) + bytes([2, port, 1, 1])

    def seconds(count):
        return bytes([5, 0]) + u16(1000 * count)

    def end(who, port, state):
        return bytes([who | 0x20, port, state])

    def says(port, state, ours=0x47):
        return bytes([1, port]) + end(partner, 7, state) + end(own, port + 1, ours)

    def agreed(port):
        return up(port) + says(port, 0x3F) + seconds(2) + says(port, 0x3F, 0x0F)

    frame = bytes.fromhex("0180c2000002" "020000000002" "8809")
    info = bytes.fromhex("8000020000000002000700ff0001") + b"\x3f" + bytes(3)
    pdu = frame + b"\1\1" + b"\1\x14" + info + b"\2\x14" + info + b"\3\x10" + bytes(66)
    marker = frame + b"\2\1" + b"\1\x10" + bytes(106)
    for name, octets in {"lacpdu": pdu, "marker": marker, "later_version": pdu.replace(b"\1\1\1", b"\1\2\1") + bytes(99),
                         "short": pdu[:-1], "wrong_length": pdu.replace(b"\2\x14", b"\2\x15"),
                         "oam": frame + b"\3" + bytes(109), "illegal": frame + b"\xff"}.items():
        yield f"frame_{name}", up(0) + bytes([0, 0, len(octets)]) + octets + seconds(3)
    yield "agreed", agreed(0) + says(0, 0x3F, 0x3F) + seconds(1)
    yield "group_of_ten", b"".join(agreed(port) for port in range(10)) + seconds(2)
    yield "silent_partner", agreed(0) + seconds(60)
    yield "resumed", bytes([3, 0, 0x86]) + end(partner, 7, 0x3F) + bytes([2, 0, 1, 1]) + seconds(10)
    yield "loop", up(0) + up(1) + bytes([1, 0]) + end(own, 2, 0x3F) + end(own, 1, 0x3F) + seconds(5)
    yield "half_duplex", up(0) + bytes([2, 0, 1, 0]) + says(0, 0x3F) + seconds(1)
    yield "storm", up(0) + says(0, 7) * 50 + seconds(1)
    yield "settings", agreed(0) + bytes([3, 0, 0x03]) + seconds(1) + bytes([4, 0]) + seconds(1)


TARGETS = (frames, rules, shell_line, remote_server, remote_client, driver_calls, control_line, frame_input, state_files, lacpdu,
           netlink_messages, recording, replay)


def main():
    folder = pathlib.Path(sys.argv[1])
    for target in TARGETS:
        place = folder / target.__name__
        place.mkdir(parents=True, exist_ok=True)
        for name, seed in target():
            (place / name).write_bytes(seed)


if __name__ == "__main__":
    main()
