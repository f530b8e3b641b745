"""Plants faults in the library and the chip, one at a time, and tells which of them no test finds.

Works on a finished build (script/mutate makes it). A fault that leaves the object as it was is no fault and is not
counted; neither is one that does not compile.
"""

import argparse
import json
import os
import random
import re
import resource
import signal
import subprocess
import sys
import tempfile
import time
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from tests.mutation.build import Build
from tests.mutation.faults import Fault, faults_in

ROOT = Path(__file__).resolve().parents[2]
MEMORY = 4 << 30


def limited():
    os.setsid()
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def run(command, seconds):
    """The exit status (None after a timeout) and the output."""
    with subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, preexec_fn=limited) as process:
        try:
            output, _ = process.communicate(timeout=seconds)
            return process.returncode, output.decode(errors="replace")
        except subprocess.TimeoutExpired:
            os.killpg(process.pid, signal.SIGKILL)
            process.communicate()
            return None, ""


def failed_tests(program, status, output):
    """The tests that failed, by name; the program itself where it says none."""
    names = re.findall(r"^\[  FAILED  \] ([\w/]+\.[\w/]+)", output, re.M)
    started = re.findall(r"^\[ RUN      \] ([\w/.]+)", output, re.M)
    if (status is None or status < 0 or status > 1) and started:
        names.append(started[-1])
    return sorted({f"{program}:{name}" for name in names} or {program})


class Trials:
    def __init__(self, build, options):
        self.build = build
        self.options = options
        self.seconds = {}
        self.originals = {}

    def commands(self, source):
        """The command lines for a source, the quickest first."""
        wanted = self.options.programs
        found = [c for c in self.build.commands_with(source) if not wanted or c[0] in wanted]
        for command in found:
            if command not in self.seconds:
                began = time.monotonic()
                status, output = run([self.build.folder / command[0], *command[1:]], 600)
                if status != 0:
                    sys.exit(f"script/mutate: {command[0]} fails without any fault:\n{output[-2000:]}")
                self.seconds[command] = time.monotonic() - began
        return sorted(found, key=self.seconds.get)

    def original(self, source):
        if source not in self.originals:
            with tempfile.TemporaryDirectory() as folder:
                out = Path(folder, "object.o")
                if not self.build.compile(source, source.read_text(), out):
                    sys.exit(f"script/mutate: {source} does not compile")
                self.originals[source] = out.read_bytes()
        return self.originals[source]

    def prepare(self, source):
        self.original(source)
        self.commands(source)

    def trial(self, source, fault):
        """('invalid' | 'equivalent' | 'killed' | 'survived', the tests that found it)"""
        with tempfile.TemporaryDirectory() as folder:
            out = Path(folder, "object.o")
            if not self.build.compile(source, fault.planted(source.read_text()), out):
                return "invalid", []
            if out.read_bytes() == self.original(source):
                return "equivalent", []
            found_by = []
            for command in self.commands(source):
                found_by += self.found_by(command, source, out, Path(folder, "program"))
                if found_by and not self.options.killers:
                    break
            return ("killed" if found_by else "survived"), found_by

    def found_by(self, command, source, changed, program):
        if not self.build.link(command[0], source, changed, program):
            return [command[0]]
        arguments = [a for a in command[1:] if not (self.options.killers and a == "--gtest_fail_fast")]
        status, output = run([program, *arguments], 5 + 5 * self.seconds[command])
        return [] if status == 0 else failed_tests(command[0], status, output)


def chosen(options):
    """The faults to plant: (source, fault), in the order of files and lines."""
    if options.faults:
        rows = json.loads(Path(options.faults).read_text())
        rows = [row for row in rows if row["result"] == "survived"]
        return [(ROOT / r["file"], Fault(r["line"], r["kind"], r["start"], r["end"], r["new"])) for r in rows]
    sources = []
    for path in options.paths:
        found = [ROOT / path] if path.endswith(".cpp") else sorted((ROOT / path).rglob("*.cpp"))
        sources += [s for s in found if not s.name.endswith("_test.cpp") and s.parent.name != "testing"]
    faults = [(source, fault) for source in sources for fault in faults_in(source.read_text())]
    if options.sample and options.sample < len(faults):
        picked = random.Random(options.seed).sample(range(len(faults)), options.sample)
        faults = [faults[i] for i in sorted(picked)]
    return faults


def row_of(source, fault, result, found_by):
    old = source.read_text()[fault.start:fault.end]
    return {"file": str(source.relative_to(ROOT)), "line": fault.line, "kind": fault.kind, "start": fault.start,
            "end": fault.end, "old": old, "new": fault.new, "result": result, "found_by": found_by}


def report(rows):
    """Survivors by line, then the count of each folder."""
    def short(text):
        return " ".join(text.split())
    for row in rows:
        if row["result"] == "survived":
            print(f'{row["file"]}:{row["line"]}: {row["kind"]}: {short(row["old"])}  ->  {short(row["new"])}')
    counts = Counter((str(Path(row["file"]).parent), row["result"]) for row in rows)
    print(f'\n{"folder":28}{"killed":>8}{"survived":>10}')
    for folder in [*sorted({folder for folder, _ in counts}), "all"]:
        each = Counter({r: n for (f, r), n in counts.items() if f == folder}) if folder != "all" else Counter(
            row["result"] for row in rows)
        print(f'{folder:28}{each["killed"]:8}{each["survived"]:10}')
    print(f'Not counted: {sum(r["result"] == "equivalent" for r in rows)} that leave the object as it was, '
          f'{sum(r["result"] == "invalid" for r in rows)} that do not compile.')


def main():
    parser = argparse.ArgumentParser(prog="script/mutate", description=__doc__.splitlines()[0])
    parser.add_argument("paths", nargs="*", default=["src", "vdevice/chip"], help="sources or folders (src vdevice/chip)")
    parser.add_argument("--sample", type=int, metavar="N", help="plant N faults, drawn by --seed, and not all")
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--programs", nargs="+", default=[], metavar="NAME", help="run only these test programs")
    parser.add_argument("--killers", action="store_true", help="run every test, and tell in --json which ones found a fault")
    parser.add_argument("--faults", metavar="FILE", help="plant what survived in this earlier --json")
    parser.add_argument("--json", metavar="FILE", help="write the result of each fault")
    parser.add_argument("--build", default=ROOT / "build/mutate", type=Path)
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args()
    trials = Trials(Build(options.build.resolve()), options)
    faults = chosen(options)
    for source in dict.fromkeys(source for source, _ in faults):
        trials.prepare(source)
    print(f"{len(faults)} faults in {len({s for s, _ in faults})} files, {options.jobs} at a time", flush=True)

    rows = []
    began = time.monotonic()
    with ThreadPoolExecutor(options.jobs) as pool:
        for (source, fault), (result, found_by) in zip(faults, pool.map(lambda f: trials.trial(*f), faults)):
            rows.append(row_of(source, fault, result, found_by))
            if len(rows) % max(1, len(faults) // 20) == 0:
                survived = sum(row["result"] == "survived" for row in rows)
                print(f"  {len(rows)}/{len(faults)}, {survived} survived, {time.monotonic() - began:.0f} s", flush=True)
    if options.json:
        Path(options.json).write_text(json.dumps(rows, indent=0))
    report(rows)
    sys.exit(any(row["result"] == "survived" for row in rows))


if __name__ == "__main__":
    main()
