"""What the benchmark of the CPU's path makes of its readings."""

import json

import pytest

from adp.lab import LabError
from adp.lab.iperf import megabits_of
from bench.cpu_path import ALONE, BARE, DIRECTIONS, SWITCHD, Sample, rate_rows, time_row

UP, DOWN = DIRECTIONS


def sample(megabits, microseconds=1.0):
    return Sample(megabits, seconds=microseconds / 1000, frames=1000)


def rounds_of(*rates):
    """Rounds of (adp-switchd, bare relay, without the chip), for one direction; the other one has nothing to divide by."""
    ways = (SWITCHD, BARE, ALONE)
    return [{way: {UP: sample(rate), DOWN: sample(0)} for way, rate in zip(ways, row)} for row in rates]


def test_a_ratio_is_that_of_one_round():
    bare, alone = rate_rows(UP, rounds_of((80, 100, 400), (900, 1000, 1800), (10, 10, 1000)))
    assert bare[:6] == [UP, BARE, 3, 80, 100, 0.9]
    assert alone[:6] == [UP, ALONE, 3, 80, 1000, 0.2]
    assert bare[6] < 0.9 < bare[7]


def test_processor_time_is_divided_by_the_frames_and_its_median_taken():
    times = ((2.0, 1.0, 0.5), (3.0, 1.0, 0.5), (9.0, 4.0, 0.5))
    rounds = [{way: {UP: sample(1, time)} for way, time in zip((SWITCHD, BARE, ALONE), row)} for row in times]
    assert time_row(UP, rounds) == [UP, *map(pytest.approx, (3.0, 1.0, 0.5))]


def test_the_rate_is_that_of_what_arrived():
    ends = {"sum_sent": {"bits_per_second": 9e9}, "sum_received": {"bits_per_second": 25e6}}
    assert megabits_of(json.dumps({"end": ends})) == 25


@pytest.mark.parametrize("result", ["", '{"end": {}, "error": "unable to connect"}'])
def test_a_run_without_a_result_is_refused(result):
    with pytest.raises(LabError):
        megabits_of(result)
