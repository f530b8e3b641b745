"""Programs under adptrace record, and recordings under adptrace replay."""

import contextlib
import json
import subprocess

from adp.lab import Build

REPLAY_SECONDS = 300
NOT_RECORDED = {"vdeviced", "vdevctl", "adptrace"}


@contextlib.contextmanager
def recording(path):
    """Every program of a build that is started meanwhile is recorded in the file."""
    plain = Build.command

    def command(build, program, *arguments):
        words = plain(build, program, *arguments)
        return words if program in NOT_RECORDED else plain(build, "adptrace", "record", "-f", "-o", path, "--", *words)

    Build.command = command
    try:
        yield
    finally:
        Build.command = plain


def replay(device, build, path, *options):
    """Replays on a device; gives the exit status and what was said."""
    command = Build(build).command("adptrace", "replay", *options, path)
    process = device.popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    said, _ = process.communicate(timeout=REPLAY_SECONDS)
    return process.returncode, said


def calls_of(path):
    """How many calls of each name were recorded."""
    counts = {}
    with open(path, encoding="ascii") as lines:
        for line in map(json.loads, lines):
            if "call" in line:
                counts[line["call"]] = counts.get(line["call"], 0) + 1
    return counts


def state(device):
    """What the chip holds, without what runs by itself."""
    answer = device.ask("state")
    answer.pop("running", None)
    return answer
