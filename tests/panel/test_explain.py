"""The view "Explain": fields and octets follow each other, and the device's answer is drawn, each thing in its place."""

import re

import pytest
from modules import evaluated
from packets import ARP, TAGGED, check_packet
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select


@pytest.fixture(name="blank")
def page_at_explain(page):
    page.open("#explain/sw1")
    page.wait_for(".way-card")
    return page


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
    fresh.adpsh("sw1", "adp_switch_control_set 125 1", "adp_add_port_mirror 1 25 1 1")
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
