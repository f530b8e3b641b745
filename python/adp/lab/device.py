"""One virtual device: its daemon, its control program, and the CPU's side of it, in a namespace of its own."""

import contextlib
import json
import os
import shutil
import signal
import socket
import subprocess
import tempfile
import threading

from .netns import NetNamespace
from .nic import Nic
from .problem import LabError
from .process import LineReader, kill, poll_until, stop, tied

READY_SECONDS = 20.0
READY_LINE = "vdeviced: ready"
CONTROL_SECONDS = 10.0
FIRST_PHYSICAL_PORT = 4
CPU_PORT = 0
CPU_INTERFACE = "eth0"


def host_interface(port):
    """Name of the host's end of a user port's cable."""
    return f"host{port}"


class Device:
    """A device that is switched on. Its cables' far ends, host1 .. hostN, are in its namespace, for hosts to take."""

    def __init__(self, build, user_ports=26, name="device"):
        self._describe(build, user_ports, name)
        self.run_dir = tempfile.mkdtemp(prefix="vdevice-")
        try:
            self.namespace = NetNamespace(name)
            self._start("--create-interfaces")
            self.cpu = Nic(self.namespace, CPU_INTERFACE)
        except BaseException:
            self.close()
            raise

    def _describe(self, build, user_ports, name):
        self.name = name
        self.user_ports = user_ports
        self._build = build
        self._daemon = None

    @property
    def environment(self):
        """The environment in which this device's drivers find it."""
        return {**os.environ, "VDEVICE_DIR": self.run_dir}

    def physical(self, port):
        """Physical port of a user port on the default board."""
        return port + FIRST_PHYSICAL_PORT - 1

    def popen(self, command, namespace=None, **options):
        """Starts a program on the device's CPU, or in another namespace with this device as its own."""
        with (namespace or self.namespace).entered():
            return subprocess.Popen(tied(command), env=self.environment, **options)

    @property
    def control_program(self):
        """Path of the vdevctl of the device's build."""
        return str(self._build.path_of("vdevctl"))

    def control(self, *words):
        """What `vdevctl` answers, as JSON."""
        said = self.run_control("--run-dir", self.run_dir, "--json", *words).stdout
        return json.loads(said) if said.strip() else None

    def run_control(self, *words):
        """Runs `vdevctl`, which must succeed."""
        command = self._build.command("vdevctl", *words)
        done = subprocess.run(command, capture_output=True, text=True, timeout=CONTROL_SECONDS)
        if done.returncode != 0:
            raise LabError(f"'vdevctl {' '.join(map(str, words))}' failed: {done.stderr.strip()}")
        return done

    def connect(self, command, **options):
        """A connection to the control socket on which this was asked."""
        connection = socket.socket(socket.AF_UNIX)
        try:
            connection.settimeout(CONTROL_SECONDS)
            connection.connect(os.path.join(self.run_dir, "control"))
            connection.sendall(json.dumps({"command": command, **options}).encode() + b"\n")
        except OSError:
            connection.close()
            raise
        return connection

    def ask(self, command, **options):
        """The device's answer, without the delay of starting vdevctl."""
        try:
            with self.connect(command, **options) as connection:
                return json.loads(LineReader(connection).line(CONTROL_SECONDS, self.name))
        except OSError as problem:
            raise LabError(f"{self.name} cannot be asked '{command}': {problem}") from None

    def links(self):
        """The ports whose link is up; the CPU port is number 0."""
        return {port["port"] for port in self.ask("ports")["ports"] if port["link"]}

    def cable(self, port, **conditions):
        """Makes a user port's cable a bad one, cable(3, loss="5%", seed=7), or without conditions a good one again."""
        answer = self.ask("cable", port=port, **(conditions or {"clear": True}))
        if "error" in answer:
            raise LabError(f"{self.name} does not take this cable: {answer['error']}")

    def await_links(self, ports, seconds=READY_SECONDS):
        """Waits until the CPU port and exactly these user ports have a link."""
        wanted = {CPU_PORT, *ports}
        poll_until(lambda: self.links() == wanted, seconds, f"A link on exactly the ports {sorted(wanted)}")

    def pause(self):
        """Stops the daemon with SIGSTOP. Only crash() can follow."""
        self._daemon.send_signal(signal.SIGSTOP)

    @contextlib.contextmanager
    def standing_still(self, seconds):
        """The daemon is stopped, for no longer than so many seconds."""
        self._daemon.send_signal(signal.SIGSTOP)
        end = threading.Timer(seconds, self._daemon.send_signal, [signal.SIGCONT])
        end.start()
        try:
            yield
        finally:
            end.cancel()
            end.join()
            self._daemon.send_signal(signal.SIGCONT)

    def crash(self):
        """Kills the daemon as a power failure would, leaving the cables where they are."""
        kill(self._daemon)

    def is_on(self):
        """Whether the daemon runs."""
        return self._daemon.poll() is None

    @property
    def pid(self):
        """Process id of the daemon, which changes with each restart."""
        return self._daemon.pid

    def end(self):
        """Switches the device off; gives the daemon's exit status."""
        return stop(self._daemon)

    def restart(self):
        """Starts the daemon again on the same cables after a crash."""
        self.crash()
        self._start()

    def close(self):
        if self._daemon:
            stop(self._daemon)
        if hasattr(self, "cpu"):
            self.cpu.close()
        if hasattr(self, "namespace"):
            self.namespace.close()
        shutil.rmtree(self.run_dir, ignore_errors=True)

    def command(self, *options):
        """The daemon's command line."""
        return self._build.command("vdeviced", "--run-dir", self.run_dir, "--user-ports", self.user_ports, *options)

    def _start(self, *options):
        with open(os.path.join(self.run_dir, "vdeviced.err"), "ab") as errors:
            self._daemon = self.popen(self.command(*options), stdout=subprocess.PIPE, stderr=errors)
        try:
            line = LineReader(self._daemon.stdout).line(READY_SECONDS, "vdeviced")
        except LabError as problem:
            raise LabError(f"{problem} {self.errors()}") from None
        if line != READY_LINE:
            raise LabError(f"vdeviced said {line!r} instead of {READY_LINE!r}. {self.errors()}")

    def errors(self):
        """What the daemon has written on standard error."""
        with open(os.path.join(self.run_dir, "vdeviced.err"), encoding="utf-8", errors="replace") as errors:
            return errors.read().strip()
