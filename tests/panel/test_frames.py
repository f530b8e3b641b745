"""The view "Frames": frames as they pass, with filters, pause and steps; captures as files."""

import contextlib
import re
import time

import pytest
from modules import evaluated
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select

SECONDS = 60
PAYLOAD = "feedbeeffeedbeef"
PCAPNG = bytes.fromhex("0a0d0d0a")
SEND = """
import socket, sys
with socket.socket(socket.AF_PACKET, socket.SOCK_RAW) as wire:
    wire.bind(("eth1", 0))
    for _ in range(int(sys.argv[1])):
        wire.send(bytes.fromhex(sys.argv[2]).ljust(60, b"\\0"))
"""
# A type that nobody else in the lab sends.
FRAME = "ffffffffffff02000000000188b5"
TAGGED = "ffffffffffff0200000000018100" + "6fa0" + "88b5"  # VLAN 4000, which does not exist


def send(lab, frame, count=1, host="h1"):
    lab.exec(host, "/usr/bin/python3", "-c", SEND, count, frame)


def rows(page):
    """The texts of the rows in sight; a gap is one text."""
    return page.script("""return [...document.querySelectorAll(".frame-rows .frame")].sort((a, b) =>
        a.ariaRowIndex - b.ariaRowIndex || a.getAttribute("aria-rowindex") - b.getAttribute("aria-rowindex"))
        .map((row) => [...row.children].map((cell) => cell.textContent))""")


def wait_for_rows(page, count):
    page.until(lambda: len(rows(page)) >= count, f"{count} rows")
    return rows(page)


@pytest.fixture(name="view")
def page_of_frames(page):
    """Follows the frames of this test alone."""
    page.open("#frames/sw1/type=0x88b5")
    wait_until_followed(page)
    return page


def wait_until_followed(page):
    page.wait_for(".frame-counts", "0 frames")
    time.sleep(0.7)  # the device says nothing before the first frame


def test_frame_shows_with_what_became_of_it(view, lab):
    send(lab, FRAME)
    [row] = wait_for_rows(view, 1)
    assert row[1:] == ["1", "To ports cpu,2,25", "0x88b5", "02:00:00:00:00:01", "ff:ff:ff:ff:ff:ff", "1", "0", "60"]
    send(lab, TAGGED)
    newest, _ = wait_for_rows(view, 2)
    assert newest[2] == "Dropped: vlan_missing"
    assert view.text(".frame-counts") == "2 frames"


def test_steps_are_those_of_the_device(view, lab):
    send(lab, TAGGED)
    wait_for_rows(view, 1)
    view.wait_for(".frames").send_keys(Keys.ARROW_DOWN)
    view.wait_for(".way-card h3", "Dropped: vlan_missing")
    steps = view.script("return [...document.querySelectorAll('.way-of-frame ol li')].map((each) => each.textContent)")
    said = lab.vdevctl("sw1", "explain", TAGGED.ljust(120, "0"), "--port", "1")
    assert [step.strip() for step in said.splitlines()] == steps
    view.click(".again")
    view.wait_for(".way-card", "Its way: Dropped: vlan_missing")
    assert view.script("return location.hash").startswith(f"#explain/sw1/1/{TAGGED}")


def test_keys_go_from_frame_to_frame(view, lab):
    send(lab, FRAME, 60)
    view.wait_for(".frame-counts", "60 frames")
    view.until(lambda: rows(view), "Rows")
    frames = view.wait_for(".frames")
    frames.send_keys(Keys.END)
    view.until(lambda: view.all(".frame.selected"), "The oldest one")
    assert view.all(".frame.selected")[0].get_attribute("aria-rowindex") == "61"
    assert frames.get_attribute("aria-activedescendant") == view.all(".frame.selected")[0].get_attribute("id")
    frames.send_keys(Keys.HOME, Keys.ARROW_DOWN)
    view.until(lambda: view.all(".frame.selected")[0].get_attribute("aria-rowindex") == "3", "The second one")


def test_device_sends_only_what_the_filters_ask_for(page, lab):
    page.open("#frames/sw1")
    page.wait_for("#filter-type").send_keys("0x88b5")
    Select(page.wait_for("#filter-reason")).select_by_value("vlan_missing")
    page.wait_for(".command code", re.compile(r"follow --type 0x88b5 --reason vlan_missing$"))
    page.until(lambda: "reason=vlan_missing" in page.script("return decodeURIComponent(location.hash)"), "The address")
    time.sleep(0.7)
    page.click("button", "Clear")
    send(lab, FRAME, 3)
    send(lab, TAGGED, 2)
    send(lab, FRAME, 3)
    wait_for_rows(page, 2)
    time.sleep(0.5)
    assert {row[2] for row in rows(page)} == {"Dropped: vlan_missing"}
    assert page.text(".frame-counts") == "2 frames"


def test_filter_that_cannot_be_read_is_said(page):
    page.open("#frames/sw1/mac=zz")
    page.wait_for(".wrong", "An address as 02:00:00:00:00:01")
    page.open("#frames/sw1/reason=nonsense")
    page.wait_for("[role=alert]", "There is no reason 'nonsense'")


def test_list_stands_still_and_goes_on(view, lab):
    send(lab, FRAME, 2)
    wait_for_rows(view, 2)
    view.by_role("button", "Pause").click()
    send(lab, FRAME, 5)
    view.wait_for(".frame-counts", "5 since the list stands still")
    assert len(rows(view)) == 2
    view.by_role("button", "Go on").click()
    view.until(lambda: len(rows(view)) == 3, "The gap")
    assert rows(view)[0] == ["5 frames passed while the list stood still"]
    send(lab, FRAME)
    wait_for_rows(view, 4)
    view.by_role("button", "Clear").click()
    view.wait_for(".frame-counts", "0 frames")
    view.until(lambda: rows(view) == [], "No rows")


def test_only_the_newest_are_kept_and_missed_ones_are_told(page):
    page.open("#frames/sw1")
    found = evaluated(page, "frames/keep.js", """(() => {
        const keep = new module.Keep(), line = () => ({ steps: [], ports: [], mirrors: [], port: 1 });
        for (let turn = 0; turn < 500; turn++) keep.take(Array.from({ length: 100 }, line));
        keep.take([line(), { missed: 7 }, line(), { following: true }, {}]);
        const [newest, gap] = keep.entries;
        return [keep.entries.length, keep.seen, keep.missed, newest.account !== null, gap.gap];
    })()""")
    assert found == [2000, 50002, 7, True, "7 frames missed: they came faster than they were taken"]


def test_few_rows_are_made_of_many_frames_and_none_is_lost_unsaid(view, lab):
    send(lab, FRAME, 20000)
    counts = re.compile(r"^(\d+) frames(?:, (\d+) missed)?")
    total = lambda: sum(int(each or 0) for each in counts.match(view.text(".frame-counts")).groups())  # noqa: E731
    view.until(lambda: total() >= 20000 - lost(lab), "All frames, seen or missed")
    assert total() <= 20000
    assert 0 < len(rows(view)) < 60
    view.script("document.querySelector('.frames').scrollTop = 20000")
    view.until(lambda: view.all(".frame-rows .frame")[0].get_attribute("aria-rowindex") != "2", "Rows further down")


def lost(lab):
    return next(row["rx_lost"] for row in lab.ask("sw1", "counters")["counters"] if row["port"] == 1)


@contextlib.contextmanager
def saved(downloads):
    """A list that gets the octets of the file that is saved meanwhile."""
    for old in downloads.glob("*"):
        old.unlink()
    found = []
    yield found
    deadline = time.monotonic() + SECONDS
    while not (files := list(downloads.glob("*.pcapng"))) and time.monotonic() < deadline:
        time.sleep(0.05)
    assert [file.name for file in files] == ["sw1.pcapng"]
    found.append(files[0].read_bytes())


def check_capture(page, lab, downloads):
    with saved(downloads) as files:
        page.wait_for("#capture-port").send_keys("1")
        page.by_role("button", "Capture").click()
        page.wait_for(".capture [role=status]", "Captured")
        page.until(lambda: "0 octets" not in page.text(".capture [role=status]"), "The file's beginning")
        send(lab, FRAME + PAYLOAD)
        send(lab, TAGGED + PAYLOAD)
        time.sleep(1)
        page.by_role("button", "Stop and save").click()
    [octets] = files
    assert octets.startswith(PCAPNG)
    assert octets.count(bytes.fromhex(FRAME + PAYLOAD)) == 1
    assert octets.count(bytes.fromhex(TAGGED + PAYLOAD)) == 1  # dropped, and in it
    page.wait_for(".capture [role=status]", "sw1.pcapng")


def test_capture_is_stopped_and_saved(view, lab, downloads):
    check_capture(view, lab, downloads)


def test_read_only_panel_captures(page, read_only, lab, downloads):
    page.open("#frames/sw1", read_only.url)
    check_capture(page, lab, downloads)


def test_capture_ends_by_itself(view, downloads):
    with saved(downloads) as files:
        view.wait_for("#capture-seconds").send_keys("1")
        view.by_role("button", "Capture").click()
        view.wait_for(".capture [role=status]", "sw1.pcapng")
    assert files[0].startswith(PCAPNG)


def test_refused_capture_is_said(view):
    view.wait_for("#capture-port").send_keys("77")
    view.by_role("button", "Capture").click()
    view.wait_for(".capture [role=alert]", re.compile("port"))
    view.expect_errors("capture/sw1")
