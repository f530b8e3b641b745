"""A switch: adp-switchd on a device, bridges made with the ordinary tools, hosts and neighbours at the ports.

    with Lab("host", {1, 2}) as lab, contextlib.closing(Switch(lab)) as switch:
        switch.bridge("br10", ["swp1", "swp2"], addresses=["10.0.0.1/24"])
        switch.add(Lldpd(switch.namespace, "switch", "swp*"))
"""

import contextlib
import json

from .host import Neighbour
from .process import poll_until
from .switchd import Switchd

SETTLE_SECONDS = 20.0
USUAL_MTU = 1500


class Switch:
    """adp-switchd on the device of a lab, which is up."""

    def __init__(self, lab, configuration="", has_chip=True):
        self.lab = lab
        self.namespace = lab.device.namespace
        self.has_chip = has_chip
        self._stack = contextlib.ExitStack()
        for host in lab.hosts.values():
            _use_usual_mtu(host.namespace, host.nic.interface)
        if has_chip:
            text = f"user_ports = {lab.device.user_ports}\n{configuration}"
            self.switchd = self.add(Switchd(lab.device, text))

    @property
    def hosts(self):
        """The hosts by their user ports."""
        return self.lab.hosts

    def add(self, closeable):
        """Closes it when the switch is closed; gives it back."""
        return self._stack.enter_context(contextlib.closing(closeable))

    def neighbour(self, ports, name):
        """A neighbour with the cables of these ports, which are up."""
        made = self.add(Neighbour(self.lab.device, ports, name))
        for interface in made.interfaces.values():
            _use_usual_mtu(made.namespace, interface)
        self.raise_ports(*(f"swp{port}" for port in ports))
        for interface in made.interfaces.values():
            poll_until(lambda i=interface: made.namespace.is_operational(i), SETTLE_SECONDS, f"A link to the {name}")
        return made

    def raise_ports(self, *interfaces):
        """Switches ports on, which all are off at first; waits until their hosts can send and receive."""
        self.namespace.ip(*(f"link set {interface} up" for interface in interfaces))
        for port, host in self.hosts.items():
            if f"swp{port}" in interfaces:
                host.await_link()

    def bridge(self, name, members, *settings, addresses=()):
        """A bridge with its members, all up. Settings are words of `ip link ... type bridge`."""
        self.namespace.ip(
            f"link add {name} type bridge {' '.join(settings)}",
            *(f"link set {member} master {name}" for member in members),
            *(f"address add {address} dev {name}" for address in addresses),
        )
        self.raise_ports(name, *members)

    def pull(self, port):
        """Pulls the cable of a port."""
        self.lab.device.control("pull", port)

    def plug(self, port):
        """Plugs it in again."""
        self.lab.device.control("plug", port)

    def await_chip(self, what, condition):
        """Waits until the chip's tables are as the scenario wants them; `condition` gets what `vdevctl` answers."""
        if self.has_chip:
            poll_until(lambda: condition(self.lab.device.control), SETTLE_SECONDS, f"In the chip: {what}")

    def bridge_ports(self):
        """{interface: what the kernel knows of it as a bridge's port}"""
        rows = json.loads(self.namespace.run("ip", "-json", "-details", "link", "show"))
        found = {row["ifname"]: row.get("linkinfo", {}).get("info_slave_data") for row in rows}
        return {name: data for name, data in found.items() if data}

    def close(self):
        self._stack.close()


def _use_usual_mtu(namespace, interface):
    """The device's cables carry longer frames than the switch forwards as it is set up."""
    namespace.ip(f"link set {interface} mtu {USUAL_MTU}")


def chip_state(device):
    """What software has set in the chip, without what the chip counts and learns."""
    ask = device.control
    settings = ("port", "enabled", "pvid", "learning", "egress", "jumbo", "speed", "autoneg")
    return {
        "ports": [{name: row[name] for name in settings} for row in ask("ports")["ports"]],
        "vlans": ask("vlans")["vlans"],
        "ageing time": ask("macs")["age_time"],
        "addresses": [row for row in ask("macs")["macs"] if row["static"]],
        "groups of addresses": [{name: row[name] for name in ("vid", "mac", "ports")} for row in ask("mcast")["mcast"]],
        "rules for groups": ask("mcast")["ports"],
        "spanning tree": ask("groups")["groups"],
        "trunks": ask("trunks"),
        "reserved": ask("reserved"),
    }
