"""What a process holds, and when that is a leak."""

import os

from adp.lab import LabError

KIBIBYTE, MEBIBYTE = 1 << 10, 1 << 20
# A device keeps a log of 4096 lines of up to 1024 characters, which takes long to fill, 1024 events, and tables whose
# entries come and go; the allocator holds on to some of what they have left. A leak of a hundred octets with each call
# or of ten with each frame is more within some minutes. A manager has less to keep.
MOST_GROWTH = 8 * MEBIBYTE


def descriptors(pid):
    """How many descriptors a process has open."""
    return len(os.listdir(f"/proc/{pid}/fd"))


def resident_bytes(pid):
    """How much memory a process has in use."""
    with open(f"/proc/{pid}/statm", encoding="ascii") as pages:
        return int(pages.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")


class Holdings:
    """What a process held when it was warm."""

    def __init__(self, name, pid):
        self._name, self._pid = name, pid
        self._memory, self._descriptors = resident_bytes(pid), descriptors(pid)

    def check_memory(self):
        """Gives by how much it has grown since."""
        growth = resident_bytes(self._pid) - self._memory
        if growth > MOST_GROWTH:
            raise LabError(
                f"The {self._name} has grown by {growth / MEBIBYTE:.1f} MiB since it was warm; "
                f"{MOST_GROWTH / MEBIBYTE:g} MiB can be explained."
            )
        return growth

    def check_descriptors(self):
        now = descriptors(self._pid)
        if now != self._descriptors:
            raise LabError(f"The {self._name} has {now} descriptors open; when it was warm it had {self._descriptors}.")
