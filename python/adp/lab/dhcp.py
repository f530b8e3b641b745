"""DHCP: dnsmasq gives addresses, udhcpc asks for one."""

import re

from .program import Program

LEASE = re.compile(r"lease of (\S+) obtained")

SCRIPT = """\
#!/bin/sh
case $1 in
    deconfig) ip address flush dev "$interface" ;;
    bound | renew)
        ip address replace "$ip/$mask" dev "$interface"
        [ -z "$router" ] || ip route replace default via "${router%% *}"
        ;;
esac
"""


class Dnsmasq(Program):
    """dnsmasq as the DHCP server of networks: {interface: (first address, last address)}."""

    def __init__(self, namespace, ranges):
        super().__init__(namespace, "dnsmasq")
        try:
            words = []
            for interface, (first, last) in ranges.items():
                words += [f"--interface={interface}", f"--dhcp-range={first},{last},2m"]
            leases, pid = self.path("leases"), self.path("pid")
            self.start(
                *("dnsmasq", "--no-daemon", "--conf-file=/dev/null", "--port=0", "--no-ping", "--dhcp-authoritative"),
                *("--bind-interfaces", f"--dhcp-leasefile={leases}", f"--pid-file={pid}", *words),
            )
            self.await_start(lambda: "DHCP, IP range" in self.log())
        except BaseException:
            self.close()
            raise

    def leases(self):
        """{MAC address: IP address}"""
        with open(self.path("leases"), encoding="ascii") as file:
            rows = [line.split() for line in file]
        return {row[1]: row[2] for row in rows}


class Udhcpc(Program):
    """udhcpc on an interface. It sets the address that it gets, and renews it until it is closed."""

    def __init__(self, namespace, interface):
        super().__init__(namespace, f"udhcpc on {interface}")
        self._interface = interface
        try:
            script = self.write("script", SCRIPT, 0o700)
            self.start("udhcpc", "-f", "-i", interface, "-s", script, "-t", "20", "-T", "1")
        except BaseException:
            self.close()
            raise

    def has_lease(self):
        """Whether it has got an IP address."""
        return bool(self.address())

    def address(self):
        """The IP address that it has got; "" without one."""
        found = LEASE.findall(self.log())
        return found[-1] if found else ""

    def release(self):
        """Ends it and gives the lease back."""
        self.end_processes()
