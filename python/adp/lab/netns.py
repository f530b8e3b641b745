"""Network namespaces, made and entered by the calling thread.

A namespace exists as long as the bench holds its descriptor. Each has a holder process, so that `nsenter --target PID`
can enter it; the holder ends when the bench does, however that happens.
"""

import contextlib
import ctypes
import json
import os
import subprocess

from .problem import LabError
from .process import stop

CLONE_NEWNET = 0x40000000
THREAD_NETNS = "/proc/thread-self/ns/net"
_libc = ctypes.CDLL(None, use_errno=True)


def _system(call, *arguments):
    if getattr(_libc, call)(*arguments) != 0:
        raise LabError(
            f"The system refuses a network namespace ({call}: {os.strerror(ctypes.get_errno())}). "
            "Run as root, or as an ordinary user through 'python3 -m adp.lab.isolate'."
        )


def _open_current():
    return os.open(THREAD_NETNS, os.O_RDONLY | os.O_CLOEXEC)


class NetNamespace:
    """One network namespace with its loopback up. IPv6 is off, since what hosts say on their own would disturb
    measurements; with `ipv6` it is on, without router solicitations and with addresses that can be used at once.
    """

    def __init__(self, name, ipv6=False):
        self.name = name
        self.has_ipv6 = ipv6
        home = _open_current()
        try:
            _system("unshare", CLONE_NEWNET)
            try:
                self._fd = _open_current()
            finally:
                _system("setns", home, CLONE_NEWNET)
        finally:
            os.close(home)
        with self.entered():
            self._set_ipv6("disable_ipv6", int(not ipv6))
            for setting in ("accept_dad", "router_solicitations"):
                self._set_ipv6(setting, 0)
        self.holder = None
        self.hold()
        self.ip("link set lo up")

    def hold(self):
        """Starts the holder process, unless it runs."""
        if self.holder is None or self.holder.poll() is not None:
            with self.entered():
                self.holder = subprocess.Popen(["cat"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)

    @property
    def holder_pid(self):
        """Process id by which other programs enter the namespace."""
        return self.holder.pid

    @property
    def descriptor(self):
        """Descriptor of the namespace in this process, by which others enter it through /proc, holder or not."""
        return self._fd

    @contextlib.contextmanager
    def entered(self):
        """Puts the calling thread into the namespace; sockets opened and processes started inside belong to it."""
        home = _open_current()
        try:
            _system("setns", self._fd, CLONE_NEWNET)
            try:
                yield self
            finally:
                _system("setns", home, CLONE_NEWNET)
        finally:
            os.close(home)

    def ip(self, *lines):
        """Runs lines of the `ip` program inside, in one batch; the first failure is an error. Gives what it printed."""
        command = ["ip", "-json", "-batch", "-"]
        with self.entered():
            done = subprocess.run(command, input="\n".join(lines) + "\n", capture_output=True, text=True, timeout=30)
        if done.returncode != 0:
            raise LabError(f"In {self.name}, 'ip {lines[0]}' and what follows failed: {done.stderr.strip()}")
        return done.stdout

    def run(self, *command):
        """Runs another tool inside, such as `bridge`, which must succeed. Gives what it printed."""
        with self.entered():
            done = subprocess.run(command, capture_output=True, text=True, timeout=30)
        if done.returncode != 0:
            raise LabError(f"In {self.name}, '{' '.join(command)}' failed: {done.stderr.strip()}")
        return done.stdout

    def is_operational(self, interface):
        """Whether the kernel passes frames to the interface: it is up, has a carrier, and was told so."""
        return json.loads(self.ip(f"link show dev {interface}"))[0]["operstate"] == "UP"

    def mac_of(self, interface):
        """The MAC address of an interface, in colon form."""
        return json.loads(self.ip(f"link show dev {interface}"))[0]["address"]

    def close(self):
        stop(self.holder)
        os.close(self._fd)

    @staticmethod
    def _set_ipv6(name, value):
        for scope in ("all", "default"):
            path = f"/proc/sys/net/ipv6/conf/{scope}/{name}"
            with contextlib.suppress(FileNotFoundError), open(path, "w", encoding="ascii") as setting:
                setting.write(str(value))
