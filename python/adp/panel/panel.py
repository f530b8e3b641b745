"""What the panel shows: its devices, its lab, and the pages that are told when something of this changes."""

import asyncio
import importlib.metadata
import tomllib

from ..lab.builds import ROOT
from .problem import PanelError

MAX_PAGES = 16


def version():
    """Of this package; a checkout is not installed."""
    try:
        return importlib.metadata.version("adp")
    except importlib.metadata.PackageNotFoundError:
        return tomllib.loads((ROOT / "python/pyproject.toml").read_text(encoding="utf-8"))["project"]["version"]


class Panel:
    """Devices by name, and the pages that are connected. Nothing is read while there is no page."""

    def __init__(self, devices, lab=None, is_read_only=False):
        self._devices = {device.name: device for device in devices}
        self._lab = lab
        self.is_read_only = is_read_only
        self._version = version()
        self._pages = set()
        self._told = None

    def device(self, name):
        """A device that a page names."""
        if not isinstance(name, str) or name not in self._devices:
            raise PanelError(f"The panel has no device '{str(name)[:40]}'.")
        return self._devices[name]

    def state(self):
        """What pages are told."""
        return {
            "version": self._version,
            "read_only": self.is_read_only,
            "devices": [device.state() for device in self._devices.values()],
            "lab": self._lab and self._lab.state(),
        }

    async def add_page(self, page):
        """Tells a page how all is, and from now on whatever changes."""
        if len(self._pages) >= MAX_PAGES:
            raise PanelError(f"{MAX_PAGES} pages are open already.")
        self._pages.add(page)
        if self._lab:
            self._lab.start(self.tell)
        await asyncio.gather(*(device.start(self.tell) for device in self._devices.values()))
        self._told = self.state()
        page.offer_panel(self._told)

    def remove_page(self, page):
        """The last page's leaving ends all readings."""
        self._pages.discard(page)
        if not self._pages:
            for device in self._devices.values():
                device.stop()
            if self._lab:
                self._lab.stop()

    def tell(self):
        """Something may have changed."""
        state = self.state()
        if state != self._told:
            self._told = state
            for page in self._pages:
                page.offer_panel(state)
