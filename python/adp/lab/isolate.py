"""Runs a command where it may make network namespaces: python3 -m adp.lab.isolate COMMAND [ARGUMENT ...]

Root gets a network namespace; an ordinary user gets a user namespace as well, and is root in it. In either, the command
cannot reach the machine's own interfaces.
"""

import os
import subprocess
import sys

AS_ROOT = ("--net",)
AS_USER = ("--user", "--map-root-user", "--net")


def _complaint(flags):
    """Why the system refuses these namespaces, or an empty text."""
    done = subprocess.run(["unshare", *flags, "--", "true"], capture_output=True, text=True, timeout=30)
    return done.stderr.strip() if done.returncode != 0 else ""


def main(command):
    if not command:
        sys.exit(__doc__.strip())
    kinds = [AS_ROOT, AS_USER] if os.geteuid() == 0 else [AS_USER]
    for flags in kinds:
        complaint = _complaint(flags)
        if not complaint:
            os.execvp("unshare", ["unshare", *flags, "--", *command])
    sys.exit(
        f"The system does not let this user make namespaces ({complaint}). "
        "Run it as root, or allow unprivileged user namespaces (sysctl user.max_user_namespaces)."
    )


if __name__ == "__main__":
    main(sys.argv[1:])
