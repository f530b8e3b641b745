"""A board in a namespace of this machine: a virtual device, its cables' far ends, and two ways to a shell on it.

remote_board.py SOCKET [OPTION ...]: adpsh behind a socket, as ssh would run it.
"""

import contextlib
import os
import select
import socket
import subprocess
import sys
import tempfile
import threading
import tty

from adp.lab import Build, Lab
from adp.lab.netns import NetNamespace
from adp.lab.process import kill, stop

PORTS = (1, 5, 7)


class RemoteBoard:
    """The tester is another namespace: `tester.entered()`."""

    def __init__(self):
        self._stack = contextlib.ExitStack()

    def __enter__(self):
        with self._stack as stack:
            self.device = stack.enter_context(Lab(hosts=())).device
            # What the kernel of the tester's machine says on its own is on the cables, too.
            self.tester = stack.enter_context(contextlib.closing(NetNamespace("tester", ipv6=True)))
            for port in PORTS:
                self.device.namespace.ip(f"link set host{port} netns {self.tester.holder_pid}")
            self.folder = stack.enter_context(tempfile.TemporaryDirectory(prefix="adp-board-"))
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *problem):
        return self._stack.__exit__(*problem)

    def file(self, **keys):
        """Path of a new board file with these keys."""
        keys = {"interfaces": {port: f"host{port}" for port in PORTS}, "settle": "100ms", "build": "host", **keys}
        path = os.path.join(self.folder, f"board-{len(os.listdir(self.folder))}.toml")
        with open(path, "w", encoding="utf-8") as file:
            file.write("".join(f"{key} = {toml(value)}\n" for key, value in keys.items() if value is not None))
        return path

    def start_adpsh(self, *options, **streams):
        return self.device.popen(Build("host").command("adpsh", *options), **streams)

    def start_console(self, **streams):
        """The shell of a console, which finds adpsh."""
        return self.device.popen(["env", f"PATH={Build('host').folder}:{os.environ['PATH']}", "sh", "-i"], **streams)


def toml(value):
    if isinstance(value, dict):
        return "{" + ", ".join(f"{key} = {toml(one)}" for key, one in value.items()) + "}"
    return str(value).lower() if isinstance(value, bool | int) else '"' + value.replace('"', '\\"') + '"'


@contextlib.contextmanager
def served_at_socket(board):
    """A command line that runs adpsh on the board."""
    path = os.path.join(board.folder, f"shells-{len(os.listdir(board.folder))}")
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(path)
        listener.listen()
        threading.Thread(target=_serve, args=(board, listener), daemon=True).start()
        yield f"{sys.executable} -B {__file__} {path}"
        listener.shutdown(socket.SHUT_RDWR)


def _serve(board, listener):
    """Starts adpsh for each who connects, with the options of the first line."""
    with contextlib.suppress(OSError), contextlib.ExitStack() as started:
        while True:
            connection, _ = listener.accept()
            with connection:
                options = connection.makefile("rb", buffering=0).readline().decode().split()
                process = board.start_adpsh(*options, stdin=connection, stdout=connection, stderr=subprocess.PIPE)
            started.callback(stop, process)


def ask_at_socket(path, *options):
    """Joins this program's input and output to the adpsh behind the socket."""
    with socket.socket(socket.AF_UNIX) as connection:
        connection.connect(path)
        connection.sendall(" ".join(options).encode() + b"\n")
        join(0, connection.fileno(), connection.fileno(), 1)


@contextlib.contextmanager
def served_at_console(board):
    """Path of a serial line. At its other end is a console that echoes what is typed and has a prompt."""
    with contextlib.ExitStack() as opened:
        (line, tester), (wire, console) = (os.openpty(), os.openpty())
        tty.setraw(tester)  # a line that nobody has opened does not echo
        for fd in (line, tester, wire, console):
            opened.callback(os.close, fd)
        shell = board.start_console(stdin=console, stdout=console, stderr=console, start_new_session=True)
        opened.callback(kill, shell)  # a shell with a prompt ignores all else
        ended, end = os.pipe()
        relay = threading.Thread(target=join, args=(line, wire, wire, line, ended))
        relay.start()
        opened.callback(os.close, ended)
        opened.callback(relay.join)
        opened.callback(os.close, end)
        yield os.ttyname(tester)


def join(first, second, third, fourth, ended=None):
    """Copies from the first to the second, and from the third to the fourth, until one of them or `ended` ends."""
    ways = {first: second, third: fourth}
    while True:
        readable = select.select([*ways, *([] if ended is None else [ended])], [], [])[0]
        for source in readable:
            chunk = b"" if source == ended else os.read(source, 4096)
            if not chunk:
                return
            os.write(ways[source], chunk)


if __name__ == "__main__":
    ask_at_socket(*sys.argv[1:])
