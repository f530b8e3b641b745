"""Runs a command where it may make network namespaces: python3 -m adp.lab.isolate COMMAND [ARGUMENT ...]

Root gets a network namespace; an ordinary user gets a user namespace as well, and is root in it. In either, the command
cannot reach the machine's own interfaces. enter() puts the process that calls it there.
"""

import ctypes
import errno
import os
import subprocess
import sys

from .problem import LabError

AS_ROOT = ("--net",)
AS_USER = ("--user", "--map-root-user", "--net")
CLONE_NEWUSER = 0x10000000
CLONE_NEWNET = 0x40000000


def _complaint(flags):
    """Why the system refuses these namespaces, or an empty text."""
    done = subprocess.run(["unshare", *flags, "--", "true"], capture_output=True, text=True, timeout=30)
    return done.stderr.strip() if done.returncode != 0 else ""


def _permitted():
    """The flags of `unshare` that the system lets this user have."""
    kinds = [AS_ROOT, AS_USER] if os.geteuid() == 0 else [AS_USER]
    for flags in kinds:
        complaint = _complaint(flags)
        if not complaint:
            return flags
    raise LabError(
        f"The system does not let this user make namespaces ({complaint}). "
        "Run it as root, or allow unprivileged user namespaces (sysctl user.max_user_namespaces)."
    )


def isolated(command, *flags):
    """The command line that runs a command in the namespaces, and in those of further flags of `unshare`."""
    return ["unshare", *_permitted(), *flags, "--", *command]


def _write(name, text):
    with open(f"/proc/self/{name}", "w", encoding="ascii") as file:
        file.write(text)


def enter():
    """Puts this process into the namespaces, with its loopback up. An ordinary user's may not have threads yet."""
    flags, user, group = _permitted(), os.geteuid(), os.getegid()
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(CLONE_NEWNET | (CLONE_NEWUSER if flags == AS_USER else 0)) != 0:
        problem = ctypes.get_errno()
        threads = " It has threads already." if problem == errno.EINVAL else ""
        raise LabError(
            f"The process cannot enter namespaces of its own ({os.strerror(problem)}).{threads} "
            "Start it with 'python3 -m adp.lab.isolate COMMAND'."
        )
    if flags == AS_USER:
        _write("setgroups", "deny")
        _write("uid_map", f"0 {user} 1")
        _write("gid_map", f"0 {group} 1")
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True, timeout=30)


def main(command):
    if not command:
        sys.exit(__doc__.strip())
    try:
        words = isolated(command)
    except LabError as problem:
        sys.exit(str(problem))
    os.execvp("unshare", words)


if __name__ == "__main__":
    main(sys.argv[1:])
