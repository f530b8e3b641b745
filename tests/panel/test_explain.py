"""The view "Explain": frames are built as they are meant, hostile hex does no harm, the device's answer is drawn."""

import re
import struct

import pytest
from modules import evaluated
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

FRAME, HEX = "explain/frame.js", "explain/hex.js"
ARP = "ffffffffffff020000000001080600010800060400010200000000010a0000010000000000000a000002" + 18 * "00"
TAGGED = "0200000000020200000000018100" + "6064" + "0800"  # priority 3, VLAN 100
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


def internet_sum(octets):
    """0xffff over octets that have a right checksum."""
    total = sum(struct.unpack(f">{(len(octets) + 1) // 2}H", octets + b"\0" * (len(octets) % 2)))
    while total > 0xFFFF:
        total = (total >> 16) + (total & 0xFFFF)
    return total


def check_packet(frame, at=14):
    """The IPv4 packet of a frame has right lengths and checksums; gives its protocol."""
    length, protocol = struct.unpack_from(">H", frame, at + 2)[0], frame[at + 9]
    assert internet_sum(frame[at : at + 20]) == 0xFFFF
    payload = frame[at + 20 : at + length]
    assert len(payload) == length - 20
    pseudo = frame[at + 12 : at + 20] + struct.pack(">HH", protocol, len(payload)) if protocol in (6, 17) else b""
    assert internet_sum(pseudo + payload) == 0xFFFF
    if protocol == 17:
        assert struct.unpack_from(">H", payload, 4)[0] == len(payload)
    return protocol


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


def steps(page):
    return page.script("return [...document.querySelectorAll('.way-of-frame ol li')].map((each) => each.textContent)")


def hex_of_page(page):
    return re.sub(r"\s", "", page.wait_for("#explain-hex").get_property("value"))


def write(page, css, text):
    field = page.wait_for(css)
    field.send_keys(Keys.CONTROL, "a")
    field.send_keys(text, Keys.TAB)


def said_by_device(lab, *words):
    """What `vdevctl explain` prints, without line breaks."""
    return " ".join(lab.vdevctl("sw1", "explain", *words).split())


def check_as_device_says(page, lab, *words):
    said = said_by_device(lab, *words)
    found = steps(page)
    assert found and all(" ".join(step.split()) in said for step in found), (found, said)
    for row in page.all(".fates li"):
        if "the frame is not for it" not in row.text:  # of a dropped frame vdevctl leaves these out
            assert row.text.split("\n")[-1].split(": ", 1)[1] in said


def test_way_is_what_the_device_says(fresh, blank):
    page = blank
    page.wait_for(".outcome.sent", "To ports cpu,2,25")
    check_as_device_says(page, fresh, ARP, "--port", "1")
    assert page.text(".command code").endswith(f"vdevctl sw1 explain {ARP} --port 1")
    assert len(page.driver.find_elements("css selector", ".lines path.sent")) == 3
    fresh.adpsh("sw1", "adp_vlan_create 100", "adp_vlan_port_set 100 {1,2,25} {1,2}", "adp_intf_pivd_set 1 100")
    page.click("button", "Explain")
    page.wait_for(".fates", "port 25: tagged VLAN 100 priority 0, queue 0")
    check_as_device_says(page, fresh, ARP, "--port", "1")
    fresh.adpsh("sw1", "adp_switch_control_set 125 1", "adp_add_port_mirror 1 25 2 1")
    page.click("button", "Explain")
    page.wait_for(".fates", "port 25: a mirror's copy of what comes in")
    check_as_device_says(page, fresh, ARP, "--port", "1")
    assert len(page.driver.find_elements("css selector", ".lines path.mirror")) == 1


def test_drop_is_marked_where_it_happens(blank, lab):
    page = blank
    page.by_role("button", "Add a VLAN tag").click()
    write(page, "#field-tag1-vlan", "4000")
    page.wait_for(".outcome.dropped", "Dropped: vlan_missing")
    assert page.script("return document.querySelector('.stage.dropped .title').textContent") == "Member"
    check_as_device_says(page, lab, hex_of_page(page), "--port", "1")
    page.by_role("button", "Remove VLAN tag 1").click()
    page.wait_for(".outcome.sent")
    assert hex_of_page(page) == ARP


def test_fields_follow_hex_and_hex_follows_fields(blank):
    page = blank
    write(page, "#explain-hex", TAGGED + "4500001c00000000401100000a0000010a000002" + "c000138900080000" + 20 * "00")
    page.until(lambda: page.wait_for("#field-udp-destination").get_property("value") == "5001", "The fields")
    assert page.wait_for("#field-tag1-vlan").get_property("value") == "100"
    write(page, "#field-ip-destination", "10.0.0.77")
    frame = bytes.fromhex(hex_of_page(page))
    assert (frame[34:38], check_packet(frame, 18)) == (bytes((10, 0, 0, 77)), 17)
    write(page, "#field-source", "02:00:00:00:00:zz")
    assert bytes.fromhex(hex_of_page(page)) == frame
    page.wait_for("#explain-hex").send_keys("0")
    page.wait_for("[role=alert]", "An octet has two digits")
    assert not page.wait_for("#field-destination").is_enabled()


def test_address_can_be_shared(blank):
    page = blank
    Select(page.wait_for("#explain-payload")).select_by_value("lldp")
    Select(page.wait_for("#explain-port")).select_by_value("2")
    page.until(lambda: page.script("return location.hash").startswith("#explain/sw1/2/0180c200000e"), "The address")
    address = page.script("return location.hash")
    page.open(address)
    page.wait_for(".way-card", "into port 2")
    assert hex_of_page(page) == address.split("/")[-1]
    page.go(f"#explain/sw1/1/{ARP}")
    page.until(lambda: hex_of_page(page) == ARP, "The other frame")


def test_frame_of_the_cpu(blank, lab):
    page = blank
    Select(page.wait_for("#explain-port")).select_by_value("0")
    page.until(lambda: hex_of_page(page)[24:48] == "8874" + "2000000000000000" + "0806", "The switch tag")
    Select(page.wait_for("#switch-opcode")).select_by_value("4")
    write(page, "#switch-ports", "1-2")
    page.wait_for(".outcome.sent", "To ports 1-2")
    check_as_device_says(page, lab, hex_of_page(page), "--cpu")
    Select(page.wait_for("#explain-port")).select_by_value("1")
    page.until(lambda: hex_of_page(page) == ARP, "No switch tag")


def test_refusal_of_the_device_is_said(page):
    page.open(f"#explain/sw1/99/{ARP}")
    page.wait_for("[role=alert]", "The port must be a user port, 1 to 26, or cpu.")


def test_long_frame_is_dropped_and_the_page_stays_narrow(page):
    page.size(360)
    page.open(f"#explain/sw1/1/{ARP}{9000 * '0000'}")
    page.wait_for("[role=alert]", "the device takes at most 16384")
    page.go(f"#explain/sw1/1/{ARP}{8000 * '0000'}")
    page.wait_for(".outcome.dropped", "Dropped: oversize")
    assert not page.is_scrolled_sideways()
    assert page.axe() == []


def account(*steps, port=1, drop=None, sent=(), reason="not_member"):
    """An account with these steps: names, or a name with a member."""
    named = [{"step": step} if isinstance(step, str) else step for step in steps]
    rows = [{"port": each, "fate": "not", "reason": reason} for each in range(4)]
    for each in sent:
        rows[each] = {"port": each, "fate": "sent", "form": "tagged"}
    return {"port": port, "steps": named, "ports": rows, "mirrors": [], **({"drop": drop} if drop else {})}


def dropped(reason):
    return {"step": "dropped", "reason": reason}


CLASSIFIED = ("in", "header", "vlan", "priority")
ENTERED = (*CLASSIFIED, "member", "spanning_tree")
WAYS = (
    (account("in", dropped("port_down"), drop="port_down"), "dropped", "In"),
    (account("in", dropped("runt"), drop="runt"), "dropped", "Header"),
    (account("in", "header", dropped("dos_land"), drop="dos_land"), "dropped", "Header"),
    (account(*CLASSIFIED, "rule", dropped("rule"), drop="rule"), "dropped", "Rules"),
    (account(*CLASSIFIED, dropped("not_member"), drop="not_member"), "dropped", "Member"),
    (account(*ENTERED, dropped("stp_blocked"), drop="stp_blocked"), "dropped", "Spanning tree"),
    (account(*ENTERED, dropped("filtered"), drop="filtered"), "dropped", "Source"),
    (account(*ENTERED, "source", "destination", dropped("filtered"), drop="filtered"), "dropped", "Destination"),
    (account(*ENTERED, "source", "destination", "way", dropped("isolated"), drop="isolated"), "dropped", "Egress"),
    (account("in", dropped("no_switch_tag"), port=0, drop="no_switch_tag"), "dropped", "Switch tag"),
    (account(*CLASSIFIED, {"step": "cpu_alone", "reason": "trap"}, sent=[0]), "cpu", "Traps"),
    (account(*ENTERED, "source", {"step": "cpu_alone", "reason": "snooped"}, sent=[0]), "cpu", "Snooping"),
)


def test_way_ends_at_the_right_stage(blank):
    for each, state, title in WAYS:
        stages = evaluated(blank, "explain/account.js", "module.stagesOf(values[0])", each)
        at = next(index for index, stage in enumerate(stages) if stage["title"] == title)
        assert stages[at]["state"] == state, (each, stages)
        assert {stage["state"] for stage in stages[:at]} <= {"passed", "quiet"}
        assert {stage["state"] for stage in stages[at + 1 :]} <= {"after"}


def test_marks_of_ports(blank):
    each = account(*ENTERED, "way", sent=[2])
    each["ports"][3] = {"port": 3, "fate": "not", "reason": "too_long", "form": "untagged"}
    each["ports"][0]["reason"] = "not_wanted"
    marks = evaluated(blank, "explain/account.js", "[...module.marksOf(values[0])]", each)
    assert [(port, mark["kind"], mark["mark"]) for port, mark in marks] == [
        (0, "none", ""),
        (1, "not", "a"),
        (2, "sent", "T"),
        (3, "lost", "b"),
    ]
