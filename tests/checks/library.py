"""Checks what a built libadp.so is made of: exports, imports, dependencies, start-up code, byte order.

Usage: library.py LIBADP SYMBOLS_FOLDER [--target]

Exports and imports are held against the reviewed lists of platform/symbols. What the library does not have yet is
counted and printed; what it has beyond the lists is a failure and shown as a diff.
"""
import re
import subprocess
import sys

# The C run-time library's own start-up code refers to these, and they need not exist.
OPTIONAL_RUNTIME = {"__cxa_finalize", "_ITM_deregisterTMCloneTable", "_ITM_registerTMCloneTable", "__gmon_start__",
                    "_Jv_RegisterClasses"}
# Made by the linker for the target's dynamic section.
LINKER_MADE = {"_gp_disp", "__gnu_local_gp", "_MIPS_STUBS_", "__RLD_MAP"}


def readelf(*arguments):
    return subprocess.run(["readelf", "-W", *arguments], check=True, capture_output=True, text=True).stdout


def names(path):
    with open(path, encoding="utf-8") as lines:
        return {line.strip() for line in lines if line.strip() and not line.startswith("#")}


class Library:
    """The dynamic symbols and headers of one shared library."""

    def __init__(self, path):
        self.path = path
        self.functions, self.data, self.undefined = set(), set(), {}
        for line in readelf("--dyn-syms", path).splitlines():
            fields = line.split()
            # Num: Value Size Type Bind Vis [extras] Ndx Name
            if len(fields) < 8 or not fields[0].rstrip(":").isdigit():
                continue
            kind, section, name = fields[3], fields[-2], fields[-1]
            if section.startswith("(") or re.fullmatch(r"\(\d+\)", fields[-1]):
                section, name = fields[-3], fields[-2]
            name, _, version = name.partition("@")
            if section == "UND":
                self.undefined[name] = version.lstrip("@")
            elif kind == "FUNC":
                self.functions.add(name)
            elif kind == "OBJECT":
                self.data.add(name)
        self.header = readelf("-h", path)
        self.dynamic = readelf("-d", path)
        self.sections = readelf("-S", path)
        self.relocations = readelf("-r", path)

    def needed(self):
        return set(re.findall(r"\(NEEDED\).*\[(.*?)\]", self.dynamic))

    def section_size(self, name):
        match = re.search(rf"\s{re.escape(name)}\s+\S+\s+\S+\s+\S+\s+([0-9a-f]+)", self.sections)
        return int(match.group(1), 16) if match else 0


class Report:
    def __init__(self):
        self.failures = 0

    def check(self, good, what):
        print(("ok      " if good else "FAILED  ") + what)
        self.failures += not good

    def nothing_beyond(self, have, allowed, what):
        extras = sorted(have - allowed)
        self.check(not extras, f"{what}: {len(have & allowed)} of {len(allowed)}, none beyond the list")
        for name in extras:
            print(f"        + {name}")


def main():
    path, symbols = sys.argv[1], sys.argv[2]
    target = "--target" in sys.argv
    library, report = Library(path), Report()

    report.nothing_beyond(library.functions, names(f"{symbols}/exported-functions.txt"), "exported functions")
    report.nothing_beyond(library.data, names(f"{symbols}/exported-data.txt"), "exported data objects")

    foreign = {name for name, version in library.undefined.items()
               if name and not version.startswith("GLIBC_") and name not in OPTIONAL_RUNTIME | LINKER_MADE}
    # The target's C library gives some functions no version of their own.
    driver, services = names(f"{symbols}/driver-calls.txt"), names(f"{symbols}/platform-services.txt")
    report.nothing_beyond(foreign & driver, driver, "imported driver calls")
    report.nothing_beyond(foreign - driver, services, "imported services and anything else that is not libc's")
    mangled = sorted(name for name in set(library.undefined) | library.functions | library.data
                     if name.startswith("_Z") or "GLIBCXX" in library.undefined.get(name, "")
                     or "CXXABI" in library.undefined.get(name, ""))
    report.check(not mangled, f"no symbol of the C++ run-time library {mangled or ''}")

    soname = re.search(r"\(SONAME\).*\[(.*?)\]", library.dynamic)
    report.check(soname is not None and soname.group(1) == "libadp.so", "SONAME is libadp.so")
    allowed = {"libnetlink_api.so", "libc.so.6"} | ({"ld.so.1"} if target else set())
    report.check({"libnetlink_api.so", "libc.so.6"} <= library.needed() <= allowed,
                 f"NEEDED is libnetlink_api.so and libc only: {sorted(library.needed())}")
    runpath = re.findall(r"\((?:RUNPATH|RPATH)\).*\[(.*?)\]", library.dynamic)
    report.check(all(entry.rstrip(":") == "$ORIGIN" for entry in runpath), f"RUNPATH is $ORIGIN: {runpath}")
    now = re.search(r"\(BIND_NOW\)|\(FLAGS(?:_1)?\).*\b(?:BIND_)?NOW\b", library.dynamic)
    report.check(now is None, "lazy binding is possible")

    pointer = 4 if "ELF32" in library.header else 8
    for section in (".init_array", ".ctors"):
        report.check(library.section_size(section) <= pointer, f"no static constructor in {section}")
    slots = set(re.findall(r"(?:JUMP_SLOT?|JUMP_SLO)\s+\S+\s+(\w+)", library.relocations))
    report.check(not slots & library.functions, f"exported functions are bound inside {sorted(slots & library.functions)}")
    if target:
        report.check("ELF32" in library.header and "big endian" in library.header and "MIPS" in library.header,
                     "32-bit big-endian MIPS")
    return 1 if report.failures else 0


if __name__ == "__main__":
    sys.exit(main())
