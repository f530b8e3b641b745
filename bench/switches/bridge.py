"""The Linux bridge as a switch to be measured. It has no process: it works on the core of whoever sends."""

import json
import subprocess

from .bed import PORTS, near_end

NAME = "bridge"
COMMAND_SECONDS = 30.0


class Bridge:
    name = "Linux bridge"
    takes_rules = False
    passes_frames = True

    def __init__(self, bed):
        self._namespace = bed.namespace
        ports = [f"link set {near_end(port)} master {NAME}" for port in PORTS]
        bed.namespace.ip(f"link add {NAME} type bridge stp_state 0 mcast_snooping 0", *ports, f"link set {NAME} up")

    def processes(self):
        return []

    def addresses(self):
        with self._namespace.entered():
            done = subprocess.run(["bridge", "-json", "fdb", "show", "br", NAME, "dynamic"], check=True,
                                  capture_output=True, timeout=COMMAND_SECONDS)  # fmt: skip
        return len([row for row in json.loads(done.stdout or "[]") if row.get("state") != "permanent"])

    def close(self):
        self._namespace.ip(f"link delete {NAME}")


class NoSwitch:
    """Frames end at the port: what the stream alone takes."""

    name = "no switch"
    takes_rules = False
    passes_frames = False

    def __init__(self, _bed):
        pass

    def processes(self):
        return []

    def close(self):
        pass
