"""The file that describes a real board: its cables to this machine, and the way to its shell.

    interfaces = {1 = "eth1", 5 = "eth2"}    # user port = interface of this machine
    shell = "ssh board adpsh"                # or: serial = "/dev/ttyUSB0"
"""

import dataclasses
import re
import shlex
import termios
import tomllib

from .problem import LabError

USER_PORTS = range(1, 27)
MOST_FILE_BYTES = 1 << 16
LONGEST_NAME = 32
LONGEST_INTERFACE_NAME = 15
DURATION = re.compile(r"(\d+(?:\.\d+)?)(ms|s)", re.ASCII)
LONGEST_SETTLE_SECONDS = 60.0
ADPSH_OPTIONS = ("--json", "--keep-going")
START = "adpsh --json --keep-going"
KINDS = {str: "a text", int: "a number", bool: "true or false", dict: "a table"}


class KeyProblem(Exception):
    """What is wrong with a key's value."""


@dataclasses.dataclass(frozen=True)
class BoardFile:
    """What a file says, checked. `serial` is None, or a device and its speed; `command` is None, or a command line."""

    path: str
    name: str
    interfaces: dict[int, str]
    command: tuple[str, ...] | None
    serial: tuple[str, int] | None
    start: str
    settle: float
    build: str
    force: bool


def read_board_file(path):
    """The file's content; LabError names the key that is wrong."""
    return _checked(str(path), _content(path))


def _content(path):
    try:
        with open(path, "rb") as file:
            text = file.read(MOST_FILE_BYTES + 1)
        if len(text) > MOST_FILE_BYTES:
            raise LabError(f"{path} is longer than {MOST_FILE_BYTES} bytes.")
        return tomllib.loads(text.decode())
    except OSError as problem:
        raise LabError(f"{path} cannot be read: {problem.strerror}.") from None
    except (ValueError, RecursionError) as problem:
        raise LabError(f"{path} is no TOML: {problem}") from None


def _checked(path, content):
    unknown = [key for key in content if key not in READERS]
    if unknown:
        raise LabError(f"{path}: there is no key {shortened(unknown[0])}; the keys are {', '.join(READERS)}.")
    values = {}
    for key, (read, default) in READERS.items():
        try:
            values[key] = read(content[key]) if key in content else default
        except KeyProblem as problem:
            raise LabError(f"{path}: '{key}' {problem}") from None
    if not values["interfaces"]:
        raise LabError(f"{path}: 'interfaces' is missing. It says which user port is cabled to which interface here.")
    if (values["shell"] is None) == (values["serial"] is None):
        raise LabError(f"{path}: the board's shell is reached by 'shell' or by 'serial'; give one of the two.")
    for key in ("speed", "start"):
        if key in content and values["serial"] is None:
            raise LabError(f"{path}: '{key}' belongs to 'serial', which is not given.")
    command, device, speed = values.pop("shell"), values.pop("serial"), values.pop("speed")
    return BoardFile(path, command=command, serial=device and (device, speed), **values)


def _kind(value, kind):
    if type(value) is not kind:
        raise KeyProblem(f"must be {KINDS[kind]}, not {shortened(value)}.")
    return value


def shortened(value):
    """A value in a message."""
    text = repr(value)
    return text if len(text) <= 60 else text[:57] + "..."


def _interfaces(value):
    ports = {}
    for key, interface in _kind(value, dict).items():
        if not re.fullmatch(r"[1-9]\d?", key, re.ASCII) or int(key) not in USER_PORTS:
            raise KeyProblem(f"has {shortened(key)}, which is no user port ({USER_PORTS[0]} to {USER_PORTS[-1]}).")
        if not is_interface_name(interface):
            raise KeyProblem(f"has {shortened(interface)} at port {key}, which is no name of an interface.")
        if interface in ports.values():
            raise KeyProblem(f"has {interface!r} at two ports.")
        ports[int(key)] = interface
    return ports


def is_interface_name(text):
    return isinstance(text, str) and bool(re.fullmatch(rf"[!-.0-~]{{1,{LONGEST_INTERFACE_NAME}}}", text))


def _name(value):
    if not re.fullmatch(rf"[!-~]([ -~]{{0,{LONGEST_NAME - 2}}}[!-~])?", _kind(value, str)):
        raise KeyProblem(f"must have 1 to {LONGEST_NAME} printable ASCII characters, not {shortened(value)}.")
    return value


def _line(value):
    if not _kind(value, str).strip() or not value.isprintable():
        raise KeyProblem(f"must be one line of text, not {shortened(value)}.")
    return value


def _shell(value):
    try:
        return (*shlex.split(_line(value)), *ADPSH_OPTIONS)
    except ValueError as problem:
        raise KeyProblem(f"is no command line: {problem}.") from None


def _speed(value):
    if not hasattr(termios, f"B{_kind(value, int)}"):
        raise KeyProblem(f"is {value}, which is no speed of a serial line here.")
    return value


def _duration(value):
    parts = DURATION.fullmatch(_kind(value, str))
    seconds = float(parts[1]) / {"ms": 1000, "s": 1}[parts[2]] if parts else 0.0
    if not 0 < seconds <= LONGEST_SETTLE_SECONDS:
        raise KeyProblem(f"must be a time such as \"200ms\" or \"2s\", at most {LONGEST_SETTLE_SECONDS:g}s, not "
                         f"{shortened(value)}.")
    return seconds


# The keys, each with the function that reads its value, and its default.
READERS = {
    "interfaces": (_interfaces, None),
    "shell": (_shell, None),
    "serial": (_line, None),
    "speed": (_speed, 115200),
    "start": (_line, START),
    "settle": (_duration, 0.2),
    "name": (_name, "board"),
    "build": (_name, "mips"),
    "force": (lambda value: _kind(value, bool), False),
}
