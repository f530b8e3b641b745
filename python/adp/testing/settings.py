"""The options of a run: on pytest's command line, else in its ini file, else the usual."""

import re

from adp.lab.board_file import USER_PORTS, read_board_file
from adp.lab.builds import Build, native_build
from adp.lab.problem import LabError

NATIVE = native_build().name
OPTIONS = {
    "builds": ("NAMES", NATIVE, "builds of the library to test with, such as host,mips"),
    "device": ("BUILD", NATIVE, "the build whose virtual device is used"),
    "hosts": ("PORTS", "1-26", "user ports that have a host, such as 1-4,22"),
    "board": ("FILE", "", "a real board in place of the virtual device; the file says how to reach it"),
    "failures": ("FOLDER", "adp-failures", "where the frames of failed tests are kept; relative to pytest's root folder"),
}


def add_options(parser):
    """Tells pytest of the options: --adp-NAME on the command line, adp_NAME in the ini file."""
    group = parser.getgroup("adp", "packet tests (adp)")
    for name, (value, usual, text) in OPTIONS.items():
        group.addoption(f"--adp-{name}", metavar=value, help=f"{text} (adp_{name} in the ini file, else {usual or 'none'})")
        parser.addini(f"adp_{name}", text, default=usual)


def ports_of_text(text):
    """The ports of "1-4,22", in ascending order."""
    if not re.fullmatch(r"\d{1,2}(-\d{1,2})?(,\d{1,2}(-\d{1,2})?)*", text, re.ASCII):
        raise LabError(f"'{text}' are no ports; write them as 1-4,22.")
    ends = [part.partition("-") for part in text.split(",")]
    ports = sorted({port for first, _, last in ends for port in range(int(first), int(last or first) + 1)})
    if not ports or not {*ports} <= {*USER_PORTS}:
        raise LabError(f"'{text}' are not among the user ports, {USER_PORTS[0]} to {USER_PORTS[-1]}.")
    return ports


class Settings:
    """The options of a run as values. What is wrong with them is an error with a sentence."""

    def __init__(self, config):
        self._config = config
        self.hosts = ports_of_text(self._text("hosts").replace(" ", ""))  # user ports
        self._board_file = read_board_file(self.board) if self.board else None

    def _text(self, name):
        given = self._config.getoption(f"adp_{name}")
        return self._config.getini(f"adp_{name}") if given is None else given

    @property
    def board(self):
        """The file that says how to reach the board; empty for the virtual device."""
        return self._text("board")

    @property
    def builds(self):
        """Names of the builds of the library; a board has its own."""
        return [self._board_file.build] if self.board else self._text("builds").replace(" ", "").split(",")

    @property
    def device(self):
        """Name of the build whose virtual device is used."""
        return self._text("device")

    @property
    def failures(self):
        """The folder for the frames of failed tests."""
        return self._config.rootpath / self._text("failures")

    def check_programs(self, with_library):
        """An error with a sentence if a program is missing: of the device, and of the builds if they are used."""
        if not self.board:
            Build(self.device).command("vdeviced")
            for name in self.builds if with_library else ():
                Build(name).command("adpsh")
