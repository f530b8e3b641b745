"""Replacing a rule under traffic: numbered frames change from the old way to the new one once, and none goes both."""

import time

import pytest
from acl import DROP, TO_PORT
from crossing import RECEIVER, SENDER, VLAN
from adp.lab.frames import ETHERTYPE_EXPERIMENT, ethernet, vlan_tag

SINGLE, PAIRS = 20, 2
ENTITY = 1
FROM_SENDER = [(13, {SENDER})]
L4_DESTINATION = 28
OLD, NEW = 9, 26
WAYS = (OLD, NEW, RECEIVER)
STEADY_FRAMES = 20
REPLACEMENTS = 3
# Between the installation of the two halves there is room for few frames.
MANY_REPLACEMENTS = 25
DIGITS = 6
FRAME_PAUSE = 0.0002
ANSWER_SECONDS = 20.0


class Stream:
    """Numbered frames to a station that is known to be behind RECEIVER. What arrives is taken from the hosts between
    them, so that no buffer overflows however long it takes.
    """

    def __init__(self, lab):
        self._lab = lab
        self._marker = lab.marker()
        self._addresses = lab.mac(RECEIVER), lab.mac(SENDER)
        self._seen = {}
        self.sent = 0
        station, source = self._addresses
        introduction = ethernet(source, station, ETHERTYPE_EXPERIMENT, lab.marker(), vlan_tag(VLAN))
        lab.hosts[RECEIVER].send(introduction)
        self.settled()

    def send(self, frames=1):
        for _ in range(frames):
            payload = self._marker + b"%0*d" % (DIGITS, self.sent)
            self._lab.hosts[SENDER].send(ethernet(*self._addresses, ETHERTYPE_EXPERIMENT, payload, vlan_tag(VLAN)))
            self.sent += 1
            for port in WAYS:
                self._account(port, self._lab.hosts[port].nic.waiting())

    def settled(self):
        """{port: numbers} of what has arrived since it was last asked for, in order of arrival."""
        for port, frames in self._lab.arrivals(self._marker).items():
            self._account(port, frames)
        seen, self._seen = self._seen, {}
        return seen

    def _account(self, port, frames):
        numbers = [int(frame[-DIGITS:]) for frame in frames if self._marker in frame]
        if numbers:
            self._seen.setdefault(port, []).extend(numbers)


def replace_under_load(cpu, line, stream):
    cpu.shell.begin(line)
    deadline = time.monotonic() + ANSWER_SECONDS
    stream.send()
    while not cpu.shell.has_answered(FRAME_PAUSE) and time.monotonic() < deadline:
        stream.send()
    assert cpu.shell.finish()["result"] == 0


@pytest.mark.parametrize("submodule", [SINGLE, PAIRS], ids=["single", "pair"])
def test_no_frame_meets_both_rules_nor_neither_but_during_the_replacement(lab, cpu, crossing, acl, submodule):
    ways = [OLD, NEW]
    acl.install(submodule, ENTITY, FROM_SENDER, [(TO_PORT, OLD)])
    stream = Stream(lab)
    for _ in range(REPLACEMENTS):
        first = stream.sent
        stream.send(STEADY_FRAMES)
        steady = stream.settled()
        assert steady == {ways[0]: list(range(first, stream.sent))}
        first = stream.sent
        replace_under_load(cpu, acl.add_line(submodule, ENTITY, FROM_SENDER, [(TO_PORT, ways[1])]), stream)
        meanwhile = stream.settled()
        # Each frame once: first the old way, then without a rule, then the new way.
        in_turn = [number for port in (ways[0], RECEIVER, ways[1]) for number in meanwhile.get(port, [])]
        assert in_turn == list(range(first, stream.sent))
        ways.reverse()
    stream.send(STEADY_FRAMES)
    assert stream.settled() == {ways[0]: list(range(stream.sent - STEADY_FRAMES, stream.sent))}
    assert acl.listed_rules() == 1


@pytest.mark.parametrize("submodule", [SINGLE, PAIRS], ids=["single", "pair"])
def test_deletion_under_traffic_restores_the_old_way_at_once(lab, cpu, crossing, acl, submodule):
    acl.install(submodule, ENTITY, FROM_SENDER, [(TO_PORT, OLD)])
    stream = Stream(lab)
    replace_under_load(cpu, f"adp_fp_delete_entity_rule {submodule} {ENTITY} 0", stream)
    stream.send(STEADY_FRAMES)
    arrived = stream.settled()
    assert arrived.get(OLD, []) + arrived[RECEIVER] == list(range(stream.sent))
    assert arrived[RECEIVER][-STEADY_FRAMES:] == list(range(stream.sent - STEADY_FRAMES, stream.sent))


def test_half_a_pair_never_matches_while_it_is_replaced(lab, cpu, crossing, acl):
    """The first half asks for the port, the second for a UDP port that no frame of the stream has."""
    line = acl.add_line(PAIRS, ENTITY, [*FROM_SENDER, (L4_DESTINATION, 5000)], [(DROP,)])
    stream = Stream(lab)
    for _ in range(MANY_REPLACEMENTS):
        replace_under_load(cpu, line, stream)
    assert stream.settled() == {RECEIVER: list(range(stream.sent))}
