"""FRR: an OSPF router, with its zebra, in a namespace."""

import json

from .program import Program

INTERFACE = """\
interface {name}
 ip ospf hello-interval 1
 ip ospf dead-interval 4
"""
ROUTER = """\
router ospf
 ospf router-id {router_id}
 timers throttle spf 0 50 200
 timers throttle lsa all 0
 timers lsa min-arrival 0
 network 0.0.0.0/0 area 0
"""


class OspfRouter(Program):
    """zebra and ospfd on these interfaces; each network of the namespace is announced."""

    def __init__(self, namespace, router_id, interfaces):
        super().__init__(namespace, f"OSPF router {router_id}")
        try:
            allow_forwarding(namespace)
            text = "".join(INTERFACE.format(name=name) for name in interfaces) + ROUTER.format(router_id=router_id)
            self._start("zebra", "log stdout\n")
            self._start("ospfd", "log stdout\n" + text)
        except BaseException:
            self.close()
            raise

    def _start(self, daemon, text):
        # As the user who starts it: a namespace of an ordinary user has no others.
        self.start(
            *(daemon, "-f", self.write(f"{daemon}.conf", text), "-i", self.path(f"{daemon}.pid")),
            *("-z", self.path("zserv.api"), "--vty_socket", self.folder, "-P", "0", "-u", "root", "-g", "root"),
        )
        self.await_start(lambda: self.answers(*self._ask(daemon, "show version")))

    def neighbours(self):
        """{router id: state}, such as "Full"."""
        answer = json.loads(self.run(*self._ask("ospfd", "show ip ospf neighbor json")))["neighbors"]
        return {
            router_id: (rows[0].get("nbrState") or rows[0].get("state", "")).partition("/")[0]
            for router_id, rows in answer.items()
        }

    def routes(self):
        """The networks that zebra has put into the kernel for OSPF."""
        answer = json.loads(self.run(*self._ask("zebra", "show ip route ospf json")))
        return {network for network, rows in answer.items() if any(row.get("installed") for row in rows)}

    def _ask(self, daemon, command):
        return ("vtysh", "--vty_socket", self.folder, "-d", daemon, "-c", command)


def allow_forwarding(namespace):
    """Lets the namespace's kernel route IPv4 packets."""
    with namespace.entered(), open("/proc/sys/net/ipv4/ip_forward", "w", encoding="ascii") as setting:
        setting.write("1")
