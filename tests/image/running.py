"""What a device in a container and one in a process have in common."""

import subprocess

from adp.lab.process import poll_until

SECONDS = 20.0
READY = "run-device: ready\n"


class Running:
    """A device that can be started, and again after it has ended: what it says, and commands inside."""

    def __init__(self):
        self._starts = 0

    def start(self):
        """Starts it and does not wait."""
        self._starts += 1
        self._start()

    def await_ready(self):
        """Waits until its programs run."""
        poll_until(lambda: self.log().count(READY) == self._starts or not self.is_running(), SECONDS, "The start")
        assert self.is_running(), self.log()

    def run(self, *command):
        """Runs a command inside, which must succeed; gives what it printed."""
        done = subprocess.run(self.inside(*command), capture_output=True, text=True, timeout=SECONDS, check=False)
        assert done.returncode == 0, f"{command}: {done.stdout}{done.stderr}{self.log()}"
        return done.stdout

    def await_output(self, text, *command):
        """Runs a command inside until it prints this."""
        poll_until(lambda: text in self.run(*command), SECONDS, f"'{text}' from {command}")
