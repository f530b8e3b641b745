"""The command line of adp-lab: its commands, and their help."""

import argparse
import re
import textwrap
from typing import NamedTuple

from .words import did_you_mean

ABOUT = (
    "adp-lab: labs of virtual switches, hosts and cables that stay until somebody ends them. They are in namespaces of "
    "their own, from where no interface of the machine can be reached."
)
LAB_HELP = "the lab meant; by default $ADP_LAB, or the only one that runs"
USAGE = 2  # exit status
WIDTH = 79
TEXT_COLUMN = 29


class Argument(NamedTuple):
    """An argument of a command: its names, its help, and what argparse has to know besides."""

    names: tuple[str, ...]
    help: str
    how: dict = {}


class Command(NamedTuple):
    """A command of the program."""

    name: str
    usage: str
    help: str
    arguments: tuple[Argument, ...]


def _words(name, text):
    return Argument((name,), text, {"nargs": argparse.REMAINDER, "metavar": name.upper()})


def _end(text="a device's port, as sw1:3, or a host's interface, as h1:eth1"):
    return Argument(("end",), text, {"metavar": "END"})


_NODE = Argument(("node",), "a device or host", {"metavar": "NODE"})
_DEVICE = Argument(("node",), "a device", {"metavar": "DEVICE"})

COMMANDS = (
    Command(
        "up",
        "up [FILE] [OPTION...]",
        "starts a lab and shows its nodes",
        (
            Argument(
                ("topology",),
                "the topology, in containerlab's format; by default a switch with four hosts",
                {"nargs": "?", "metavar": "FILE"},
            ),
            Argument(("--name",), "the lab's name; by default the one in the file", {"metavar": "NAME"}),
            Argument(
                ("--target",),
                "management programs are the target's build, under emulation",
                {"action": "store_true"},
            ),
            Argument(("--panel",), "starts the lab's panel, too, and shows its address", {"action": "store_true"}),
        ),
    ),
    Command(
        "ps",
        "ps [--json]",
        "shows the labs that run, their nodes and programs",
        (Argument(("--json",), "what lab.json says, for programs", {"action": "store_true"}),),
    ),
    Command(
        "exec",
        "exec NODE -- COMMAND...",
        "runs a program on a node",
        (_NODE, _words("command", "the program and its arguments")),
    ),
    Command("shell", "shell NODE", "a shell on a node", (_NODE,)),
    Command(
        "adpsh",
        "adpsh DEVICE [LINE...]",
        "the library's shell on a device's CPU",
        (_DEVICE, _words("words", "arguments of adpsh")),
    ),
    Command(
        "vdevctl",
        "vdevctl DEVICE COMMAND...",
        "looks into a device",
        (_DEVICE, _words("words", "arguments of vdevctl")),
    ),
    Command(
        "capture",
        "capture END [-w FILE]",
        "writes a port's or interface's frames into a file",
        (
            _end(),
            Argument(("-w", "--write"), "the file; '-', the default, is standard output", {"metavar": "FILE"}),
            Argument(("--count",), "ends after so many frames", {"metavar": "N", "type": int}),
            Argument(("--for",), "ends after so many seconds", {"metavar": "SECONDS", "type": float, "dest": "seconds"}),
        ),
    ),
    Command("pull", "pull END", "pulls a cable at its device", (_end("the cable's end"),)),
    Command("plug", "plug END", "plugs it in again", (_end("the cable's end"),)),
    Command(
        "cable",
        "cable END [OPTION...]",
        "makes a cable lose, delay or damage frames",
        (_end("the cable's end"), _words("words", "options of 'vdevctl cable', such as --loss 5%% or --clear")),
    ),
    Command(
        "graph",
        "graph [-o FILE]",
        "draws the lab as it is now",
        (Argument(("-o", "--output"), "the SVG file; by default standard output", {"metavar": "FILE"}),),
    ),
    Command(
        "logs",
        "logs [NODE [PROGRAM]]",
        "shows what programs have written",
        (
            Argument(("node",), "of this node; by default of the lab's background process", {"nargs": "?"}),
            Argument(("program",), "of this program alone", {"nargs": "?"}),
        ),
    ),
    Command("restart", "restart NODE", "starts a node's device and programs again", (_NODE,)),
    Command("down", "down", "ends a lab", (Argument(("--all",), "all labs", {"action": "store_true"}),)),
)


def help_row(head, text, indent):
    """A line of the help, its text in a column of its own."""
    wrapped = textwrap.wrap(text, WIDTH - TEXT_COLUMN)
    first = f"{' ' * indent}{head}"
    if len(first) > TEXT_COLUMN - 2:
        wrapped.insert(0, first)
    else:
        wrapped[0] = first.ljust(TEXT_COLUMN) + wrapped[0]
    return "\n".join([wrapped[0], *(" " * TEXT_COLUMN + line for line in wrapped[1:])])


def _help_text():
    # The manual and the completion are made of it, so it has the form that the other programs' help has.
    commands = [f"    {command.usage:<26}  {command.help}" for command in COMMANDS]
    return "\n".join(
        [
            "Usage: adp-lab [OPTION...] COMMAND [ARGUMENT...]",
            *textwrap.wrap(ABOUT, WIDTH),
            "",
            help_row("--lab=NAME", LAB_HELP, 6),
            help_row("-h, --help", "this text; 'adp-lab COMMAND --help' shows a command's", 2),
            "",
            "Commands:",
            *commands,
            "",
        ]
    )


class _Parser(argparse.ArgumentParser):
    def error(self, message):
        unknown = re.search(r"invalid choice: '(.*?)' ", message)
        if unknown:  # argparse lists all commands instead
            message = f"there is no command '{unknown[1]}'.{did_you_mean(unknown[1], [c.name for c in COMMANDS])}"
        sentence = f"{message[0].upper()}{message[1:]}"
        self.exit(USAGE, f"adp-lab: {sentence.rstrip('.')}{'' if sentence.endswith('?') else '.'} '{self.prog} --help' shows what there is.\n")

    def format_help(self):
        return _help_text() if self.prog == "adp-lab" else super().format_help()


def parse(words):
    parser = _Parser(prog="adp-lab", allow_abbrev=False)
    parser.add_argument("--lab", metavar="NAME", help=LAB_HELP)
    commands = parser.add_subparsers(dest="action", required=True, metavar="COMMAND", parser_class=_Parser)
    for command in COMMANDS:
        own = commands.add_parser(command.name, description=f"{command.help[0].upper()}{command.help[1:]}.")
        for argument in command.arguments:
            own.add_argument(*argument.names, help=argument.help, **argument.how)
        if command.name != "up":
            own.add_argument("--lab", metavar="NAME", help=LAB_HELP, default=argparse.SUPPRESS)
    found = parser.parse_args(words)
    for name in ("command", "words"):
        given = getattr(found, name, None)
        if isinstance(given, list) and given[:1] == ["--"]:
            setattr(found, name, given[1:])
    return found
