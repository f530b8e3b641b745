"""Random arguments of a call: what programs give, and what lies beside it."""
import ctypes

from caller import HANDLER

import adp
from adp import frames, parameters
from adp.memory import RECORDS, FewPorts, Ports

NUMBERS = (0, 0, 1, 1, 1, 2, 2, 3, 4, 5, 7, 8, 11, 16, 25, 26, 27, 63, 64, 100, 101, 255, 4094, 4095)
INTERFACES = (0, 1, 2, 3, 4, 26, 27, adp.agg(1), adp.agg(2), adp.agg(8), 0x10000009, 0x20000001, 0xFFFFFFFF)
VLANS = (0, 1, 100, 101, 102, 4094, 4095, 70000)
# What most calls do not refuse.
PLAIN = {"intf": (1, 2, 3, adp.agg(1)), "vid": (1, 100), "other": (0, 0, 1)}
ZERO = ("unit", "zero", "handle")
MACS = (bytes.fromhex("020000000001"), bytes.fromhex("01005e010203"), bytes.fromhex("0180c2000000"))
TYPES = (bytes.fromhex("81000064"), bytes.fromhex("91000064810000650800"), b"", bytes.fromhex("0800"))
MOST_ROOM = 40
# Sizes of memory that stays.
SMALL = {"adp_set_max_phy_port_num": range(20, 28)}


class RandomArguments:
    """The arguments of calls, from one source of random numbers."""

    def __init__(self, random):
        self._random = random
        self._is_plain = True

    def arguments(self, call):
        self._is_plain = self._random.random() < 0.6
        return [self.argument(call, each) for each in call.parameters if each.given]

    def argument(self, call, parameter):
        if call.name in SMALL:
            return self._random.choice(SMALL[call.name])
        kind = type(parameter)
        if kind in (parameters.Callback,):
            return self._random.choice((HANDLER, None))
        if kind is parameters.Text:
            return self._random.choice(("eth0", "a name", "lo"))
        if kind is parameters.PortsWord:
            return self._random.choice((None, self.ports(256)))
        if kind is frames.DestinationsIn:
            return self._random.choice((None, self.interfaces()))
        if kind is frames.TxFrameIn:
            return adp.TxFrame(self.frame(), self._random.choice(INTERFACES))
        if kind is frames.RxFrameInOut:
            return adp.RxFrame(self.frame())
        if any(isinstance(each, parameters.Room) and each.room == parameter.name for each in call.parameters):
            return self._random.randrange(MOST_ROOM)
        if isinstance(parameter, parameters.Counted):
            return self.counted(parameter)
        return self.value(parameter.name, parameter.kind)

    def counted(self, parameter):
        if parameter.kind is ctypes.c_uint8:
            return self.frame() if "frame" in parameter.name else self.octets(self._random.choice((0, 1, 2, 4, 6, 65)))
        return self.interfaces()

    def interfaces(self):
        return [self._random.randrange(28) for _ in range(self._random.randrange(5))]

    def octets(self, count):
        return self._random.randbytes(count)

    def ports(self, most):
        return adp.PortSet(self._random.sample(range(0, most if self._random.random() < 0.1 else 27), 3))

    def frame(self):
        head = self._random.choice(MACS) + MACS[0] + bytes.fromhex("88740000") + bytes([0, self._random.randrange(32)])
        whole = head + self._random.choice(TYPES) + bytes.fromhex("080045") + bytes(50)
        return whole[: self._random.choice((5, 12, 18, 24, 60, 70))]

    def value(self, name, kind):
        if kind in (Ports, FewPorts):
            return self.ports(32 * kind._length_)
        if issubclass(kind, ctypes.Array):
            if name == "mac":
                return MACS[0] if self._is_plain else self._random.choice(MACS)
            if kind._type_ is ctypes.c_uint8:
                return self.octets(kind._length_)
            return [self.value(name, kind._type_) for _ in range(kind._length_)]
        if issubclass(kind, ctypes.Structure):
            fields = dict(kind._fields_)
            return RECORDS[kind](**{each: self.value(each, fields[each]) for each in fields})
        return self.number(name, kind)

    def number(self, name, kind):
        what = next((each for each in ("intf", "vid") if each in name), "other")
        pool = PLAIN[what] if self._is_plain else {"intf": INTERFACES, "vid": VLANS, "other": NUMBERS}[what]
        if self._is_plain and name in ZERO:
            return 0
        if kind(-1).value < 0 and not self._is_plain:
            pool += (-1,)
        found = self._random.choice(pool)
        return found if kind(found).value == found else 1
