"""The tags of frames between hosts, and the library's calls that change them."""

from typing import NamedTuple

from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet

KEEP = 0xFFFFFFFF
OFF, INTERNAL, EXTERNAL = 0, 1, 2
MODE_NAMES = {OFF: "off", INTERNAL: "internal", EXTERNAL: "external"}
ORDINARY_TPID, PROVIDER_TPID, OLD_PROVIDER_TPID = 0x8100, 0x88A8, 0x9100
ADDRESS_BYTES = 12
# What stands in an output before a read, to tell whether it was written.
UNTOUCHED = (99, 98)


class Probe(NamedTuple):
    """An untagged frame, to which hosts and switches add tags."""

    marker: bytes
    plain: bytes

    @classmethod
    def of(cls, lab, destination=BROADCAST, source=None, ethertype=ETHERTYPE_EXPERIMENT, head=b""):
        """A frame of the bench; `head` is put between the type and the marker."""
        marker = lab.marker()
        return cls(marker, ethernet(destination, source or lab.mac(), ethertype, head + marker.ljust(46, b".")))

    def with_tags(self, tags):
        return self.plain[:ADDRESS_BYTES] + tags + self.plain[ADDRESS_BYTES:]

    def tags_of(self, arrived):
        """{port: tags} of {port: frames}: once each, and apart from the tags as it was sent."""
        tags = {}
        for port, frames in arrived.items():
            assert len(frames) == 1, f"port {port} had {len(frames)} copies"
            behind = len(frames[0]) - len(self.plain) + ADDRESS_BYTES
            tags[port] = frames[0][ADDRESS_BYTES:behind]
            assert frames[0] == self.with_tags(tags[port])
        return tags


class VidTable:
    """One of the chip's tables by port and VLAN, through the library. `place` is the library's number of a user port,
    which for some tables is the driver's; `written` is the name of the VLAN that a read gives.
    """

    def __init__(self, lab, cpu, call, shown, written, place, has_action):
        self._lab, self._cpu, self._call, self._shown, self._written = lab, cpu, call, shown, written
        self.place, self.has_action = place, has_action

    def add(self, place, vid, new_vid, priority=KEEP, kind=0, action=0):
        actions = (action,) if self.has_action else ()
        return self._cpu.result(f"{self._call}_add", kind, place, *actions, vid, new_vid, priority)

    def put(self, port, vid, new_vid, priority=KEEP):
        assert self.add(self.place(port), vid, new_vid, priority) == 0

    def delete(self, place, vid, kind=0):
        return self._cpu.result(f"{self._call}_delete", kind, place, vid)

    def delete_all(self):
        return self._cpu.result(f"{self._call}_delete_all")

    def get(self, place, vid):
        """(status, (new VLAN, priority)) of a read; outputs that it does not write are UNTOUCHED."""
        before = (f"{self._written}={UNTOUCHED[0]}", f"priority={UNTOUCHED[1]}")
        answer = self._cpu.call(f"{self._call}_get", place, vid, *before)
        return answer["result"], (answer["outputs"][self._written], answer["outputs"]["priority"])

    def entries(self):
        """{(user port, VLAN): (new VLAN, priority)} as the device shows them."""
        rows = self._lab.device.control("translations")[self._shown]
        return {(row["port"], row["vid"]): (row["new_vid"], priority_word(row)) for row in rows}


class Tagging:
    """The tables, and each port's double-tag mode and TPID; tidy() leaves all as at power-on."""

    def __init__(self, lab, cpu):
        self.lab, self.cpu = lab, cpu
        physical = lab.device.physical
        self.ingress = VidTable(lab, cpu, "adp_vlan_translate", "ingress", "new_vid", physical, True)
        self.egress = VidTable(lab, cpu, "adp_vlan_translate_egress", "egress", "new_vid", physical, False)
        self.double_tags = VidTable(lab, cpu, "adp_vlan_dtag", "double_tags", "outer_vid", int, True)
        self._touched = set()

    def leaves(self, port, tags=b"", **probe):
        """A host sends a frame with these tags; gives {port: tags} where it arrived."""
        sent = Probe.of(self.lab, **probe)
        self.lab.hosts[port].send(sent.with_tags(tags))
        return sent.tags_of(self.lab.arrivals(sent.marker))

    def reaches_cpu(self, port, tags=b"", **probe):
        """The same frame as it arrives on eth0, and the tags that stand behind the switch tag."""
        sent = Probe.of(self.lab, **probe)
        self.lab.hosts[port].send(sent.with_tags(tags))
        arrived = self.cpu.next_frame(sent.marker)
        assert arrived, "the frame never reached the CPU"
        switch_tag_bytes = 6
        untagged = arrived[:ADDRESS_BYTES] + arrived[ADDRESS_BYTES + switch_tag_bytes :]
        return arrived, sent.tags_of({port: [untagged]})[port]

    def set_mode(self, interface, mode):
        self._touched.add(interface)
        return self.cpu.result("adp_double_tag_set", interface, mode)

    def set_tpid(self, interface, tpid, option=0):
        self._touched.add(interface)
        return self.cpu.result("adp_double_tag_tipd_set", interface, tpid, option)

    def dress(self, port, mode, tpid=ORDINARY_TPID):
        assert (self.set_mode(port, mode), self.set_tpid(port, tpid)) == (0, 0)

    def mode(self, interface):
        """(status, mode)."""
        return self._read("adp_double_tag_get", interface, "mode")

    def tpid(self, interface):
        """(status, TPID)."""
        return self._read("adp_double_tag_tpid_get", interface, "tpid")

    def dressed(self, ports):
        """{port: (mode, TPID)} as the device shows them."""
        rows = self.lab.device.control("translations")["ports"]
        return {row["port"]: (row["mode"], row["tpid"]) for row in rows if row["port"] in ports}

    def tidy(self):
        for table in (self.ingress, self.egress, self.double_tags):
            assert table.delete_all() == 0
        assert self.cpu.result("adp_vlan_ip4_delete_all") == 0
        for interface in self._touched:
            self.dress(interface, OFF)
        self._touched = set()

    def _read(self, call, interface, output):
        answer = self.cpu.call(call, interface, f"{output}={UNTOUCHED[0]}")
        return answer["result"], answer["outputs"][output]


def priority_word(row):
    """The priority of an entry that the device shows, as the calls write it."""
    return KEEP if row["priority"] is None else row["priority"]
