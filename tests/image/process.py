"""A device whose first process runs in namespaces as a container has them, with the programs of build/host."""

import os
import signal
import subprocess

from adp.lab.builds import ROOT
from adp.lab.netns import NetNamespace
from adp.lab.process import kill, tied
from running import SECONDS, Running

IMAGE = ROOT / "image"
RUN_DEVICE = 'mount -t tmpfs tmpfs /run && exec "$0" "$@"'


class Process(Running):
    def __init__(self, etc):
        super().__init__()
        self.etc = etc
        self._log = etc.with_suffix(".log")
        self._namespace = None
        self._process = None
        path = f"{IMAGE}:{ROOT / 'build/host'}:{os.environ['PATH']}"
        self._environment = {**os.environ, "PATH": path, "ADP_ETC": str(etc), "VDEVICE_DIR": "/run/vdeviced"}
        if not (etc / "vdeviced.toml").exists():
            (etc / "vdeviced.toml").write_bytes((IMAGE / "vdeviced.toml").read_bytes())

    def _start(self):
        self._close_namespace()
        self._namespace = NetNamespace("device")
        command = ["unshare", "--mount", "--pid", "--fork", "--kill-child", "--mount-proc", "sh", "-c", RUN_DEVICE]
        with self._namespace.entered(), open(self._log, "ab") as log:
            self._process = subprocess.Popen(
                tied([*command, IMAGE / "run-device"]), env=self._environment, stdout=log, stderr=log
            )

    @property
    def pid(self):
        """Process id of the device's first process, as it is outside."""
        with open(f"/proc/{self._process.pid}/task/{self._process.pid}/children", encoding="ascii") as children:
            return int(children.read())

    def is_running(self):
        return self._process.poll() is None

    def inside(self, *command):
        """The command line that runs a command inside."""
        variables = [f"{name}={self._environment[name]}" for name in ("PATH", "VDEVICE_DIR")]
        return ["nsenter", f"--target={self.pid}", "--mount", "--pid", "--net", "env", *variables, *command]

    def log(self):
        return self._log.read_text(encoding="utf-8")

    def signal(self, name):
        """Sends a signal to the first process."""
        os.kill(self.pid, getattr(signal, f"SIG{name}"))

    def wait(self):
        """Waits for the end, and gives the status."""
        return self._process.wait(SECONDS)

    def stop(self):
        """Ends it as an engine does, and gives the status."""
        self.signal("TERM")
        return self.wait()

    def _close_namespace(self):
        if self._namespace:
            self._namespace.close()

    def close(self):
        if self._process:
            kill(self._process)
        self._close_namespace()
