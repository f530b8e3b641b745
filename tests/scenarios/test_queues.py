"""Queues behind a shaper: a port keeps its rate, and scheduling shares it between the queues."""

import time

import pytest
from crossing import NEIGHBOUR, RECEIVER
from queueing import (
    CHECK_SEQUENCE,
    FITTING,
    FRAME,
    QUEUES,
    ROUND_ROBIN,
    STRICT,
    WEIGHTED,
    Bottleneck,
)

TOLERANCE = 0.05
SHARE_TOLERANCE = 0.10
LOW, HIGH = 1, 6
SLOW = 200  # kbit/s: a full queue takes two and a half seconds
SHARED = 600
SECONDS = 1.0
REFUSED_MODE = 501
AGGREGATION, NO_PORT = 0x10000001, 40


@pytest.fixture(name="port")
def bottleneck(crossing):
    made = Bottleneck(crossing)
    yield made
    made.tidy()


def wait_on_the_device(port, seconds, meanwhile=lambda: None):
    """The readings before and after so many seconds of the device's."""
    before = after = port.read()
    while after.time - before.time < seconds:
        meanwhile()
        time.sleep(0.01)
        after = port.read()
    return before, after


@pytest.mark.parametrize("rate, burst", [(SLOW, 0), (SLOW, 1), (2000, 64)], ids=["usual", "short burst", "faster"])
def test_port_keeps_to_its_rate(port, rate, burst):
    port.shape(rate, burst)
    row = port.row()
    assert (row["rate"], row["burst"]) == (rate, burst)
    port.fill(*QUEUES)
    before, after = wait_on_the_device(port, SECONDS)
    assert sum(after.waiting) > 0, "there was always more to send"
    assert after.rate_since(before) == pytest.approx(rate, rel=TOLERANCE)


def test_rate_is_kept_on_the_cable_and_nothing_is_lost_within_the_queue(port, crossing):
    """Counted by the receiver, independent of the device."""
    port.shape(2000, 8)
    marker = crossing.lab.marker()
    before = port.read()
    port.fill(0, frames=60, marker=marker)
    frame = port.frame(0, marker)
    deadline = time.monotonic() + 20
    seen = 0
    while seen < 60 and time.monotonic() < deadline:
        seen += crossing.lab.hosts[RECEIVER].receive(marker, 1.0) == frame
    after = port.read()
    assert seen == 60
    assert (after.frames[0] - before.frames[0], sum(after.waiting), after.dropped) == (60, 0, before.dropped)
    shortest = 57 * (FRAME + CHECK_SEQUENCE) * 8 / 2_000_000
    assert after.time - before.time >= shortest


def test_other_ports_are_not_held_up(port, crossing):
    port.shape(1, 8)
    marker = crossing.lab.marker()
    port.fill(0, frames=20, marker=marker)
    frame = port.frame(0, marker)
    arrived = [crossing.lab.hosts[NEIGHBOUR].receive(marker, 5.0) for _ in range(20)]
    assert arrived == [frame] * 20
    assert 17 <= sum(port.read().waiting) <= 19


def test_strict_priority_starves_the_lower_queue(port):
    port.shape(SLOW, 8)
    port.fill(LOW, frames=20)
    port.fill(HIGH)
    before, after = wait_on_the_device(port, SECONDS)
    assert after.waiting[HIGH] > 0
    assert after.frames[HIGH] - before.frames[HIGH] > 25
    assert after.frames[LOW] == before.frames[LOW]
    assert after.waiting[LOW] == before.waiting[LOW] > 0


def test_round_robin_serves_both(port):
    assert port.schedule(ROUND_ROBIN) == 0
    port.shape(SLOW, 8)
    port.fill(LOW, HIGH)
    before, after = wait_on_the_device(port, SECONDS)
    low, high = (after.frames[queue] - before.frames[queue] for queue in (LOW, HIGH))
    assert low > 15
    assert abs(low - high) <= 1


@pytest.mark.parametrize("queues, weights", [((0, 1, 2, 3), (1, 2, 4, 8)), ((7, 5, 4, 2), (1, 2, 4, 8))])
def test_weights_share_the_rate(port, queues, weights):
    assert port.schedule(WEIGHTED) == 0
    for queue, weight in zip(queues, weights):
        port.weigh(queue, weight)
    port.shape(SHARED, 8)
    port.fill(*queues)
    before, after = wait_on_the_device(port, 4 * SECONDS, lambda: port.offer(*queues, frames=20))
    for queue in queues:
        assert after.dropped[queue] > before.dropped[queue], "the queue was always full"
    shares = after.kilobits_since(before)
    whole = sum(shares)
    assert whole / (after.time - before.time) == pytest.approx(SHARED, rel=TOLERANCE)
    for queue, weight in zip(queues, weights):
        assert shares[queue] / whole == pytest.approx(weight / sum(weights), rel=SHARE_TOLERANCE)


def test_queue_of_weight_none_goes_ahead(port):
    assert port.schedule(WEIGHTED) == 0
    port.weigh(LOW, 0)
    port.weigh(HIGH, 100)
    port.shape(SLOW, 8)
    port.fill(HIGH, frames=20)
    port.fill(LOW)
    before, after = wait_on_the_device(port, SECONDS)
    assert after.frames[LOW] - before.frames[LOW] > 25
    assert after.waiting[HIGH] == before.waiting[HIGH] > 0


def test_full_queue_drops_what_comes_next_and_no_other_does(port):
    port.shape(1, 1)
    before = port.read()
    port.fill(LOW, frames=FITTING + 8)
    port.fill(HIGH, frames=3)
    after = port.read()
    left, dropped = after.frames[LOW] - before.frames[LOW], after.dropped[LOW] - before.dropped[LOW]
    assert left + after.waiting[LOW] + dropped == FITTING + 8
    assert after.waiting[LOW] == FITTING
    assert 5 <= dropped <= 7, "one frame leaves at once, and the next in seconds"
    assert (after.waiting[HIGH], after.dropped[HIGH]) == (3, before.dropped[HIGH])


def test_weights_outlive_a_change_of_mode_and_a_write_of_what_was_read(port, cpu):
    for queue in QUEUES:
        port.weigh(queue, queue + 1)
    for mode in (WEIGHTED, ROUND_ROBIN, WEIGHTED):
        assert port.schedule(mode) == 0
    assert port.weights() == [1, 2, 3, 4, 5, 6, 7, 8]
    # The library reads into the caller's own block, so that the old weights go back.
    block = "{weight=[9,9,9,9,9,9,9,9]}"
    assert cpu.result("adp_set_queue_weight_pri", RECEIVER, 0, 0, block) == 0
    assert (port.weights(), port.row()["mode"]) == ([1, 2, 3, 4, 5, 6, 7, 8], "weighted")
    assert cpu.call("adp_cosq_sched_get", port.number, 3, 0)["outputs"] == {"weight": 4}


def test_settings_are_the_ports_own(port, cpu):
    port.shape(SLOW)
    assert port.schedule(ROUND_ROBIN) == 0
    assert (port.row(NEIGHBOUR)["mode"], port.row(NEIGHBOUR)["rate"]) == ("strict", 0)
    answer = cpu.call("adp_get_port_egress_shaper", RECEIVER)
    assert (answer["result"], answer["outputs"]) == (0, {"rate": SLOW, "burst": 0})
    assert cpu.result("adp_set_port_queue_sch_mode", RECEIVER, 3) == REFUSED_MODE
    assert cpu.result("adp_set_port_queue_sch_mode", NO_PORT, STRICT) == 102, "it has no bit in the mask"
    assert cpu.result("adp_set_port_egress_shaper", AGGREGATION, SLOW, 0) == 102
    assert port.row()["mode"] == "round_robin"
