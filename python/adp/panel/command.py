"""The program adp-panel, from its beginning to its end."""

import asyncio
import contextlib
import os
import pathlib
import re
import shlex
import signal
import sys
import tempfile
import threading
import webbrowser

from ..lab.builds import native_build
from ..lab.command.run_folder import folders
from ..lab.problem import LabError
from .device import Device
from .lab import Lab
from .options import PROGRAM, parse
from .panel import Panel
from .problem import PanelError
from .server import Server


def _typed(program):
    """The program as a person types it here."""
    build = native_build()
    return program if build.folder is None else shlex.quote(os.path.relpath(build.folder / program))


def _single(text, recordings):
    """A device that is named by its run folder."""
    name, path = re.fullmatch("(?:([^/]*)=)?(.*)", text, re.DOTALL).groups()
    folder = pathlib.Path(path).absolute()
    if not folder.exists() and text in [lab.name for lab in folders()]:
        raise PanelError(f"There is no folder '{text}'. '{PROGRAM} --lab {text}' shows the lab of this name.")
    name = name or folder.name
    word = shlex.quote(str(folder))
    commands = {
        "vdevctl": f"{_typed('vdevctl')} --run-dir {word}",
        "adpsh": f"{_typed('adpsh')} --run-dir {word}",
        "exec": f"env VDEVICE_DIR={word}",
    }
    return Device(name, folder, native_build().command("vdevctl", "--run-dir", folder), commands, recordings)


def _default_folder():
    return os.environ.get("VDEVICE_DIR") or f"/tmp/vdevice-{os.geteuid()}"


def _shown(options):
    """(devices, lab)"""
    if options.lab and options.devices:
        raise PanelError("Name a lab or run folders, not both.")
    if options.lab or (not options.devices and (os.environ.get("ADP_LAB") or folders())):
        lab = Lab(options.lab)
        return lab.devices(options.recording), lab
    found = [_single(text, options.recording) for text in options.devices or [f"device={_default_folder()}"]]
    names = [device.name for device in found]
    for name in names:
        if names.count(name) > 1:
            raise PanelError(f"Two devices have the name '{name}'. NAME=RUN_DIR gives one another.")
    return found, None


@contextlib.contextmanager
def _opened(address):
    """Opens the page by a file that only this user may read: everybody sees the words with which a browser is started."""
    with tempfile.NamedTemporaryFile("w", prefix="adp-panel-", suffix=".html") as file:
        file.write(f'<meta http-equiv="refresh" content="0; url={address}"><a href="{address}">The panel</a>\n')
        file.flush()
        # Some browsers are waited for.
        threading.Thread(target=webbrowser.open, args=(f"file://{file.name}",), daemon=True).start()
        yield


async def _until_end(end, lab):
    """Until the event is set, or the lab ends."""
    waits = [asyncio.create_task(end.wait())] + ([asyncio.create_task(lab.ended())] if lab else [])
    await asyncio.wait(waits, return_when=asyncio.FIRST_COMPLETED)
    for wait in waits:
        wait.cancel()


async def _serve(options):
    devices, lab = _shown(options)
    server = Server(Panel(devices, lab, options.read_only), options.port)
    end = asyncio.Event()
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        asyncio.get_running_loop().add_signal_handler(number, end.set)
    address = await server.start()
    try:
        print(address, flush=True)
        with _opened(address) if options.open else contextlib.nullcontext():
            await _until_end(end, lab)
    finally:
        await server.stop()
    return f"The lab '{lab.name}' has ended." if lab and not end.is_set() else ""


def main(words):
    options = parse(words)
    try:
        if ending := asyncio.run(_serve(options)):
            print(f"{PROGRAM}: {ending}", file=sys.stderr)
        return 0
    except (LabError, PanelError) as problem:
        complaint = str(problem)
    except OSError as problem:
        complaint = f"{problem.filename or 'The server'}: {problem.strerror or problem}."
    print(f"{PROGRAM}: {complaint}", file=sys.stderr)
    return 1
