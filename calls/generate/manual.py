#!/usr/bin/env python3
"""Writes the manual: a page for each exported call and each program, and the completion of the programs' command lines.

    manual.py --output DIR --include DIR --programs DIR --version VERSION

Everything comes from the headers and from what the programs print.
"""
import argparse
import json
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import call_page     # noqa: E402  (the path has to be set first)
import completion    # noqa: E402
import doc           # noqa: E402
import exported      # noqa: E402
import headers       # noqa: E402
import program_page  # noqa: E402
import roff          # noqa: E402
from generate import write_if_changed  # noqa: E402
from interface import HeaderError      # noqa: E402

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
LAB, PANEL = "adp-lab", "adp-panel"
# Their help alone needs nothing but Python.
HELP = {name: f"import sys; from {module} import parse; parse(sys.argv[1:])"
        for name, module in ((LAB, "adp.lab.command.options"), (PANEL, "adp.panel.options"))}
NO_DEVICE = "/nonexistent"  # what is printed must not depend on a device that runs here
COMMANDS = re.compile("\n(?:The device lists its commands|Commands:\n)")


def output_of(programs, name, *arguments):
    command = [sys.executable, "-B", "-c", HELP[name]] if name in HELP else [os.path.join(programs, name)]
    environment = {"VDEVICE_DIR": NO_DEVICE, "ARGP_HELP_FMT": "", "COLUMNS": "80",
                   "PYTHONPATH": os.path.join(ROOT, "python")}
    done = subprocess.run([*command, *arguments], capture_output=True, text=True, check=True,
                          env={**os.environ, **environment}, timeout=30)
    return done.stdout


def read_programs(programs):
    """(program, section of the manual) of each."""
    vdeviced, switchd, vdevctl, adptrace, lab, panel, adpsh = (
        program_page.read_help(name, COMMANDS.split(output_of(programs, name, "--help"))[0])
        for name in ("vdeviced", "adp-switchd", "vdevctl", "adptrace", LAB, PANEL, "adpsh"))
    for program in (switchd, adptrace, lab):
        program.commands = program_page.rows_of(output_of(programs, program.name, "--help"), "Commands")
    vdevctl.commands = program_page.commands_of(json.loads(output_of(programs, "vdevice_subjects"))["subjects"])
    text = output_of(programs, "adpsh", "help")
    adpsh.sections = [("LINES", text.partition("Commands:\n")[0].splitlines())]
    adpsh.commands = program_page.rows_of(text, "Commands")
    for program in (adptrace, lab):
        program.sections = [(row.name.upper(), output_of(programs, program.name, row.name, "--help").splitlines())
                            for row in program.commands]
    return [(vdeviced, 8), (switchd, 8), (vdevctl, 1), (adptrace, 1), (lab, 1), (panel, 1), (adpsh, 1)]


def read_calls(include):
    """The exported calls and those of adp_status, and what their headers say of all calls."""
    library = exported.read(include)
    paths = headers.included_by("adp/adp.h", include) + [os.path.join(include, "adp", "status.h")]
    library.headers = headers.read(paths)
    library.remarks = headers.remarks_of(paths)
    missing = [f"{function.name}: {gap}" for function in library.headers.functions for gap in doc.gaps(function)]
    missing += [f"{name}: no remark" for name in library.headers.enums if name not in library.remarks]
    if missing:
        raise HeaderError("\n".join(missing))
    return library, call_page.intros(paths)


def pages(include, programs, version):
    """{folder/name: text} of all files."""
    library, intros = read_calls(include)
    files = {}
    for function in library.headers.functions:
        files[f"man3/{roff.file_name(function.name, 3)}"] = call_page.page(library, function, intros[function.header],
                                                                           version)
    found = read_programs(programs)
    for program, section in found:
        others = [(other.name, place) for other, place in found if other is not program]
        files[f"man{section}/{roff.file_name(program.name, section)}"] = program_page.page(program, section, version,
                                                                                           others)
    adpsh = found[-1][0]
    adpsh.commands += [program_page.Command(function.name, function.name, "") for function in library.functions]
    for program, _ in found:
        files[f"completions/{program.name}"] = completion.script(program)
    return files


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--output", required=True, help="folder that receives the pages")
    parser.add_argument("--include", required=True, help="folder that holds adp/adp.h")
    parser.add_argument("--programs", required=True, help="folder of the programs and of vdevice_subjects")
    parser.add_argument("--version", required=True)
    options = parser.parse_args(arguments)
    try:
        files = pages(options.include, options.programs, options.version)
    except HeaderError as error:
        print(f"manual.py: {error}", file=sys.stderr)
        return 1
    for name, text in files.items():
        path = os.path.join(options.output, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        write_if_changed(path, text)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
