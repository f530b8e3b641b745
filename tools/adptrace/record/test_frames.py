"""Frames of the program's own."""

import subprocess

import pytest

OCTETS = 60
TYPE = "88B5"


@pytest.fixture(autouse=True)
def loopback():
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)


def test_frames_are_recorded_when_asked_for(recorder):
    run = recorder.program("frames", "--frames")
    assert run.status == 0
    frames = run.of_kind("frame")
    expected = [(direction, mark) for mark in (1, 2, 3) for direction in ("sent", "received")]
    assert [(line["frame"], int(line["octets"][-2:], 16)) for line in frames] == expected
    assert {line["interface"] for line in frames} == {"lo"}
    assert {len(line["octets"]) for line in frames} == {2 * OCTETS}
    assert all(line["octets"][24:28] == TYPE for line in frames)


def test_frames_are_left_out_otherwise(recorder):
    run = recorder.program("frames")
    assert run.status == 0 and run.of_kind("frame") == []
