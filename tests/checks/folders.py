"""Checks that the folders depend on each other one way only.

Subsystems of the library use port and agg; nobody includes another subsystem's private header but those two's; the
library knows nothing of the virtual device, and the device's chip knows nothing of the platform. Tests and tools may
include what they test.
"""
import pathlib
import re
import sys

SUBSYSTEMS = ("port", "pkt", "agg", "l2", "fp", "qos", "stg", "vlan")
SHARED = ("port", "agg")
SYSTEM_LIKE = ("adp/",)
PLATFORM = ("netlink_api.h", "device_services.h")


def is_test(path):
    return path.stem.endswith(("_test", "_program")) or path.stem.startswith("test_") or "test_support" in path.stem


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = re.match(r'\s*#\s*include\s+[<"]([^">]+)[">]', line)
        if match:
            yield number, match.group(1)


def allowed_in_subsystem(folder, header):
    if header.startswith(SYSTEM_LIKE) or header in PLATFORM:
        return True
    top = header.split("/")[0]
    if top in SUBSYSTEMS and "/" in header:
        return top == folder or top in SHARED
    return top not in ("vdevice", "tests", "adpsh", "platform", "generated", "examples")


def allowed_in_chip(header):
    return header.startswith("vdevice/chip/") or not (
        header in PLATFORM or header.split("/")[0] in ("vdevice", "platform", "generated", "tests", "adp", *SUBSYSTEMS))


def allowed_in_vdevice(header):
    return "/" not in header or header.split("/")[0] not in (*SUBSYSTEMS, "adpsh", "tests")


def main():
    root = pathlib.Path(sys.argv[1])
    failures, checked = [], 0
    for path in sorted(root.rglob("*.[ch]*")):
        relative = path.relative_to(root)
        top = relative.parts[0]
        if path.suffix not in (".h", ".cpp", ".c") or top in ("build", ".git") or is_test(path):
            continue
        for number, header in includes(path):
            checked += 1
            if top in SUBSYSTEMS:
                good = allowed_in_subsystem(top, header)
            elif top == "include":
                good = header.startswith("adp/") or "/" not in header
            elif relative.parts[:2] == ("vdevice", "chip"):
                good = allowed_in_chip(header)
            elif top == "vdevice":
                good = allowed_in_vdevice(header)
            else:
                good = True
            if not good:
                failures.append(f"{relative}:{number}: must not include {header}")
    print("\n".join(failures) if failures else f"ok: {checked} includes follow the folders' order")
    return 1 if failures or checked == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
