"""Runs the commands of the documents and compares their output: commands.py SOURCE_DIR BUILD_DIR [host|mips]

A block that begins with ```sh run is run (```sh run mips: with the target's build); a ```text output block after it is
what must be printed, `...` standing for anything. A block with file=PATH is a file that the commands find. Readers do not
see these words. All blocks of a page are run by one shell in a network namespace of its own, in a folder that shows the
project's tree and a build folder of its own.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass

SECONDS = 60
AT_ONCE = 4
FENCE = re.compile(r"^```(\w+) ([^\n]+)\n(.*?)^```$", re.M | re.S)
MARK = "@@ end of block"
PROLOGUE = "set -u; trap 'kill $(jobs -p) 2>/dev/null' EXIT\n"


@dataclass
class Block:
    line: int
    text: str
    output: str = None  # what must be printed; None: anything


def blocks_of(page, build):
    """The files {path: text} and blocks of a page that belong to a build."""
    files, blocks, last = {}, [], None
    for match in FENCE.finditer(page):
        language, words, text = match[1], match[2].split(), match[3]
        if language == "sh" and words[0] == "run":
            last = Block(page[: match.start()].count("\n") + 1, text) if (words[1:] or ["host"]) == [build] else None
            blocks += [last] if last else []
        elif words[0].startswith("file=build/"):
            files[words[0].removeprefix("file=")] = text
        elif words == ["output"]:
            if last:
                last.output = text
            last = None
        else:
            raise ValueError(f"unknown words behind ```{language}: {' '.join(words)}")
    return files, blocks


def agrees(printed, wanted):
    """Whether the output is the one wanted, in which `...` stands for anything."""
    pattern = ".*".join(map(re.escape, wanted.strip().split("...")))
    return re.fullmatch(pattern, printed.strip(), re.S) is not None


def make_tree(folder, root, builds):
    for entry in root.iterdir():
        if entry.name not in (".git", "build"):
            (folder / entry.name).symlink_to(entry)
    (folder / "build").mkdir()
    for build in builds:
        (folder / "build" / build.name).symlink_to(build)


def run(blocks, folder, root):
    """(output, exit status) of each block that was reached."""
    end = f'printf "\\n{MARK} %d\\n" $?\n'
    script = PROLOGUE + "".join(block.text + end for block in blocks)
    command = [sys.executable, "-m", "adp.lab.isolate", "timeout", str(SECONDS), "bash", "-c", script]
    environment = {**os.environ, "PYTHONPATH": str(root / "python"), "PYTHONDONTWRITEBYTECODE": "1",
                   "VDEVICE_DIR": str(folder / "run"), "ADP_LAB_DIR": str(folder / "labs")}
    done = subprocess.run(command, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    parts = re.split(rf"\n{MARK} (\d+)\n", done.stdout)
    return list(zip(parts[0::2], map(int, parts[1::2])))


def complaint(block, result):
    """What is wrong with a block's result, or nothing. Without an output to compare it must succeed."""
    if result is None:
        return "was not reached"
    printed, status = result
    if block.output is None:
        return f"ended with {status}:\n{printed.strip()}" if status else None
    return None if agrees(printed, block.output) else f"printed\n{printed.strip()}\ninstead of\n{block.output.strip()}"


def complaints_of(path, root, builds, build):
    """What is wrong with a page, and how many blocks it has."""
    files, blocks = blocks_of(path.read_text(encoding="utf-8"), build)
    if not blocks:
        return [], 0
    with tempfile.TemporaryDirectory(prefix="commands-") as name:
        folder = pathlib.Path(name)
        make_tree(folder, root, builds)
        for file, text in files.items():
            (folder / file).write_text(text, encoding="utf-8")
        results = run(blocks, folder, root)
    results += [None] * (len(blocks) - len(results))
    found = [(block, complaint(block, result)) for block, result in zip(blocks, results)]
    return [f"{path.relative_to(root)}:{block.line}: {text}" for block, text in found if text], len(blocks)


def pages(root):
    return [*sorted(root.glob("*.md")), *sorted((root / "docs").rglob("*.md"))]


def main(source, binary, build):
    root, count, found = pathlib.Path(source), 0, []
    # The target's programs need the host's device.
    builds = [pathlib.Path(binary), *([] if build == "host" else [root / "build" / "host"])]
    with ThreadPoolExecutor(AT_ONCE) as pool:  # they wait for most of their time
        for complaints, blocks in pool.map(lambda page: complaints_of(page, root, builds, build), pages(root)):
            found += complaints
            count += blocks
    if count == 0:
        found = [f"the documents have no commands for {build}"]
    print("\n".join(found) or f"ok: {count} blocks of commands do what the documents say")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
