"""A ring of three devices: without protection a frame circulates for ever, with one port blocked every host
reaches every other, once, and when a cable is pulled the block moves there.
"""

import contextlib
import subprocess
import time

import adp
import pytest
from adp.lab import Build
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet
from adp.lab.process import poll_until
from adp.lab.ring import BEFORE, BEHIND, DEVICES, HOST, RING_PORTS, Ring, RingProgram
from adp.testing.cpu import Cpu
from ringside import BLOCKING, FORWARDING, LAST, NEXT, OWNER, Protected, Stream

UNKNOWN_TYPE, REFUSED_TYPE = 0x30000001, 201
# In a ring that is cut a broadcast crosses each cable once at most, so this many are a storm.
STORM_FRAMES = 1000
STORM_SECONDS = 20.0
CALM_SECONDS = 0.2
ENDED_SECONDS = 20.0


@pytest.fixture(scope="module")
def ring(device_build):
    with Ring(device_build) as devices:
        yield devices


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


def test_the_program_does_not_go_on_without_its_link_watcher(ring, build, protected):
    with contextlib.closing(RingProgram(ring.labs[OWNER].device, build, "owner")) as program:
        assert program.line() == f"ready: port {BEFORE} is blocked"
        program.kill_watcher()
        assert program.line() == "ring_protection: The link watcher has ended."
        assert (program.line(), program.wait()) == ("ended", 1)
    assert protected.state(OWNER, BEFORE) == BLOCKING


@pytest.mark.parametrize(
    "words", ("", "owner 2", "guest 2 3", "owner 2 2", "transit 2 27", "transit 0 3", "owner 2x 3")
)
def test_the_program_refuses_what_is_no_ring(build, words):
    done = subprocess.run(
        Build(build).command("ring_protection", *words.split()), capture_output=True, text=True, timeout=ENDED_SECONDS
    )
    assert (done.returncode, done.stdout) == (2, "")
    assert done.stderr.startswith("usage: ring_protection owner BLOCKED_PORT OTHER_PORT")


# Ring ports that are aggregation groups


def test_a_group_as_ring_port_is_blocked_with_all_its_active_members(lab, cpu):
    members, witness, sender = (3, 9, 22), 5, 1
    cpu.form_group(1, members)
    states = {}
    for state in (BLOCKING, FORWARDING):
        assert cpu.result("adp_set_port_erps_state", adp.agg(1), state) == 0
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
