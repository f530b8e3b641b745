"""The size of the library, its memory, its load time, and its largest functions.

Sizes are those of the stripped file. Memory and time are taken with a driver that answers at once: the library's own
start-up makes its driver calls, and they succeed.
"""

import os
import pathlib
import re
import shutil
import subprocess
import tempfile

from adp.lab.builds import Build

from bench import figure
from bench.problem import BenchError

NAME = "size"
TITLE = "Size of the library"
PROGRAMS = ["adp", "netlink_api", "device_services", "bench_size_empty", "bench_size_memory", "bench_size_load"]
TARGETS = {"host": PROGRAMS, "mips": PROGRAMS}
EMULATED = ("mips",)
AIM_BUILD, AIM_BYTES = "mips", 48 * 1024
STRIP = {"host": "strip", "mips": "mips-linux-gnu-strip"}
# Shown and counted, in this order; a build has those that its linker makes.
SECTIONS = (".text", ".rodata", ".plt", ".plt.sec", ".plt.got", ".MIPS.stubs", ".data", ".data.rel.ro", ".got",
            ".got.plt", ".bss", ".eh_frame", ".rel.dyn", ".rela.dyn", ".rela.plt", ".dynsym", ".dynstr")  # fmt: skip
COUNTED = ("stripped file", "dynamic symbols", "relocations", "names in the global offset table")
LARGEST = 20
ROUNDS = {"host": 1000, "mips": 200}
QUICK_ROUNDS = 50
SECONDS = 300

SECTION = re.compile(r"^\s*\[\s*\d+\]\s+(\S+)\s+\S+\s+[0-9a-f]+\s+[0-9a-f]+\s+([0-9a-f]+)\s")
SYMBOL = re.compile(r"^\s*\d+:\s+([0-9a-f]+)\s+(0x[0-9a-f]+|\d+)\s+(\S+)\s+\S+\s+\S+\s+(\S+)\s+(\S+)")
RELOCATION = re.compile(r"^[0-9a-f]{8,}\s+[0-9a-f]{8,}\s+R_")
WRITABLE = re.compile(r"^\s+LOAD\s+\S+\s+(0x[0-9a-f]+)\s+\S+\s+\S+\s+(0x[0-9a-f]+)\s+RW")
PAGE = 4096
GLOBAL_ENTRY = re.compile(r"^\s+[0-9a-f]+\s+-?\d+\(gp\)\s+[0-9a-f]+\s+[0-9a-f]+\s+\S+\s+\S+\s+\S+$")


def run(*command, **environment):
    done = subprocess.run(list(map(str, command)), env=os.environ | environment, timeout=SECONDS, check=False,
                          stdin=subprocess.DEVNULL, capture_output=True, text=True)  # fmt: skip
    if done.returncode != 0:
        raise BenchError(f"'{' '.join(map(str, command))}' failed:\n{done.stdout}{done.stderr}")
    return done.stdout


def library_of(build):
    return Build(build).folder / "libadp.so"


def stripped_bytes(build):
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / "libadp.so"
        shutil.copy(library_of(build), copy)
        run(STRIP[build], "--strip-unneeded", copy)
        return copy.stat().st_size


def sections_of(library):
    found = {}
    for line in run("readelf", "-SW", library).splitlines():
        if match := SECTION.match(line):
            found[match[1]] = int(match[2], 16)
    if not {".text", ".rodata", ".data"} <= found.keys():
        raise BenchError(f"{library} does not have the sections of a library")
    return found


def symbols_of(library, *options):
    """(address, size, kind, section, name) of each, without the first, which is none."""
    matches = (SYMBOL.match(line) for line in run("readelf", *options, "-W", library).splitlines())
    return [(int(m[1], 16), int(m[2], 0), m[3], m[4], m[5]) for m in matches if m]


def relocations_of(library):
    """Entries of the relocation tables, and on the target the names in the global offset table, which have none."""
    tables = sum(bool(RELOCATION.match(line)) for line in run("readelf", "-rW", library).splitlines())
    by_name = sum(bool(GLOBAL_ENTRY.match(line)) for line in run("readelf", "-AW", library).splitlines())
    return tables, by_name


def writable_bytes(library):
    """The pages that a process may write to, which is all of the library that can become its own."""
    bounds = [(int(m[1], 16), int(m[1], 16) + int(m[2], 16)) for line in run("readelf", "-lW", library).splitlines()
              if (m := WRITABLE.match(line))]  # fmt: skip
    if not bounds:
        raise BenchError(f"{library} has no segment that can be written to")
    return sum(-(-end // PAGE) - start // PAGE for start, end in bounds) * PAGE


def largest_functions(library):
    """(bytes, name); a function with several names stands once, under its first."""
    functions = {}
    for address, size, kind, section, name in symbols_of(library, "-s"):
        if kind == "FUNC" and section != "UND" and size > 0:
            functions.setdefault(address, (size, name.partition("@")[0]))
    ordered = sorted(functions.values(), key=lambda function: (-function[0], function[1]))[:LARGEST]
    names = run("c++filt", *(name for _, name in ordered)).splitlines()
    return len(functions), [(size, name) for (size, _), name in zip(ordered, names)]


def instant_driver(build):
    return {"LD_LIBRARY_PATH": str(Build(build).folder / "instant")}


def private_memory(build):
    """{"mapped": bytes, "private": bytes} of the library in a process that has started it up."""
    lines = run(*Build(build).command("bench_size_memory"), **instant_driver(build)).splitlines()
    rows = [list(map(int, line.split()[1:])) for line in lines if re.match(r"^[0-9a-f]+-[0-9a-f]+ \d+ \d+$", line)]
    if not rows:
        raise BenchError(f"bench_size_memory of the build {build} shows no mapping")
    return {"mapped": sum(size for size, _ in rows), "private": sum(private for _, private in rows)}


def load_times(build, rounds):
    """{"lazy": ratio, "now": ratio} to an empty library's."""
    empty = Build(build).folder / "libbench_size_empty.so"
    command = Build(build).command("bench_size_load", library_of(build), empty, rounds)
    lines = [line.split() for line in run(*command, **instant_driver(build)).splitlines()]
    return {name: int(library) / int(nothing) for name, library, nothing in lines}


def measure_build(build, options):
    library = library_of(build)
    sections = sections_of(library)
    tables, by_name = relocations_of(library)
    count, largest = largest_functions(library)
    found = {
        "sections": {name: sections[name] for name in SECTIONS if name in sections},
        "code and constants": sections[".text"] + sections[".rodata"],
        "stripped file": stripped_bytes(build),
        "dynamic symbols": len(symbols_of(library, "--dyn-syms")) - 1,
        "relocations": tables,
        "functions": count,
        "writable": writable_bytes(library),
        "largest": largest,
    }
    if by_name:
        found["names in the global offset table"] = by_name
    if not options.counts_only:
        if build not in EMULATED:
            found["memory"] = private_memory(build)
        found["load"] = load_times(build, QUICK_ROUNDS if options.quick else ROUNDS[build])
    return found


def counts_of(build, found):
    counts = {f"{build}{name}": size for name, size in found["sections"].items()}
    for name in ("code and constants", *COUNTED):
        if name in found:
            counts[f"{build}.{name.replace(' ', '-')}"] = found[name]
    return counts


def table(title, what, results, value_of):
    """One row for each thing, one column for each build."""
    rows = [[name, *(value_of(found, name) for found in results.values())] for name in what]
    return {"title": title, "columns": ["", *results], "rows": rows}


def figures(found):
    shown = {name: found.get(name) for name in (*COUNTED, "functions")}
    shown["pages that can be written to"] = found["writable"]
    shown["of them private and dirty after start-up"] = found.get("memory", {}).get("private")
    if "load" in found:
        shown["load time, beside an empty library"] = found["load"]["lazy"]
        shown["load time, all names bound"] = found["load"]["now"]
    return shown


def measure(options):
    results = {build: measure_build(build, options) for build in options.builds}
    sections = [name for name in SECTIONS if any(name in found["sections"] for found in results.values())]
    tables = [
        table("Bytes in each section", sections, results, lambda found, name: found["sections"].get(name)),
        table("Code and constants", ["code and constants", "of them allowed on the target"], results,
              lambda found, name: found["code and constants"] if name == "code and constants"
              else AIM_BYTES if found is results.get(AIM_BUILD) else None),
        table("Other figures", figures(next(iter(results.values()))), results,
              lambda found, name: figures(found)[name]),
    ]  # fmt: skip
    for build, found in results.items():
        tables.append({"title": f"Build {build}: the {LARGEST} largest functions", "columns": ["bytes", "function"],
                       "rows": [list(row) for row in found["largest"]]})  # fmt: skip
    counts = {key: count for build, found in results.items() for key, count in counts_of(build, found).items()}
    notes = ["Private and dirty are the library's pages that a process has written to when it is started up.",
             "For the target that cannot be seen, as the emulator copies what it loads: at most all writable pages.",
             "The target's load time is the emulator's, with its translation of the loader's code."]  # fmt: skip
    return {"tables": tables, "counts": counts, "notes": notes, "builds": results}


def plot(result, path):
    """The sections of each build, one on the other, and what is aimed for."""
    builds = result["builds"]
    with figure.saved(path, height=4.5) as (axis,):
        bottoms = dict.fromkeys(builds, 0)
        for name in SECTIONS:
            sizes = {build: found["sections"].get(name, 0) for build, found in builds.items()}
            if any(sizes.values()):
                axis.bar(list(builds), [size / 1024 for size in sizes.values()], label=name,
                         bottom=[bottoms[build] / 1024 for build in builds])  # fmt: skip
                bottoms = {build: bottoms[build] + sizes[build] for build in builds}
        axis.axhline(AIM_BYTES / 1024, color="black", linewidth=0.8, linestyle="--")
        axis.annotate("aim for .text and .rodata on the target", (0.02, AIM_BYTES / 1024), va="bottom",
                      xycoords=("axes fraction", "data"), fontsize="small")  # fmt: skip
        axis.set(ylabel="KiB", title="The library's sections")
        axis.legend(fontsize="x-small", loc="center left", bbox_to_anchor=(1, 0.5))
