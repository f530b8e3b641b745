"""What a scenario tells when it fails, read from a run of those in failing.py."""

import re
import subprocess
import sys

import pytest
from adp.lab import Lab, LabError
from adp.lab.builds import ROOT
from adp.lab.process import kill, stop
from adp.lab.recording import Recording
from adp.testing.comparison import MOST_PAIRS, comparison
from adp.testing.failures import Failures
from adp.testing.packet import Packet

SCENARIOS = "tests/scenarios/failing.py"
SECONDS = 120
FOLDER = ROOT / "build" / "failures"


@pytest.fixture(scope="module")
def run(adp_settings):
    """What the failed run wrote."""
    options = f"--adp-builds={adp_settings.builds[0]}", f"--adp-device={adp_settings.device}"
    command = [sys.executable, "-B", "-m", "pytest", "-q", "-p", "no:cacheprovider", *options, SCENARIOS]
    done = subprocess.run(command, cwd=ROOT, capture_output=True, text=True, timeout=SECONDS)
    assert done.returncode == pytest.ExitCode.TESTS_FAILED, done.stdout + done.stderr
    yield done.stdout
    for path in re.findall(r"All frames: (\S+)", done.stdout):
        (ROOT / path).unlink()


@pytest.fixture
def said(run):
    """said(test): what it says, with single blanks."""

    def of(test):
        text = re.search(rf"^_+ {test}\[\w+\] _+$(.*?)(?=^_+ test_|^=+ short test summary)", run, re.M | re.S)
        return re.sub(" +", " ", text[1])

    return of


def captured(text, *fields):
    """The capture's frames, as tuples of these fields of tshark."""
    path = ROOT / re.search(r"All frames: (\S+) \(\d+ frames captured, 0 missed\.\)", text)[1]
    subprocess.run(["capinfos", path], check=True, capture_output=True)
    words = [word for field in fields for word in ("-e", field)]
    rows = subprocess.check_output(["tshark", "-r", path, "-T", "fields", *words], text=True, stderr=subprocess.DEVNULL)
    return [tuple(row.split("\t")) for row in rows.splitlines()]


def test_a_dropped_frame_names_the_reason(said):
    text = said("test_a_frame_is_dropped")
    assert "port 5 64 octets | nothing\n" in text
    assert " 802.1Q vlan 200 |\n" in text
    assert "in by port 1, 64 octets\n" in text
    assert " dropped: vlan_missing: its VLAN does not exist\n" in text
    assert "Drops since the test began:\n port 1: 1 vlan_missing\n" in text
    assert ("port1", "vlan_missing", "200") in captured(text, "frame.interface_name", "frame.comment", "vlan.id")


def test_a_flood_that_passes_over_a_port_says_why_not_that_port(said):
    text = said("test_a_flood_passes_over_a_port")
    assert " port 5 the frame | the frame\n> port 7 the frame | nothing\n" in text
    assert " flooded\n sent port 5: tagged VLAN 100 priority 0, queue 0\n" in text
    assert " not sent ports cpu,2-4,6-26: not a member of the VLAN\n" in text
    assert "Drops since the test began: none\n" in text


def test_a_frame_that_should_not_arrive_names_the_step_that_sent_it(said):
    text = said("test_a_frame_arrives_where_it_should_not")
    assert " port 7 nothing | 64 octets\n" in text
    assert " port 5 as expected | as expected\n" in text
    assert " destination unknown\n flooded\n sent ports 5,7: tagged VLAN 100 priority 0, queue 0\n" in text
    marked = [row for row in captured(text, "frame.interface_name", "eth.src") if row[1].startswith("02:ad:01")]
    assert sorted(port for port, _ in marked) == ["port1", "port5", "port7"]


def test_a_field_that_differs_is_marked(said):
    text = said("test_a_frame_arrives_with_another_field")
    assert "> 802.1Q prio 3 | 2\n" in text
    assert len(re.findall("^> ", text, re.M)) == 2, "the other is the assertion's line"


def test_nothing_that_came_in_is_said(said):
    text = said("test_nothing_is_sent")
    assert re.search(r"^No frame with b'<device \d+>' has come in since the test began\.$", text, re.M)
    assert "in by port" not in text


def test_what_the_device_did_not_keep_is_explained_as_it_is_now(said):
    text = said("test_a_crowd_speaks_first")
    assert "As it would go now, since the device has kept no account of it:\nin by port 1, 64 octets\n" in text
    assert re.search(r"^The device kept no record of 0 frames and no account of [1-9]\d*\.$", text, re.M)


def test_answers_of_several_devices_are_compared_one_by_one():
    frame = Packet().build(b"<marker>")
    failures = Failures(FOLDER)
    assert failures.pytest_assertrepr_compare("==", ({}, {7: [frame]}), ({}, {}))
    assert "device 2 port 7" in failures.expected_and_received()
    assert "device 1" not in failures.expected_and_received()


def test_a_device_that_is_off_is_said_to_be(device_build, tmp_path):
    with Lab(device_build, (), user_ports=1) as lab:
        lab.device.end()
        with Recording(lab) as recording:
            assert recording.has_frames(), "nobody knows"
            (line,) = recording.report([b"<marker>"])
            assert line.startswith("The device could not be recorded: ")
            with pytest.raises(LabError):
                recording.save(tmp_path / "none.pcapng")


def test_other_assertions_are_left_alone():
    failures = Failures(FOLDER)
    assert failures.pytest_assertrepr_compare("==", {1: "one"}, {1: "two"}) is None
    assert failures.pytest_assertrepr_compare("!=", {1: [b"one"]}, {1: [b"one"]}) is None


def test_a_flood_of_differences_is_cut_short():
    frames = [Packet(dscp=dscp).build(b"<marker>") for dscp in range(MOST_PAIRS + 2)]
    lines = list(comparison({5: frames, 7: frames[:2]}, {7: frames[1::-1]}))
    assert "... and 2 more frames" in lines
    assert "in another order" in lines[-1]


def test_a_process_that_a_kill_does_not_end_is_named():
    class Undying(subprocess.Popen):
        def kill(self):
            """Does nothing."""

    process = Undying(["sleep", "60"])
    with pytest.raises(LabError, match="process of: sleep 60"):
        kill(process, 0.01)
    stop(process)
