"""The demonstration's access list: the example program acl guards a port, and a guest there sends packets.

What arrives of each packet is compared with what must arrive, and the counts with the packets that were sent.
"""

import contextlib

from adp.lab.acl import AclProgram
from adp.lab.frames import mac
from adp.lab.ip import TCP, UDP, Ipv4Packet

GUEST_PORT, SERVER_PORT, MIRROR_PORT = 5, 22, 26
ADMINISTRATOR, GUEST, WATCHED, SERVER = "10.1.0.9", "10.1.0.5", "10.1.0.66", "10.2.0.2"
GUEST_MAC, SERVER_MAC = mac("02:00:00:00:0e:05"), mac("02:00:00:00:0e:16")
SSH, TELNET, WEB, VOICE, BULK = 22, 23, 80, 5004, 9000
MARKED = 46
BULK_PACKETS, BULK_OCTETS = 30, 500
# A meter passes at once what its bucket holds, about two long frames, and more of them during the test.
BULK_PASSES = range(5, BULK_PACKETS)
WIDTHS = (32, 24, 22)


def packet(source, protocol, port, **options):
    return Ipv4Packet(source, SERVER, protocol, port, **options)


# A packet of the guest, {port where it arrives: DSCP}, and the rule that counts it.
STEPS = (
    ("SSH from the administrator", packet(ADMINISTRATOR, TCP, SSH), {SERVER_PORT: 0}, "administrator"),
    ("SSH from a guest", packet(GUEST, TCP, SSH), {}, "ssh"),
    ("Telnet from a guest", packet(GUEST, TCP, TELNET), {}, "telnet"),
    ("a web request", packet(GUEST, TCP, WEB), {SERVER_PORT: 0}, None),
    ("voice", packet(GUEST, UDP, VOICE, length=60), {SERVER_PORT: MARKED}, None),
    ("from the watched station", packet(WATCHED, TCP, WEB), {SERVER_PORT: 0, MIRROR_PORT: 0}, "watched"),
)


class AccessList:
    """Sends packets and compares; `wrong` has a sentence for each difference."""

    def __init__(self, lab, program):
        self._lab = lab
        self._program = program
        self.wrong = []

    def introduce_server(self):
        self._lab.hosts[SERVER_PORT].send(packet(GUEST, UDP, WEB).build(GUEST_MAC, SERVER_MAC, self._lab.marker()))
        self._lab.arrivals(b"")

    def try_all(self):
        row("a guest at port 5 sends", "it arrives at port", "counted by")
        for step in STEPS:
            self._try(*step)
        self._try_bulk()

    def check(self, good, sentence):
        if not good:
            self.wrong.append(sentence)

    def send(self, what, times=1):
        """({port: frames}, marker) of what arrives of a packet."""
        marker = self._lab.marker()
        for _ in range(times):
            self._lab.hosts[GUEST_PORT].send(what.build(SERVER_MAC, GUEST_MAC, marker))
        return self._lab.arrivals(marker), marker

    def _try(self, name, what, arrives, rule):
        before = self._program.counts()
        seen, marker = self.send(what)
        wanted = {
            port: [what._replace(dscp=dscp).build(SERVER_MAC, GUEST_MAC, marker)] for port, dscp in arrives.items()
        }
        after = self._program.counts()
        counted = [each for each in after if after[each] != before[each]]
        places = " and ".join(f"{port}{' with DSCP 46' if arrives.get(port) else ''}" for port in sorted(seen))
        row(name, places or "none", ", ".join(counted) or "no rule")
        self.check(seen == wanted, f"'{name}' arrived at {sorted(seen)}, or not as it should")
        self.check(counted == ([rule] if rule else []), f"'{name}' was counted by {counted}")

    def _try_bulk(self):
        seen, _ = self.send(packet(GUEST, UDP, BULK, length=BULK_OCTETS), BULK_PACKETS)
        passed = len(seen.get(SERVER_PORT, []))
        frames = self._program.counts()["bulk"][0]
        row(f"{BULK_PACKETS} bulk packets at once", f"{SERVER_PORT}: {passed} of them", "bulk")
        self.check(set(seen) == {SERVER_PORT} and passed in BULK_PASSES, f"{passed} bulk packets passed the meter")
        self.check(frames == BULK_PACKETS, f"{frames} of {BULK_PACKETS} bulk packets were counted")


def row(*cells):
    print("  " + " ".join(f"{cell!s:{width}}" for cell, width in zip(cells, WIDTHS, strict=True)).rstrip())


def run_acl(lab, build, paint):
    """Shows the access list; true if everything was as expected."""
    title = paint("Access list", "bold")
    print(f"\n{title}: the program acl guards port {GUEST_PORT}; the server is at port {SERVER_PORT}.\n")
    with contextlib.closing(AclProgram(lab.device, build, GUEST_PORT)) as program:
        access = AccessList(lab, program)
        access.introduce_server()
        access.try_all()
        access.check(program.end(), "The program did not delete its list in good order")
        seen, _ = access.send(packet(GUEST, TCP, SSH))
        row("SSH again, the list deleted", " ".join(map(str, seen)), "")
        access.check(set(seen) == {SERVER_PORT}, "The port was not open after the list was deleted")
    for sentence in access.wrong:
        print(paint(f"  differs: {sentence}.", "red"))
    if not access.wrong:
        print(f"{paint('ok', 'green')}: each packet was passed or dropped as the list says.")
    return not access.wrong
