"""The cost of each exported function, beside the same driver calls made directly from C.

Both are measured with two drivers. One answers at once, which leaves the library's own instructions. The other one is
that of the virtual device, with a peer at the other end of its socket that answers each request with success: the cost
for a caller. The aims are for that one.
"""

import contextlib
import json
import pathlib
import statistics
import tempfile

from adp.lab.builds import ROOT, Build
from adp.lab.netns import NetNamespace

from bench import figure, instructions
from bench.problem import BenchError

NAME = "calls"
TITLE = "Cost of a call: instructions, beside its driver calls made directly"
TARGETS = {
    "host": ["bench_calls", "bench_peer", "bench_count_log", "netlink_api", "device_services"],
    "mips": ["bench_calls", "netlink_api", "device_services"],
}
AIMS = {"wrapper": 1.2, "fan-out": 1.3, "attribute set": 1.5}
KINDS = (*AIMS, "other", "no driver call")
EXPORTS = ROOT / "platform" / "symbols" / "exported-functions.txt"
WORST = 10
INSTANT, SHIPPED = "at once", "shipped"
SUMMARY = ["kind", "calls", "own, median", "own, most", "ratio, median", "ratio, most", "aim", "within",
           "within at once"]  # fmt: skip
NOTES = [
    "Instructions of the process itself, without the kernel's. 'own' is what the library adds to its driver calls.",
    "The aims are judged with the shipped driver, which is what callers have; 'at once' is the strictest measure.",
]
ON_A_GROUP = " on a group"


def cases_of(build):
    """The cases as the build recorded them; it is an error when an exported function has none."""
    cases = json.loads((Build(build).folder / "bench_calls.json").read_text(encoding="utf-8"))
    exported = {line.strip() for line in EXPORTS.read_text(encoding="utf-8").splitlines()} - {""}
    missing = {name for name in exported if not name.startswith("#")} - {case["function"] for case in cases}
    if missing:
        raise BenchError(f"these functions have no row in the build {build}: {', '.join(sorted(missing))}")
    return cases


@contextlib.contextmanager
def surroundings():
    """A namespace with the CPU's interface, for the calls that send frames."""
    with contextlib.closing(NetNamespace("bench")) as namespace:
        namespace.ip("link add eth0 type veth peer name far", "link set eth0 up", "link set far up")
        with namespace.entered():
            yield


def count_instant(build):
    environment = {"LD_LIBRARY_PATH": str(Build(build).folder / "instant")}
    return instructions.per_call(build, "bench_calls", environment=environment)


def count_shipped(build, cases):
    """The peer checks that all driver calls arrive."""
    with tempfile.TemporaryDirectory() as folder:
        expected = sum(case["remote"] for case in cases)
        peer = Build("host").command("bench_peer", pathlib.Path(folder) / "driver", expected)
        return instructions.per_call(build, "bench_calls", environment={"VDEVICE_DIR": folder}, within=peer)


def rows_of(cases, counts):
    """The cases with their costs, by kind and by what they cost beside their floor."""
    rows = []
    for number, case in enumerate(cases):
        row = dict(case)
        for driver, found in counts.items():
            call, floor = found[f"call_{number}"], found[f"floor_{number}"]
            ratio = call / floor if case["driver_calls"] else None
            row[driver] = {"call": int(call), "floor": int(floor), "ratio": ratio}
        row["own"] = row[INSTANT]["call"] - row[INSTANT]["floor"]
        rows.append(row)
    judged = SHIPPED if SHIPPED in counts else INSTANT
    return sorted(rows, key=lambda row: (KINDS.index(row["kind"]), -(row[judged]["ratio"] or 0), -row["own"]))


def table(build, rows):
    columns = ["kind", "driver calls", "own", "at once", "shipped", "call"]
    lines = [[row["kind"], row["driver_calls"], row["own"], row[INSTANT]["ratio"], row.get(SHIPPED, {}).get("ratio"),
              row["name"]] for row in rows]  # fmt: skip
    return {"title": f"Build {build}: the library's own instructions, and the ratio to the floor with either driver",
            "columns": columns, "rows": lines}  # fmt: skip


def summary(build, rows):
    lines = []
    for kind in KINDS:
        found = [row for row in rows if row["kind"] == kind]
        own = [row["own"] for row in found]
        line = [kind, len(found), int(statistics.median(own)), max(own)]
        if kind != KINDS[-1]:
            ratios = [row[SHIPPED]["ratio"] for row in found]
            line += [statistics.median(ratios), max(ratios)]
        if kind in AIMS:
            strict = [row[INSTANT]["ratio"] for row in found]
            line += [AIMS[kind], *(sum(ratio <= AIMS[kind] for ratio in each) for each in (ratios, strict))]
        lines.append(line + [None] * (len(SUMMARY) - len(line)))
    return {"title": f"Build {build}: calls by kind; ratios and aims are those with the shipped driver",
            "columns": SUMMARY, "rows": lines}  # fmt: skip


def worst(build, rows):
    judged = [row for row in rows if row["kind"] in AIMS]
    judged.sort(key=lambda row: row[SHIPPED]["ratio"] / AIMS[row["kind"]], reverse=True)
    lines = [[row["kind"], row[SHIPPED]["ratio"], row["own"], row["name"]] for row in judged[:WORST]]
    return {"title": f"Build {build}: the {WORST} calls that cost most beside their aim, with the shipped driver",
            "columns": ["kind", "shipped", "own", "call"], "rows": lines}  # fmt: skip


def counts_of(build, rows):
    """A function's instructions with the driver that answers at once, on a port and on a group together."""
    counts = {}
    for row in rows:
        key = f"{build}.{row['name'].removesuffix(ON_A_GROUP).replace(' ', '.')}"
        counts[key] = counts.get(key, 0) + row[INSTANT]["call"]
    return counts


def measure(options):
    result = {"tables": [], "counts": {}, "rows": {}, "notes": NOTES}
    for build in options.builds:
        cases = cases_of(build)
        with surroundings():
            counts = {INSTANT: count_instant(build)}
            is_short = options.counts_only or options.quick and build != "host"
            if not is_short:
                counts[SHIPPED] = count_shipped(build, cases)
        rows = rows_of(cases, counts)
        result["rows"][build] = rows
        result["counts"] |= counts_of(build, rows)
        if not options.counts_only:
            result["tables"].append(table(build, rows))
        if SHIPPED in counts:
            result["tables"] += [summary(build, rows), worst(build, rows)]
    return result


def plot(result, path):
    """Each case's ratio with the shipped driver over the library's own instructions, by kind."""
    builds = {build: [row for row in rows if SHIPPED in row and row["driver_calls"]]
              for build, rows in result["rows"].items()}  # fmt: skip
    builds = {build: rows for build, rows in builds.items() if rows}
    if not builds:
        return
    with figure.saved(path, columns=len(builds), height=4.5) as axes:
        for axis, (build, rows) in zip(axes, builds.items()):
            for kind in KINDS[:-1]:
                points = [row for row in rows if row["kind"] == kind]
                drawn = axis.scatter([max(row["own"], 1) for row in points], [row[SHIPPED]["ratio"] for row in points],
                                     s=14, label=kind + (f", aim {AIMS[kind]}" if kind in AIMS else ""))  # fmt: skip
                if kind in AIMS:
                    axis.axhline(AIMS[kind], color=drawn.get_facecolor()[0], linestyle=":")
            axis.set(title=f"Build {build}", xscale="log", xlabel="the library's own instructions",
                     ylabel="call, beside its driver calls made directly")  # fmt: skip
            axis.legend()
