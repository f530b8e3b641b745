"""Cables between devices, and the arrivals of frames that cross several of them.

A cable is one pair of interfaces, one end in each device's namespace, so a frame leaves one device and enters the other
with nothing between them.
"""

from typing import NamedTuple

from .bench import Lab
from .process import poll_until

LINK_SECONDS = 20.0
NEAR_INDEX, FAR_INDEX = 1000, 2000


class End(NamedTuple):
    """Where a cable ends: at a user port of a lab's device."""

    lab: Lab
    port: int

    @property
    def interface(self):
        """Name of the interface in the device's namespace."""
        return f"port{self.port}"


def lay_cable(near, far):
    """Lays a cable between two ends; their ports lose the cables to their hosts."""
    for end in (near, far):
        end.lab.device.namespace.ip(f"link delete {end.interface}")
    pid = far.lab.device.namespace.holder_pid
    # The kernel reports a carrier at once only if the indexes of the two ends differ; otherwise it may take a second.
    near_index, far_index = NEAR_INDEX + near.port, FAR_INDEX + far.port
    ends = f"{near.interface} index {near_index} type veth peer name {far.interface} index {far_index} netns {pid}"
    near.lab.device.namespace.ip(f"link add {ends}")


def await_links(lab, ends, linked):
    """Waits until the lab's device sees a link on exactly these ports of those that have cables to other devices."""
    poll_until(
        lambda: lab.device.links() & ends == linked,
        LINK_SECONDS,
        f"A link on exactly the ports {sorted(linked)} of the {lab.device.name}",
    )


def arrivals(labs, marker):
    """The frames that have reached each lab's hosts, as one answer of Lab.arrivals() for each.

    Each is asked as often as there are devices: after each round the frames are one device further, so after the last
    one even those that cross all of them have arrived.
    """
    rounds = [[lab.arrivals(marker) for lab in labs] for _ in labs]
    return tuple(_joined(answers) for answers in zip(*rounds, strict=True))


def _joined(answers):
    ports = {port for answer in answers for port in answer}
    return {port: [frame for answer in answers for frame in answer.get(port, [])] for port in ports}
