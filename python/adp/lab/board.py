"""A real board in the place of the virtual device: frames by interfaces of this machine, calls by a shell on the board.

    with open_board("board.toml") as lab:
        shell = lab.shell(lab.build)
        lab.hosts[1].send(frame)
        lab.arrivals(marker)                 # {5: [frame]}, when nothing came for a while

A test that uses no more than hosts, markers, arrivals and shells runs on either. All else that the bench has with the
virtual device is an error here that names it.
"""

import contextlib
import itertools
import select
import time

from .bench import Lab
from .board_file import read_board_file
from .board_port import BoardPort
from .board_shell import open_board_shell
from .device import FIRST_PHYSICAL_PORT
from .problem import LabError
from .process import poll_until

LINK_SECONDS = 10.0
# Bounds for a loop of cables.
MOST_SECONDS = 10.0
MOST_FRAMES = 100_000
MOST_AT_ONCE = 1000
NUMBERS = 1 << 24
NUMBERS_PER_SECOND = 100


class NotOnBoardError(LabError, AttributeError):
    """A test has asked for what only the virtual device has."""


class _BoardPart:
    """Whatever a board does not have is an error that names it."""

    def __getattr__(self, name):
        raise NotOnBoardError(f"A board has no '{self._path}{name}'; a test that needs it runs on the virtual device.")


class BoardDevice(_BoardPart):
    """The board's name and its port map, and nothing that can be asked of it."""

    _path = "device."

    def __init__(self, name):
        self.name = name

    def physical(self, port):
        """Physical port of a user port by the default board's map, which adpsh's `map` makes the library's."""
        return port + FIRST_PHYSICAL_PORT - 1


class Host(BoardPort, _BoardPart):
    """The far end of a user port's cable."""

    _path = "hosts[port]."


class Hosts(dict):
    """Hosts by user port; a port without a cable is an error with a sentence."""

    def __missing__(self, port):
        raise LabError(f"Port {port} of the board has no cable to this machine; the ports {sorted(self)} have.")


class BoardLab(_BoardPart):
    """A board with cables to interfaces of this machine. Use it in a `with` statement; leaving it ends everything."""

    _path = ""

    def __init__(self, board):
        self._board = board
        self.device = BoardDevice(board.name)
        self.build = board.build
        self.hosts = Hosts()
        self._stack = contextlib.ExitStack()
        # The board may still know the addresses of an earlier run.
        self._numbers = itertools.count(int(time.time() * NUMBERS_PER_SECOND))
        self.forget()

    def __enter__(self):
        with self._stack as stack:
            for port, interface in sorted(self._board.interfaces.items()):
                self.hosts[port] = stack.enter_context(contextlib.closing(Host(port, interface, self._board.force)))
            self.await_links()
            Lab.running.append(self)
            stack.callback(Lab.running.remove, self)
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *problem):
        return self._stack.__exit__(*problem)

    def await_links(self, without=()):
        """Waits until all interfaces but those of these ports can send and receive."""
        linked = [host for port, host in self.hosts.items() if port not in without]
        try:
            poll_until(lambda: all(host.has_link() for host in linked), LINK_SECONDS, "A link")
        except LabError:
            places = ", ".join(f"{host.interface} (port {host.port})" for host in linked if not host.has_link())
            raise LabError(f"There was no link within {LINK_SECONDS:g} seconds on {places}.") from None
        for host in linked:
            # The kernel reports a link just before it acts on it; this waits for the lock that it holds meanwhile.
            host.raise_link()

    def shell(self, build, before=(), namespace=None):
        """adpsh on the board, of the build that its file names."""
        if build != self.build:
            raise LabError(f"The {self.device.name} runs the build {self.build!r}, by its file, and not {build!r}.")
        if before or namespace:
            raise NotOnBoardError("On a board adpsh cannot be started by another command, nor in another namespace.")
        return self._stack.enter_context(contextlib.closing(open_board_shell(self._board)))

    def marker(self):
        """Bytes that no other frame of this bench contains."""
        self.latest_marker = b"<%s %08d>" % (self.device.name.encode(), self._number())
        return self.latest_marker

    def mac(self, port=0):
        """A unicast address that no other frame has used for a day. `port` only makes it readable."""
        return bytes([0x02, 0xAD, port, *self._number().to_bytes(3, "big")])

    def _number(self):
        return next(self._numbers) % NUMBERS

    def forget(self):
        """Forgets which marker was the latest, what arrived with it, and all else that has arrived."""
        self.latest_marker = self.latest_arrivals = None
        for host in self.hosts.values():
            host.forget()

    def arrivals(self, marker, without=()):
        """{user port: [frames]} of every frame with the marker that has reached an interface.

        A board gives no sign that all frames have left it, so this waits until none with the marker has come for as
        long as the file's `settle` says. The ports in `without` are not looked at.
        """
        if not marker:
            raise LabError("On a board frames of others arrive, too, so its arrivals() needs a marker.")
        self.latest_marker = marker
        hosts = {host.nic: host for port, host in self.hosts.items() if port not in without}
        found = {host.port: [] for host in hosts.values()}
        self._receive(marker, hosts, found)
        for host in hosts.values():
            host.check()
        self.latest_arrivals = {port: frames for port, frames in found.items() if frames}
        return dict(self.latest_arrivals)

    def _receive(self, marker, hosts, found):
        begin = time.monotonic()
        quiet_at = begin + self._board.settle
        while ready := select.select(list(hosts), [], [], max(0.0, quiet_at - time.monotonic()))[0]:
            for nic in ready:
                frames = [frame for frame in nic.waiting(MOST_AT_ONCE) if marker in frame]
                if frames:
                    found[hosts[nic].port] += frames
                    quiet_at = time.monotonic() + self._board.settle
            count = sum(map(len, found.values()))
            if count > MOST_FRAMES or time.monotonic() - begin > MOST_SECONDS + self._board.settle:
                raise LabError(f"Frames go on arriving, {count} with the marker until now, as in a loop of cables.")


def open_board(path):
    """The board that a file describes, to be used in a `with` statement."""
    return BoardLab(read_board_file(path))
