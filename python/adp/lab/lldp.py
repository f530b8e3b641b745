"""lldpd: neighbours by the Link Layer Discovery Protocol (IEEE 802.1AB)."""

import json
import os

from .program import Program, path_of

TX_INTERVAL_SECONDS = 1
TX_HOLD = 3


NOT_USABLE = "This user may not run lldpcli."


def is_usable():
    """Whether this user may run lldpcli, which Debian gives to root and some others."""
    return path_of("lldpcli") is not None


def _first(values, key="value"):
    return values[0][key] if values else ""


class Lldpd(Program):
    """lldpd of a system on the interfaces that a pattern names, such as "swp*"."""

    def __init__(self, namespace, system, interfaces):
        super().__init__(namespace, f"lldpd of {system}")
        try:
            # lldpcli is another user: it is installed so.
            os.chmod(self.folder, 0o755)
            self._socket = self.path("socket")
            self.start("lldpd", "-d", "-u", self._socket, "-I", interfaces, "-O", os.devnull)
            self.await_start(lambda: self.answers(*self._control("show", "configuration")))
            self.configure("system", "hostname", system)
            self.configure("lldp", "portidsubtype", "ifname")
            self.configure("lldp", "tx-interval", TX_INTERVAL_SECONDS)
            self.configure("lldp", "tx-hold", TX_HOLD)
        except BaseException:
            self.close()
            raise

    def configure(self, *words):
        """Runs `lldpcli configure` with these words."""
        self.run(*self._control("configure", *words))

    def neighbours(self):
        """{own interface: {(the neighbour's system, its port)}}"""
        answer = json.loads(self.run(*self._control("-f", "json0", "show", "neighbors")))
        found = {}
        for table in answer["lldp"]:
            for row in table.get("interface", []):
                system, port = _first(row["chassis"][0].get("name")), _first(row["port"][0]["id"])
                found.setdefault(row["name"], set()).add((system, port))
        return found

    def _control(self, *words):
        return ("lldpcli", "-u", self._socket, *words)
