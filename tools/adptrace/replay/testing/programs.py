"""The program under test, on a device's CPU."""
import os
import pathlib
import subprocess

from adp.lab import Build

BUILD = Build(pathlib.Path(os.environ["VDEVICE_PROGRAMS"]).name)
DEVICE_BUILD = Build("host") if BUILD.is_emulated else BUILD
SECONDS = 60
EQUAL, DIFFERS, TROUBLE = 0, 1, 2


def run(device, *words, seconds=SECONDS, **options):
    """A program: its status, the lines that it printed, and its errors."""
    given = options.pop("given", None)
    process = device.popen(BUILD.command(*words), stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                           text=True, **options)
    printed, errors = process.communicate(given, timeout=seconds)
    return process.returncode, printed.splitlines(), errors


def replay(device, path, *options, seconds=SECONDS):
    return run(device, "adptrace", "replay", *options, path, seconds=seconds)


def record(device, path, *command, **more):
    status, _lines, errors = run(device, "adptrace", "record", "-o", path, "--", *command, **more)
    assert status == 0, errors
    return str(path)
