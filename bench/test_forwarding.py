"""What the benchmark of forwarding makes of its readings."""

import pytest

from adp.lab.device import host_interface
from bench.forwarding import CASES, EVERYBODY_ELSE, Pair, class_of, frames_a_second, rows_of
from bench.problem import BenchError

UNICAST, FLOOD = CASES


def reading(seconds, frames):
    """Of the processor time, and of each host's received frames: the second number of its row."""
    rows = {host_interface(port): [0, frames.get(port, 0)] for port in EVERYBODY_ELSE}
    return rows, seconds


def test_unicast_counts_at_its_receiver():
    assert frames_a_second(reading(1.0, {2: 100}), reading(3.0, {2: 700}), UNICAST) == 300


def test_a_flooded_frame_counts_once():
    everywhere = {port: 500 for port in EVERYBODY_ELSE}
    assert frames_a_second(reading(0.0, {}), reading(2.0, everywhere), FLOOD) == 250


@pytest.mark.parametrize("case, frames", [(UNICAST, {}), (UNICAST, {2: 9, 3: 1}), (FLOOD, {2: 9})])
def test_what_does_not_switch_is_refused(case, frames):
    with pytest.raises(BenchError):
        frames_a_second(reading(0.0, {}), reading(1.0, frames), case)


def test_classes_are_powers_of_4():
    assert [class_of(line) for line in (0.4, 15.9, 16.1, 43, 63.9, 64.1, 224)] == [1, 4, 16, 16, 16, 64, 64]


def test_ratios_of_a_class_are_put_together():
    pairs = [Pair(16, 900, 1000), Pair(64, 700, 1000), Pair(16, 800, 1000), Pair(16, 1000, 1000)]
    near, far = rows_of(UNICAST, pairs)
    assert near[:3] == ["known unicast", "16 to 64", 3] and near[5] == 0.9
    assert far == ["known unicast", "64 to 256", 1, 1, 1, 0.7, 0.7, 0.7]
