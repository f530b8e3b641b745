"""The command line of adp-panel, and its help. Nothing but Python is needed for it."""

import argparse
import textwrap
from typing import NamedTuple

from ..lab.command.options import WIDTH, help_row

PROGRAM = "adp-panel"
USAGE = "Usage: adp-panel [OPTION...] [[NAME=]RUN_DIR...]"
ABOUT = (
    "adp-panel: shows running devices in a browser. It prints the address of a page, which only this machine can open. "
    "RUN_DIR is the run folder of a device, NAME the name that it gets. Without one the devices of the lab that runs are "
    "shown, or that of vdevctl's default run folder."
)
MISUSE = 2  # exit status


class Option(NamedTuple):
    """An option, its help, and what argparse has to know besides."""

    name: str
    help: str
    how: dict


def _port(text):
    number = int(text) if text.isdecimal() else -1
    if not 0 <= number <= 65535:
        raise argparse.ArgumentTypeError("a port is a number from 0 to 65535")
    return number


OPTIONS = (
    Option("--lab", "all devices of this lab; by default as adp-lab", {"metavar": "NAME"}),
    Option("--open", "opens the page in the browser", {"action": "store_true"}),
    Option("--port", "TCP port; by default one that is free", {"metavar": "N", "type": _port, "default": 0}),
    Option("--read-only", "the page cannot change anything", {"action": "store_true"}),
    Option("--recording", "shows the calls of this recording, too", {"metavar": "FILE", "action": "append", "default": []}),
)


def _help_text():
    # The manual and the completion are made of it, so it has the form that the other programs' help has.
    heads = [option.name + (f"={option.how['metavar']}" if "metavar" in option.how else "") for option in OPTIONS]
    rows = [help_row(head, option.help, 6) for head, option in zip(heads, OPTIONS, strict=True)]
    return "\n".join([USAGE, *textwrap.wrap(ABOUT, WIDTH), "", *rows, help_row("-h, --help", "this text", 2), ""])


class _Parser(argparse.ArgumentParser):
    def error(self, message):
        sentence = f"{message[0].upper()}{message[1:].rstrip('.')}."
        self.exit(MISUSE, f"{PROGRAM}: {sentence} '{PROGRAM} --help' shows what there is.\n")

    def format_help(self):
        return _help_text()


def parse(words):
    parser = _Parser(prog=PROGRAM, allow_abbrev=False)
    parser.add_argument("devices", nargs="*", metavar="[NAME=]RUN_DIR")
    for option in OPTIONS:
        parser.add_argument(option.name, **option.how)
    return parser.parse_args(words)
