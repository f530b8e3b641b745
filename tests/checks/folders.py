"""Checks that a folder includes only what docs/architecture.md lets it use: the table below."""
import pathlib
import re
import sys

INTERFACE = ("include", "platform")
LIBRARY = (*INTERFACE, "src/core")
# The chip's stages; each uses only those before it.
CHIP_STAGES = tuple(f"vdevice/chip/{stage}" for stage in ("frame", "rates", "tables", "fields", "queues", "pipeline"))
# A folder, and the folders that it may use besides itself. The longest name that fits a path counts.
MAY_USE = {
    "include": (),
    "platform": ("include",),
    "calls": ("generated", *INTERFACE),
    "src/core": INTERFACE,
    "src/port": LIBRARY,
    "src/agg": (*LIBRARY, "src/port"),
    "src/pkt": LIBRARY,
    "src/l2": LIBRARY,
    "src/fp": LIBRARY,
    "src/qos": LIBRARY,
    "src/stg": LIBRARY,
    "src/vlan": LIBRARY,
    "src/board": INTERFACE,
    "vdevice/chip": (),
    **{stage: CHIP_STAGES[:number] for number, stage in enumerate(CHIP_STAGES)},
    "vdevice/driver": ("vdevice/chip", "generated", *INTERFACE),
    "vdevice/io": ("vdevice/chip/frame",),
    "vdevice/remote": ("calls", "generated", *INTERFACE),
    "vdevice/services": ("vdevice/remote", "calls", *INTERFACE),
    "vdevice/device": ("vdevice/driver", "vdevice/io", "vdevice/chip"),
    "vdevice/inspect": ("vdevice/device", "vdevice/driver", "vdevice/io", "vdevice/chip"),
    "vdevice/daemon": ("vdevice", "calls", "generated", *INTERFACE),
    "tools/adpsh": ("include", "calls", "generated"),
    "tools/vdevctl": ("vdevice/daemon", "vdevice/io"),
    "examples": ("include", "platform", "vdevice/remote", "vdevice/services"),
}
# Used by tests only, and by those who may use everything.
EVERYTHING = ("tests", "bench")
INCLUDE_ROOTS = ("", "include", "platform", "src")
TEST = re.compile(r"_test\.cpp$|/testing/")


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = re.match(r'\s*#\s*include\s+([<"])([^">]+)[">]', line)
        if match:
            yield number, match.group(2)


def place_of(root, includer, header):
    """The included file's place in the tree; None for a library's or the system's."""
    if header.startswith("generated/"):
        return header
    for folder in (includer.parent.relative_to(root), *INCLUDE_ROOTS):
        path = pathlib.PurePosixPath(folder) / header
        if (root / path).is_file():
            return str(path)
    return None


def lies_in(path, folder):
    return path.startswith(folder + "/")


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    failures, checked = [], 0
    for path in sorted(root.rglob("*.[ch]*")):
        relative = str(path.relative_to(root))
        if path.suffix not in (".h", ".cpp", ".c") or lies_in(relative, "build") or TEST.search(relative):
            continue
        if relative.split("/")[0] in EVERYTHING:
            continue
        folder = max((name for name in MAY_USE if lies_in(relative, name)), key=len, default=None)
        if folder is None:
            failures.append(f"{relative}: its folder is not in the table of {pathlib.Path(__file__).name}")
            continue
        for number, header in includes(path):
            checked += 1
            place = place_of(root, path, header)
            if place and not any(lies_in(place, used) for used in (folder, *MAY_USE[folder])):
                failures.append(f"{relative}:{number}: {folder} must not include {place}")
    print("\n".join(failures) if failures else f"ok: {checked} includes are in the table")
    return 1 if failures or checked == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
