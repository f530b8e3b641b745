"""The comparison with the baseline says what has grown, and the frame finds the benchmarks."""

import io
import json

import pytest

from bench import instructions, report, run
from bench.baseline import Baseline

BUILDS = ("host", "mips")
KEPT = {"calls": {"host.one": 100, "host.two": 50, "mips.one": 200}}


@pytest.fixture
def baseline(tmp_path):
    path = tmp_path / "baseline.json"
    path.write_text(json.dumps(KEPT), encoding="utf-8")
    return Baseline(path)


def complaint(baseline, builds=BUILDS, **changes):
    """The status, and what is said of the kept counts with these changes; None takes one out."""
    found = {key: count for key, count in (KEPT["calls"] | changes).items() if count is not None}
    out = io.StringIO()
    return baseline.complain({"calls": found}, builds, out), out.getvalue()


def test_equal_counts_are_good(baseline):
    status, text = complaint(baseline)
    assert status == 0
    assert "3 counts" in text


def test_two_percent_more_are_good(baseline):
    assert complaint(baseline, **{"host.one": 102})[0] == 0


def test_each_count_that_has_grown_is_named(baseline):
    status, text = complaint(baseline, **{"host.one": 103, "mips.one": 300})
    assert status == 1
    assert "host.one has grown from 100 to 103, +3.0%" in text
    assert "mips.one has grown from 200 to 300, +50.0%" in text
    assert "host.two" not in text


def test_smaller_counts_are_counted(baseline):
    status, text = complaint(baseline, **{"host.one": 10})
    assert status == 0
    assert "1 below" in text


def test_a_count_that_nobody_measured_is_named(baseline):
    status, text = complaint(baseline, **{"host.two": None})
    assert status == 1
    assert "host.two was not measured" in text


def test_a_new_count_is_named(baseline):
    status, text = complaint(baseline, **{"host.three": 1})
    assert status == 1
    assert "host.three is not in the baseline" in text


def test_other_builds_are_left_out(baseline):
    assert complaint(baseline, ("host",), **{"mips.one": None})[0] == 0


def test_comparing_nothing_is_no_success(tmp_path):
    assert Baseline(tmp_path / "none.json").complain({}, BUILDS, io.StringIO()) == 1


def test_a_new_baseline_keeps_what_was_not_measured(baseline, tmp_path):
    baseline.replace({"size": {"host.text": 7}, "calls": {"host.one": 90}}, ["host"])
    assert json.loads((tmp_path / "baseline.json").read_text(encoding="utf-8")) == {
        "calls": {"host.one": 90, "mips.one": 200},
        "size": {"host.text": 7},
    }


def test_the_benchmarks_are_found():
    names = run.benchmark_names()
    assert {"calls", "frames_in"} <= set(names)
    assert not {"run", "report", "baseline", "instructions", "test_frame"} & set(names)


def test_a_profile_gives_what_measure_calls(tmp_path):
    profile = tmp_path / "profile"
    profile.write_text(
        "fn=warm_up\ncfn=call_0\ncalls=1 10\n12 5000\nfn=measure\n12 9\ncfn=call_0\ncalls=2 10\n13 700\n"
        "cfn=floor_0\ncalls=1 20\n13 5\nfn=call_0\ncfn=other\ncalls=1 4\n13 50\n",
        encoding="utf-8",
    )
    assert instructions.read_profile(profile) == {"call_0": (2, 700), "floor_0": (1, 5)}


def test_numbers_stand_to_the_right():
    table = {"columns": ["what", "count"], "rows": [["a", 1000], ["bcd", None], ["e", 1.5]]}
    assert report.table_lines(table) == ["what  count", "a     1,000", "bcd", "e      1.50"]
