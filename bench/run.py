"""Runs benchmarks, prints and keeps their results, and compares counts with the baseline. script/bench starts it."""

import argparse
import importlib
import pathlib
import subprocess
import sys

from bench import report
from bench.baseline import Baseline
from bench.problem import BenchError

ROOT = pathlib.Path(__file__).resolve().parents[1]
RESULTS = ROOT / "build" / "bench"
BUILDS = ("host", "mips")
FRAME = ("__init__",)


def is_benchmark(path):
    """Whether the module is a benchmark."""
    return path.stem not in FRAME and "\ndef measure(" in path.read_text(encoding="utf-8")


def benchmark_names():
    return sorted(path.stem for path in pathlib.Path(__file__).parent.glob("*.py") if is_benchmark(path))


def parse_options(names):
    parser = argparse.ArgumentParser(prog="script/bench", description="Measures speed and size.")
    parser.add_argument("names", nargs="*", metavar="NAME", help=f"benchmarks: {', '.join(names)}; by default all")
    parser.add_argument("--quick", action="store_true", help="the short form")
    parser.add_argument("--check", action="store_true", help="only the counts: fail where one has grown over 2 %%")
    parser.add_argument("--update-baseline", action="store_true", help="the counts of this run become the baseline")
    parser.add_argument("--builds", default=",".join(BUILDS), help="builds to measure, separated by commas")
    parser.add_argument("--list", action="store_true", help="show the benchmarks")
    options = parser.parse_args()
    options.builds = options.builds.split(",")
    options.counts_only = options.check or options.update_baseline
    for what, given, known in (("benchmark", options.names, names), ("build", options.builds, BUILDS)):
        for name in given:
            if name not in known:
                parser.error(f"there is no {what} '{name}', but {', '.join(known)}")
    return options


def say(command):
    """Runs a command that prints."""
    if subprocess.run(command, cwd=ROOT, check=False).returncode != 0:
        raise BenchError(f"'{' '.join(command)}' failed, see above")


def build(modules, builds):
    for name in builds:
        targets = sorted({target for module in modules for target in getattr(module, "TARGETS", {}).get(name, [])})
        if targets:
            say(["script/build", name, *targets])


def run(module, options):
    print(f"\n{module.TITLE}" + ("" if options.counts_only else "\n"), flush=True)
    result = module.measure(options)
    result.setdefault("counts", {})
    if not options.counts_only:
        report.show(result, sys.stdout)
        report.keep(result, RESULTS / f"{module.NAME}.json")
        if hasattr(module, "plot"):
            module.plot(result, RESULTS / f"{module.NAME}.svg")
    return result


def main():
    names = benchmark_names()
    options = parse_options(names)
    modules = [importlib.import_module(f"bench.{name}") for name in options.names or names]
    if options.list:
        print("\n".join(f"{module.NAME:14} {module.TITLE}" for module in modules))
        return 0
    if options.counts_only:
        modules = [module for module in modules if getattr(module, "HAS_COUNTS", True)]
    RESULTS.mkdir(parents=True, exist_ok=True)
    build(modules, options.builds)
    counts = {module.NAME: run(module, options)["counts"] for module in modules}
    print()
    if not options.counts_only:
        print(f"Results and plots: {RESULTS.relative_to(ROOT)}")
    baseline = Baseline(pathlib.Path(__file__).with_name("baseline.json"))
    if options.update_baseline:
        baseline.replace(counts, options.builds)
        print("The counts of this run are the new baseline.")
    return baseline.complain(counts, options.builds, sys.stdout) if options.check else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except BenchError as problem:
        sys.exit(f"script/bench: {problem}")
