"""Checks that built files are hardened, from what stands in them.

Usage: hardening.py [--lazy=NAME] FILE...   every file must have every property
       hardening.py --without FILE...       no file may have any: the check itself is checked

A file of the name NAME may be bound lazily, and must be.
"""
import pathlib
import re
import subprocess
import sys

# Names of the C library's calls that check their buffers: __memcpy_chk, __printf_chk ...
CHECKED_CALL = re.compile(r"__(?!stack)\w+_chk$")


def readelf(path, *options):
    return subprocess.run(["readelf", "-W", *options, path], check=True, capture_output=True, text=True).stdout


class File:
    def __init__(self, path):
        self.header = readelf(path, "-h")
        self.segments = readelf(path, "-l")
        self.dynamic = readelf(path, "-d")
        symbols = (line.split() for line in readelf(path, "--dyn-syms").splitlines())
        self.symbols = {fields[7].partition("@")[0] for fields in symbols if len(fields) > 7}

    def flags_of(self, segment):
        """The access flags of each segment of this kind, such as RW: what stands between five numbers and the last."""
        rows = (line.split() for line in self.segments.splitlines())
        return ["".join(row[6:-1]) for row in rows if row[:1] == [segment]]

    def has_stack_without_code(self):
        flags = self.flags_of("GNU_STACK")
        return len(flags) == 1 and "E" not in flags[0]

    def has_read_only_relocations(self):
        return "GNU_RELRO" in self.segments

    def is_bound_at_start(self):
        return re.search(r"\(BIND_NOW\)|\(FLAGS(?:_1)?\).*\b(?:BIND_)?NOW\b", self.dynamic) is not None

    def is_position_independent(self):
        return re.search(r"Type:\s+DYN\b", self.header) is not None

    def has_stack_protector(self):
        return "__stack_chk_fail" in self.symbols

    def has_checked_calls(self):
        return any(CHECKED_CALL.match(name) for name in self.symbols)


PROPERTIES = {
    "no code on the stack": File.has_stack_without_code,
    "relocations read-only": File.has_read_only_relocations,
    "bound at start": File.is_bound_at_start,
    "position-independent": File.is_position_independent,
    "stack protector": File.has_stack_protector,
    "checked calls": File.has_checked_calls,
}


def main():
    options = [word for word in sys.argv[1:] if word.startswith("--")]
    files = [word for word in sys.argv[1:] if not word.startswith("--")]
    lazy = {option.partition("=")[2] for option in options if option.startswith("--lazy=")}
    failures = 0 if files else 1
    for path in files:
        name = pathlib.Path(path).name
        built = File(path)
        for what, is_so in PROPERTIES.items():
            expected = "--without" not in options and not (what == "bound at start" and name in lazy)
            good = is_so(built) == expected
            failures += not good
            if not good:
                print(f"FAILED  {name}: {what} is {'missing' if expected else 'there'}")
    print(f"{len(files)} files, {len(PROPERTIES)} properties, {failures} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
