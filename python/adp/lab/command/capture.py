"""Writes the frames of a device's port or a host's interface into a file."""

import shutil
import sys

from ..builds import Build
from ..problem import LabError
from .cabling import port_of
from .ends import end_of
from .namespaces import run

STANDARD_OUTPUT = "-"
HOST_PROGRAM = "dumpcap"


def _device_command(record, end, options):
    """pcapng, with an interface a port and directions."""
    build = Build(record.data["build"])
    command = build.command("vdevctl", "--run-dir", record.nodes[end.node]["folder"])
    command += ["capture", STANDARD_OUTPUT, "--port", str(port_of(end))]
    if options.count is not None:
        command += ["--count", str(options.count)]
    return command + (["--for", f"{round(options.seconds * 1000)}ms"] if options.seconds else [])


def _host_command(end, options):
    """pcapng, too. tcpdump would want to be another user, of whom an ordinary user's namespace has none."""
    command = [HOST_PROGRAM, "-q", "-i", end.interface, "-w", STANDARD_OUTPUT]
    if options.count is not None:
        command += ["-c", str(options.count)]
    return command + (["-a", f"duration:{options.seconds:g}"] if options.seconds else [])


def capture(record, options):
    """Gives the exit status."""
    end = end_of(record, options.end)
    name = options.write or STANDARD_OUTPUT
    if not record.topology.nodes[end.node].is_device and not shutil.which(HOST_PROGRAM):
        raise LabError(f"{HOST_PROGRAM} is not installed. It is in Debian's package wireshark-common.")
    if name == STANDARD_OUTPUT and sys.stdout.isatty():
        raise LabError("Frames are not for a terminal. Write them into a file (-w FILE) or a pipe.")
    command = (
        _device_command(record, end, options)
        if record.topology.nodes[end.node].is_device
        else _host_command(end, options)
    )
    if name == STANDARD_OUTPUT:
        return run(record, end.node, command)
    with open(name, "wb") as file:
        return run(record, end.node, command, stdout=file)
