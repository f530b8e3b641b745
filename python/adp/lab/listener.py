"""Multicast as an ordinary program receives it: the kernel of a host joins and leaves groups for a socket."""

import contextlib
import ipaddress
import socket
import struct

from .frames import mac

DATAGRAM_BYTES = 2048
RECEIVE_SECONDS = 5.0


def group_mac(address):
    """The MAC address that stands for a group's IP address (RFC 1112, RFC 2464)."""
    group = ipaddress.ip_address(address)
    if group.version == 4:
        return mac("01:00:5e:00:00:00")[:3] + bytes([group.packed[1] & 0x7F]) + group.packed[2:]
    return b"\x33\x33" + group.packed[-4:]


def set_protocol_version(host, version, protocol_version):
    """Sets the version of IGMP (IPv4) or MLD (IPv6) that the host's kernel uses; 0 is the newest."""
    name = {4: "igmp", 6: "mld"}[version]
    _write_setting(host, version, f"force_{name}_version", protocol_version)


def enable_ipv6(host):
    """Gives the host's interface a link-local address at once, without duplicate address detection."""
    for name, value in (("accept_dad", 0), ("router_solicitations", 0), ("disable_ipv6", 0)):
        _write_setting(host, 6, name, value)


def _write_setting(host, version, name, value):
    path = f"/proc/sys/net/ipv{version}/conf/{host.nic.interface}/{name}"
    with host.namespace.entered(), open(path, "w", encoding="ascii") as setting:
        setting.write(str(value))


class Listener:
    """A socket of a host that receives the datagrams of a group on a port, until it leaves or is closed."""

    def __init__(self, host, address, port):
        self._address = ipaddress.ip_address(address)
        family = socket.AF_INET if self._address.version == 4 else socket.AF_INET6
        with host.namespace.entered():
            self._interface = socket.if_nametoindex(host.nic.interface)
            self._socket = socket.socket(family, socket.SOCK_DGRAM)
        self._socket.settimeout(RECEIVE_SECONDS)
        # Two of them on one host may receive the same datagrams.
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self._socket.bind((address, port))
        self._change("JOIN")

    def _change(self, what):
        packed = self._address.packed
        if self._address.version == 6:
            membership = packed + struct.pack("@I", self._interface)
            self._socket.setsockopt(socket.IPPROTO_IPV6, getattr(socket, f"IPV6_{what}_GROUP"), membership)
            return
        option = {"JOIN": socket.IP_ADD_MEMBERSHIP, "LEAVE": socket.IP_DROP_MEMBERSHIP}[what]
        self._socket.setsockopt(socket.IPPROTO_IP, option, packed + bytes(4) + struct.pack("@i", self._interface))

    def hears(self, payload):
        """Whether a datagram with this content is among the next ones."""
        with contextlib.suppress(TimeoutError):
            while self._socket.recv(DATAGRAM_BYTES) != payload:
                pass
            return True
        return False

    def leave(self):
        """Leaves the group; the socket stays open."""
        self._change("LEAVE")

    def close(self):
        self._socket.close()
