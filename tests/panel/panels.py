"""A lab of two devices, and servers of the panel for it."""

import contextlib
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile

from adp.lab.builds import native_build
from adp.lab.process import LineReader, poll_until, stop

SECONDS = 60
TOPOLOGY = """\
name: lab
topology:
  nodes:
    sw1: {kind: adp}
    sw2: {kind: adp}
    h1: {kind: linux, exec: ["ip address add 10.0.0.1/24 dev eth1"]}
    h2: {kind: linux, exec: ["ip address add 10.0.0.2/24 dev eth1"]}
    h3: {kind: linux, exec: ["ip address add 10.0.0.3/24 dev eth1"]}
    h4: {kind: linux, exec: ["ip address add 10.0.0.4/24 dev eth1"]}
  links:
    - endpoints: ["sw1:eth1", "h1:eth1"]
    - endpoints: ["sw1:eth2", "h2:eth1"]
    - endpoints: ["sw2:eth1", "h3:eth1"]
    - endpoints: ["sw2:eth2", "h4:eth1"]
    - endpoints: ["sw1:eth25", "sw2:eth25"]
"""
DEVICES = ("sw1", "sw2")
ADDRESS = re.compile(r"http://\S+/\S+")


def module(name, *words):
    """The command line of a program of the package."""
    return [sys.executable, "-B", "-m", name, *map(str, words)]


class PanelLab:
    """A lab, as adp-lab starts it, in a folder of its own."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.environment = {name: value for name, value in os.environ.items() if name != "ADP_LAB"}
        self.environment["ADP_LAB_DIR"] = str(self.folder / "labs")

    def run(self, command, text=""):
        """Runs a command, which must succeed; gives what it printed."""
        done = subprocess.run(
            list(map(str, command)),
            input=text,
            capture_output=True,
            text=True,
            timeout=SECONDS,
            env=self.environment,
            check=False,
        )
        assert done.returncode == 0, (command, done.returncode, done.stdout, done.stderr)
        return done.stdout

    def do(self, *words, text=""):
        """adp-lab with these words."""
        return self.run(module("adp.lab.command", *words), text)

    def exec(self, node, *command, text=""):
        """What a command on a node prints."""
        return self.do("exec", node, "--", *command, text=text)

    def adpsh(self, device, *lines):
        """What the library's shell on a device says to these lines."""
        return self.do("adpsh", device, "--map", *lines)

    def run_folder(self, device):
        return next((self.folder / "labs").glob(f"*/nodes/{device}"))

    def vdevctl(self, device, *words):
        """What vdevctl says of a device; without the way through adp-lab."""
        return self.run([native_build().path_of("vdevctl"), f"--run-dir={self.run_folder(device)}", *words])

    def ask(self, device, *words):
        """The same, from JSON."""
        return json.loads(self.vdevctl(device, *words, "--json"))

    def wait(self, condition, what):
        return poll_until(condition, SECONDS, what)

    def is_linked(self, device, port):
        """Whether a port has a link."""
        return next(row["link"] for row in self.ask(device, "ports")["ports"] if row["port"] == port)

    def kill(self, device):
        """The device's process ends at once."""
        record = next(each for each in json.loads(self.do("ps", "--json")))
        pid = record["nodes"][device]["processes"]["vdeviced"]["pid"]
        self.exec(device, "kill", "-9", pid)

    def restart(self, device):
        """Starts a device again, as it was switched on for the first time."""
        self.do("restart", device)

    def close(self):
        self.do("down", "--all")


@contextlib.contextmanager
def lab_of(topology=TOPOLOGY):
    """A lab that is up, from the text of a topology file or its path."""
    with tempfile.TemporaryDirectory(prefix="panel-") as folder:
        lab = PanelLab(folder)
        if isinstance(topology, str):
            path = lab.folder / "lab.clab.yml"
            path.write_text(topology, encoding="utf-8")
        lab.do("up", path if isinstance(topology, str) else topology)
        try:
            yield lab
        finally:
            lab.close()


class Outside:
    """Where a server runs that is told its devices: as the caller."""

    environment = None


class Server:
    """A server of the panel."""

    def __init__(self, lab, *words):
        self._log = tempfile.TemporaryFile("w+")
        self.process = subprocess.Popen(
            module("adp.panel", *words), stdout=subprocess.PIPE, stderr=self._log, env=lab.environment
        )
        try:
            self.url = self._address()
        except BaseException:
            self.close()
            raise

    def _address(self):
        lines = LineReader(self.process.stdout)
        while True:
            if found := ADDRESS.search(lines.line(SECONDS, f"adp-panel ({self.said()})")):
                return found.group()

    def said(self):
        """What it has written to its standard error."""
        self._log.seek(0)
        return self._log.read()

    def close(self):
        stop(self.process)
        self._log.close()


@contextlib.contextmanager
def server_of(lab, *words):
    server = Server(lab, *words)
    try:
        yield server
    finally:
        server.close()
