"""The example programs at work, recorded and replayed: nothing differs."""

import contextlib
import json
import subprocess

import pytest
from adp.lab import Build, Lab
from adp.lab.acl import AclProgram
from adp.lab.aggregation import AggregationProgram
from adp.lab.process import poll_until
from adp.lab.ring import RING_PORTS, RingProgram
from adp.lab.snooping import SnoopingProgram
from recorded import calls, recording, replay

HOSTS = (1, 2, 3, 4, 5)
SECONDS = 30.0


def acl(lab, build):
    with contextlib.closing(AclProgram(lab.device, build, 5)) as program:
        assert program.counts()["ssh"] == (0, 0)
        assert program.end()


def frame_path(lab, build):
    process = lab.device.popen(Build(build).command("frame_path"), stdout=subprocess.DEVNULL)
    assert process.wait(SECONDS) == 0


def igmp_snooping(lab, build):
    with contextlib.closing(SnoopingProgram(lab.device, build, (3, 4))) as program:
        program.await_dropping()
        assert program.end() == 0


def link_aggregation(lab, build):
    with contextlib.closing(AggregationProgram(lab.device, build, (1, 2, 3))) as program:
        lab.device.control("pull", 2)
        poll_until(lambda: program.has_handled(2, False), SECONDS, "The link change")
        lab.device.control("plug", 2)
        poll_until(lambda: program.has_handled(2, True), SECONDS, "The link change")
    assert program.exit_status == 0


def ring_protection(lab, build):
    with contextlib.closing(RingProgram(lab.device, build, "owner")) as program:
        program.line()
        lab.device.control("pull", RING_PORTS[0])
        program.line()
        program.end()


EXAMPLES = {each.__name__: each for each in (acl, frame_path, igmp_snooping, link_aggregation, ring_protection)}


@pytest.fixture(scope="module", params=["host", "mips"])
def build(request):
    return request.param


@pytest.fixture(scope="module", params=EXAMPLES)
def path(request, build, tmp_path_factory):
    """A recording of an example."""
    made = tmp_path_factory.mktemp("recording") / request.param
    with Lab("host", HOSTS, name=request.param) as lab, recording(made, request.param):
        EXAMPLES[request.param](lab, build)
    return made


@pytest.fixture(scope="module")
def device():
    """A device that nobody has asked anything."""
    with Lab("host", HOSTS, name="fresh") as lab:
        yield lab.device


def test_an_example_replays_from_the_recording_alone(path, device):
    status, said = replay(device, "host", path, "--driver", "recorded")
    assert status == 0, said
    assert len(calls(path)) > 3


def test_a_changed_number_is_found_at_its_call(path, device, tmp_path):
    lines = path.read_text().splitlines()
    number, line = next((n, each) for n, each in enumerate(lines) if '"call":"user_' in each)
    changed = json.loads(line)
    changed["arguments"]["unit"] ^= 1
    lines[number] = json.dumps(changed)
    other = tmp_path / "changed"
    other.write_text("\n".join(lines) + "\n")
    status, said = replay(device, "host", other, "--driver", "recorded")
    assert status == 1
    assert f"line {number + 1}" in said
    assert changed["call"] in said
