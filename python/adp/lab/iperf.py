"""iperf3: TCP between two namespaces as a steady load."""

import re

from .process import poll_until
from .program import Program

LISTEN_SECONDS = 10.0
INTERVAL = re.compile(r"([\d.]+) Mbits/sec")


class Iperf(Program):
    """A client and a server, at so many Mbit/s until it is closed."""

    def __init__(self, client, server, address, megabits=20):
        super().__init__(client, f"iperf3 to {address}")
        try:
            self._server = Program(server, f"iperf3 on {address}")
            self._server.start("iperf3", "--server", "--one-off", "--forceflush")
            self._server.await_start(lambda: "listening" in self._server.log())
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
        rates = self._rates()
        return f"iperf3 {min(rates):.0f} to {max(rates):.0f} Mbit/s"

    def close(self):
        super().close()
        if hasattr(self, "_server"):
            self._server.close()
