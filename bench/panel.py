"""What the front panel costs: the server's processor time, and how evenly the page's frames come, at rest and at full load."""

import contextlib
import pathlib
import subprocess
import tempfile
import time
from typing import NamedTuple

from adp.lab import Lab
from tests.panel.browser import browser
from tests.panel.large_device import ROWS, large_device
from tests.panel.loads import load_on
from tests.panel.panels import Outside, server_of

from bench.cores import seconds_of
from bench.isolated import measure_in_namespaces
from bench.problem import BenchError

NAME = "panel"
TITLE = "The front panel, with a device of 26 ports"
TARGETS = {"host": ["vdeviced", "vdevctl"]}
HAS_COUNTS = False
SECONDS, QUICK_SECONDS = 10.0, 3.0
WARM_SECONDS = 1.5
LONG_FRAME = 50
PERCENT, MILLI = 100, 1000
VIEWS = {
    "front": "#front/device",
    "front, a port": "#front/device/3",
    "addresses": "#tables/device/addresses",
    "VLANs": "#tables/device/vlans",
    "queues": "#tables/device/queues",
    "frames": "#frames/device",
}
NOTES = [
    "A frame of the page is what it draws at once; a browser does so sixty times a second. 'task' is the longest time for "
    f"which the page's own program ran without a pause, from {LONG_FRAME} ms: shorter ones are none to the browser. 'core' is "
    "the server's processor time, in percent of one core.",
    "At full load every host sends to the next one as fast as one process can; browser, server, device and hosts share the "
    "machine. The browser draws without a graphics processor.",
]
# Gaps between the frames that the page draws, and tasks that are called long.
BEGIN = """
    const held = window.measured = {gaps: [], tasks: []};
    new PerformanceObserver((list) => held.tasks.push(...list.getEntries().map((each) => each.duration)))
        .observe({entryTypes: ["longtask"]});
    let before = performance.now();
    const next = (now) => { held.gaps.push(now - before); before = now; requestAnimationFrame(next); };
    requestAnimationFrame(next);
"""


class Frames(NamedTuple):
    """How the page's frames came, in milliseconds."""

    number: int
    middle: float
    most_are_below: float
    longest: float
    over: int
    task: float


def frames_of(measured):
    gaps = sorted(measured["gaps"][1:])
    if not gaps:
        raise BenchError("The page has drawn nothing.")
    return Frames(
        len(gaps), gaps[len(gaps) // 2], gaps[len(gaps) * 99 // 100], gaps[-1], sum(gap > LONG_FRAME for gap in gaps),
        max(measured["tasks"], default=0.0),
    )  # fmt: skip


class Bed:
    """A device with hosts, the panel's server, and a browser."""

    def __init__(self, stack, seconds):
        self.seconds = seconds
        subprocess.run(["ip", "link", "set", "lo", "up"], check=True, timeout=30)
        folder = pathlib.Path(stack.enter_context(tempfile.TemporaryDirectory(prefix="panel-")))
        self.lab = stack.enter_context(Lab(hosts=range(1, 27)))
        large, _ = stack.enter_context(large_device())
        devices = (f"device={self.lab.device.run_dir}", f"large={large}")
        self.server = stack.enter_context(server_of(Outside(), *devices))
        self.page = stack.enter_context(browser(folder))
        self.page.begin(self.server.url)

    def core(self):
        """The server's percentage of a core while something else goes on."""
        before, began = seconds_of([self.server.process.pid]), time.monotonic()
        time.sleep(self.seconds)
        return PERCENT * (seconds_of([self.server.process.pid]) - before) / (time.monotonic() - began)

    def look(self, place):
        """(Frames of the page, percentage of the server)"""
        self.page.open(place)
        self.page.wait_for("main")
        time.sleep(WARM_SECONDS)
        self.page.script(BEGIN)
        core = self.core()
        return frames_of(self.page.script("return window.measured")), core

    def passed(self):
        """Frames that have left the device by any port."""
        return sum(row["tx_frames"] for row in self.lab.device.ask("counters")["counters"])


def row(bed, name, place):
    before, began = bed.passed(), time.monotonic()
    frames, core = bed.look(place)
    rate = (bed.passed() - before) / (time.monotonic() - began)
    return [name, round(rate), *(round(each, 1) for each in frames), round(core, 2)]


def measure(options):
    return measure_in_namespaces(__name__, options)


def measure_inside(options):
    columns = ["view", "frames/s of the device", "frames", "median ms", "99 % ms", "longest ms", f"over {LONG_FRAME} ms", "task ms", "core %"]
    with contextlib.ExitStack() as stack:
        bed = Bed(stack, QUICK_SECONDS if options.quick else SECONDS)
        rest = [row(bed, name, place) for name, place in VIEWS.items()]
        with load_on(bed.lab):
            load = [row(bed, name, place) for name, place in VIEWS.items()]
        large = row(bed, f"{ROWS} addresses, 500 of them new every other second", "#tables/large/addresses")
        bed.page.end()
        idle = [["no page", round(bed.core(), 2)]]
    return {
        "tables": [
            {"title": "At rest", "columns": columns, "rows": rest},
            {"title": "At full load on 26 ports", "columns": columns, "rows": load},
            {"title": "A large table", "columns": columns, "rows": [large]},
            {"title": "The server without a page", "columns": ["", "core %"], "rows": idle},
        ],
        "notes": NOTES,
    }
