"""Programs of the target's build under their usual names, for the shells and programs of a lab."""

import os
import shlex

DEVICE_PROGRAMS = ("vdeviced", "vdevctl")


def write_wrappers(folder, build):
    """A folder with a script for each program of the build that is not the device's; gives the folder."""
    build.path_of("adpsh")
    folder.mkdir(mode=0o700)
    for entry in sorted(build.folder.iterdir()):
        if not entry.suffix and entry.name not in DEVICE_PROGRAMS and entry.is_file() and os.access(entry, os.X_OK):
            script = folder / entry.name
            script.write_text(f'#!/bin/sh\nexec {shlex.join(build.command(entry.name))} "$@"\n', encoding="utf-8")
            script.chmod(0o700)
    return folder
