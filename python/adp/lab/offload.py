"""Switches an interface's offloads off, so that frames carry real checksums and the sizes that they were sent with."""

import contextlib
import ctypes
import fcntl
import socket

SIOCETHTOOL = 0x8946
# ETHTOOL_SRXCSUM, STXCSUM, SSG, STSO, SGSO, SGRO of linux/ethtool.h.
SET_COMMANDS = (0x15, 0x17, 0x19, 0x1F, 0x24, 0x2C)


class _EthtoolValue(ctypes.Structure):
    _fields_ = [("command", ctypes.c_uint32), ("data", ctypes.c_uint32)]


class _InterfaceRequest(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char * 16), ("data", ctypes.c_void_p), ("rest", ctypes.c_char * 16)]


def disable_offloads(interface):
    """Acts in the calling thread's namespace. Settings that the interface does not have are ignored."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as handle:
        for command in SET_COMMANDS:
            value = _EthtoolValue(command, 0)
            request = _InterfaceRequest(interface.encode(), ctypes.addressof(value), b"")
            with contextlib.suppress(OSError):
                fcntl.ioctl(handle, SIOCETHTOOL, request)
