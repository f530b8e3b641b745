"""Starts a lab and waits until it is ready; ends one."""

import contextlib
import os
import pathlib
import signal
import subprocess
import sys
import time

from ..builds import Build, native_build
from ..isolate import isolated
from ..problem import LabError
from ..process import LineReader, poll_until
from . import record
from .building import NODES
from .keeper import FAILED, READY
from .panel import check_panel, start_panel
from .programs import last_line_of_file
from .run_folder import RECORD, RunFolder
from .wrappers import write_wrappers

STEP_SECONDS = 120.0
END_SECONDS = 10.0
KILLED_SECONDS = 30.0
LOG = "log"
TARGET = "mips"
PACKAGE_ROOT = pathlib.Path(__file__).resolve().parents[3]
LONGEST_SOCKET = 107


def _check_lengths(folder, topology):
    for node in topology.nodes.values():
        if node.is_device and len(os.fsencode(folder.path / NODES / node.name / "control")) > LONGEST_SOCKET:
            raise LabError(f"{folder.path} is too long for the sockets of {node.name}. Set ADP_LAB_DIR to a shorter one.")


def _programs_path(folder, target):
    """The folders in which programs of a node are looked for first."""
    own = native_build().folder
    if target and own is None:
        raise LabError("--target needs a checkout with the target's build; what is installed is this machine's.")
    found = [str(own)] if own else []
    return [str(write_wrappers(folder.path / "bin", Build(TARGET)))] + found if target else found


def _environment():
    """That of background processes, which are modules of this package."""
    paths = [str(PACKAGE_ROOT), *filter(None, os.environ.get("PYTHONPATH", "").split(":"))]
    return {**os.environ, "PYTHONPATH": ":".join(paths)}


def _start_keeper(folder, lock):
    python = [sys.executable, "-m", "adp.lab.command.keeper", str(folder.path), str(lock)]
    with open(folder.path / LOG, "ab") as log:
        return subprocess.Popen(
            isolated(python, "--mount", "--pid", "--fork", "--kill-child"),
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=log,
            env=_environment(),
            start_new_session=True,
            pass_fds=[lock],
        )


def _await_ready(process, folder, progress):
    lines = LineReader(process.stdout)
    while True:
        try:
            line = lines.line(STEP_SECONDS, "The background process")
        except LabError:
            words = last_line_of_file(folder.path / LOG)
            raise LabError(f"The background process of the lab '{folder.name}' has ended. {words}".strip()) from None
        if line.startswith(FAILED):
            raise LabError(line.removeprefix(FAILED))
        if line == READY:
            return
        progress(line)


def _abandon(process):
    """Ends a background process that has not become ready."""
    deadline = time.monotonic() + END_SECONDS
    while process.poll() is None and time.monotonic() < deadline:
        for pid in _children(process.pid):
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGTERM)  # lost while it has no handler yet
        with contextlib.suppress(subprocess.TimeoutExpired):
            process.wait(0.1)
    process.kill()
    process.wait(KILLED_SECONDS)


def _children(pid):
    try:
        with open(f"/proc/{pid}/task/{pid}/children", encoding="ascii") as children:
            return [int(child) for child in children.read().split()]
    except OSError:
        return []


def up(topology, name, target, progress, with_panel=False):
    """Starts a lab; gives its record, and whether a dead one of its name was removed first."""
    folder = RunFolder(name)
    if with_panel:
        check_panel()
    _check_lengths(folder, topology)
    build = native_build()
    for program in ("vdeviced", "vdevctl"):
        build.path_of(program)
    process = None
    lock, was_there = folder.claim()
    try:
        data = {
            "version": record.VERSION,
            "state": "starting",
            "build": build.name,
            "management": TARGET if target else build.name,
            "path": _programs_path(folder, target),
            "topology": record.topology_as_data(topology),
        }
        record.write(folder.path / RECORD, data)
        process = _start_keeper(folder, lock)
        _await_ready(process, folder, progress)
        if with_panel:
            progress("panel")
            start_panel(folder, _environment())
        return record.read(folder), was_there
    except BaseException:
        if process:
            _abandon(process)
        folder.remove()
        raise
    finally:
        os.close(lock)


def down(folder):
    """Ends a lab that runs, and removes its folder."""
    keeper = record.read(folder).keeper
    # The one that started the keeper waits for its end, and holds the lock until then.
    with open(f"/proc/{keeper}/status", encoding="ascii", errors="replace") as status:
        parent = int(next(line.split()[1] for line in status if line.startswith("PPid:")))
    os.kill(keeper, signal.SIGTERM)
    try:
        poll_until(folder.remove_if_dead, END_SECONDS, "The end of the lab")
    except LabError:
        for pid in (keeper, parent):
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signal.SIGKILL)
        poll_until(folder.remove_if_dead, KILLED_SECONDS, f"The end of the lab '{folder.name}'")
