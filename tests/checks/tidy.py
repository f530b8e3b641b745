#!/usr/bin/env python3
"""Runs clang-tidy over the library, the virtual device and the tools (not over tests and generated code).

tidy.py SOURCE_DIR BUILD_DIR [--changed]

With --changed only the files that differ from the last commit, and those whose header does.

Nearly all of clang-tidy's time goes into the headers of libraries, so many files are looked at together, in one translation
unit that includes them all. Two files that name a thing of their own alike are in different batches. Where a batch has
findings, or where its files cannot stand together all the same, each half is looked at again, down to the single file,
which alone decides. The last line says how often that was so: each time costs as much as the batch.
"""

import os
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from compile_commands import commands_of, flags_of

LIBRARY = ("src",)
REST = ("vdevice", "switchd", "calls", "tools", "bench")
# The static analyzer is for the library alone: what it says of the rest is mostly about libraries.
MOST_TOGETHER = 60  # more would leave a processor without work at the end
NO_ANALYZER = "--checks=-clang-analyzer-*"
# The analyzer passes over what is included, and here everything is; including sources is what is done here.
TOGETHER = ("--header-filter=.*[.]cpp$", "--extra-arg=-Xclang", "--extra-arg=-analyzer-opt-analyze-headers")
# Each has a main() of another name, from which no exception may escape either.
MAINS = "  - key: bugprone-exception-escape.FunctionsThatShouldNotThrow\n    value: '{}'\n"
# A name that one source declares and another defines is no finding.
TOGETHER_CHECKS = "-bugprone-suspicious-include,-readability-redundant-declaration"


def sources(root, folder):
    return sorted(str(path) for path in (root / folder).rglob("*.cpp") if not path.name.endswith("_test.cpp") and path.parent.name != "testing")


def changed(root):
    """The files that differ from the last commit; of a header the source beside it."""
    listed = [subprocess.run(["git", "-C", str(root), *words], stdout=subprocess.PIPE, text=True, check=True).stdout
              for words in (["diff", "--name-only", "HEAD"], ["ls-files", "--others", "--exclude-standard"])]
    return {str((root / name).with_suffix(".cpp")) for name in "".join(listed).splitlines() if name.endswith((".cpp", ".h"))}


def names_at_the_margin(source):
    """What a source declares outside of classes and functions: two that declare one name cannot stand together. All of
    this project's sources are formatted alike, and other namespaces are no help: files use each other's."""
    names = set()
    for line in source.splitlines():
        declared = re.match(r"(?:enum class|enum|struct|class|using(?= \w+ =)) (\w+)|(?!namespace|static_assert|extern|using namespace)\w.*?([\w:~]+) *[({=;[]", line)
        if declared:
            names.add(declared[1] or declared[2])
        if qualified := re.match(r"\w[\w ]* (?:[a-z]\w*::)+(\w+)\(", line):  # int calls::forward_call(
            names.add(qualified[1])
    return {name for name in names if ":" not in name and name != "main"}


class Batch:
    """Files that are looked at together."""

    def __init__(self, alone):
        self.files = []
        self.names = set()
        self.full = alone

    def takes(self, names):
        return not self.full and not names & self.names

    def add(self, file, names):
        self.files.append(file)
        self.names |= names
        self.full = self.full or len(self.files) == MOST_TOGETHER


class Tidy:
    def __init__(self, root, build):
        self.root = root
        self.flags = {file: flags_of(words) for file, words in commands_of(build).items()}
        self.halved = 0

    def run(self, arguments):
        done = subprocess.run(["clang-tidy-14", "--quiet", "--warnings-as-errors=*", *arguments], cwd=self.root,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, check=False)
        return done.returncode == 0, done.stdout

    def flags_for(self, file):
        """A source that this build leaves out is looked at with the flags of one beside it."""
        beside = (flags for other, flags in self.flags.items() if Path(other).parent == Path(file).parent and not other.endswith("_test.cpp"))
        return self.flags.get(file) or next(beside, ())

    def flags_for_all(self, files):
        """Those of each file, once. A folder belongs to the -isystem before it."""
        flags = {}
        for file in files:
            words = iter(self.flags_for(file))
            flags.update(dict.fromkeys((word, next(words)) if word == "-isystem" else (word, ) for word in words))
        return [word for words in flags for word in words]

    def one(self, file, checks):
        clean, words = self.run([checks, file, "--", *self.flags_for(file)])
        return [] if clean else [words or f"clang-tidy fails on {file}\n"]

    def together(self, files, checks):
        with tempfile.TemporaryDirectory() as folder:
            unit = Path(folder, "together.cpp")
            unit.write_text("".join(f'#undef main\n#define main main_{number}\n#include "{file}"\n' for number, file in enumerate(files)))
            mains = ",".join(f"main_{number}" for number in range(len(files)))
            config = (self.root / ".clang-tidy").read_text().replace("CheckOptions:\n", "CheckOptions:\n" + MAINS.format(mains))
            clean, _ = self.run([*TOGETHER, f"{checks},{TOGETHER_CHECKS}", f"--config={config}", str(unit), "--",
                                 *self.flags_for_all(files)])
        return clean

    def findings(self, files, checks):
        if len(files) == 1:
            return self.one(files[0], checks)
        if self.together(files, checks):
            return []
        self.halved += 1
        half = len(files) // 2
        return self.findings(files[:half], checks) + self.findings(files[half:], checks)

    def batches(self, files):
        """Files that can stand together, in the order of their paths. One that this build leaves out is alone."""
        batches = []
        for file in files:
            own = names_at_the_margin(Path(file).read_text()) if file in self.flags else None
            batch = next((batch for batch in batches if own is not None and batch.takes(own)), None)
            if not batch:
                batch = Batch(own is None)
                batches.append(batch)
            batch.add(file, own or set())
        return [batch.files for batch in batches]


def main(root, build, only_changed):
    tidy = Tidy(root, build)
    wanted = changed(root) if only_changed else None
    work = []
    count = 0
    for folders, checks in ((LIBRARY, "--checks="), (REST, NO_ANALYZER)):
        files = [file for folder in folders for file in sources(root, folder)]
        if not files:
            sys.exit("no sources found")
        files = [file for file in files if wanted is None or file in wanted]
        count += len(files)
        work += [(batch, checks) for batch in tidy.batches(files)]
    work.sort(key=lambda item: -len(item[0]))
    with ThreadPoolExecutor(os.cpu_count()) as pool:
        findings = [words for found in pool.map(lambda item: tidy.findings(*item), work) for words in found]
    if findings:
        sys.exit("".join(findings))
    print(f"ok: {count} files are clean, {tidy.halved} of {len(work)} batches were halved")


if __name__ == "__main__":
    main(Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve(), "--changed" in sys.argv[3:])
