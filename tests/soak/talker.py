"""A host of the soak test: sends frames at a rate, and checks each frame that it receives. Runs in its namespace.

    talker.py INTERFACE SETTINGS        SETTINGS is JSON, see `Talker`

Each line on standard input is answered by a line of JSON with the counts so far. A line "pause" stops the sending and
"go" begins it again; "flood N" sends N frames to partners alone, as fast as it can. The end of the input ends the program.
"""

import contextlib
import errno
import json
import os
import random
import select
import struct
import sys
import time
import zlib

from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, VID_MASK, describe, ethernet, split_tags, vlan_tag
from adp.lab.nic import Nic

MARK = b"load"
STAMP = struct.Struct("!4sHHI")  # mark, sender, VLAN, number
CHECK = struct.Struct("!I")
SMALLEST, LARGEST = 46, 1490
BURST_FRAMES = 32
WAIT_SECONDS = 0.002
# Numbers of received frames that are remembered for each sender. A repeated frame follows soon after the first one.
WINDOW = 1 << 16
COMPLAINTS = 5
# The address of no host, so that the switches flood the frame.
UNKNOWN = bytes.fromhex("02adfffffffe")
BROADCAST_SHARE, UNKNOWN_SHARE = 0.02, 0.02
NOT_NOW = (errno.ENETDOWN, errno.ENOBUFS, errno.ENXIO, errno.EAGAIN)


class Here:
    """The namespace in which the program runs."""

    @staticmethod
    def entered():
        return contextlib.nullcontext()


class Talker:
    """`number` and `mac` are those of the host, `vid` is the VLAN that it receives, 0 for none. It sends to `partners`,
    {number: MAC}, in the VLANs `speaks`, and receives from all of them if it has a VLAN. `rate` is in frames per
    second, 0 for as many as it can.
    """

    def __init__(self, nic, settings):
        self._nic = nic
        self._number, self._vid, self._speaks = settings["number"], settings["vid"], settings["speaks"]
        self._mac = bytes.fromhex(settings["mac"])
        self._partners = {int(number): bytes.fromhex(mac) for number, mac in settings["partners"].items()}
        self._destinations = list(self._partners.values())
        self._rate = settings["rate"]
        self._random = random.Random(settings["seed"])
        self._latest = {number: [-1] * WINDOW for number in self._partners}
        self._bodies = [self._random.randbytes(LARGEST) for _ in range(8)]
        self.sent = self.unsent = self.taken = self.flooded = self.misplaced = self.repeated = self.spoilt = 0
        self._is_paused, self._still_to_flood = False, 0
        self.received = dict.fromkeys(self._partners, 0)
        self.complaints = []

    def counts(self):
        names = ("sent", "unsent", "taken", "received", "flooded", "misplaced", "repeated", "spoilt", "complaints")
        return {**{name: getattr(self, name) for name in names}, "overrun": self._nic.overrun()}

    def send_one(self):
        vid = self._random.choice(self._speaks)
        chance = self._random.random()
        destination = self._random.choice(self._destinations)
        if chance < BROADCAST_SHARE:
            destination = BROADCAST
        elif chance < BROADCAST_SHARE + UNKNOWN_SHARE:
            destination = UNKNOWN
        self._send_to(destination, vid, self._random.randrange(SMALLEST, LARGEST - STAMP.size - CHECK.size))

    def _send_to(self, destination, vid, size):
        body = STAMP.pack(MARK, self._number, vid, self.sent) + self._random.choice(self._bodies)[:size]
        body += CHECK.pack(zlib.crc32(body))
        try:
            self._nic.send(ethernet(destination, self._mac, ETHERTYPE_EXPERIMENT, body, vlan_tag(vid)))
            self.sent += 1
        except OSError as problem:
            if problem.errno not in NOT_NOW:
                raise
            self.unsent += 1

    def take(self):
        for frame in self._nic.waiting():
            self.taken += 1
            why = self._judge(frame)
            if why and len(self.complaints) < COMPLAINTS:
                self.complaints.append(f"host {self._number}: {why} ({describe(frame)}): {frame[:48].hex()}")

    def _judge(self, frame):
        """Counts the frame; gives what is wrong with it."""
        tags, kind, body = split_tags(frame)
        if kind != ETHERTYPE_EXPERIMENT or len(body) < STAMP.size + CHECK.size or body[: len(MARK)] != MARK:
            self.misplaced += 1
            return "a frame that nobody sent"
        if CHECK.unpack_from(body, len(body) - CHECK.size)[0] != zlib.crc32(body[: -CHECK.size]):
            self.spoilt += 1
            return "a frame that was changed on its way"
        _, sender, vid, number = STAMP.unpack_from(body)
        if vid != self._vid or [tci & VID_MASK for _, tci in tags] != [vid]:
            self.misplaced += 1
            return f"a frame of VLAN {vid} in VLAN {self._vid}"
        if frame[6:12] != self._partners.get(sender):
            self.misplaced += 1
            return f"a frame with the stamp of host {sender} and another address"
        if self._latest[sender][number % WINDOW] == number:
            self.repeated += 1
            return f"frame {number} of host {sender} again"
        self._latest[sender][number % WINDOW] = number
        self.received[sender] += 1
        if frame[:6] not in (self._mac, BROADCAST):
            if frame[:6] != UNKNOWN and frame[:6] not in self._destinations:
                self.misplaced += 1
                return "a frame for an address of another VLAN"
            self.flooded += 1
        return ""

    def run(self, seconds):
        """Runs until the input ends, but no longer than this."""
        began = previous = time.monotonic()
        credit = 0.0
        while (now := time.monotonic()) < began + seconds:
            credit = min(BURST_FRAMES, credit + (now - previous) * self._rate if self._rate else BURST_FRAMES)
            previous = now
            credit = self._send(credit)
            is_busy = self._still_to_flood or not (self._rate or self._is_paused)
            ready, _, _ = select.select([self._nic, sys.stdin], [], [], 0.0 if is_busy else WAIT_SECONDS)
            if self._nic in ready:
                self.take()
            if sys.stdin in ready and not self._obey():
                return

    def _send(self, credit):
        """Sends what the credit allows, and the next burst of a flood; gives what is left of the credit."""
        while credit >= 1 and not self._is_paused:
            self.send_one()
            credit -= 1
        for _ in range(min(BURST_FRAMES, self._still_to_flood)):
            self._send_to(self._random.choice(self._destinations), self._random.choice(self._speaks), SMALLEST)
            self._still_to_flood -= 1
        return credit

    def _obey(self):
        """Carries out what has been asked for; false at the end of the input."""
        words = os.read(sys.stdin.fileno(), 64).split()
        if not words:
            return False
        if words[0] in (b"pause", b"go"):
            self._is_paused = words[0] == b"pause"
        elif words[0] == b"flood":
            self._still_to_flood = int(words[1])
        print(json.dumps({**self.counts(), "to_flood": self._still_to_flood}), flush=True)
        return True


if __name__ == "__main__":
    given = json.loads(sys.argv[2])
    Talker(Nic(Here, sys.argv[1]), given).run(given["seconds"])
