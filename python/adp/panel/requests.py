"""Which requests of the page go to a device."""

import json

from .problem import PanelError

READS = frozenset(
    "ports vlans macs mcast limits trunks counters log events reserved mirrors groups translations priorities fields "
    "storm meters queues cables version explain".split()
)
CHANGES = frozenset("pull plug cable".split())


def _checked(request, allowed, what):
    command = request.get("command") if isinstance(request, dict) else None
    if not isinstance(command, str):
        raise PanelError("A request is an object with a command.")
    if command not in allowed:
        raise PanelError(f"The command '{command[:40]}' is not {what}.")
    if "arguments" in request:
        raise PanelError("Arguments and options are given by their names.")
    return request


def asked(request, read_only):
    """A request that is answered once; it may change the device."""
    if isinstance(request, dict) and read_only and request.get("command") in list(CHANGES):
        raise PanelError("This panel is read-only.")
    return _checked(request, READS | CHANGES, "among those that the panel asks")


def read(request):
    """A request that is repeated."""
    return _checked(request, READS, "among those that the panel reads")


def streamed(request, streams):
    """A request that is answered by lines."""
    return _checked(request, streams, "a stream")


def octets_of(request):
    """The request as a device takes it."""
    return json.dumps(request, separators=(",", ":"), sort_keys=True).encode()
