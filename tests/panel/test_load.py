"""The page while all 26 ports of a device are loaded. How fast it is then is not looked at here: script/bench panel."""

import re

import pytest
from adp.lab import Lab
from loads import load_on
from panels import server_of

PORTS = range(1, 27)
PORT = 3
PAUSE, MANY = 0.002, 1000
IN, OUT = ".front-counts td:nth-child(2)", ".front-counts td:nth-child(3)"


@pytest.fixture(name="full", scope="module")
def lab_with_hosts_on_all_ports():
    with Lab(hosts=PORTS) as made:
        yield made


@pytest.fixture(name="loaded", scope="module")
def page_server_of_it(full, lab):
    with server_of(lab, f"full={full.device.run_dir}") as made:
        yield made


def counted(page, css):
    return int(page.text(css).replace(",", "") or -1)


def lost_at(lab, port):
    """(before the chip, after it), as the device counts it."""
    row = next(row for row in lab.device.ask("counters")["counters"] if row["port"] == port)
    return row["rx_lost"], row["tx_lost"] + lab.hosts[port].nic.overrun()


def test_front_counts_every_frame(page, full, loaded):
    page.open(f"#front/full/{PORT}", loaded.url)
    page.wait_for(".front-words", "26 of 26 ports have a link")
    page.wait_for(IN, "0")
    with load_on(full, PAUSE) as load:
        page.until(lambda: len(page.all(".front-activity .out:not(.level-0)")) >= len(PORTS), "Lights of all ports")
        page.go("#tables/full/addresses")
        page.wait_for("main", "02:ad:fe:00:00:1a")
        page.go(f"#front/full/{PORT}")
        page.until(lambda: counted(page, IN) > MANY, "Frames of the load")
        found = load.end()
    before, after = lost_at(full, PORT)
    given = found["sent"][PORT] + 1 - before  # with the host's own introduction
    taken = found["arrived"][PORT] + len(PORTS) - 1 + after  # with those of all others
    page.until(lambda: (counted(page, IN), counted(page, OUT)) == (given, taken), f"{given} frames in and {taken} out")


def test_cable_is_pulled_and_plugged_under_load(page, full, loaded):
    page.open(f"#front/full/{PORT}", loaded.url)
    with load_on(full, PAUSE):
        page.by_role("button", "Pull the cable").click()
        page.wait_for(".front-words", "25 of 26 ports have a link")
        assert PORT not in full.device.links()
        page.by_role("button", "Plug the cable in").click()
        page.wait_for(".front-words", "26 of 26 ports have a link")
        assert PORT in full.device.links()


def frames_told(page):
    """How many frames the list has had or has said to be missed."""
    return sum(int(count) for count, _ in re.findall(r"([0-9]+) (frames|missed)", page.text(".frame-counts")))


def test_list_of_frames_has_each_or_says_how_many_are_missed(page, full, loaded):
    page.open("#frames/full", loaded.url)
    page.wait_for(".frame-counts", "0 frames")
    with load_on(full, PAUSE) as load:
        page.until(lambda: frames_told(page) > MANY, "Frames of the load")
        page.click("main button", "Pause")
        page.wait_for(".frame-counts", "since the list stands still")
        page.click("main button", "Go on")
        found = load.end()
    before = sum(lost_at(full, port)[0] for port in PORTS)
    whole = sum(found["sent"].values()) + len(PORTS) - before
    page.until(lambda: frames_told(page) == whole, f"{whole} frames, shown or missed")
