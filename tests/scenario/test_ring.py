"""A ring of three devices: without protection a frame runs around in it for ever, with one port blocked every host
reaches every other, once, and when a cable is pulled the block moves there.
"""

import contextlib
import threading
import time

import pytest
from conftest import DEVICE_BUILD
from cpu import Cpu, group
from lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet
from lab.load import Load, Traffic
from lab.process import poll_until
from lab.ring import BEFORE, BEHIND, DEVICES, HOST, RING_PORTS, Ring, RingProgram

BLOCKING, FORWARDING = 1, 4
DYNAMIC = 0
UNKNOWN_TYPE, REFUSED_TYPE = 0x30000001, 201
OWNER, NEXT, LAST = range(DEVICES)
# In a ring that is cut a broadcast crosses each cable at most twice, so this many are a storm.
STORM_FRAMES = 1000
STORM_SECONDS = 20.0
CALM_SECONDS = 0.2
STEADY_SECONDS = 0.3
AROUND_SECONDS = 0.1
HANDLED_SECONDS = 20.0


@pytest.fixture(scope="module")
def ring():
    with Ring(DEVICE_BUILD) as devices:
        yield devices


class Protected:
    """The ring with a CPU at each device and the owner's port BEFORE blocked by hand."""

    def __init__(self, ring, cpus):
        self.ring, self.cpus = ring, cpus
        self.addresses = [ring.mac() for _ in ring.labs]

    def set_state(self, at, port, state):
        assert self.cpus[at].result("adp_set_port_erps_state", port, state) == 0

    def state(self, at, port):
        answer = self.cpus[at].call("adp_get_port_erps_state", port)
        assert answer["result"] == 0
        return answer["outputs"]["state"]

    def open(self):
        for at in range(DEVICES):
            for port in RING_PORTS:
                self.set_state(at, port, FORWARDING)

    def protect(self):
        """As at the beginning of a test: one port blocked, nobody known."""
        self.set_state(OWNER, BEFORE, BLOCKING)
        self.forget()

    def forget(self):
        for cpu in self.cpus:
            assert cpu.result("adp_del_mac_by_lrntype", DYNAMIC) == 0

    def say(self, at, destination=BROADCAST):
        """The host behind a device sends one frame; gives the devices whose hosts it reached, once and unchanged."""
        marker = self.ring.labs[at].marker()
        frame = ethernet(destination, self.addresses[at], ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."))
        self.ring.hosts[at].send(frame)
        arrived = self.ring.arrivals(marker)
        assert all(answer in ({}, {HOST: [frame]}) for answer in arrived)
        return {place for place, answer in enumerate(arrived) if answer}

    def check_everyone_reaches_everyone(self):
        """First as strangers, then by the addresses that the switches have learned from that."""
        for at in range(DEVICES):
            assert self.say(at) == set(range(DEVICES)) - {at}
        for at in range(DEVICES):
            for other in set(range(DEVICES)) - {at}:
                assert self.say(at, self.addresses[other]) == {other}


@pytest.fixture(scope="module")
def cpus(ring, build):
    with contextlib.ExitStack() as stack:
        made = [stack.enter_context(contextlib.closing(Cpu(lab, build))) for lab in ring.labs]
        for cpu in made:
            cpu.set_up()
        yield made


@pytest.fixture
def protected(ring, cpus):
    bench = Protected(ring, cpus)
    bench.protect()
    yield bench
    bench.protect()
    for at in range(DEVICES):
        ring.plug(at)
    ring.await_cables()
    for at, port in ((OWNER, BEHIND), (NEXT, BEFORE), (NEXT, BEHIND), (LAST, BEFORE), (LAST, BEHIND)):
        bench.set_state(at, port, FORWARDING)


def test_without_protection_one_broadcast_is_a_storm(ring, protected, tell):
    protected.open()
    before, begin = ring.frames_on_cables(), time.monotonic()
    marker = ring.labs[OWNER].marker()
    ring.hosts[OWNER].send(
        ethernet(BROADCAST, protected.addresses[OWNER], ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."))
    )
    try:
        poll_until(lambda: ring.frames_on_cables() - before >= STORM_FRAMES, STORM_SECONDS, "A storm")
    finally:
        protected.set_state(OWNER, BEFORE, BLOCKING)
    seconds = time.monotonic() - begin
    copies = [len(answer.get(HOST, [])) for answer in ring.arrivals(marker)]
    tell(f"one broadcast came {ring.frames_on_cables() - before} times within {seconds * 1000:.0f} ms")
    assert min(copies) > 1, "every host hears it again and again, its sender too"

    # The block has ended it: nothing moves any more, and the ring is as good as new.
    calm = ring.frames_on_cables()
    time.sleep(CALM_SECONDS)
    assert ring.frames_on_cables() == calm
    protected.forget()
    protected.check_everyone_reaches_everyone()


def test_with_one_port_blocked_every_host_reaches_every_other_once(ring, protected):
    assert [[protected.state(at, port) for port in RING_PORTS] for at in range(DEVICES)] == [
        [BLOCKING, FORWARDING],
        [FORWARDING, FORWARDING],
        [FORWARDING, FORWARDING],
    ]
    protected.check_everyone_reaches_everyone()


def test_a_pulled_cable_cuts_the_ring_until_the_block_is_released(ring, protected):
    protected.check_everyone_reaches_everyone()
    ring.pull(NEXT)
    ring.await_cables(without=NEXT)
    assert [protected.say(at) for at in range(DEVICES)] == [{NEXT}, {OWNER}, set()]

    protected.set_state(OWNER, BEFORE, FORWARDING)
    assert protected.state(OWNER, BEFORE) == FORWARDING
    protected.forget()
    protected.check_everyone_reaches_everyone()


def test_a_change_of_state_forgets_no_addresses(ring, protected):
    protected.check_everyone_reaches_everyone()
    ring.pull(NEXT)
    ring.await_cables(without=NEXT)
    protected.set_state(OWNER, BEFORE, FORWARDING)
    assert protected.say(OWNER, protected.addresses[LAST]) == set(), "the owner still looks for it in the old place"
    protected.forget()
    assert protected.say(OWNER, protected.addresses[LAST]) == {NEXT, LAST}
    assert protected.say(LAST, protected.addresses[OWNER]) == {OWNER}
    assert protected.say(OWNER, protected.addresses[LAST]) == {LAST}


# The example program, under a stream of numbered frames


@pytest.fixture
def programs(ring, build, protected):
    """The owner's program and those of the two in transit."""
    with contextlib.ExitStack() as stack:
        made = [
            stack.enter_context(contextlib.closing(RingProgram(lab.device, build, "transit" if at else "owner")))
            for at, lab in enumerate(ring.labs)
        ]
        told = [program.line() for program in made]
        assert told == [f"ready: port {BEFORE} is blocked", *["ready: no port is blocked"] * 2]
        yield made
        assert [program.end() for program in made] == [("ended", 0)] * DEVICES


class Stream:
    """Numbered frames between the owner's host and the last device's, both ways."""

    def __init__(self, ring):
        hosts = ring.hosts[OWNER], ring.hosts[LAST]
        here, there = ring.mac(), ring.mac()
        marker = ring.labs[OWNER].marker
        self.loads = (Load(*hosts, marker(), [(here, there)]), Load(*reversed(hosts), marker(), [(there, here)]))
        self._traffic = Traffic(ring, self.loads)
        self.handled_seconds = 0.0
        for load in self.loads:
            load.introduce()
        self._traffic.settle()

    def is_one_outage(self):
        """Whether the owner's frames were lost in one stretch, if at all, and came before and after it."""
        lost = self.loads[0].lost()
        return not lost or lost == list(range(lost[0], lost[-1] + 1))

    def run(self):
        """A stretch without a loss."""
        first = self._traffic.numbers()
        self._traffic.run_for(STEADY_SECONDS)
        self._traffic.settle()
        for load in self.loads:
            assert load.sent > first[load]
            assert (load.lost(first[load]), load.repeated()) == ([], [])

    def change(self, hand, programs):
        """What the hand does to the cables, under load until all these programs have told of it. Gives what they told,
        and the frames lost of those sent meanwhile.
        """
        self._traffic.run_for(AROUND_SECONDS)
        first, begin = self._traffic.numbers(), time.monotonic()
        # In a thread, so that the frames go on while the hand moves.
        moving = threading.Thread(target=hand)
        moving.start()
        in_time = self._traffic.run_until(lambda: all(program.has_line() for program in programs), HANDLED_SECONDS)
        self.handled_seconds = time.monotonic() - begin
        moving.join()
        assert in_time, "the programs have not handled the change"
        self._traffic.settle()
        # Who has not changed a link learns the new direction from the next frames.
        for load in self.loads:
            load.burst()
            self._traffic.settle()
        tallies = [load.tally(first[load]) for load in self.loads]
        assert [load.repeated() for load in self.loads] == [[], []]
        return [program.line() for program in programs], tallies


def test_the_program_moves_the_block_to_where_the_link_is_lost(ring, programs, protected, tell):
    stream = Stream(ring)
    stream.run()
    neighbours = programs[OWNER], programs[NEXT]

    told, tallies = stream.change(lambda: ring.pull(OWNER), neighbours)
    assert told == [f"port {BEHIND} down: port {BEHIND} is blocked", f"port {BEFORE} down: no port is blocked"]
    assert [protected.state(OWNER, port) for port in RING_PORTS] == [FORWARDING, BLOCKING]
    milliseconds = stream.handled_seconds * 1000
    for direction, tally in zip(("forth", "back"), tallies, strict=True):
        tell(f"cable pulled: {tally.lost} of {tally.sent} frames lost {direction}, handled in {milliseconds:.0f} ms")
        assert tally.delivered > 0
    assert stream.is_one_outage()
    stream.run()

    # The block stays: what comes back joins a ring that is cut where it was lost.
    told, tallies = stream.change(lambda: ring.plug(OWNER), neighbours)
    assert told == [f"port {BEHIND} up: port {BEHIND} is blocked", f"port {BEFORE} up: no port is blocked"]
    assert [tally.lost for tally in tallies] == [0, 0]
    stream.run()
    protected.check_everyone_reaches_everyone()

    # And moves on when the other link is lost.
    told, _ = stream.change(lambda: ring.pull(LAST), (programs[OWNER], programs[LAST]))
    assert told == [f"port {BEFORE} down: port {BEFORE} is blocked", f"port {BEHIND} down: no port is blocked"]
    stream.run()


# Ring ports that are aggregation groups


def test_a_group_as_ring_port_is_blocked_with_all_its_active_members(lab, cpu):
    members, witness, sender = (3, 9, 22), 5, 1
    cpu.form_group(1, members)
    states = {}
    for state in (BLOCKING, FORWARDING):
        assert cpu.result("adp_set_port_erps_state", group(1), state) == 0
        answers = [cpu.call("adp_get_port_erps_state", port) for port in (*members, witness)]
        assert [answer["result"] for answer in answers] == [0] * len(answers)
        assert [answer["outputs"]["state"] for answer in answers] == [state] * len(members) + [FORWARDING]
        frame = ethernet(BROADCAST, lab.mac(), ETHERTYPE_EXPERIMENT, lab.marker().ljust(46, b"."))
        lab.hosts[sender].send(frame)
        states[state] = set(lab.arrivals(frame[14:]))
    assert states[BLOCKING] == set(lab.hosts) - {sender, *members}
    assert len(states[FORWARDING] & set(members)) == 1


def test_a_ring_port_of_another_type_is_refused(cpu):
    assert cpu.result("adp_set_port_erps_state", UNKNOWN_TYPE, BLOCKING) == REFUSED_TYPE
