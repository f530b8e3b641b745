"""Runs a benchmark in namespaces, so that no frame reaches the machine's own interfaces.

A benchmark's measure() calls measure_in_namespaces(), which starts a process there; it calls measure_inside(options) of
the same module and returns its result.
"""

import argparse
import contextlib
import importlib
import json
import os
import pathlib
import subprocess
import sys
import tempfile

from bench.problem import BenchError
from adp.lab import LabError

NICENESS = -10
LONGEST_SECONDS = 1800


def measure_in_namespaces(module, options):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "result"
        inside = [sys.executable, "-B", "-m", "bench.isolated", module, json.dumps(vars(options)), path]
        command = [sys.executable, "-B", "-m", "adp.lab.isolate", *map(str, inside)]
        if subprocess.run(command, check=False, timeout=LONGEST_SECONDS).returncode != 0:
            raise BenchError("This could not be measured, see above.")
        return json.loads(path.read_text(encoding="utf-8"))


def come_first():
    """Raises the priority, if the user may."""
    with contextlib.suppress(OSError):
        os.nice(NICENESS)
        # Where sessions share the processor evenly, the niceness of a process counts within its session only.
        os.setsid()
        pathlib.Path("/proc/self/autogroup").write_text(str(NICENESS), encoding="ascii")


def main():
    module, options, path = sys.argv[1:]
    come_first()
    result = importlib.import_module(module).measure_inside(argparse.Namespace(**json.loads(options)))
    pathlib.Path(path).write_text(json.dumps(result), encoding="utf-8")


if __name__ == "__main__":
    try:
        main()
    except (BenchError, LabError) as problem:
        sys.exit(f"script/bench: {problem}")
