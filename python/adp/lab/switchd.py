"""adp-switchd on a device's CPU, with a run folder of its own."""

import json

from .builds import Build
from .process import kill
from .program import Program

PROGRAM = "adp-switchd"
CONFIGURATION = "switchd.toml"


class Switchd(Program):
    """A running adp-switchd. `configuration` is the text of its file."""

    def __init__(self, device, configuration="", build="host"):
        super().__init__(device.namespace, f"{PROGRAM} on the {device.name}", device.environment)
        self._build = Build(build)
        try:
            self.configuration = self.write(CONFIGURATION, configuration)
            self.restart()
        except BaseException:
            self.close()
            raise

    @property
    def programs(self):
        """The folder with the program."""
        return self._build.folder

    def command(self, *words):
        """The command line of the program with some words, for this daemon."""
        return self._build.command(PROGRAM, "--run-dir", self.folder, *words)

    def ask(self, *words):
        """Runs the program as a client of the daemon; gives what it printed."""
        return self.run(*self.command(*words))

    def status(self):
        """What `status --json` of the daemon answers."""
        return json.loads(self.ask("status", "--json"))

    def restart(self):
        """Starts the daemon, after kill() for instance, and waits until the chip is as the kernel wants it."""
        self.start(*self.command("--config", self.configuration), own_run=False)
        self.await_start(self._is_synced)

    def _is_synced(self):
        done = self.try_to_run(*self.command("status", "--json"))
        return done.returncode == 0 and json.loads(done.stdout)["state"]["synced"]

    def kill(self):
        """Kills the daemon, so that it cannot clean up."""
        while self._processes:
            kill(self._processes.pop())
