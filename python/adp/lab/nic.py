"""One interface of the bench: raw frames are sent and received on it.

The kernel takes an outermost 0x8100 or 0x88a8 tag out of a frame and reports it beside the frame; it is put back
here, so that a received frame is byte for byte what was on the cable.
"""

import errno
import itertools
import select
import socket
import struct
import time

from .offload import disable_offloads

ETH_P_ALL = 0x0003
SOL_PACKET = 263
PACKET_STATISTICS = 6
PACKET_AUXDATA = 8
PACKET_IGNORE_OUTGOING = 23
AUXDATA = struct.Struct("=IIIHHHH")
STATISTICS = struct.Struct("=II")  # packets, drops
TP_STATUS_VLAN_VALID = 0x10
TP_STATUS_VLAN_TPID_VALID = 0x40
DEFAULT_TPID = 0x8100
MAC_BYTES = 12
LARGEST_FRAME = 16384
RECEIVE_BUFFER_BYTES = 1 << 20
ANCILLARY_BYTES = socket.CMSG_SPACE(AUXDATA.size)


def with_tag_restored(frame, ancillary):
    """The frame as it was on the cable, from the frame and its ancillary data."""
    for level, kind, data in ancillary:
        if (level, kind) != (SOL_PACKET, PACKET_AUXDATA) or len(data) < AUXDATA.size:
            continue
        status, _length, _snapped, _mac, _net, tci, tpid = AUXDATA.unpack(data[: AUXDATA.size])
        if status & TP_STATUS_VLAN_VALID:
            tag = struct.pack("!HH", tpid if status & TP_STATUS_VLAN_TPID_VALID else DEFAULT_TPID, tci)
            return frame[:MAC_BYTES] + tag + frame[MAC_BYTES:]
    return frame


class Nic:
    """An interface that is up and listened to from now on; frames wait in the socket until they are asked for.

    With `outgoing` it also receives the frames that the interface sends.
    """

    def __init__(self, namespace, interface, outgoing=False):
        self.namespace = namespace
        self.interface = interface
        with namespace.entered():
            disable_offloads(interface)
            # Bound to its interface first and to all protocols last: a socket that hears everything before it is
            # bound would receive those of other interfaces too.
            self._socket = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, 0)
            self._socket.setsockopt(SOL_PACKET, PACKET_AUXDATA, 1)
            self._socket.setsockopt(SOL_PACKET, PACKET_IGNORE_OUTGOING, int(not outgoing))
            self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, RECEIVE_BUFFER_BYTES)
            self._socket.bind((interface, ETH_P_ALL))
        self._socket.setblocking(False)
        self._overrun = 0

    def fileno(self):
        return self._socket.fileno()

    def send(self, frame):
        """Sends exactly these bytes."""
        # The interface may have been down before; reading that error clears it.
        self._socket.getsockopt(socket.SOL_SOCKET, socket.SO_ERROR)
        sent = self._socket.send(frame)
        assert sent == len(frame), f"{self.interface} sent {sent} of {len(frame)} bytes"

    def waiting(self, most=None):
        """Every frame that has arrived and was not yet taken, oldest first; on request at most so many."""
        return list(itertools.islice(iter(self._take, None), most))

    def receive(self, marker, seconds):
        """The next frame that contains the marker, or None when none comes in time. Frames before it are dropped."""
        deadline = time.monotonic() + seconds
        while True:
            for frame in iter(self._take, None):
                if marker in frame:
                    return frame
            remaining = deadline - time.monotonic()
            if remaining <= 0:
                return None
            select.select([self._socket], [], [], remaining)

    def overrun(self):
        """How many frames were lost because too many waited. Reading the kernel's counter sets it to 0."""
        self._overrun += STATISTICS.unpack(self._socket.getsockopt(SOL_PACKET, PACKET_STATISTICS, STATISTICS.size))[1]
        return self._overrun

    def _take(self):
        while True:
            try:
                frame, ancillary, _flags, _address = self._socket.recvmsg(LARGEST_FRAME, ANCILLARY_BYTES)
            except BlockingIOError:
                return None
            except OSError as problem:
                # An interface that went down is reported once; the socket goes on when it is up again.
                if problem.errno != errno.ENETDOWN:
                    raise
                continue
            return with_tag_restored(frame, ancillary)

    def close(self):
        self._socket.close()
