"""Does what the command line of adp-lab says."""

import json
import os
import shutil
import signal
import sys
import time

from .. import topology as topologies
from ..builds import Build
from ..problem import LabError
from ..topology import graph
from . import record as records
from . import show
from .capture import capture
from .ends import device_end
from .live import live
from .logs import show_logs
from .namespaces import run
from .options import parse
from .panel import panel_address
from .restart import restart
from .run_folder import death_notice, find, sweep
from .up import down, up
from .words import PROGRAM, counted

INTERRUPTED = 130


def _progress(line):
    """Shows a step on a terminal, on one line for all."""
    if sys.stderr.isatty():
        print(f"\r\033[K{line} ...", end="", file=sys.stderr, flush=True)


def _end_progress():
    if sys.stderr.isatty():
        print("\r\033[K", end="", file=sys.stderr, flush=True)


def _up(options):
    given = options.topology
    topology = topologies.read_topology(given) if given else topologies.default_topology()
    name = options.name or options.lab or os.environ.get("ADP_LAB") or topology.name
    started = time.monotonic()
    for number in (signal.SIGHUP, signal.SIGTERM):
        signal.signal(number, signal.default_int_handler)
    try:
        record, was_there = up(topology, name, options.target, _progress, options.panel)
    finally:
        _end_progress()
    if was_there:
        print(death_notice(record.name))
    nodes = counted(len(topology.nodes), "node")
    print(f"The lab '{record.name}' is up: {nodes} in {time.monotonic() - started:.1f} s.\n")
    print(show.nodes_table(record))
    if options.panel:
        print(f"\nThe panel: {panel_address(record.folder)}")
    if tries := show.suggestions(record):
        print("\nTry:")
        print("\n".join(f"  {command}" for command in tries))
    for remark in show.remarks(record):
        print(remark)
    return 0


def _ps(options):
    if options.lab or os.environ.get("ADP_LAB"):
        folders = [find(options.lab)]
    else:
        dead, folders = sweep()
        for name in dead:
            print(death_notice(name))
    if options.json:
        print(json.dumps(list(map(_data, folders))))
    else:
        print("\n\n".join(map(_shown, folders)) or f"No lab is running. '{PROGRAM} up' starts one.")
    return 0


def _data(folder):
    return {**records.read(folder).data, "name": folder.name, "panel": panel_address(folder)}


def _shown(folder):
    try:
        return show.lab_text(records.read(folder))
    except LabError as problem:  # it is starting, or has just ended
        return str(problem)


def _record(options):
    return records.read(find(options.lab))


def _exec(options):
    record = _record(options)
    record.node(options.node)
    if not options.command:
        raise LabError(f"A command is missing: {PROGRAM} exec {options.node} -- ip address")
    return run(record, options.node, options.command)


def _shell(options):
    record = _record(options)
    record.node(options.node)
    # Files of the user's own would set another prompt.
    shell = ["bash", "--norc", "--noprofile", "-i"] if shutil.which("bash") else ["sh", "-i"]
    return run(record, options.node, shell, {"PS1": f"{options.node}# "})


def _adpsh(options):
    record = _record(options)
    record.device(options.node)
    return run(record, options.node, Build(record.data["management"]).command("adpsh", *options.words))


def _vdevctl(record, device, *words):
    """Runs vdevctl where the caller is, whose files it may write."""
    record.device(device)
    command = Build(record.data["build"]).command("vdevctl", "--run-dir", record.nodes[device]["folder"], *words)
    os.execvp(command[0], command)


def _ask_device(options):
    if not options.words:
        raise LabError(f"A command is missing: {PROGRAM} vdevctl {options.node} ports")
    return _vdevctl(_record(options), options.node, *options.words)


def _move_cable(options):
    record = _record(options)
    device, port = device_end(record, options.end)
    return _vdevctl(record, device, options.action, port, *getattr(options, "words", ()))


def _capture(options):
    return capture(_record(options), options)


def _graph(options):
    record = _record(options)
    text = graph.svg(record.topology, live(record))
    if options.output:
        with open(options.output, "w", encoding="utf-8") as file:
            file.write(text)
    else:
        print(text, end="")
    return 0


def _logs(options):
    return show_logs(_record(options), options.node, options.program)


def _restart(options):
    restart(_record(options), options.node)
    return 0


def _down(options):
    for folder in sweep()[1] if options.all else [find(options.lab)]:
        down(folder)
    return 0


ACTIONS = {
    "up": _up,
    "ps": _ps,
    "exec": _exec,
    "shell": _shell,
    "adpsh": _adpsh,
    "vdevctl": _ask_device,
    "capture": _capture,
    "pull": _move_cable,
    "plug": _move_cable,
    "cable": _move_cable,
    "graph": _graph,
    "logs": _logs,
    "restart": _restart,
    "down": _down,
}


def main(words):
    options = parse(words)
    try:
        status = ACTIONS[options.action](options)
        sys.stdout.flush()
        return status
    except LabError as problem:
        complaint = str(problem)
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), sys.stdout.fileno())
        return 1
    except OSError as problem:
        complaint = f"{problem.filename}: {problem.strerror}." if problem.filename else f"{problem.strerror}."
    except KeyboardInterrupt:
        print("adp-lab: interrupted.", file=sys.stderr)
        return INTERRUPTED
    print(f"adp-lab: {complaint}", file=sys.stderr)
    return 1
