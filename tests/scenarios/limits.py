"""Storm control and the ingress limit, by the library's calls, and as the device shows them."""

from adp.testing.packet import Packet
from rate import reading

NO_DEVICE = 1
DEVICE = 0
BROADCAST, MULTICAST, UNKNOWN, JOINT = 1, 2, 4, 8
TYPE_NAMES = {BROADCAST: "broadcast", MULTICAST: "multicast", UNKNOWN: "unknown_unicast", JOINT: "joint"}
ALL_CODES = tuple(TYPE_NAMES)
# As the enable call and the counting mode take them.
ALL_TYPES = 0
OCTETS, FRAMES = 0, 1
STRANGER = "02:00:00:00:a0:02"
DESTINATIONS = {BROADCAST: "ff:ff:ff:ff:ff:ff", MULTICAST: "01:00:5e:01:02:03", UNKNOWN: STRANGER}
CHECK_SEQUENCE_BYTES = 4
KILOBIT_BYTES = 125
# So slow that nothing comes together while a scenario sends its frames: a kilobit takes a second.
CRAWL = 1


def kilobit_packet(lab, **fields):
    """A packet whose frame uses a kilobit of a limit, so that a burst is a number of frames."""
    packet = Packet(**fields)
    bare = len(packet.build(lab.marker()))
    return packet.but(padding=KILOBIT_BYTES - CHECK_SEQUENCE_BYTES - bare)


class Limits:
    """Limits of some ports; tidy() removes them."""

    def __init__(self, cpu, ports):
        self._cpu, self._ports = cpu, ports

    def _set(self, *words):
        assert self._cpu.result(*words) == 0

    def _get(self, *words):
        answer = self._cpu.call(*words)
        assert answer["result"] == 0
        return answer["outputs"]

    def storm(self, interface, code, rate, burst):
        self._set("adp_set_storm_control", DEVICE, interface, code, rate, burst)

    def read_storm(self, interface, code):
        """(rate, burst)"""
        outputs = self._get("adp_get_storm_control", DEVICE, interface, code)
        return outputs["rate"], outputs["burst"]

    def ingress(self, port, rate, burst):
        self._set("adp_set_ingress_limit", DEVICE, port, rate, burst)

    def read_ingress(self, port):
        """(rate, burst)"""
        outputs = self._get("adp_get_ingress_limit", DEVICE, port)
        return outputs["rate"], outputs["burst"]

    def select(self, port, code, value):
        self._set("adp_set_storm_seltype", DEVICE, port, code, value)

    def selection(self, port, code):
        return self._get("adp_get_storm_seltype", DEVICE, port, code)["selected"]

    def enable(self, port, code, value):
        self._set("adp_set_stormcontrol_enable", DEVICE, port, code, value)

    def count(self, selector, mode):
        self._set("adp_set_storm_counting_mode", DEVICE, selector, 0, mode)

    def counting(self, selector):
        return self._get("adp_get_storm_counting_mode", DEVICE, selector, 0)["mode"]

    def exceeded(self, port):
        """Codes of the types whose limit was exceeded."""
        return {code for code in ALL_CODES if self._get("adp_get_storm_exceed_flag", DEVICE, port, code)["flag"]}

    def reset(self, interface):
        self._set("adp_reset_storm_exceed_flag", DEVICE, interface)

    def tidy(self):
        for port in self._ports:
            for code in ALL_CODES:
                self.storm(port, code, 0, 0)
            self.select(port, JOINT, 1)
            self.enable(port, ALL_TYPES, 1)
            self.reset(port)
            self.ingress(port, 0, 0)
        self.count(ALL_TYPES, OCTETS)

    # As the device shows them

    def shown(self, port, code):
        """The reading of a storm limit."""
        answer = self._cpu.lab.device.ask("storm")
        return reading(answer["storm"], answer["time"], port=port, type=TYPE_NAMES[code])

    def shown_ingress(self, port):
        """The reading of an ingress limit."""
        answer = self._cpu.lab.device.ask("storm")
        return reading(answer["ingress"], answer["time"], port=port)

    def drops(self, port):
        """(frames over a storm limit, frames over the ingress limit) since the device was switched on."""
        rows = self._cpu.lab.device.control("counters")["counters"]
        drops = next(row["drops"] for row in rows if row["port"] == port)
        return drops["storm"], drops["policed"]
