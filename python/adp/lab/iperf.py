"""iperf3: TCP between two namespaces, as a steady load or as fast as it can."""

import contextlib
import json
import re

from .problem import LabError
from .process import poll_until
from .program import Program

LISTEN_SECONDS = 10.0
INTERVAL = re.compile(r"([\d.]+) Mbits/sec")


def listening(namespace, address):
    """A server for one client."""
    server = Program(namespace, f"iperf3 on {address}")
    try:
        server.start("iperf3", "--server", "--one-off", "--forceflush")
        server.await_start(lambda: "listening" in server.log())
    except BaseException:
        server.close()
        raise
    return server


def tcp_megabits(client, server, address, seconds, *options):
    """Mbit/s that arrive of TCP from the client's namespace to the server's; with "--reverse" the other way."""
    words = ("iperf3", "--client", address, "--json", "--time", seconds, *options)
    with contextlib.closing(listening(server, address)), contextlib.closing(Program(client, "iperf3")) as program:
        return megabits_of(program.run(*words))


def megabits_of(result):
    """Mbit/s that arrived, of a client's result in JSON."""
    try:
        return json.loads(result)["end"]["sum_received"]["bits_per_second"] / 1e6
    except (ValueError, KeyError):
        raise LabError(f"iperf3 has no result: {result[:200]}") from None


class Iperf(Program):
    """A client and a server, at so many Mbit/s until it is closed."""

    def __init__(self, client, server, address, megabits=20):
        super().__init__(client, f"iperf3 to {address}")
        try:
            self._server = listening(server, address)
            words = ("--bitrate", f"{megabits}M", "--time", "0", "--format", "m", "--forceflush")
            self.start("iperf3", "--client", address, *words)
            poll_until(self._rates, LISTEN_SECONDS, "A first result of iperf3")
        except BaseException:
            self.close()
            raise

    def _rates(self):
        """Mbit/s in each second."""
        return [float(rate) for rate in INTERVAL.findall(self.log())]

    def summary(self):
        """The slowest and the fastest second, in a few words."""
        rates = self._rates()
        return f"iperf3 {min(rates):.0f} to {max(rates):.0f} Mbit/s"

    def close(self):
        super().close()
        if hasattr(self, "_server"):
            self._server.close()
