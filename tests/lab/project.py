"""Another project with packet tests: a folder outside the tree, and pytest in it."""

import os
import shutil
import subprocess
import sys
import tomllib

from adp.lab.builds import ROOT

SECONDS = 120
BY_NAME = ("-p", "adp.testing.plugin")
PYTEST = (sys.executable, "-B", "-m", "pytest", "-p", "no:cacheprovider", "-rs")
# An ordinary user's number; who is one already stays the same.
NOBODY = 65534


class Project:
    """A folder with tests, three hosts wide."""

    def __init__(self, folder):
        self.folder = folder
        self.write("pytest.ini", "[pytest]\nadp_hosts = 1-3\naddopts = --strict-markers\n")

    def write(self, name, text):
        (self.folder / name).write_text(text, encoding="utf-8")

    def run(self, *options, prefix=(), status=0, loaded=BY_NAME, **variables):
        """What pytest prints."""
        environment = {"PYTHONPATH": str(ROOT / "python"), "HOME": str(self.folder), "COLUMNS": "120", **variables}
        done = subprocess.run(
            [*prefix, *PYTEST, *loaded, *options],
            cwd=self.folder,
            env={**os.environ, **environment},
            capture_output=True,
            text=True,
            timeout=SECONDS,
        )
        assert done.returncode == status, done.stdout + done.stderr
        return done.stdout + done.stderr


def as_nobody():
    """The start of a command line that an ordinary user runs."""
    prefix = ("setpriv", f"--reuid={NOBODY}", f"--regid={NOBODY}", "--clear-groups")
    return prefix if subprocess.run([*prefix, "true"], capture_output=True).returncode == 0 else ()


def installed_at(folder):
    """Installs the package, but for what only pip makes."""
    shutil.copytree(ROOT / "python" / "adp", folder / "adp", ignore=shutil.ignore_patterns("__pycache__"))
    entry_points = tomllib.loads((ROOT / "python" / "pyproject.toml").read_text())["project"]["entry-points"]["pytest11"]
    information = folder / "adp-0.dist-info"
    information.mkdir()
    (information / "METADATA").write_text("Metadata-Version: 2.1\nName: adp\nVersion: 0\n")
    lines = [f"{name} = {place}" for name, place in entry_points.items()]
    (information / "entry_points.txt").write_text("\n".join(["[pytest11]", *lines, ""]))
