"""The panel of a lab: a background process outside the lab's namespaces, where a browser reaches it. It ends with the lab.

What it writes is kept in the run folder, its address first. It holds the lock of that file as long as it runs.
"""

import fcntl
import importlib.util
import os
import re
import subprocess
import sys

from ..problem import LabError
from ..process import poll_until
from .programs import how_it_ended, last_line_of_file

LOG = "panel.log"
START_SECONDS = 30.0
ADDRESS = re.compile(rb"^(http://\S+)\n", re.M)


def check_panel():
    """A panel must be possible before a lab is started for it."""
    if importlib.util.find_spec("aiohttp") is None:
        raise LabError("The panel needs the package python3-aiohttp, which is not installed.")


def _said(log):
    found = ADDRESS.search(log.read_bytes())
    return found and found[1].decode("ascii")


def start_panel(folder, environment):
    """Gives the panel's address."""
    log = folder.path / LOG
    descriptor = os.open(log, os.O_WRONLY | os.O_CREAT | os.O_TRUNC | os.O_APPEND | os.O_CLOEXEC, 0o600)
    fcntl.flock(descriptor, fcntl.LOCK_EX)
    try:
        process = subprocess.Popen(
            [sys.executable, "-m", "adp.panel", "--lab", folder.name],
            stdin=subprocess.DEVNULL,
            stdout=descriptor,
            stderr=descriptor,
            env=environment,
            start_new_session=True,
        )
    finally:
        os.close(descriptor)

    def address():
        # The order matters: one that has ended may have said its address before.
        status = process.poll()
        if found := _said(log):
            return found
        if status is not None:
            raise LabError(f"The panel {how_it_ended(status)}. {last_line_of_file(log)}".strip())
        return None

    try:
        return poll_until(address, START_SECONDS, "The panel")
    except BaseException:
        process.kill()
        process.wait()
        raise


def panel_address(folder):
    """The address of the lab's panel, or None if it has none that runs."""
    try:
        with open(folder.path / LOG, "rb") as log:
            fcntl.flock(log, fcntl.LOCK_SH | fcntl.LOCK_NB)
            return None
    except FileNotFoundError:
        return None
    except BlockingIOError:
        return _said(folder.path / LOG)
