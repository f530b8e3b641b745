"""Shows in the panel how an aggregation group loses its cables: a lab with two switches that stays, and a driver that
sends frames through it, pulls the cables one by one, and accounts for every frame.
"""

import argparse
import multiprocessing
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import time

from adp.lab.command.panel import panel_address
from adp.lab.command.up import down, up
from adp.lab.entered import EnteredPair, FollowedFourCables
from adp.lab.failover import CABLES, FLOWS
from adp.lab.problem import LabError
from adp.lab.topology import read_topology
from demo import paint
from failover import show_failover

TOPOLOGY = pathlib.Path(__file__).parent / "topologies" / "failover.clab.yml"
DEVICES = ("sw1", "sw2")
SHOWN_SECONDS = 1.5


def open_browser(address):
    """Where there is a display, and somebody before it."""
    has_display = os.environ.get("DISPLAY") or os.environ.get("WAYLAND_DISPLAY")
    if has_display and not os.environ.get("CI") and shutil.which("xdg-open"):
        quiet = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        subprocess.Popen(["xdg-open", address], start_new_session=True, **quiet)


def drive(record, around):
    """In a process of its own, which enters the lab: ends with 0 if everything was as expected."""
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    try:
        with EnteredPair(record, DEVICES, CABLES) as pair, FollowedFourCables(pair, None, around) as joined:
            good = show_failover(joined, paint)
    except KeyboardInterrupt:
        sys.exit(1)
    except LabError as problem:
        print(f"demo: {problem}", file=sys.stderr)
        sys.exit(1)
    sys.exit(0 if good else 1)


def run_once(record, around):
    """True if everything was as expected."""
    driver = multiprocessing.get_context("fork").Process(target=drive, args=(record, around))
    driver.start()
    try:
        driver.join()
    finally:
        # An interrupt has reached it, too: it plugs the cables in and ends.
        driver.terminate()
        driver.join()
    return driver.exitcode == 0


def run(record, seconds, around):
    """Once after some seconds, or whenever somebody presses Enter; true if everything was as expected."""
    if seconds is not None:
        time.sleep(seconds)
        return run_once(record, around)
    good = True
    while True:
        try:
            input("\nEnter pulls the cables; Ctrl-C ends the demo. ")
        except (EOFError, KeyboardInterrupt):
            print()
            return good
        good = run_once(record, around) and good


def seconds_of(text):
    seconds = float(text)
    if not 0 <= seconds <= 3600:
        raise argparse.ArgumentTypeError("it is a number of seconds, up to 3600")
    return seconds


def parse():
    parser = argparse.ArgumentParser(prog="script/demo panel", description=" ".join(__doc__.split()))
    parser.add_argument("--seconds", type=seconds_of, help="begins after so many seconds, not at Enter, and ends")
    parser.add_argument(
        "--shown", type=seconds_of, default=SHOWN_SECONDS, help="seconds before and after each change (%(default)s)"
    )
    return parser.parse_args()


def main():
    options = parse()
    sys.stdout.reconfigure(line_buffering=True)
    topology = read_topology(TOPOLOGY)
    record = None
    try:
        record, _ = up(topology, topology.name, False, lambda _step: None, with_panel=True)
        address = f"{panel_address(record.folder)}#topology"
        print(f"Two switches are joined by four cables; link_aggregation runs on both. {FLOWS} flows each way between the")
        print(f"hosts h1 and h3 begin with the demo. See it in a browser:\n\n  {address}\n")
        open_browser(address)
        good = run(record, options.seconds, options.shown)
    except KeyboardInterrupt:
        sys.exit("\ndemo: interrupted. Everything is switched off.")
    except LabError as problem:
        sys.exit(f"demo: {problem}")
    finally:
        if record:
            down(record.folder)
    sys.exit(0 if good else 1)


if __name__ == "__main__":
    main()
