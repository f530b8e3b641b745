"""How each source of a build is compiled, also where several are compiled together."""

import json
import re
import shlex
from pathlib import Path

GCC_ONLY = ("-Wno-subobject-linkage", "-fno-ipa-icf-functions", "--param=ggc-min-heapsize=400000")


def units_of(build):
    """The words of each compilation, by its sources: one, or those that are compiled together."""
    units = {}
    for command in json.loads((build / "compile_commands.json").read_text()):
        file = Path(command["file"])
        together = re.findall(r'^#include "(.*)"$', file.read_text(), re.M) if file.parent.name == "Unity" else []
        units.setdefault(tuple(together or [str(file)]), shlex.split(command["command"]))
    return units


def commands_of(build):
    """The words of each source's compilation, by its path. Sources that are compiled together share one command."""
    return {source: words for sources, words in reversed(units_of(build).items()) for source in sources}


def flags_of(words):
    """What a source is compiled with, as clang takes it: without the compiler, the output, the source itself, and what
    only gcc knows."""
    start = 2 if Path(words[0]).name == "ccache" else 1
    return tuple(word for word in words[start:words.index("-o")] if word not in GCC_ONLY)
