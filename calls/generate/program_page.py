"""The page of the manual of a program, and the completion of its command line, from what its --help prints."""
import re
from dataclasses import dataclass, field

import doc
import roff

OPTION = re.compile(r" {6}(--[\w-]+)(?:=(\w+))?(?: {2,}(.*))?|  (-\w|-\?), (--[\w-]+)(?: {2,}(.*))?")


@dataclass
class Option:
    name: str
    argument: str = ""
    text: str = ""
    short: str = ""

    @property
    def head(self):
        return (f"{self.short}, " if self.short else "") + self.name + (f"={self.argument}" if self.argument else "")


@dataclass
class Command:
    name: str
    usage: str
    text: str
    options: list = field(default_factory=list)


@dataclass
class Program:
    name: str
    purpose: str = ""
    usage: str = ""
    description: list = field(default_factory=list)
    options: list = field(default_factory=list)
    remarks: list = field(default_factory=list)                # what follows the options
    commands: list = field(default_factory=list)
    sections: list = field(default_factory=list)               # (title, blocks or lines)


def read_help(name, text):
    """What --help prints: the usage, what the program is, its options, remarks."""
    program = Program(name)
    head, table = re.split(r"\n+(?= {2,6}-)", text, maxsplit=1)
    lines = head.split("\n")
    about = next(place for place, line in enumerate(lines) if place and not line.startswith(" "))
    program.usage = doc.one_line(" ".join(lines[:about])).removeprefix("Usage: ")
    description = doc.one_line(" ".join(lines[about:]))
    program.purpose = doc.first_sentence(description).removeprefix(f"{name}: ").rstrip(".")
    program.description = [description]
    rows, *remarks = table.split("\n\n")
    for line in rows.split("\n"):
        match = OPTION.fullmatch(line)
        if match and match[1]:
            program.options.append(Option(match[1], match[2] or "", match[3] or ""))
        elif match:
            program.options.append(Option(match[5], "", match[6] or "", match[4]))
        else:
            program.options[-1].text = doc.one_line(f"{program.options[-1].text} {line}")
    program.remarks = [doc.one_line(remark) for remark in remarks if remark.strip()]
    return program


def commands_of(subjects):
    """The commands that the device lists."""
    return [Command(row["name"], f"{row['name']} {row['arguments']}".strip(), row["help"],
                    [Option(f"--{option['name']}", option["value"], option["help"]) for option in row["options"]])
            for row in subjects]


def rows_of(text, title):
    """The rows `usage  text` under a heading of a help text."""
    block = re.search(rf"^{title}.*:\n((?:    .*\n)+)", text, re.M)
    return [Command(row.split()[0], *re.split(r" {2,}", row.strip(), maxsplit=1)) for row in block[1].splitlines()]


def page(program, section, version, others):
    text = roff.Page(program.name, section, version, "adp")
    text.name(program.name, program.purpose)
    text.section("SYNOPSIS")
    text.bold(program.usage)
    text.section("DESCRIPTION")
    text.blocks(program.description)
    text.section("OPTIONS")
    for option in program.options:
        text.entry(option.head, option.text)
    text.blocks(program.remarks)
    for title, lines in program.sections:
        text.section(title)
        text.code(lines)
    if program.commands:
        text.section("COMMANDS")
    for command in program.commands:
        text.entry(command.usage, command.text)
        for option in command.options:
            text.lines += [".RS", ".TP", f"\\fB{roff.escape(option.name)}\\fR \\fI{roff.escape(option.argument)}\\fR",
                           roff.words(option.text), ".RE"]
    text.references(others)
    return str(text)
