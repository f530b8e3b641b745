"""What it costs to record calls: beside the same calls unrecorded, with a driver that answers at once."""

import os
import pathlib
import statistics
import subprocess
import tempfile

from adp.lab.builds import Build

from bench.bars import plot_bars
from bench.problem import BenchError

NAME = "tracing"
TITLE = "What it costs to record a call"
TARGETS = {"host": ["bench_tracing", "adptrace"]}
HAS_COUNTS = False
KINDS = {
    "set": "set an attribute", "read": "read an attribute", "group": "set it on a group of three", "list": "list a group",
    "vlan": "set a VLAN's ports", "address": "add a MAC address", "counter": "read a counter",
    "rule": "add a rule's condition", "frame": "receive 256 octets",
}  # fmt: skip
# A management program's day; a rule's record of 6 KiB and a frame are no part of it.
TYPICAL = ("set", "read", "group", "list", "vlan", "address", "counter")
CALLS, QUICK_CALLS, ROUNDS, QUICK_ROUNDS = 20000, 4000, 7, 3
SECONDS = 60
THOUSAND = 1000
NOWHERE = "/dev/null"
NOTES = [
    "A row is a call of the library with its driver calls; 'calls' counts all of them, and 'more' is for each. 'nowhere' "
    "writes to /dev/null, so it is what recording costs beside the file system; 'file' is a file in the folder for "
    "temporary files. A call is two lines, each with one write(2).",
]


def environment(**more):
    return os.environ | {"LD_LIBRARY_PATH": str(Build("host").folder / "instant")} | more


def run(kind, calls, *front, **more):
    """Nanoseconds of a call of this kind."""
    command = [*map(str, front), *Build("host").command("bench_tracing", kind, calls)]
    done = subprocess.run(command, env=environment(**more), timeout=SECONDS, check=False, capture_output=True, text=True)
    if done.returncode != 0:
        raise BenchError(f"'{' '.join(command)}' failed:\n{done.stderr}")
    return float(done.stdout)


def to_nowhere():
    """The environment in which the library records to /dev/null, which the command refuses."""
    status = os.stat(NOWHERE)
    library = Build("host").folder / "libadptrace.so"
    # As tools/adptrace/record/session.h has it; all processes are recorded, since the first is not known yet.
    return {"LD_PRELOAD": str(library), "ADPTRACE_FILE": NOWHERE,
            "ADPTRACE_SESSION": f"1:1:{status.st_dev}:{status.st_ino}:1:0"}  # fmt: skip


def to_file(path):
    return [*Build("host").command("adptrace", "record", "-o", path), "--"]


def contents(path):
    """(library call and driver calls of the last call, octets of each)"""
    lines = pathlib.Path(path).read_text(encoding="ascii").splitlines(keepends=True)
    last = max(number for number, line in enumerate(lines) if is_begin(line) and '"within"' not in line)
    calls = sum(map(is_begin, lines[last:]))
    return calls, sum(len(line) for line in lines[last:] if not line.startswith('{"exit"')) / calls


def is_begin(line):
    return line.startswith('{"begin"')


def row_of(kind, calls, rounds, folder):
    path = pathlib.Path(folder) / kind
    plain, nowhere, file = [], [], []
    for _ in range(rounds):
        plain.append(run(kind, calls))
        nowhere.append(run(kind, calls, **to_nowhere()))
        file.append(run(kind, calls, *to_file(path)))
    each, octets = contents(path)
    plain, nowhere, file = (statistics.median(times) / THOUSAND for times in (plain, nowhere, file))
    return [KINDS[kind], each, plain, nowhere, file, (nowhere - plain) / each, (file - plain) / each, int(octets)]


def typical(rows):
    """The rows of the kinds that are typical, as one."""
    chosen = [row for row in rows if row[0] in {KINDS[kind] for kind in TYPICAL}]
    calls, plain, nowhere, file = (sum(row[column] for row in chosen) for column in (1, 2, 3, 4))
    octets = sum(row[1] * row[7] for row in chosen) / calls
    count = len(chosen)
    return ["these, without the last two", calls, plain / count, nowhere / count, file / count,
            (nowhere - plain) / calls, (file - plain) / calls, int(octets)]  # fmt: skip


def measure(options):
    calls, rounds = (QUICK_CALLS, QUICK_ROUNDS) if options.quick else (CALLS, ROUNDS)
    with tempfile.TemporaryDirectory() as folder:
        rows = [row_of(kind, calls, rounds, folder) for kind in KINDS]
    rows.append(typical(rows))
    columns = ["call", "calls", "plain us", "nowhere us", "file us", "more, nowhere us", "more, file us", "octets a call"]
    return {"tables": [{"title": "Microseconds", "columns": columns, "rows": rows}], "rows": rows, "notes": NOTES}


def plot(result, path):
    kinds = result["rows"][:-1]
    plot_bars(path, list(KINDS), {"nowhere": [row[5] for row in kinds], "file": [row[6] for row in kinds]}, "us a call")
