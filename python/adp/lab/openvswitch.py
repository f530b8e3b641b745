"""Open vSwitch in user space: a neighbour that speaks LACP, RSTP and VLANs. It needs /dev/net/tun."""

import json
import os
import re

from .program import Program

SCHEMA = "/usr/share/openvswitch/vswitch.ovsschema"
MEMBER = re.compile(r"^(?:member|slave): (\S+): (.*)$", re.M)
STATE = re.compile(r"^\s*(actor|partner) state: (.*)$", re.M)
BUNDLED = {"synchronized", "collecting", "distributing"}
# The shortest times of IEEE 802.1D-2004, table 17-1.
SHORTEST_RSTP = {"rstp-forward-delay": 4, "rstp-max-age": 6}


NOT_USABLE = "This user may not open /dev/net/tun, which Open vSwitch's bridges need."


def is_usable():
    """Whether bridges can be made: each has an interface of its own, a TAP."""
    return os.access("/dev/net/tun", os.R_OK | os.W_OK)


class OpenVSwitch(Program):
    """A database server and a switch daemon that never touch the kernel's Open vSwitch."""

    def __init__(self, namespace, name="Open vSwitch"):
        super().__init__(namespace, name)
        try:
            self._start()
        except BaseException:
            self.close()
            raise

    def _start(self):
        for variable in ("OVS_RUNDIR", "OVS_LOGDIR", "OVS_DBDIR", "OVS_SYSCONFDIR"):
            self._environment[variable] = self.folder
        database, server = self.path("conf.db"), self.path("db.sock")
        self.run("ovsdb-tool", "create", database, SCHEMA)
        self.start("ovsdb-server", database, f"--remote=punix:{server}", f"--unixctl={self.path('db.ctl')}")
        self.await_start(lambda: os.path.exists(server))
        self.vsctl("--no-wait", "init")
        self.start("ovs-vswitchd", f"unix:{server}", "--disable-system", f"--unixctl={self.path('switch.ctl')}")
        self.await_start(lambda: os.path.exists(self.path("switch.ctl")))

    def vsctl(self, *words):
        """Changes or reads the configuration."""
        return self.run("ovs-vsctl", f"--db=unix:{self.path('db.sock')}", "--timeout=15", *words)

    def appctl(self, *words):
        """Asks the switch daemon."""
        return self.run("ovs-appctl", f"--target={self.path('switch.ctl')}", *words)

    def add_bridge(self, name, *settings):
        """A bridge in the daemon itself, without the kernel; `settings` are columns of it."""
        self.vsctl("add-br", name, "--", "set", "bridge", name, "datapath_type=netdev", *settings)

    def add_rstp_bridge(self, name, priority):
        """A bridge with the Rapid Spanning Tree Protocol."""
        times = [f"other_config:{key}={value}" for key, value in SHORTEST_RSTP.items()]
        self.add_bridge(name, "rstp_enable=true", f"other_config:rstp-priority={priority}", *times)

    def add_port(self, bridge, interface, *settings):
        """`settings` are columns of the port, as "tag=100" or "trunks=100,200"."""
        self.vsctl("add-port", bridge, interface, *settings)

    def add_bond(self, bridge, name, interfaces, key=0):
        """A bond that speaks LACP with fast timeouts; by default Open vSwitch chooses the aggregation key."""
        lacp = ("lacp=active", "other_config:lacp-time=fast", "bond_mode=balance-slb")
        words = ["add-bond", bridge, name, *interfaces, *lacp]
        for interface in interfaces if key else ():
            words += ["--", "set", "interface", interface, f"other_config:lacp-aggregation-key={key}"]
        self.vsctl(*words)

    def stalls(self):
        """How often the switch daemon has found that it stood still for a second or more, waiting for the machine."""
        with open(self.path("log"), encoding="utf-8", errors="replace") as log:
            return log.read().count("Unreasonably long")

    def bundle_states(self, *port):
        """{member: {"actor": words, "partner": words}} of LACP's states, on one port or on all."""
        answer = self.appctl("lacp/show", *port)
        parts = MEMBER.split(answer)[1:]
        return {
            name: {side: set(words.split()) for side, words in STATE.findall(text)}
            for name, _, text in zip(parts[::3], parts[1::3], parts[2::3], strict=True)
        }

    def bundled(self):
        """The members on which both sides collect and distribute."""
        states = self.bundle_states()
        return {name for name, sides in states.items() if all(BUNDLED <= words for words in sides.values()) and sides}

    def rstp_states(self, interfaces):
        """{interface: (role, state)}"""
        columns = ("--format=json", "--columns=name,rstp_status", "list", "port", *interfaces)
        rows = json.loads(self.vsctl(*columns))["data"]
        found = {name: dict(status[1]) for name, status in rows}
        return {name: (status.get("rstp_port_role"), status.get("rstp_port_state")) for name, status in found.items()}
