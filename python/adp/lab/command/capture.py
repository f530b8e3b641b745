"""Writes the frames of a device's port or a host's interface into a file."""

import sys

from ..builds import Build
from ..problem import LabError
from .cabling import port_of
from .ends import end_of
from .namespaces import run

STANDARD_OUTPUT = "-"


def _device_command(record, end, options):
    """pcapng, with an interface a port and directions."""
    build = Build(record.data["build"])
    command = build.command("vdevctl", "--run-dir", record.nodes[end.node]["folder"])
    command += ["capture", STANDARD_OUTPUT, "--port", str(port_of(end))]
    if options.count is not None:
        command += ["--count", str(options.count)]
    return command + (["--for", f"{round(options.seconds * 1000)}ms"] if options.seconds else [])


def _host_command(end, options):
    """pcap. It stays root, who is the only user of an ordinary user's namespace."""
    command = ["tcpdump", "-Z", "root", "-i", end.interface, "--immediate-mode", "-U", "-w", STANDARD_OUTPUT]
    if options.count is not None:
        command += ["-c", str(options.count)]
    timed = ["timeout", "--signal=INT", "--preserve-status", str(options.seconds)] if options.seconds else []
    return timed + command


def capture(record, options):
    """Gives the exit status."""
    end = end_of(record, options.end)
    name = options.write or STANDARD_OUTPUT
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
