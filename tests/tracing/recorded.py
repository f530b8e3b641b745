"""Programs under adptrace record, and recordings under adptrace replay."""

import contextlib
import json
import subprocess

from adp.lab import Build

REPLAY_SECONDS = 300


@contextlib.contextmanager
def recording(path, program):
    """The program, when it is started meanwhile, is recorded in the file."""
    plain = Build.command

    def command(build, name, *arguments):
        words = plain(build, name, *arguments)
        return plain(build, "adptrace", "record", "-f", "-o", path, "--", *words) if name == program else words

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
