"""Hosts in two VLANs of the switch. Some use other VLAN ids, or no tags."""

from adp.lab.frames import vlan_tag

# A host outside knows a VLAN by one number, the switch and the other hosts by another.
OUTSIDE, INSIDE, OTHER_INSIDE = 100, 200, 300
CUSTOMER, OTHER_CUSTOMER, TRUNK, ACCESS = 5, 6, 22, 9
PORTS = {CUSTOMER, OTHER_CUSTOMER, TRUNK, ACCESS}


def make_vlans(cpu):
    """Both VLANs with all four ports, tagged but for one."""
    for vid in (INSIDE, OTHER_INSIDE):
        cpu.vlan(vid, PORTS, {ACCESS})


def at_others(port, vid, priority=0):
    """{port: tags} of a frame of the port's host into one of the VLANs, if egress changes nothing."""
    tag = vlan_tag(vid, priority)
    return {other: b"" if other == ACCESS else tag for other in PORTS - {port}}
