"""Switches an interface's offloads off, so that frames carry real checksums and the sizes that they were sent with."""

import contextlib
import ctypes
import fcntl
import socket

SIOCETHTOOL = 0x8946
# ETHTOOL_SRXCSUM, STXCSUM, SSG, STSO, SGSO, SGRO of linux/ethtool.h.
SET_COMMANDS = (0x15, 0x17, 0x19, 0x1F, 0x24, 0x2C)
# The command that reads a setting is the one before the command that sets it.
READ = -1


class _EthtoolValue(ctypes.Structure):
    _fields_ = [("command", ctypes.c_uint32), ("data", ctypes.c_uint32)]


class _InterfaceRequest(ctypes.Structure):
    _fields_ = [("name", ctypes.c_char * 16), ("data", ctypes.c_void_p), ("rest", ctypes.c_char * 16)]


def disable_offloads(interface):
    """Acts in the calling thread's namespace. Settings that the interface does not have are ignored."""
    set_offloads(interface, dict.fromkeys(SET_COMMANDS, 0))


def offloads_of(interface):
    """The interface's settings, for set_offloads()."""
    values = {command: _ask(interface, command + READ, 0) for command in SET_COMMANDS}
    return {command: value for command, value in values.items() if value is not None}


def set_offloads(interface, values):
    """Settings that cannot be changed are ignored."""
    for command, value in values.items():
        _ask(interface, command, value)


def _ask(interface, command, data):
    """The kernel's answer; None if it refuses."""
    value = _EthtoolValue(command, data)
    request = _InterfaceRequest(interface.encode(), ctypes.addressof(value), b"")
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as handle, contextlib.suppress(OSError):
        fcntl.ioctl(handle, SIOCETHTOOL, request)
        return value.data
    return None
