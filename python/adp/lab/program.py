"""A program of another project in a namespace, with a folder and a /run of its own; ended by its process id.

What it says goes into a file, which is kept after its end for those who explain a failure.
"""

import contextlib
import os
import shutil
import signal
import subprocess
import tempfile
from typing import ClassVar

from .problem import LabError
from .process import poll_until, stop, tied

ANSWER_SECONDS = 20.0
START_SECONDS = 20.0
SYSTEM_PATH = "/usr/sbin:/usr/bin:/sbin:/bin:/usr/lib/frr"
LOG_CHARACTERS = 6000
# Daemons expect folders of theirs in /run, which must exist, and two of a kind must not meet there. FRR's are run as
# root, since an ordinary user's namespace has no other users; root must be in a group for that.
OWN_RUN = """\
mount -t tmpfs tmpfs /run && mkdir -p /run/lldpd /run/frr /run/openvswitch &&
sed 's/^frrvty:x:[0-9]*:/&root,/' /etc/group >/run/group && mount --bind /run/group /etc/group &&
exec "$0" "$@"
"""


def path_of(program):
    """Where a program is; None if it is not installed."""
    return shutil.which(program, path=SYSTEM_PATH)


def installed(program):
    """The path of a program that must be installed."""
    path = path_of(program)
    if not path:
        raise LabError(f"{program} is not installed. 'script/setup daemons' installs it, as root.")
    return path


class Program:
    """One or more processes that work together, named for people."""

    said: ClassVar[dict] = {}  # {name: log} of the programs that have ended
    running: ClassVar[list] = []

    def __init__(self, namespace, name, environment=None):
        self.namespace = namespace
        self.name = name
        self._environment = {**(environment or os.environ), "PATH": SYSTEM_PATH}
        self.folder = tempfile.mkdtemp(prefix="adp-daemon-")
        self._processes = []
        Program.running.append(self)

    def path(self, name):
        """A file in the program's folder."""
        return os.path.join(self.folder, name)

    def write(self, name, text, mode=0o600):
        """Writes a file in the program's folder; gives its path."""
        path = self.path(name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        os.chmod(path, mode)
        return path

    def start(self, *command, own_run=True):
        """Starts a process, which must stay in the foreground."""
        words = [installed(command[0]), *command[1:]]
        if own_run:
            words = ["unshare", "--mount", "sh", "-c", OWN_RUN, *words]
        with open(self.path("log"), "ab") as log, self.namespace.entered():
            process = subprocess.Popen(
                tied(words), stdin=subprocess.DEVNULL, stdout=log, stderr=log, env=self._environment
            )
        self._processes.append(process)
        return process

    def try_to_run(self, *command):
        """Runs a program to its end in the namespace, such as the one that asks a daemon."""
        with self.namespace.entered():
            return subprocess.run(
                [installed(command[0]), *map(str, command[1:])],
                capture_output=True,
                text=True,
                timeout=ANSWER_SECONDS,
                env=self._environment,
            )

    def run(self, *command):
        """The same, which must succeed; gives what it printed."""
        done = self.try_to_run(*command)
        if done.returncode != 0:
            raise LabError(f"{self.name}: '{' '.join(map(str, command))}' failed: {done.stderr or done.stdout}")
        return done.stdout

    def await_start(self, condition):
        """Waits until the program does what it is for; if it ends instead, the error says its last words."""
        poll_until(lambda: self._fails() or condition(), START_SECONDS, f"The start of {self.name}", 0.05)

    def _fails(self):
        for process in self._processes:
            if process.poll() is not None:
                raise LabError(f"{self.name} has ended with status {process.returncode}. It wrote: {self.log()}")

    def answers(self, *command):
        """Whether a program that asks it succeeds."""
        return self.try_to_run(*command).returncode == 0

    def is_alive(self):
        """Whether all of its processes run."""
        return all(process.poll() is None for process in self._processes)

    @contextlib.contextmanager
    def standing_still(self):
        """The process that was started last is stopped, and goes on afterwards."""
        process = self._processes[-1]
        process.send_signal(signal.SIGSTOP)
        try:
            yield
        finally:
            process.send_signal(signal.SIGCONT)

    def log(self):
        """The end of what the program has written."""
        with open(self.path("log"), encoding="utf-8", errors="replace") as log:
            return log.read()[-LOG_CHARACTERS:].strip()

    def end_processes(self):
        while self._processes:
            stop(self._processes.pop())

    def close(self):
        self.end_processes()
        if self in Program.running:
            Program.running.remove(self)
            Program.said[self.name] = self.log() if os.path.exists(self.path("log")) else ""
            shutil.rmtree(self.folder, ignore_errors=True)
