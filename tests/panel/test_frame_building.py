"""Frames that the view "Explain" builds: fields, checksums, templates, switch tags; hostile hex does no harm."""

import pytest
from modules import evaluated
from packets import ARP, TAGGED, check_packet

FRAME, HEX = "explain/frame.js", "explain/hex.js"
AT = """
    const fields = (frame) => sections.sectionsOf(frame).flatMap((section) => section.fields);
    const at = (frame, name) => fields(frame).find((each) => each.name === name);
"""

MOST_MILLISECONDS = 5000
PACKETS = (
    ("udp", 17, "020000000002"),
    ("tcp", 6, "020000000002"),
    ("icmp", 1, "020000000002"),
    ("igmp", 2, "01005e010203"),
)
OTHERS = (
    ("bpdu", "0180c200000002000000000100274242030000"),
    ("lldp", "0180c200000e02000000000188cc0207"),
    ("lacp", "0180c20000020200000000018809010101"),
    ("arp", ARP),
)
LIARS = (
    ARP,
    TAGGED + "4f00ffff" + 60 * "ff",
    "ffffffffffff0200000000018874" + "80000000ffffffff" + "8100ffff" * 10 + "0800",
)
SWITCH_TAGS = (
    (1, [], "2000000000000000"),
    (3, [7], "6000000700000000"),
    (4, [0, 24, 25, 29], "8100000100000011"),
)
# What is pasted, and its octets or what is said of it.
TEXTS = (
    ("FF:ff-0a.0B 0c\n0d", "ffff0a0b0c0d"),
    ("0xff, 0x01, 0x02", "ff0102"),
    (
        "\t0x0000:  ffff ffff ffff 0200 0000 0001 0806 0001  ................\n\t0x0010:  0800 06  ...",
        "ffffffffffff02000000000108060001080006",
    ),
    (
        "0000   ff ff ff ff ff ff 02 00 00 00 00 01 08 06 00 01   ................\n0010   08 00   ..",
        "ffffffffffff020000000001080600010800",
    ),
    ("ffff  ffff", "ffffffff"),
    ("", "The frame has no octets yet."),
    ("abc", "An octet has two digits, but there are 3."),
    ("0g", "“g” is not a hexadecimal digit."),
    ("00😀", "“😀” is not a hexadecimal digit."),
    ("<b>", "“<” is not a hexadecimal digit."),
    (16385 * "00", "The frame has 16385 octets; the device takes at most 16384."),
    (65537 * "0", "An octet has two digits, but there are 65537."),
    (65536 * " ", "The frame has no octets yet."),
    (32768 * "\n ", "The frame has no octets yet."),
)


@pytest.fixture(name="blank")
def page_at_explain(page):
    page.open("#explain/sw1")
    page.wait_for(".way-card")
    return page


def made(page, expression, *values):
    """The frame of an expression in which `start` makes one of digits and `field` changes a field by its name."""
    text = f"""(async () => {{
        const hex = await load("{HEX}");
        const sections = await load("explain/layout.js");
        {AT}
        const start = (digits) => hex.octetsOfHex(digits).octets;
        const field = (frame, name, text) => module.withField(frame, at(frame, name), text).frame;
        return hex.hexOf({expression});
    }})()"""
    return bytes.fromhex(evaluated(page, FRAME, text, *values))


def test_frame_that_one_begins_with(blank):
    assert made(blank, "module.firstFrame()").hex() == ARP


def test_packets_have_right_checksums_after_every_change(blank):
    for name, protocol, destination in PACKETS:
        check_changes_of_packet(blank, name, protocol, destination)


def check_changes_of_packet(blank, name, protocol, destination):
    template = f'module.withTemplate(start(values[0]), "{name}")'
    frame = made(blank, template, ARP)
    assert (frame[:6].hex(), len(frame) >= 60, check_packet(frame)) == (destination, True, protocol)
    changed = made(blank, f'field(field({template}, "ip-source", "192.0.2.255"), "ip-dscp", "46")', ARP)
    assert (changed[26:30], changed[15], check_packet(changed)) == (bytes((192, 0, 2, 255)), 46 << 2, protocol)
    tagged = made(blank, f'field(module.withTag({template}), "ip-ttl", "7")', ARP)
    assert (tagged[26], check_packet(tagged, 18)) == (7, protocol)
    longer = made(blank, f"module.withLength({template}, 1001)", ARP)
    assert (len(longer), check_packet(longer)) == (1001, protocol)


def test_other_templates(blank):
    for name, start in OTHERS:
        frame = made(blank, f'module.withTemplate(start(values[0]), "{name}")', ARP)
        assert frame.hex().startswith(start) and len(frame) >= 60


def test_tags_are_put_in_front_changed_and_removed(blank):
    double = made(blank, 'field(module.withTag(module.withTag(start(values[0]))), "tag1-vlan", "4095")', ARP)
    assert double.hex() == ARP[:24] + "81000fff81000001" + ARP[24:]
    changed = made(blank, 'field(field(start(values[0]), "tag1-priority", "7"), "tag1-dei", "1")', double.hex())
    assert changed.hex()[24:32] == "8100ffff"
    assert made(blank, "module.withoutTag(start(values[0]), 0)", double.hex()).hex() == ARP[:24] + "81000001" + ARP[24:]
    # Nothing is shorter than a frame is, but what was shorter stays so.
    assert len(made(blank, "module.withoutTag(module.withTag(start(values[0])), 0)", ARP[:100])) == 50


def test_value_that_does_not_fit_changes_nothing(blank):
    tagged = ARP[:24] + "81000001" + ARP[24:]
    text = f"""(async () => {{
        const {{ sectionsOf }} = await load("explain/layout.js");
        const frame = (await load("{HEX}")).octetsOfHex(values[0]).octets;
        return values[1].map((text) => module.withField(frame, sectionsOf(frame)[1].fields[1], text));
    }})()"""
    answers = evaluated(blank, FRAME, text, tagged, ["4096", "-1", "", "1.5", "1e3", "x", "0x", " "])
    assert answers == 8 * [{"frame": None, "error": "A number from 0 to 4095"}]


def test_octets_of_text(blank):
    text = "values.map((text) => (({octets, error}) => error ?? module.hexOf(octets))(module.octetsOfHex(text)))"
    start = blank.script("return performance.now()")
    assert evaluated(blank, HEX, text, *(given for given, _ in TEXTS)) == [expected for _, expected in TEXTS]
    assert blank.script("return performance.now()") - start < MOST_MILLISECONDS


def test_fields_of_hostile_octets_are_read_without_harm(blank):
    """Every beginning of packets that lie about their lengths, and random octets."""
    answer = evaluated(blank, FRAME, """(async () => {
        const { sectionsOf } = await load("explain/layout.js");
        const { octetsOfHex } = await load("explain/hex.js");
        let seed = 1, fields = 0;
        const random = () => (seed = seed * 48271 % 2147483647) & 255;
        const look = (frame) => {
            for (const field of sectionsOf(frame).flatMap((section) => section.fields)) {
                if (field.at + field.octets > frame.length) throw new Error("beyond the end");
                const same = module.withField(frame, field, module.fieldText(frame, field));
                if (same.error || same.frame.length !== frame.length) throw new Error(field.name + same.error);
                fields++;
            }
            for (const length of [1, 14, 60, 16384]) {
                if (module.withLength(frame, length).length !== length) throw new Error("length");
            }
            module.withTag(frame); module.withoutTag(frame, 0); module.withTemplate(frame, "udp");
        };
        for (const digits of values) {
            const whole = octetsOfHex(digits).octets;
            for (let length = 1; length <= whole.length; length++) look(whole.slice(0, length));
        }
        for (let turn = 0; turn < 300; turn++) {
            const frame = Uint8Array.from({ length: 1 + random() }, random);
            if (frame.length > 14) frame.set([8, 0, 0x40 + random() % 16], 12);
            look(frame);
        }
        return fields;
    })()""", *LIARS)
    assert answer > 1000


def test_switch_tag(blank):
    tag = 'module.withSwitchTag(Uint8Array.from({length: 14}, () => 1), {opcode: values[0], ports: values[1]})'
    for opcode, ports, words in SWITCH_TAGS:
        text = f"""(async () => {{
            const {{ hexOf }} = await load("{HEX}");
            const frame = {tag};
            return [hexOf(frame), module.switchTagOf(frame), hexOf(module.withSwitchTag(frame, null))];
        }})()"""
        octets, back, without = evaluated(blank, "explain/switch_tag.js", text, opcode, ports)
        assert octets == 12 * "01" + "8874" + words + "0101"
        assert back == {"opcode": opcode, "ports": ports}
        assert without == 14 * "01"
