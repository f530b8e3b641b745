"""Finds and loads libadp, and the libraries of the device that it needs in the process.

ADP_LIBRARY is its path, or a name for the system's loader; without it the loader is asked for libadp.so. The driver
(libnetlink_api.so) and the services (libdevice_services.so) are looked for beside it, by the loader, and in the folder
adp/virtual-device beside it, which the package adp-vdevice has.
"""

from __future__ import annotations

import ctypes
import functools
import os
import pathlib
import sysconfig
from collections.abc import Iterator

from .errors import LibraryError

VARIABLE = "ADP_LIBRARY"
LIBRARY = "libadp.so"
NEEDED = ("libnetlink_api.so", "libdevice_services.so")
VIRTUAL_DEVICE = pathlib.Path("adp", "virtual-device")


@functools.cache
def library() -> ctypes.CDLL:
    """libadp; loaded once."""
    name = os.environ.get(VARIABLE) or LIBRARY
    complaints = [complaint for needed in NEEDED if (complaint := _load_one_of(_places(name, needed)))]
    try:
        return ctypes.CDLL(name)
    except OSError as problem:
        reasons = ". ".join([str(problem), *complaints])
        raise LibraryError(f"libadp cannot be loaded: {reasons}. {VARIABLE} names the library, for instance "
                           f"{VARIABLE}=build/host/libadp.so") from None


def driver() -> ctypes.CDLL:
    """The driver library, which libadp has brought into the process."""
    library()
    return ctypes.CDLL(NEEDED[0], mode=os.RTLD_NOLOAD | os.RTLD_NOW)


def _places(name: str, needed: str) -> Iterator[str]:
    """Where a library that libadp needs may be."""
    folder = pathlib.Path(name).parent
    if os.sep in name:
        yield str(folder.absolute() / needed)
    yield needed
    if os.sep in name:
        yield str(folder.absolute() / VIRTUAL_DEVICE / needed)
        return
    multiarch = sysconfig.get_config_var("MULTIARCH") or ""
    for system in ("/usr/local/lib", "/usr/lib"):
        yield str(pathlib.Path(system, multiarch) / VIRTUAL_DEVICE / needed)
        yield str(pathlib.Path(system) / VIRTUAL_DEVICE / needed)


def _load_one_of(places: Iterator[str]) -> str:
    """Makes a library's names known to libadp; why the first that is there cannot be loaded, or an empty text."""
    complaint = ""
    for place in places:
        if os.sep in place and not os.path.exists(place):
            continue
        try:
            ctypes.CDLL(place, mode=ctypes.RTLD_GLOBAL)
            return ""
        except OSError as problem:
            complaint = complaint or str(problem)
    return complaint
