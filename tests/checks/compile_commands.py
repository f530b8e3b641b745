"""How each source of a build is compiled, also where several are compiled together."""

import json
import re
import shlex
from pathlib import Path


def commands_of(build):
    """The words of each source's compilation, by its path. Sources that are compiled together share one command."""
    found = {}
    for command in json.loads((build / "compile_commands.json").read_text()):
        words = shlex.split(command["command"])
        together = Path(command["file"])
        files = [command["file"]]
        if together.parent.name == "Unity":
            files = re.findall(r'^#include "(.*)"$', together.read_text(), re.M)
        for file in files:
            found.setdefault(file, words)
    return found


def flags_of(words):
    """What a source is compiled with, without the compiler, the output and the source itself."""
    start = 2 if Path(words[0]).name == "ccache" else 1
    return tuple(words[start:words.index("-o")])
