"""Programs under adptrace record, and recordings under adptrace replay."""

import contextlib
import json
import subprocess

from adp.lab import Build

REPLAY_SECONDS = 300


@contextlib.contextmanager
def recording(path, program, option=None):
    """The program, when it is started meanwhile (with this option), is recorded in the file."""
    plain = Build.command

    def command(build, name, *arguments):
        words = plain(build, name, *arguments)
        if name != program or (option and option not in arguments):
            return words
        return plain(build, "adptrace", "record", "-f", "-o", path, "--", *words)

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


def calls(path):
    """The beginning of each call that was recorded."""
    with open(path, encoding="ascii") as lines:
        return [line for line in map(json.loads, lines) if "call" in line]


def library_calls(path):
    """(name, arguments) of each call that the program made of the library."""
    return [(line["call"], line["arguments"]) for line in calls(path) if "within" not in line]


def state(device):
    """What the chip holds, without what runs by itself."""
    answer = device.ask("state")
    answer.pop("running", None)
    return answer
