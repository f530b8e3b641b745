"""Two devices joined by cables, each with hosts of its own: what a frame must pass to get from one side to the other.

    with Pair({5}, {7}, cables=[(1, 11), (2, 12)]) as pair:
        pair.near.hosts[5].send(frame)
        pair.arrivals(marker)                # ({}, {7: [frame]}): near side, far side
        pair.far.device.control("pull", 12)

A cable is one pair of interfaces, one end in each device's namespace, so a frame leaves one device and enters the
other with nothing between them. Two cables that belong to no group make a loop: form the groups on both sides, before
any host speaks.
"""

import contextlib

from .bench import Lab
from .process import poll_until

LINK_SECONDS = 20.0
NEAR_INDEX, FAR_INDEX = 1000, 2000


class Pair:
    """Two labs, `near` and `far`; cable number i joins the user ports `cables[i]` = (near port, far port)."""

    def __init__(self, near_hosts, far_hosts, cables, device_build="host"):
        self.cables = tuple(cables)
        self._stack = contextlib.ExitStack()
        self.near = Lab(device_build, near_hosts, name="near device")
        self.far = Lab(device_build, far_hosts, name="far device")

    def __enter__(self):
        with self._stack as stack:
            for lab in (self.near, self.far):
                stack.enter_context(lab)
            for near_port, far_port in self.cables:
                self._lay_cable(near_port, far_port)
            self.await_cables(range(len(self.cables)))
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *problem):
        return self._stack.__exit__(*problem)

    def await_cables(self, numbers):
        """Waits until both devices see a link on exactly these cables."""
        for lab, side in ((self.near, 0), (self.far, 1)):
            all_ends = {cable[side] for cable in self.cables}
            wanted = {self.cables[number][side] for number in numbers}
            poll_until(
                lambda device=lab.device, ends=all_ends, linked=wanted: device.links() & ends == linked,
                LINK_SECONDS,
                f"A link on exactly the ports {sorted(wanted)} of the {lab.device.name}",
            )

    def arrivals(self, marker):
        """What has reached the hosts of the near side and of the far side, as two answers of Lab.arrivals().

        Each side is asked twice: once so that it has sent what it was going to send to the other one, and once for
        what the other one has sent.
        """
        first = [lab.arrivals(marker) for lab in (self.near, self.far)]
        second = [lab.arrivals(marker) for lab in (self.near, self.far)]
        return tuple(_joined(*both) for both in zip(first, second, strict=True))

    def _lay_cable(self, near_port, far_port):
        near, far = self.near.device, self.far.device
        near_end, far_end = f"port{near_port}", f"port{far_port}"
        near.namespace.ip(f"link delete {near_end}")
        far.namespace.ip(f"link delete {far_end}")
        pid = far.namespace.holder_pid
        # The kernel tells of a carrier at once only where the two ends have different numbers, otherwise it may take a
        # second.
        near_index, far_index = NEAR_INDEX + near_port, FAR_INDEX + far_port
        ends = f"{near_end} index {near_index} type veth peer name {far_end} index {far_index} netns {pid}"
        near.namespace.ip(f"link add {ends}")


def _joined(first, second):
    return {port: first.get(port, []) + second.get(port, []) for port in first.keys() | second.keys()}
