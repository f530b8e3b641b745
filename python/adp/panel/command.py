"""The command line of adp-panel, and its way from the beginning to the end."""

import argparse
import asyncio
import os
import pathlib
import shlex
import signal
import sys
import webbrowser

from ..lab.builds import native_build
from ..lab.command.run_folder import folders
from ..lab.problem import LabError
from .device import Device
from .lab import Lab
from .panel import Panel
from .problem import PanelError
from .server import Server

PROGRAM = "adp-panel"


class _Parser(argparse.ArgumentParser):
    def error(self, message):
        self.exit(2, f"{PROGRAM}: {message[0].upper()}{message[1:].rstrip('.')}. '{PROGRAM} --help' shows what there is.\n")


def _port(text):
    number = int(text) if text.isdecimal() else -1
    if not 0 <= number <= 65535:
        raise argparse.ArgumentTypeError("a port is a number from 0 to 65535")
    return number


def parse(words):
    parser = _Parser(
        prog=PROGRAM,
        allow_abbrev=False,
        description="Shows running devices in a browser: prints the address of a page, which only this machine can open.",
    )
    parser.add_argument(
        "devices",
        nargs="*",
        metavar="[NAME=]RUN_DIR",
        help="run folder of a device, and the name it gets; by default all devices of the lab that runs, else the "
        "default run folder of vdevctl",
    )
    parser.add_argument("--lab", metavar="NAME", help="all devices of this lab; by default as adp-lab")
    parser.add_argument("--port", metavar="N", type=_port, default=0, help="TCP port; by default one that is free")
    parser.add_argument("--read-only", action="store_true", help="the page cannot change anything")
    parser.add_argument(
        "--recording", metavar="FILE", action="append", default=[], help="shows the calls of this recording, too"
    )
    parser.add_argument("--open", action="store_true", help="opens the page in the browser")
    return parser.parse_args(words)


def _single(text, recordings):
    """A device that is named by its run folder."""
    name, _, path = text.rpartition("=")
    folder = pathlib.Path(path).absolute()
    name = name or folder.name
    control = native_build().command("vdevctl", "--run-dir", folder)
    commands = {
        "vdevctl": f"vdevctl --run-dir {shlex.quote(str(folder))}",
        "adpsh": f"adpsh --run-dir {shlex.quote(str(folder))}",
        "exec": f"env VDEVICE_DIR={shlex.quote(str(folder))}",
    }
    return Device(name, folder, control, commands, recordings)


def _default_folder():
    return os.environ.get("VDEVICE_DIR") or f"/tmp/vdevice-{os.geteuid()}"


def _shown(options):
    """(devices, lab)"""
    if options.lab and options.devices:
        raise PanelError("Name a lab or run folders, not both.")
    if options.lab or os.environ.get("ADP_LAB") or (not options.devices and folders()):
        lab = Lab(options.lab)
        return lab.devices(options.recording), lab
    found = [_single(text, options.recording) for text in options.devices or [f"device={_default_folder()}"]]
    names = [device.name for device in found]
    for name in names:
        if names.count(name) > 1:
            raise PanelError(f"Two devices have the name '{name}'. NAME=RUN_DIR gives one another.")
    return found, None


async def _serve(options):
    devices, lab = _shown(options)
    server = Server(Panel(devices, lab, options.read_only), options.port)
    end = asyncio.Event()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        asyncio.get_running_loop().add_signal_handler(number, end.set)
    address = await server.start()
    try:
        print(address, flush=True)
        if options.open:
            webbrowser.open(address)
        waits = [asyncio.create_task(end.wait())] + ([asyncio.create_task(lab.ended())] if lab else [])
        await asyncio.wait(waits, return_when=asyncio.FIRST_COMPLETED)
        for wait in waits:
            wait.cancel()
    finally:
        await server.stop()


def main(words):
    options = parse(words)
    try:
        asyncio.run(_serve(options))
        return 0
    except (LabError, PanelError) as problem:
        complaint = str(problem)
    except OSError as problem:
        complaint = f"{problem.filename or 'The server'}: {problem.strerror or problem}."
    print(f"{PROGRAM}: {complaint}", file=sys.stderr)
    return 1
