"""The virtual device's chip alone: instructions per frame, counted under callgrind as the difference of two runs."""

import re

from adp.lab.builds import Build

from bench.instructions import run
from bench.problem import BenchError

NAME = "chip"
TITLE = "The virtual device's chip: instructions per frame"
TARGETS = {"host": ["bench_chip"]}

PROGRAM = "bench_chip"
# Both runs have learned and allocated all that they ever will; each is a multiple of every case's number of flows.
FRAMES = (8000, 16000)
MEANINGS = {
    "unicast_64": "known destination, 64 octets",
    "unicast_1514": "known destination, 1514 octets",
    "flows_256": "256 flows in turn",
    "flows_4000": "4000 flows in turn, 8000 addresses",
    "addresses_8000": "one flow, 8000 addresses in the table",
    "rules_1": "one rule, not met",
    "rules_900_alike": "900 rules of one kind, none met",
    "rules_900_mixed": "900 rules of six kinds, none met",
    "rules_900_met": "900 rules of six kinds, the last one met",
    "flood_8": "broadcast to eight ports",
    "tagged": "tagged on both sides",
    "trunk": "256 flows to a trunk of two ports",
}


def instructions(case, frames):
    profiler = ["/usr/bin/valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"]
    said = run([*profiler, *Build("host").command(PROGRAM, case, frames)], {})
    collected = re.search(r"Collected : (\d+)", said)
    if collected is None:
        raise BenchError(f"the profiler does not say what {PROGRAM} has cost:\n{said}")
    return int(collected[1])


def per_frame(case):
    few, many = FRAMES
    return round((instructions(case, many) - instructions(case, few)) / (many - few))


def listed_cases():
    cases = run(Build("host").command(PROGRAM), {}).split()
    if set(cases) != set(MEANINGS):
        raise BenchError(f"{PROGRAM} has other cases than are explained here: {' '.join(cases)}")
    return cases


def measure(options):
    if "host" not in options.builds:
        return {"tables": [], "notes": ["The virtual device is measured on the host only."]}
    counts = {case: per_frame(case) for case in listed_cases()}
    plain = counts["unicast_64"]
    rows = [[case, MEANINGS[case], count, count / plain] for case, count in counts.items()]
    return {
        "tables": [
            {
                "title": "Instructions per frame, without any input and output",
                "columns": ["case", "what", "instructions", "beside unicast_64"],
                "rows": rows,
            }
        ],
        "counts": {f"host.{case}": count for case, count in counts.items()},
        "notes": ["What an interface costs comes on top: see the benchmark of the device as a whole."],
    }
