"""What the rows of a course come to, the rules that nothing meets, and what is read from traces of system calls."""

import pytest

from bench import frames_out
from bench.problem import BenchError
from bench.switches.course import SIZES, Point, points, row_of
from bench.switches.course import Sample as Spent
from bench.switches.figures import Figures, flatness_table
from bench.switches.ovs import flow
from bench.switches.rules import DESTINATIONS, KINDS, Rule, rules

POINT = {"rules": 0, "stations": 1, "flows": 1, "size": 64}
PLACE = (64, 1, 1, 0)


def row(switch, **figures):
    return {"switch": switch, **POINT, **figures}


def test_medians_are_taken_over_the_rounds():
    figures = Figures([row("device", per_core=rate, arrived=rate / 2) for rate in (100, 300, 200)])
    assert figures.per_core("device", PLACE) == 200
    assert figures.arrived("device", PLACE) == 100
    assert figures.per_core("ovs", PLACE) is None


def test_bridge_is_what_it_adds_to_the_sender():
    alone = row("none", stream_core=1.0, offered=1_000_000)
    bridged = row("bridge", stream_core=1.0, offered=500_000)
    assert Figures([alone, bridged]).bridge_per_core(PLACE) == pytest.approx(1_000_000)
    assert Figures([bridged]).bridge_per_core(PLACE) is None


def test_flatness_compares_points_that_differ_in_nothing_else():
    rows = [row("device", per_core=100), row("device", per_core=80) | {"rules": 900}]
    rows.append(row("device", per_core=10) | {"rules": 900, "size": 1514})
    [of_rules] = flatness_table(Figures(rows))["rows"]
    assert of_rules[:3] == ["rules", 0.8, 0.8]


def test_a_row_has_rates_for_both_clocks():
    spent = Spent(time=2.0, sent=500, received=400, astray=0, switch_seconds=1.0, stream_seconds=2.0)
    found = row_of("device", Point(**POINT), 0, spent)
    assert (found["offered"], found["arrived"], found["per_core"]) == (250, 200, 400)


def test_points_never_ask_a_switch_to_forget():
    class Switch:
        takes_rules = True

    stations = [point.stations for point in points(Switch, SIZES)]
    assert stations == sorted(stations)
    assert len(set(points(Switch, SIZES))) == len(stations) == 16


def test_rules_are_distinct_and_of_all_kinds():
    made = rules(900)
    assert len(set(made)) == 900
    shapes = {tuple(part is not None for part in rule) for rule in made}
    assert len(shapes) == len(KINDS)


def test_a_rule_is_a_flow_that_drops():
    assert flow(Rule(DESTINATIONS, None, None)) == "in_port=1,priority=100,ip,nw_dst=10.99.0.0,actions=drop"
    assert flow(Rule(None, None, 7)) == "in_port=1,priority=100,udp,tp_dst=7,actions=drop"


TRACE = """\
7  socket(AF_PACKET, SOCK_RAW, 0x800) = 3
7  write(-1, "library", 7) = -1 EBADF (Bad file descriptor)
7  sendto(3, "\\2\\276", 74, 0, {}, 20) = 74
7  sendto(3, "\\2\\276", 74, 0, {}, 20) = 74
7  write(-1, "bare", 4) = -1 EBADF (Bad file descriptor)
7  close(3) = 0
7  write(-1, "end", 3) = -1 EBADF (Bad file descriptor)
7  +++ exited with 0 +++
""".splitlines()


def test_system_calls_are_those_between_the_marks():
    assert frames_out.parts_of(TRACE) == (["sendto", "sendto"], ["close"])


def test_a_trace_without_its_marks_is_refused():
    with pytest.raises(BenchError):
        frames_out.parts_of(TRACE[:5])


def test_frames_that_differ_in_their_system_calls_are_refused():
    calls = ["sendto"] * frames_out.TRACED_FRAMES
    assert frames_out.per_frame(calls) == {"sendto": 1}
    with pytest.raises(BenchError):
        frames_out.per_frame([*calls, "brk"])
