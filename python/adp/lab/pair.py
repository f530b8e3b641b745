"""Two devices joined by cables, each with hosts of its own.

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
from .cable import End, arrivals, await_links, lay_cable


class Pair:
    """Two labs, `near` and `far`; cable number i joins the user ports `cables[i]` = (near port, far port)."""

    def __init__(self, near_hosts, far_hosts, cables, device_build="host", user_ports=26):
        self.cables = tuple(cables)
        self._stack = contextlib.ExitStack()
        self.near = Lab(device_build, near_hosts, user_ports, "near device")
        self.far = Lab(device_build, far_hosts, user_ports, "far device")
        self.labs = (self.near, self.far)

    def __enter__(self):
        with self._stack as stack:
            for lab in self.labs:
                stack.enter_context(lab)
            for near_port, far_port in self.cables:
                lay_cable(End(self.near, near_port), End(self.far, far_port))
            self.await_cables(range(len(self.cables)))
            self._stack = stack.pop_all()
        return self

    def __exit__(self, *problem):
        return self._stack.__exit__(*problem)

    def await_cables(self, numbers):
        """Waits until both devices see a link on exactly these cables."""
        for side, lab in enumerate(self.labs):
            await_links(
                lab, {cable[side] for cable in self.cables}, {self.cables[number][side] for number in numbers}
            )

    def arrivals(self, marker):
        """The frames at the hosts of the near and of the far side, as two answers of Lab.arrivals()."""
        return arrivals(self.labs, marker)
