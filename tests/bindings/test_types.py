"""The bindings' types: mypy finds nothing in the package and in a use of it, and every mistake in a misuse."""
import os
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
PACKAGE = HERE.parents[1] / "python"
CACHE = pathlib.Path(os.environ.get("ADP_BUILD", HERE.parents[1] / "build" / "host")) / "mypy"


def complaints(*arguments):
    done = subprocess.run([sys.executable, "-m", "mypy", "--strict", "--no-error-summary", "--cache-dir", CACHE, *arguments],
                          cwd=PACKAGE, env={**os.environ, "MYPYPATH": str(PACKAGE)}, capture_output=True, text=True,
                          timeout=100, check=False)
    assert done.stderr == ""
    return done.stdout.splitlines()


def test_package_and_use_are_typed():
    assert complaints("-p", "adp.bindings", "-p", "adp.calls") == complaints(HERE / "use.py") == []


def test_every_mistake_is_found():
    lines = (HERE / "misuse.py").read_text(encoding="utf-8").splitlines()
    wrong = {number for number, text in enumerate(lines, 1) if text and number > lines.index("import adp") + 1}
    found = {int(re.search(r"misuse\.py:(\d+): error", line)[1]) for line in complaints(HERE / "misuse.py") if "error" in line}
    assert found == wrong and len(wrong) > 10
