"""The rates of the device's benchmark, and its rules."""

import pytest

from bench.device import LOADS, Sample, rates
from bench.problem import BenchError
from bench.stream import conditions_of

SPENT = Sample(time=2.0, sent=500, received=400, astray=0, device_seconds=1.0)


def test_rates_are_those_of_a_core_and_of_the_clock():
    assert rates(SPENT) == (400, 200, 250)


@pytest.mark.parametrize("change", [{"received": 0}, {"astray": 1}])
def test_a_device_that_does_not_switch_is_refused(change):
    with pytest.raises(BenchError):
        rates(SPENT._replace(**change))


def test_loads_only_add():
    for few, many in zip(LOADS, LOADS[1:]):
        assert all(less <= more for less, more in zip(few, many))


def test_rules_are_distinct_and_of_three_kinds():
    made = [tuple(conditions_of(number)[1:]) for number in range(900)]
    assert len(set(made)) == 900
    assert len({tuple(kind for kind, _ in rule) for rule in made}) == 3
