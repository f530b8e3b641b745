"""An interface of this machine that is cabled to a board's port, and in use for tests alone."""

import contextlib
import errno
import fcntl
import json
import socket
import struct
import subprocess

from .nic import SOL_PACKET, Nic
from .offload import offloads_of, set_offloads
from .problem import LabError

SIOCGIFFLAGS, SIOCSIFFLAGS = 0x8913, 0x8914
IFF_UP, IFF_RUNNING = 0x1, 0x40
FLAGS = struct.Struct("16sH22x")
PACKET_ADD_MEMBERSHIP = 1
PACKET_MR_PROMISC = 1
MEMBERSHIP = struct.Struct("=iHH8s")
SO_RCVBUFFORCE = 33
# What a board says on its own waits here between two tests.
RECEIVE_BUFFER_BYTES = 1 << 24
MOST_FRAMES = 1 << 18
IP_SECONDS = 10.0


class Here:
    """The namespace that the program is in."""

    @contextlib.contextmanager
    def entered(self):
        yield self


class BoardNic(Nic):
    """An interface in promiscuous mode for as long as this is open: the kernel ends the mode with the socket."""

    def __init__(self, interface):
        super().__init__(Here(), interface)
        self._index = socket.if_nametoindex(interface)
        try:
            membership = MEMBERSHIP.pack(self._index, PACKET_MR_PROMISC, 0, b"")
            self._socket.setsockopt(SOL_PACKET, PACKET_ADD_MEMBERSHIP, membership)
            with contextlib.suppress(PermissionError):
                self._socket.setsockopt(socket.SOL_SOCKET, SO_RCVBUFFORCE, RECEIVE_BUFFER_BYTES)
        except BaseException:
            self.close()
            raise

    def is_there(self):
        """Whether the interface is the one that was opened, and not another of its name."""
        with contextlib.suppress(OSError):
            return socket.if_nametoindex(self.interface) == self._index
        return False

    def forget(self):
        """Drops what has arrived, and the count of what was lost."""
        self.waiting(MOST_FRAMES)
        self.overrun()
        self._overrun = 0


class BoardPort:
    """A user port's cable to an interface of this machine. The interface is up and has no offloads meanwhile."""

    def __init__(self, port, interface, force=False):
        self.port = port
        self.interface = interface
        self.place = f"The interface {interface} at port {port}"
        check_use(interface, force)
        with contextlib.ExitStack() as stack, self._problems_told():
            stack.callback(self._restore, flags_of(interface), offloads_of(interface))
            self.raise_link()
            self.nic = stack.enter_context(contextlib.closing(BoardNic(interface)))
            self._opened = stack.pop_all()

    def send(self, frame):
        with self._problems_told():
            self.nic.send(frame)

    def receive(self, marker, seconds=3.0):
        frame = self.nic.receive(marker, seconds)
        if frame is None:
            self.check()
        return frame

    def raise_link(self):
        """Switches the interface on."""
        set_flags(self.interface, flags_of(self.interface) | IFF_UP)

    def has_link(self):
        with self._problems_told():
            return bool(flags_of(self.interface) & IFF_RUNNING)

    def check(self):
        """The interface must be there still, and have kept all frames, for what has arrived to be all."""
        if not self.nic.is_there():
            raise LabError(f"{self.place} is gone.")
        lost = self.nic.overrun()
        if lost:
            raise LabError(f"{self.place} had more frames than could wait; {lost} were lost on this machine.")

    def forget(self):
        self.nic.forget()

    def close(self):
        self._opened.close()

    def _restore(self, flags, offloads):
        # An interface that is gone has nothing to restore.
        with contextlib.suppress(OSError):
            set_offloads(self.interface, offloads)
            set_flags(self.interface, flags)

    @contextlib.contextmanager
    def _problems_told(self):
        try:
            yield
        except PermissionError:
            raise LabError(f"{self.place} can be used by root only.") from None
        except OSError as problem:
            gone = problem.errno in (errno.ENODEV, errno.ENXIO)
            raise LabError(f"{self.place} " + ("is gone." if gone else f"fails: {problem.strerror}.")) from None


def check_use(interface, force):
    """Frames of a test may go to no network that serves anybody else."""
    done = subprocess.run(
        ["ip", "-json", "address", "show", "dev", interface], capture_output=True, text=True, timeout=IP_SECONDS
    )
    if done.returncode != 0:
        raise LabError(f"There is no interface {interface} here.")
    shown = json.loads(done.stdout)[0]
    if "LOOPBACK" in shown["flags"]:
        raise LabError(f"The interface {interface} is the loopback, which has no cable.")
    addresses = [address["local"] for address in shown.get("addr_info", ()) if address.get("scope") == "global"]
    use = f"the address {addresses[0]}" if addresses else f"a place in {shown['master']}" if "master" in shown else ""
    if use and not force:
        raise LabError(
            f"The interface {interface} has {use}, so it seems to be in use. Frames of tests go only to cables "
            "laid for them; if this is one, write 'force = true'."
        )


def flags_of(interface):
    return _ask_flags(SIOCGIFFLAGS, interface, 0)


def set_flags(interface, flags):
    _ask_flags(SIOCSIFFLAGS, interface, flags)


def _ask_flags(request, interface, flags):
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as handle:
        return FLAGS.unpack(fcntl.ioctl(handle, request, FLAGS.pack(interface.encode(), flags)))[1]
