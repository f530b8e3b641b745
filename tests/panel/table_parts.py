"""What the tests of the page's tables have in common: calls and frames on sw1, and the rows that the page shows."""

import os
import re
import subprocess
import sys

from adp.lab.builds import native_build
from adp.lab.rules import RuleText

BROADCAST = "ffffffffffff"
SEND = """
import socket, sys
with socket.socket(socket.AF_PACKET, socket.SOCK_RAW) as cable:
    cable.bind(("eth1", 0))
    for frame in sys.argv[1].split(",") * int(sys.argv[2]):
        cable.send(bytes.fromhex(frame))
"""


def environment_of(lab):
    """In which programs find the device."""
    return {**os.environ, "VDEVICE_DIR": str(lab.run_folder("sw1"))}


def adpsh(lab, *words):
    """What adpsh says of lines that succeed; without the way through adp-lab."""
    done = subprocess.run([native_build().path_of("adpsh"), "--map", *words], env=environment_of(lab), capture_output=True,
                          text=True, check=True, timeout=60)
    assert all(int(result) >= 0 for result in re.findall("^= (-?[0-9]+)", done.stdout, re.MULTILINE)), done.stdout
    return done.stdout


def station(number):
    return f"0200000000{number:02x}"


def frame(source, octets=100, destination=BROADCAST):
    """A frame, as hexadecimal digits."""
    return (destination + source + "88b5").ljust(2 * octets, "0")


def send(lab, *frames, times=1):
    """Frames from h1, to port 1 of sw1."""
    lab.exec("h1", sys.executable, "-c", SEND, ",".join(frames), times)


def show(page, table):
    """Goes to a table of sw1."""
    place = f"#tables/sw1/{table}"
    (page.go if page.all(".tables") else page.open)(place)
    page.wait_for(f'.tables a[aria-current="page"][href="{place}"]')
    page.wait_for(".part")


def rule(*words, **options):
    """The line that installs a rule: submodule, entity, qualifiers, actions."""
    return f"adp_fp_add_entity_rule {RuleText(native_build().byte_order).record(*words, **options)}"


def part(page, title):
    """The rows of a part of the view, by the names of the columns; without the signs at what has just changed."""
    return page.script("""
        const table = [...document.querySelectorAll(".part")].find((each) => each.getAttribute("aria-label") === arguments[0]);
        const names = [...table?.querySelectorAll("thead button") ?? []].map((each) => each.textContent);
        const text = (cell) => [...cell.childNodes].filter((each) => each.className !== "sign").map((each) => each.textContent);
        return [...table?.querySelectorAll("tbody.rows tr:not(.gone-row)") ?? []].map((row) =>
            Object.fromEntries([...row.children].map((cell, at) => [names[at], text(cell).join("").replace(/\\s+/g, " ").trim()])));
    """, title)


def until_row(page, title, test, what):
    """Waits for a row for which the test is true; gives it."""
    return page.until(lambda: next((row for row in part(page, title) if test(row)), None), f"{title}: {what}")


def row_of(page, title, **wanted):
    """Waits for the row with these values."""
    return until_row(page, title, lambda row: all(row[name] == value for name, value in wanted.items()), f"a row with {wanted}")
