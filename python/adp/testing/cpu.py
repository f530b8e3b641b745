"""The device's CPU: the library's calls, made by adpsh, and undone after each test."""

import contextlib
import functools

import adp
from adp.lab import LabError

from .calls import remote_call, text_of

DEFAULT_VLAN = 1
USER_PORTS = range(1, 27)
CPU_PORT = 0
SETTLE_SECONDS = 5.0


class Cpu:
    """One adpsh session. Every call of `adp` is a method of it: `cpu.vlan_port_set(100, {1, 2}, {1})` takes and gives
    the values that adp.vlan_port_set() does, and raises adp.Error as that does. `result()` and `call()` make a call from
    words, and give the status or adpsh's whole answer.

    tidy() undoes the VLANs, port VLANs, groups and management ports that were set by methods. If other calls of `adp`
    have left the virtual device in another state, it is switched off and on.
    """

    def __init__(self, lab, build, **options):
        self.lab, self.build = lab, build
        self._open = functools.partial(lab.shell, build, **options)
        self.shell = self._open()
        self._before = None  # the device's state before the first call of `adp` since tidy()
        self._is_touched = False
        self._vlans = set()
        self._created = set()  # maybe: the call may have failed
        self._pvids = set()
        self._groups = set()
        self._formed = set()
        self._default_changed = False

    def __repr__(self):
        return f"<Cpu: {self.build} build of the library>"

    def set_up(self):
        """Sets up the default board's port map and the send socket, and receives on the CPU port."""
        self.shell.call("map")
        self.shell.call("listen")
        return self.result("adp_pkt_init")

    def result(self, *words):
        """The status of a call in adpsh's notation."""
        return self.shell.result(" ".join(map(str, words)))

    def call(self, *words):
        """The whole answer to a call in adpsh's notation."""
        return self.shell.call(" ".join(map(str, words)))

    def __getattr__(self, name):
        __tracebackhide__ = True  # a failed test shows its own line
        if name.startswith("_"):
            raise AttributeError(name)
        return functools.partial(self._make, remote_call(name))

    def _make(self, call, *given, **named):
        __tracebackhide__ = True
        values = call.values(*given, **named)
        self._before = self._before or self._state()
        is_undone = self._note(call.name, values)
        self._is_touched |= not is_undone
        return call.make(self.shell, values)

    def _note(self, name, values):
        """Whether tidy() undoes the call by another one, and not by a power cycle."""
        vid = values.get("vid")
        if name == "vlan_create" and vid != DEFAULT_VLAN:
            self._created.add(vid)
        elif name == "intf_pivd_set":
            self._pvids.add(values["intf"])
        elif name == "vlan_port_set" and vid == DEFAULT_VLAN:
            self._default_changed = True
        else:
            return name == "vlan_destroy" or name == "vlan_port_set" and vid in self._vlans | self._created
        return True

    def _state(self):
        """The device's settings; none of a board."""
        try:
            state = self.lab.device.ask("state")
        except LabError:
            return None
        return {name: value for name, value in state.items() if name != "running"}

    # Frames out

    def transmit(self, frame, ports=None, vlan=adp.NO_VLAN, mode=0, source=0):
        """Status of __adp_transmit_frame; `ports` None gives no list at all."""
        listed = "null" if ports is None else "[" + ",".join(map(str, ports)) + "]"
        return self.result("__adp_transmit_frame", f"{{frame={frame.hex()} source={source}}}", listed, vlan, mode)

    def transmit_single(self, frame, interface, opcode):
        """The record of adp_transmit_frame."""
        return self.call("adp_transmit_frame", frame.hex(), len(frame), 0, interface, opcode)

    # Frames in

    def next_frame(self, marker, seconds=SETTLE_SECONDS):
        """The next frame on eth0 with the marker, with its receive tag; None when none comes."""
        while True:
            text = self.call("wait_frame", seconds)["frame"]
            if text is None:
                return None
            frame = bytes.fromhex(text)
            if marker in frame:
                return frame

    def receive(self, frame, check=0, vlan_tag=None):
        """(status, descriptor) of __adp_receive_frame; its addresses are given as offsets, None where not set."""
        given = "" if vlan_tag is None else f" vlan_tag={vlan_tag}"
        answer = self.call("__adp_receive_frame", f"{{frame={frame.hex()}{given}}}", check)
        return answer["result"], answer["outputs"]["desc"]

    def receive_plain(self, frame):
        """(status, outputs) of adp_receive_frame."""
        answer = self.call("adp_receive_frame", frame.hex() or '""', len(frame))
        return answer["result"], answer["outputs"]

    # VLANs

    def vlan(self, vid, members, untagged=()):
        """Creates a VLAN with these interfaces (0 is the CPU port)."""
        assert self.create_vlan(vid) == 0
        self.vlan_ports(vid, members, untagged)

    def create_vlan(self, vid):
        """Creates a VLAN without ports; gives the status."""
        status = self.result("adp_vlan_create", vid)
        if status == 0:
            self._vlans.add(vid)
        return status

    def create_vlans(self, first, last):
        """Creates a range of VLANs, in one call; gives the status."""
        status = self.result("adp_vlan_createEx", first, last)
        if status == 0:
            self._vlans.update(range(first, last + 1))
        return status

    def destroy_vlans(self, first, last):
        """Destroys a range of VLANs, in one call; gives the status."""
        status = self.result("adp_vlan_destroyEx", first, last)
        if status == 0:
            self._vlans.difference_update(range(first, last + 1))
        return status

    def default_vlan_ports(self, members, untagged=()):
        """Leaves only these interfaces in the default VLAN."""
        self._default_changed = True
        self.vlan_ports(DEFAULT_VLAN, members, untagged)

    def vlan_ports(self, vid, members, untagged=()):
        """Gives a VLAN these interfaces."""
        assert self.result("adp_vlan_port_set", vid, text_of(set(members)), text_of(set(untagged))) == 0

    def read_vlan(self, vid):
        """(status, members, untagged) of adp_vlan_port_get."""
        answer = self.call("adp_vlan_port_get", vid, "{}", "{}")
        return answer["result"], *(adp.PortSet.from_words(answer["outputs"][name]) for name in ("members", "untagged"))

    def set_pvid(self, port, vid):
        """Sets the VLAN of a port's untagged frames."""
        self._pvids.add(port)
        assert self.result("adp_intf_pivd_set", port, vid) == 0

    def give_management_port(self, number, port):
        """Makes a port the manager of a group."""
        self._groups.add(number)
        assert self.result("SET_AGG_MANAGE_INTF", adp.agg(number), port) == 0

    def form_group(self, number, ports):
        """Forms a group of these ports, configured and active, so that the device's VLAN records list it."""
        assert self.result("adp_create_agg_group", adp.agg(number)) == 0
        self._formed.add(number)
        word = sum(1 << port for port in ports)
        assert self.result("adp_add_agg_standby_member", adp.agg(number), word, 0) == 0
        assert self.result("adp_add_agg_member_by_map", adp.agg(number), word, 0) == 0

    def tidy(self):
        """Undoes what was set since the last time."""
        for number in self._formed:
            assert self.result("adp_delete_agg_group", adp.agg(number)) == 0
        for port in self._pvids:
            assert self.result("adp_intf_pivd_set", port, DEFAULT_VLAN) == 0
        for vid in self._created - self._vlans:
            self.result("adp_vlan_destroy", vid)
        for vid in self._vlans:
            assert self.result("adp_vlan_destroy", vid) == 0
        if self._default_changed:
            self.vlan_ports(DEFAULT_VLAN, {CPU_PORT, *USER_PORTS}, USER_PORTS)
            self._default_changed = False
        for number in self._groups:
            assert self.result("SET_AGG_MANAGE_INTF", adp.agg(number), 0) == 0
        for known in (self._pvids, self._vlans, self._created, self._groups, self._formed):
            known.clear()
        self._forget_calls()

    def _forget_calls(self):
        """What is left of calls of `adp`: in the library, which ends with its adpsh, and on the device."""
        before, self._before = self._before, None
        if self._is_touched:
            self._is_touched = False
            self.shell.close()
            if before and before != self._state():
                self.lab.device.restart()
                self.lab.await_links()
            self.shell = self._open()
            self.set_up()

    def close(self):
        """Ends adpsh."""
        self.shell.close()


class SharedCpu:
    """The Cpu of one lab and build at a time."""

    def __init__(self):
        self._made = None

    def of(self, lab, build):
        """The Cpu of this lab and build, made and set up if the last one was another."""
        if not self._made or (self._made.lab, self._made.build) != (lab, build):
            self.close()
            with contextlib.ExitStack() as stack:
                made = stack.enter_context(contextlib.closing(Cpu(lab, build)))
                made.set_up()
                stack.pop_all()
            self._made = made
        return self._made

    def close(self):
        """Ends adpsh."""
        made, self._made = self._made, None
        if made:
            made.close()


def device_vlans(lab):
    """{VLAN: (members, untagged)} as the device shows them."""
    rows = lab.device.control("vlans")["vlans"]
    return {row["vid"]: (set(row["members"]), set(row["untagged"])) for row in rows}
