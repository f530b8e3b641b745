"""What a program does on a device before and beside its calls: the map of ports, the link scan."""

from __future__ import annotations

import ctypes

from .calls.constants import USER_PORTS
from .calls.port import add_cpu_port, add_phy_port, set_max_phy_port_num
from .errors import LibraryError
from .library import driver, library
from .memory import number

FIRST_PHYSICAL_PORT = 4
LINK_SCAN = "vdev_linkscan_register"


def map_ports(user_ports: int = USER_PORTS) -> None:
    """Fills the port map for the default board: user port i is physical port i + 3, the CPU port is 0."""
    set_max_phy_port_num(number("user_ports", user_ports, ctypes.c_uint32))
    add_cpu_port(0, 0, 0, 0, 0)
    for port in range(1, user_ports + 1):
        add_phy_port(port, 0, 0, port + FIRST_PHYSICAL_PORT - 1, 0)


def scan_links() -> None:
    """Has the virtual device's link scan call linkscan_handle_cb(), on a thread of the driver, with each port's link.

    So what linkscan_register() was given is called first with each port's present link, then with every change.
    """
    try:
        register = driver()[LINK_SCAN]
    except AttributeError:
        raise LibraryError("the driver is no virtual device's: a board's programs register their link scan") from None
    register.argtypes, register.restype = [ctypes.c_void_p], ctypes.c_int32
    if register(ctypes.cast(library().linkscan_handle_cb, ctypes.c_void_p)) != 0:
        raise LibraryError("the device cannot be reached: is it on, and does VDEVICE_DIR name its run folder?")


__all__ = ["map_ports", "scan_links"]
