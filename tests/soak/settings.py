"""Settings of the chip that managers write and read back. Each belongs to one manager.

A setting knows its possible values. That is one, unless its manager was killed between a call and the answer: then it
is one of two, until it is read.
"""

from adp.lab.problem import LabError

OK, DRIVER_FAILED, CALL_LOST = 0, 102, -1
VLAN_MISSING, MAC_MISSING, TRUNK_MISSING = -12, -21, -42
DEFAULT_VLAN = 1
STATIC = 1
WORD_BITS = 32
# Codes of storm control with a limit of their own.
STORM_CODES = (1, 2, 4)
JUMBO, ADMIN_STATE = 6, 3


def word(numbers):
    """A bitmap's first word."""
    return sum(1 << number for number in numbers)


def bits(words):
    """The numbers in a bitmap."""
    places = ((at, bit) for at in range(len(words)) for bit in range(WORD_BITS))
    return frozenset(WORD_BITS * at + bit for at, bit in places if words[at] >> bit & 1)


def listed(ports):
    return "{" + ",".join(map(str, sorted(ports))) + "}"


def failure(answer):
    """What a call that failed has said."""
    return f"status {answer['result']} {answer['meaning'] or ''} {answer['printed']['stderr']}".strip()


class Step:
    """A call that changes a setting: its expected result, and the new value."""

    def __init__(self, line, value, result=OK):
        self.line, self.value, self.result = line, value, result


class Setting:
    """`lost_write` and `lost_read` are the results of the calls while the device is off."""

    lost_write = lost_read = CALL_LOST
    read_line = ""

    def __init__(self, name, at_power_on):
        self.name = name
        self.at_power_on = at_power_on
        self.possible = [at_power_on]

    def value(self):
        return self.possible[0]

    def is_certain(self):
        return len(self.possible) == 1

    def settle(self, value):
        """The value was read or set."""
        self.possible = [value]

    def doubt(self, value):
        """The value is possible as well."""
        if value not in self.possible:
            self.possible.append(value)

    def power_on(self):
        self.settle(self.at_power_on)

    def forget_process(self):
        """The manager has a new process."""

    def lose(self):
        """A call failed because the device was off."""

    def value_of(self, answer):
        """The value in an answer to `read_line`."""
        raise NotImplementedError

    def step(self, random):
        raise NotImplementedError


class Register(Setting):
    """Numbers that are read back as they were set, made by `choose`. The first read gives the power-on values."""

    def __init__(self, name, write, read, outputs, choose, lost=(CALL_LOST, CALL_LOST)):
        super().__init__(name, None)
        self._write, self.read_line = write, read
        self._outputs, self._choose = outputs, choose
        self.lost_write, self.lost_read = lost
        self.power_on()

    def power_on(self):
        # Unknown until the first read.
        self.possible = [] if self.at_power_on is None else [self.at_power_on]

    def settle(self, value):
        if self.at_power_on is None:
            self.at_power_on = value
        super().settle(value)

    def value_of(self, answer):
        if answer["result"] != OK:
            return failure(answer)
        return tuple(answer["outputs"][name] for name in self._outputs)

    def step(self, random):
        value = self._choose(random)
        return Step(self._write.format(*value), value)


class PortSet(Register):
    """A register that is a set of user ports."""

    def value_of(self, answer):
        if answer["result"] != OK:
            return failure(answer)
        return (word(bits(answer["outputs"][self._outputs[0]])),)


class Vlan(Setting):
    """A VLAN of some of the ports: None, or its members and those that are untagged."""

    def __init__(self, vid, ports):
        super().__init__(f"VLAN {vid}", None)
        self._vid, self._ports = vid, ports
        self.read_line = f"adp_vlan_port_get {vid} {{}} {{}}"

    def value_of(self, answer):
        if answer["result"] == VLAN_MISSING:
            return None
        if answer["result"] != OK:
            return failure(answer)
        return tuple(bits(answer["outputs"][name]) for name in ("members", "untagged"))

    def step(self, random):
        if self.value() is None:
            return Step(f"adp_vlan_create {self._vid}", (frozenset(), frozenset()))
        if random.random() < 0.2:
            return Step(f"adp_vlan_destroy {self._vid}", None)
        members = frozenset(port for port in self._ports if random.random() < 0.7)
        untagged = frozenset(port for port in members if random.random() < 0.5)
        return Step(f"adp_vlan_port_set {self._vid} {listed(members)} {listed(untagged)}", (members, untagged))


class Address(Setting):
    """A static address in the default VLAN: None, or its port."""

    def __init__(self, mac, ports):
        super().__init__(f"address {mac.hex(':')}", None)
        self._mac, self._ports = mac.hex(), ports
        self.read_line = f"adp_get_mac_addr {self._mac} {DEFAULT_VLAN}"

    def value_of(self, answer):
        if answer["result"] == MAC_MISSING:
            return None
        return answer["outputs"]["entry"]["port"] if answer["result"] == OK else failure(answer)

    def step(self, random):
        if self.value() is not None and random.random() < 0.4:
            return Step(f"adp_del_mac_addr {self._mac} {DEFAULT_VLAN} 0 0", None)
        port = random.choice(self._ports)
        return Step(f"adp_add_mac_addr {self._mac} {port} {DEFAULT_VLAN} {STATIC}", port)


class Group(Setting):
    """An aggregation group of two ports in the chip: None, or its members. The library's own tables are empty in a new
    process and unchanged by a device that was off, so the group is deleted before it is used again.
    """

    def __init__(self, number, ports, device):
        super().__init__(f"group {number}", None)
        self._number, self._ports, self._device = number, ports, device
        self._is_in_tables = True

    def forget_process(self):
        self._is_in_tables = False

    def power_on(self):
        super().power_on()
        self._is_in_tables = False

    def lose(self):
        self._is_in_tables = False

    def look(self):
        """What the device shows, since the library tells only what it believes itself."""
        rows = self._device.ask("trunks")["trunks"]
        for row in rows:
            if row["trunk"] == self._number - 1:
                return frozenset(row["members"])
        return None

    def step(self, random):
        name = f"agg{self._number}"
        if not self._is_in_tables or self.value():
            result = OK if self.value() is not None else TRUNK_MISSING
            self._is_in_tables = True
            return Step(f"adp_delete_agg_group {name}", None, result)
        if self.value() is None:
            return Step(f"adp_create_agg_group {name}", frozenset())
        return Step(f"adp_add_agg_member_by_map {name} {word(self._ports)} 0", frozenset(self._ports))


def _pair(most_rate, most_burst):
    return lambda random: (random.randrange(most_rate), random.randrange(most_burst))


def _one_of(*values):
    return lambda random: (random.choice(values),)


def registers(port):
    """The settings of a port that are read back as they were set."""
    attribute = (DRIVER_FAILED, DRIVER_FAILED)
    rate = 1_000_000, 4096
    found = [
        Register("learning mode", f"adp_intf_learn_set {port} {{}}", f"adp_intf_learn_get {port}", ["mode"],
                 _one_of(0, 1, 4, 5)),
        Register("spanning-tree state", f"adp_set_port_erps_state {port} {{}}", f"adp_get_port_erps_state {port}",
                 ["state"], _one_of(0, 1, 2, 3, 4)),
        Register("double-tag mode", f"adp_double_tag_set {port} {{}}", f"adp_double_tag_get {port}", ["mode"],
                 _one_of(0, 1, 2), (CALL_LOST, DRIVER_FAILED)),
        Register("TPID", f"adp_double_tag_tipd_set {port} {{}} 0", f"adp_double_tag_tpid_get {port}", ["tpid"],
                 _one_of(0x8100, 0x88A8, 0x9100), (CALL_LOST, DRIVER_FAILED)),
        Register("own priority", f"adp_set_port_cos_map {port} {{}}", f"adp_get_port_cos_map {port}", ["priority"],
                 _one_of(*range(8)), attribute),
        Register("ingress limit", f"adp_set_ingress_limit 0 {port} {{}} {{}}", f"adp_get_ingress_limit 0 {port}",
                 ["rate", "burst"], _pair(*rate), attribute),
        Register("shaper", f"adp_set_port_egress_shaper {port} {{}} {{}}", f"adp_get_port_egress_shaper {port}",
                 ["rate", "burst"], _pair(*rate), attribute),
        PortSet("egress set", f"adp_set_port_isolate {port} {{}} 0", f"adp_get_port_isolatestatus {port}", ["bitmap"],
                lambda random: (random.getrandbits(26) << 1,), attribute),
    ]  # fmt: skip
    for name, selector in (("jumbo frames", JUMBO), ("enable", ADMIN_STATE)):
        found.append(
            Register(name, f"adp_set_phy_port_attr {port} {selector} {{}} 0",
                     f"adp_get_phy_port_attr {port} {selector}", ["value"], _one_of(0, 1), attribute)
        )  # fmt: skip
    for code in STORM_CODES:
        found.append(
            Register(f"storm limit {code}", f"adp_set_storm_control 0 {port} {code} {{}} {{}}",
                     f"adp_get_storm_control 0 {port} {code}", ["rate", "burst"], _pair(*rate), attribute)
        )  # fmt: skip
    for register in found:
        register.name = f"{register.name} of port {port}"
    return found


def check(setting, value):
    """The value that was read must be possible."""
    if setting.possible and value not in setting.possible:
        may_be = " or ".join(map(repr, setting.possible))
        raise LabError(f"The {setting.name} reads {value!r}, but what was acknowledged is {may_be}.")
    setting.settle(value)
