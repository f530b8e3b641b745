"""The tables of a device: VLANs, addresses, trunks and spanning-tree groups, and what all tables have in common."""

import json
import re
import shlex

import pytest
from large_device import ROWS, large_device, mac_of
from panels import server_of
from selenium.webdriver.common.keys import Keys

TABLES = ("vlans", "addresses", "trunks", "spanning-tree")
SIZES = ((1400, "light"), (360, "dark"))


@pytest.fixture(name="vlan")
def make_vlan(lab):
    """VLAN 100 on the first device: ports 1 to 4 untagged, 26 tagged."""
    lab.adpsh("sw1", "adp_vlan_create 100", "adp_vlan_port_set 100 {1-4,26} {1-4}")
    yield 100
    if any(row["vid"] == 100 for row in lab.ask("sw1", "vlans")["vlans"]):
        lab.adpsh("sw1", "adp_vlan_destroy 100")


@pytest.fixture(name="large", scope="module")
def make_large(lab, loopback):
    """The address of a panel for a device with 10,000 addresses and 4094 VLANs, and how often it was asked for them."""
    with large_device() as (folder, times), server_of(lab, f"large={folder}") as server:
        yield server.url, times


def rows(page):
    return page.script("return [...document.querySelectorAll('tbody.rows tr')].map((row) => row.innerText)")


def numbers(page):
    """The numbers of the rows that are in the document, as a screen reader is told."""
    found = page.script("return [...document.querySelectorAll('tbody.rows tr')].map((row) => row.ariaRowIndex)")
    return [int(number) for number in found]


def shown(page, text):
    """Waits until the table says how many rows it shows."""
    page.wait_for(".rows-shown", text)


def sort_by(page, title):
    page.click(page.by_role("button", title))


def lines_of(command):
    """What a command gives adpsh to do."""
    words = shlex.split(command)
    return words[words.index("--map") + 1 :]


def test_vlans_are_a_matrix_of_vlans_and_ports(page, vlan):
    page.open("#tables/sw1/vlans")
    for name, text in (
        ("VLAN 100, port 3: untagged", "U"),
        ("VLAN 100, port 26: tagged", "T"),
        ("VLAN 100, port 5: not a member", "·"),
        ("VLAN 1, port 7: untagged, PVID of the port", "UP"),
        ("VLAN 1, CPU port: tagged, PVID of the port", "TP"),
    ):
        assert page.by_role("cell", name).text.replace("\n", "") == text
    assert page.by_role("rowheader", re.compile("^1 default"))
    assert len(page.roles("columnheader")) == 28
    assert page.by_role("columnheader", "port 26")


def test_what_changes_is_marked_for_some_seconds(page, lab, vlan):
    lab.adpsh("sw1", "adp_vlan_create 101")
    page.open("#tables/sw1/vlans")
    page.by_role("cell", "VLAN 101, port 3: not a member")
    lab.adpsh("sw1", "adp_vlan_port_set 100 {1-4,26} {1-2,4}", "adp_vlan_destroy 101", "adp_vlan_create 102")
    try:
        page.wait_for("tr.gone-row", "gone")
        page.wait_for("tr.new-row", "new")
        cell = page.by_role("cell", "VLAN 100, port 3: tagged, just changed")
        assert "changed" in cell.get_attribute("class")
        assert "•" in cell.text
        shown(page, "3 of 3 rows")
        assert len(rows(page)) == 4
        # No answer comes, since nothing changes.
        page.wait_until_gone("tr.gone-row")
        page.wait_until_gone("tr.new-row")
        page.by_role("cell", "VLAN 100, port 3: tagged")
        assert not page.all(".changed")
        assert len(rows(page)) == 3
    finally:
        lab.adpsh("sw1", "adp_vlan_destroy 102")


def test_vlans_are_chosen_by_vlan_and_port(page, vlan):
    page.open("#tables/sw1/vlans")
    page.click(page.by_role("textbox", "Ports"))
    page.press("25-26")
    shown(page, "2 of 2 rows")
    assert [each.text for each in page.roles("columnheader")][1:] == ["25", "26"]
    page.click(page.by_role("textbox", "VLANs"))
    page.press("2-100")
    shown(page, "1 of 2 rows")
    page.press("x")
    page.wait_for(".problem", "Numbers are written as")


def test_the_commands_of_a_vlan_make_it_again(page, lab, vlan):
    page.open("#tables/sw1/vlans")
    page.by_role("link", "100").send_keys(Keys.ENTER)
    page.wait_for("section", "VLAN 100")
    commands = [each.text for each in page.all("section code")]
    assert "vlans 100" in commands[0]
    before = lab.ask("sw1", "vlans")
    lab.adpsh("sw1", *lines_of(commands[3]))
    assert lab.ask("sw1", "vlans") != before
    lab.adpsh("sw1", *lines_of(commands[2]))
    assert lab.ask("sw1", "vlans") == before


def test_a_pvid_without_a_vlan_is_told(page, lab, vlan):
    lab.adpsh("sw1", "adp_intf_pivd_set 5 100")
    page.open("#tables/sw1/vlans")
    page.by_role("cell", "VLAN 100, port 5: not a member, PVID of the port")
    lab.adpsh("sw1", "adp_vlan_destroy 100")
    page.wait_for(".warning", "Port 5 has the PVID 100")
    lab.adpsh("sw1", "adp_intf_pivd_set 5 1")
    page.wait_until_gone(".warning")


def test_addresses_are_searched_and_their_age_counts_on(page, lab):
    lab.exec("h1", "ping", "-c", "1", "-W", "5", "10.0.0.2")
    mac = json.loads(lab.exec("h1", "ip", "-json", "link", "show", "eth1"))[0]["address"]
    page.open("#tables/sw1/addresses")
    page.click(page.by_role("searchbox", "Search addresses"))
    page.press(mac.upper(), " port 1")
    page.until(lambda: len(rows(page)) == 1, "The one row")
    cells = [each.text for each in page.all("tbody.rows td")]
    assert cells[:3] == ["1", "port 1", "dynamic"]
    before = page.text("td.age")
    assert re.fullmatch(r"\d+ s|\d+ min( \d+ s)?", before)
    page.until(lambda: page.text("td.age") != before, "Another age")
    assert re.search(r"\d+ of 8192", page.text(".facts"))
    page.click(page.by_role("link", mac))
    page.wait_for("section code", f"macs --vlan 1 --mac {mac}")


def test_trunks_show_their_members_and_what_each_carries(page, lab):
    page.open("#tables/sw1/trunks")
    page.wait_for("table", "No group")
    lab.adpsh("sw1", "adp_create_agg_group agg2", "adp_add_agg_member agg2 [1, 25]", "adp_set_agg_loadbalance agg2 6")
    try:
        page.wait_for("table", "6: IP addresses and ports")
        page.wait_for("tr", re.compile(r"^port 25\s.*active"))
        lab.vdevctl("sw1", "pull", "25")
        page.wait_for("tr", re.compile(r"^port 25\s.*no link"))

        def carries():
            lab.exec("h1", "ping", "-q", "-c", "50", "-i", "0.02", "-W", "5", "10.0.0.2")
            return re.search(r"port 1\s.*100 %", page.text("main"), re.DOTALL)

        page.until(carries, "What port 1 carries")
    finally:
        lab.vdevctl("sw1", "plug", "25")
        lab.adpsh("sw1", "adp_delete_agg_group agg2")


def test_spanning_tree_groups_are_a_matrix_of_groups_and_ports(page, lab):
    lab.adpsh("sw1", "adp_create_mstp_instance 1", "adp_add_msti_member 1 200", "adp_set_port_mstp_state 1 3 1")
    try:
        page.open("#tables/sw1/spanning-tree/1")
        assert page.by_role("cell", "group 1, port 3: blocking").text == "B"
        assert page.by_role("cell", "group 0, port 3: forwarding").text == "F"
        page.wait_for("section", "Group 1")
        page.wait_for("td", "1-199,201-4094")
        for number, name, letter in ((3, "learning", "L"), (2, "listening", "l"), (0, "disabled", "D")):
            lab.adpsh("sw1", f"adp_set_port_mstp_state 1 3 {number}")
            assert page.by_role("cell", f"group 1, port 3: {name}, just changed").text.startswith(letter)
            page.wait_for(".legend li", re.compile(f"^{letter} {name}"))
    finally:
        lab.adpsh("sw1", "adp_delete_mstp_instance 1")


@pytest.mark.parametrize("table", TABLES)
def test_every_table_can_be_used_by_all(page, vlan, table):
    page.open(f"#tables/sw1/{table}")
    page.wait_for("tbody")
    for width, theme in SIZES:
        page.size(width)
        page.theme(theme)
        assert not page.is_scrolled_sideways(), (width, theme)
        assert page.axe() == [], (width, theme)


def test_of_a_long_table_only_the_rows_in_sight_are_in_the_document(page, large):
    page.open("#tables/large/addresses", large[0])
    shown(page, f"{ROWS} of {ROWS} rows")
    assert 10 < len(rows(page)) < 100
    assert numbers(page)[0] == 2
    assert page.axe() == []
    assert int(page.wait_for("table").get_attribute("aria-rowcount")) > ROWS
    page.by_role("link", mac_of(0))
    page.script("document.querySelector('.scroll').focus()")
    page.press(Keys.END)
    page.until(lambda: numbers(page)[-1] > ROWS, "The last row")
    assert len(rows(page)) < 100
    page.press(Keys.HOME)
    page.by_role("link", mac_of(0))
    sort_by(page, "Index")
    sort_by(page, "Index")
    page.until(lambda: rows(page)[0].endswith(str(ROWS - 1)), "The highest index")
    assert page.by_role("columnheader", "Index").get_attribute("aria-sort") == "descending"


def test_a_long_table_is_searched(page, large):
    page.open("#tables/large/addresses", large[0])
    page.click(page.by_role("searchbox", "Search addresses"))
    page.press(f"{mac_of(1234)} vlan 3")
    shown(page, f"1 of {ROWS} rows")
    page.by_role("link", mac_of(1234))


def test_a_row_that_had_the_focus_leaves_it_to_the_frame(page, large):
    page.open("#tables/large/vlans", large[0])
    link = page.by_role("link", "1")
    page.script("arguments[0].focus()", link)
    page.script("document.querySelector('.scroll').scrollTop = 60000")
    page.until(lambda: page.focused().get_attribute("class") == "scroll long", "The focus on the frame")
    page.press(Keys.HOME)
    page.by_role("link", "1")


def test_a_table_that_does_not_understand_the_answer_leaves_the_page(page, large):
    page.open("#tables/large/trunks", large[0])
    page.wait_for("[role=alert]", "This view does not understand what the device has answered")
    page.open("#tables/large/vlans", large[0])
    shown(page, "4094 of 4094 rows")
