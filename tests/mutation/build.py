"""Builds one source of a finished build anew, and the test programs with it, without touching the build's own files."""

import json
import re
import shlex
import subprocess
from pathlib import Path

from tests.checks.compile_commands import commands_of

# Whatever a fault makes of the code must not end the compilation by a warning; -g0 lets objects be compared.
COMPILE = ("-w", "-g0")
LINK = ("-Wl,--allow-multiple-definition", "-fuse-ld=gold")


class Build:
    def __init__(self, folder):
        self.folder = folder
        self.commands = commands_of(folder)
        self.links = {}
        self.tests = None

    def object_of(self, source):
        command = self.commands[str(source)]
        return command[command.index("-o") + 1]

    def compile(self, source, text, out):
        """Compiles `text` in the place of `source`. Whether that is possible."""
        command = list(self.commands[str(source)])
        if Path(command[0]).name == "ccache":
            del command[0]
        command[command.index("-o") + 1] = str(out)
        at = command.index("-c")
        command[at + 1] = "-"
        command[1:1] = ["-x", "c++", "-iquote", str(source.parent)]
        done = subprocess.run([*command, *COMPILE], cwd=self.folder, input=f'#line 1 "{source}"\n{text}', text=True,
                              capture_output=True, check=False)
        return done.returncode == 0

    def commands_with(self, source):
        """What to run for this source: the command lines of the test programs that contain its object."""
        if self.tests is None:
            self.tests = self.test_commands()
        return [words for words in self.tests if self.object_of(source) in self.inputs_of(words[0])]

    def test_commands(self):
        """The command lines of all tests that are programs of this build, as (name, argument...), each once."""
        tests = json.loads(subprocess.run(["ctest", "--show-only=json-v1"], cwd=self.folder, text=True, check=True,
                                          capture_output=True).stdout)["tests"]
        found = {}
        for test in tests:
            program, *arguments = test.get("command", [""])
            expected = any(p["name"] in ("PASS_REGULAR_EXPRESSION", "WILL_FAIL") for p in test.get("properties", []))
            if Path(program).parent == self.folder and Path(program).exists() and not expected:
                together = any(a.startswith("--gtest_filter") for a in arguments)
                found[(Path(program).name, *(["--gtest_fail_fast"] if together else arguments))] = True
        return sorted(found)

    def inputs_of(self, program):
        if program not in self.links:
            done = subprocess.run(["ninja", "-t", "inputs", program], cwd=self.folder, text=True, check=True,
                                  capture_output=True)
            self.links[program] = {shlex.split(line)[0] for line in done.stdout.splitlines() if line}
        return self.links[program]

    def link(self, program, source, replacement, out):
        """Links a test program with `replacement` in the place of the object of `source`."""
        lines = subprocess.run(["ninja", "-t", "commands", "-s", program], cwd=self.folder, text=True, check=True,
                               capture_output=True).stdout.splitlines()
        command = re.search(r"(\S*\+\+ .*?)(?: &&|$)", lines[-1].removeprefix(": && ")).group(1)
        words = [word for word in shlex.split(command) if word != self.object_of(source)]
        at = words.index("-o")
        words[at + 1] = str(out)
        # First, so that it counts before the member of an archive.
        words[at:at] = [str(replacement)]
        done = subprocess.run([*words, *LINK], cwd=self.folder, text=True, capture_output=True, check=False)
        return done.returncode == 0
