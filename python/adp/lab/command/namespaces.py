"""How commands enter the namespaces of a lab, through its background process."""

import ctypes
import functools
import os
import signal
import subprocess

from ..problem import LabError
from .programs import not_started

_libc = ctypes.CDLL(None, use_errno=True)
INTERRUPTED = 128


PLACE = ("ns/mnt", "ns/pid")  # files and processes as the lab's programs see them


def _kinds(record, place):
    """The namespaces of the lab, the user namespace first if the lab has one of its own."""
    same_user = os.path.samestat(os.stat("/proc/self/ns/user"), os.stat(f"/proc/{record.keeper}/ns/user"))
    return [*place] if same_user else ["ns/user", *place]


def _open(record, entries):
    return [os.open(f"/proc/{record.keeper}/{entry}", os.O_RDONLY | os.O_CLOEXEC) for entry in entries]


def _set(descriptor, name):
    if _libc.setns(descriptor, 0) != 0:
        reason = os.strerror(ctypes.get_errno())
        raise LabError(f"The system does not let this process enter the lab '{name}': {reason}.")
    os.close(descriptor)


def enter(record, *nodes, place=PLACE):
    """Puts this process, which has one thread, into the lab: its children have the lab's process ids. Gives for each node
    a function that enters its network. Without a place the process only gets the right to enter networks.
    """
    folder = os.getcwd()
    try:
        lab = _open(record, _kinds(record, place))
        networks = _open(record, [f"fd/{record.nodes[node]['namespace']}" for node in nodes])
    except FileNotFoundError:
        raise LabError(record.folder.how_it_ended()) from None
    except OSError as problem:
        raise LabError(f"The lab '{record.name}' cannot be entered: {problem.strerror}.") from None
    for descriptor in lab:
        _set(descriptor, record.name)
    try:
        os.chdir(folder)
    except OSError:  # mounted since the lab was started
        os.chdir("/")
    return [functools.partial(_set, network, record.name) for network in networks]


def run(record, node, command, environment=None, **options):
    """Runs a program on a node; gives its exit status as a shell does."""
    (enter_network,) = enter(record, node)
    enter_network()
    # An interrupt is meant for the program, which would inherit SIG_IGN but does not inherit a handler.
    for number in (signal.SIGINT, signal.SIGQUIT):
        signal.signal(number, lambda *_: None)
    environment = {**record.environment(node), **(environment or {})}
    try:
        status = subprocess.Popen(command, env=environment, **options).wait()
    except OSError as problem:
        raise not_started(node, command, environment, problem) from None
    return status if status >= 0 else INTERRUPTED - status


def pids_outside(record):
    """{process id in the lab: the one that others see}"""
    namespace = os.stat(f"/proc/{record.keeper}/ns/pid")
    found = {}
    for entry in filter(str.isdigit, os.listdir("/proc")):
        try:
            if os.path.samestat(os.stat(f"/proc/{entry}/ns/pid"), namespace):
                with open(f"/proc/{entry}/status", encoding="ascii", errors="replace") as status:
                    inside = next(line.split()[-1] for line in status if line.startswith("NSpid:"))
                found[int(inside)] = int(entry)
        except OSError:  # it has ended, or is another user's
            continue
    return found
