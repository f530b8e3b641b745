"""Open vSwitch with its user-space datapath as a switch to be measured: its own database, sockets and logs."""

import contextlib
import ipaddress
import os
import pathlib
import re
import shutil
import subprocess
import tempfile

from bench.problem import BenchError
from adp.lab.process import poll_until, stop, tied

from .bed import PORTS, near_end
from .rules import SENDER_PORT

NAME = "br0"
SCHEMA = "/usr/share/openvswitch/vswitch.ovsschema"
FOLDERS = ("OVS_RUNDIR", "OVS_LOGDIR", "OVS_DBDIR")
# An ordinary user may not have the folder of the daemons in his path.
SEARCH_PATH = f"{os.environ['PATH']}:/usr/sbin"
COMMAND_SECONDS = 60.0
START_SECONDS = 20.0
# Its table has 8192 entries like the device's unless it is told otherwise. With room to spare none is ever evicted.
MAC_TABLE = 16384
RULE_PRIORITY = 100
LEARNED = re.compile(r"Current/maximum MAC entries in the table: (\d+)/")


class OpenVSwitch:
    name = "Open vSwitch"
    takes_rules = True
    passes_frames = True

    def __init__(self, bed):
        if not shutil.which("ovs-vswitchd", path=SEARCH_PATH):
            raise BenchError("Open vSwitch is missing. Install it with 'script/setup bench'.")
        self._namespace = bed.namespace
        with contextlib.ExitStack() as stack:
            self._folder = stack.enter_context(tempfile.TemporaryDirectory(prefix="ovs-"))
            path = pathlib.Path(self._folder)
            self._database, self._control = f"unix:{path}/db.sock", f"{path}/switch.ctl"
            self._environment = {**os.environ, **dict.fromkeys(FOLDERS, str(path)), "PATH": SEARCH_PATH}
            self._run("ovsdb-tool", "create", path / "conf.db", SCHEMA)
            self._daemon(stack, "ovsdb-server", path / "conf.db", f"--remote=p{self._database}",
                         f"--unixctl={path}/db.ctl")  # fmt: skip
            self._await(path / "db.sock")
            self._run("ovs-vsctl", f"--db={self._database}", "--no-wait", "init")
            self._switch = self._daemon(stack, "ovs-vswitchd", self._database, f"--unixctl={self._control}")
            self._await(self._control)
            self._make_bridge()
            self._stack = stack.pop_all()

    def _make_bridge(self):
        ports = [word for port in PORTS for word in ("--", "add-port", NAME, near_end(port))]
        settings = ["--", "set", "bridge", NAME, "datapath_type=netdev", f"other_config:mac-table-size={MAC_TABLE}"]
        requests = [
            word
            for port in PORTS
            for word in ("--", "set", "interface", near_end(port), f"ofport_request={port}")
        ]
        self._run("ovs-vsctl", f"--db={self._database}", "add-br", NAME, *settings, *ports, *requests)

    def _daemon(self, stack, *command):
        with self._namespace.entered():
            process = subprocess.Popen(tied([*command, "--verbose=off"]), env=self._environment)
        stack.callback(stop, process)
        return process

    @staticmethod
    def _await(path):
        poll_until(pathlib.Path(path).exists, START_SECONDS, f"The start of Open vSwitch, which makes {path},")

    def _run(self, *command):
        with self._namespace.entered():
            done = subprocess.run(list(map(str, command)), env=self._environment, capture_output=True, text=True,
                                  timeout=COMMAND_SECONDS)  # fmt: skip
        if done.returncode != 0:
            raise BenchError(f"'{' '.join(map(str, command[:4]))}' failed: {done.stderr.strip()}")
        return done.stdout

    def processes(self):
        return [self._switch.pid]

    def addresses(self):
        return int(LEARNED.search(self._run("ovs-appctl", "-t", self._control, "fdb/stats-show", NAME))[1])

    def add_rules(self, rules):
        path = pathlib.Path(self._folder) / "flows"
        path.write_text("".join(flow(rule) + "\n" for rule in rules), encoding="ascii")
        self._run("ovs-ofctl", "add-flows", NAME, path)
        installed = self._run("ovs-ofctl", "dump-flows", NAME).count("actions=drop")
        if installed != len(rules):
            raise BenchError(f"{installed} of {len(rules)} flows are installed.")

    def delete_rules(self, _rules):
        self._run("ovs-ofctl", "del-flows", NAME, f"in_port={SENDER_PORT}")

    def close(self):
        self._stack.close()


def flow(rule):
    """The rule as a line for ovs-ofctl."""
    match = [f"in_port={SENDER_PORT}", f"priority={RULE_PRIORITY}", "udp" if rule.udp_port else "ip"]
    for name, address in (("nw_dst", rule.destination), ("nw_src", rule.source)):
        match += [f"{name}={ipaddress.IPv4Address(address)}"] if address is not None else []
    match += [f"tp_dst={rule.udp_port}"] if rule.udp_port is not None else []
    return ",".join(match) + ",actions=drop"
