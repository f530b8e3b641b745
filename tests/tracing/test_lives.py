"""Random lives: a program's calls, recorded on one device and replayed on a fresh one, bring that to an equal state.

ADP_TRACING_CALLS is the number of calls of a life.
"""

import os
import subprocess

import pytest
from adp.lab import Build, Lab
from recorded import calls, recording, replay, state

CALLS = int(os.environ.get("ADP_TRACING_CALLS", "2000"))
LIFE_SECONDS = 600


def live(device, build, seed, path):
    with recording(path, "random_life"):
        command = Build(build).command("random_life", seed, CALLS)
    process = device.popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
    _, errors = process.communicate(timeout=LIFE_SECONDS)
    assert process.returncode == 0, errors


@pytest.mark.parametrize("seed", [1, 2])
@pytest.mark.parametrize(("recorded", "replayed"), [("host", "host"), ("mips", "host"), ("mips", "mips")])
def test_a_replay_brings_a_fresh_device_to_the_recorded_state(recorded, replayed, seed, tmp_path):
    path = tmp_path / "life"
    with Lab("host", (), name="recorded") as lab:
        at_power_on = state(lab.device)
        live(lab.device, recorded, seed, path)
        reached = state(lab.device)
    assert reached != at_power_on
    assert len(calls(path)) > CALLS
    with Lab("host", (), name="replayed") as lab:
        status, said = replay(lab.device, replayed, path)
        assert status == 0, said
        assert state(lab.device) == reached
    with Lab("host", (), name="driver only") as lab:
        status, said = replay(lab.device, replayed, path, "--driver-only")
        assert status == 0, said
        assert state(lab.device) == reached
