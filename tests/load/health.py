"""What a process holds, and when that is a leak."""

from lab import LabError

MEBIBYTE = 1 << 20
# A device keeps a log of 4096 lines of up to 1024 characters, which takes long to fill, 1024 events, and tables whose
# entries come and go; the allocator holds on to some of what they have left. A leak of a hundred octets with each call
# or of ten with each frame is more within a minute.
MOST_GROWTH = 8 * MEBIBYTE
RELEASE_SECONDS = 10.0


class Memory:
    """How much a device's daemon has grown since it was warm."""

    def __init__(self, device):
        self._device = device
        self._warm = device.resident_bytes()
        self.growth = 0

    def check(self):
        self.growth = self._device.resident_bytes() - self._warm
        if self.growth > MOST_GROWTH:
            raise LabError(
                f"The {self._device.name} has grown by {self.growth / MEBIBYTE:.1f} MiB since it was warm; "
                f"{MOST_GROWTH / MEBIBYTE:g} MiB can be explained."
            )
        return self.growth
