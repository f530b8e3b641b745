"""The commands of the page about containers, with podman's options for the tests in front of each."""

import os
import re
import shlex
import subprocess

from adp.lab.builds import ROOT
from container import options

PAGE = ROOT / "docs/how-to/run-in-containers.md"
SECONDS = 120
PODMAN = """#!/bin/sh
if [ "$1" = run ]; then
    shift
    set -- run {options} "$@"
fi
exec {podman} "$@"
"""


def test_the_commands_of_the_page_work(engine, tmp_path):
    shell = tmp_path / "podman"
    shell.write_text(PODMAN.format(options=shlex.join(options()), podman=shlex.join(engine.command())))
    shell.chmod(0o755)
    blocks = re.findall(r"^```bash\n(.*?)^```$", PAGE.read_text(encoding="utf-8"), re.M | re.S)
    assert len(blocks) == 2
    environment = {**os.environ, "PATH": f"{tmp_path}:{os.environ['PATH']}"}
    done = subprocess.run(["bash", "-eu", "-c", "\n".join(blocks)], cwd=tmp_path, env=environment, capture_output=True,
                          text=True, timeout=SECONDS, check=False)
    assert done.returncode == 0, done.stdout + done.stderr
    for text in ("1 received", "untagged = {2}", "run-device: ready"):
        assert text in done.stdout + done.stderr
