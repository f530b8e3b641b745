"""Memory and descriptors of a process, and when their growth is a leak."""

import os

from adp.lab import LabError
from adp.lab.process import poll_until

KIBIBYTE, MEBIBYTE = 1 << 10, 1 << 20
# A device keeps a log of 4096 lines, which fills slowly, 1024 events, and tables whose entries come and go; the allocator
# keeps some of the memory that they free. A leak of 100 octets with each call, or of 10 with each frame, exceeds this within
# minutes. A manager needs less.
MOST_GROWTH = 2 * MEBIBYTE
STEADY_READINGS, SETTLE_SECONDS = 10, 10.0


def descriptors(pid):
    """The number of descriptors that a process has open."""
    return len(os.listdir(f"/proc/{pid}/fd"))


def settled_descriptors(pid):
    """The number of descriptors when it no longer changes: a device closes a connection after its client has ended."""
    counts = [descriptors(pid)]

    def is_settled():
        counts.append(descriptors(pid))
        return len(counts) > STEADY_READINGS and len(set(counts[-STEADY_READINGS:])) == 1

    poll_until(is_settled, SETTLE_SECONDS, f"A steady number of descriptors of the process {pid}")
    return counts[-1]


def resident_bytes(pid):
    """The memory that a process has in use."""
    with open(f"/proc/{pid}/statm", encoding="ascii") as pages:
        return int(pages.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


class Holdings:
    """What a process holds when it has been running for a while."""

    def __init__(self, name, pid):
        self._name, self._pid = name, pid
        self._memory, self._descriptors = resident_bytes(pid), descriptors(pid)

    def check_memory(self):
        """The growth since then, in bytes."""
        growth = resident_bytes(self._pid) - self._memory
        if growth > MOST_GROWTH:
            raise LabError(
                f"The {self._name} has grown by {growth / MEBIBYTE:.1f} MiB since it was warm; "
                f"up to {MOST_GROWTH / MEBIBYTE:g} MiB are no leak."
            )
        return growth

    def check_descriptors(self):
        now = descriptors(self._pid)
        if now != self._descriptors:
            raise LabError(f"The {self._name} has {now} descriptors open; when it was warm it had {self._descriptors}.")
