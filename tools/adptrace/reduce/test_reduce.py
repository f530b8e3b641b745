"""adptrace reduce with commands of the shell: what is left, and when it refuses, is interrupted, or has to wait."""
import json
import os
import pty
import shlex
import signal
import subprocess
import time

import pytest

ADPTRACE = shlex.split(os.environ["ADPTRACE"])
HEADER = [{"adptrace": 1, "byte_order": "big", "word_bits": 32, "started": "", "command": ["agent"]},
          {"process": 5, "parent": 0, "at": 0, "program": "agent", "library": None}]


def recording_of(vids):
    """Lines of a recording that makes a VLAN for each number."""
    lines = [*HEADER]
    for n, vid in enumerate(vids):
        outer, inner, at = 2 * n + 1, 2 * n + 2, n + 1
        arguments = {"unit": 0, "zero": 0, "vid": vid}
        lines += [{"begin": outer, "thread": 1, "at": at, "call": "adp_vlan_create", "arguments": {"vid": vid}},
                  {"begin": inner, "within": outer, "thread": 1, "at": at, "call": "user_vlan_create", "arguments": arguments},
                  {"end": inner, "at": at, "result": 0, "outputs": {}}, {"end": outer, "at": at, "result": 0, "outputs": {}}]
    return "".join(json.dumps(line, separators=(",", ":")) + "\n" for line in lines)


@pytest.fixture
def recording(tmp_path):
    path = tmp_path / "life"
    path.write_text(recording_of(range(100, 140)), encoding="utf-8")
    return path


def fails_with(*vids):
    """A command that fails for a recording that makes all of these VLANs."""
    return " || ".join(f"! grep -q 'create.*\"vid\":{vid}}}' {{}}" for vid in vids)


def reduce(*words):
    return subprocess.run([*ADPTRACE, "reduce", *map(str, words)], capture_output=True, text=True, timeout=120, check=False)


def vids_of(path):
    lines = [json.loads(line) for line in path.read_text(encoding="utf-8").splitlines()]
    assert lines[:2] == HEADER
    return [line["arguments"]["vid"] for line in lines if "begin" in line and "within" not in line]


def test_the_calls_that_are_needed_are_left(recording):
    done = reduce(recording, "--until", fails_with(107, 131))
    assert (done.returncode, done.stderr) == (0, "")
    assert done.stdout.startswith(f"{recording}.reduced: 2 of 40 calls left after ")
    assert vids_of(recording.parent / "life.reduced") == [107, 131]
    assert sorted(path.name for path in recording.parent.iterdir()) == ["life", "life.reduced"]


def test_the_file_is_the_last_argument_of_a_command_without_place_for_it(recording, tmp_path):
    assert reduce(recording, "--until", "! grep -q 'create.*vid\":120}'", "-o", tmp_path / "out").returncode == 0
    assert vids_of(tmp_path / "out") == [120]


def test_no_candidate_is_run_twice(recording, tmp_path):
    log = tmp_path / "log"
    done = reduce(recording, "--until", f"cksum <{{}} >>{log}; {fails_with(101, 119, 138)}")
    runs = log.read_text(encoding="utf-8").splitlines()
    assert f" {len(runs)} runs" in done.stdout
    assert len(set(runs)) == len(runs)


def test_everything_is_left_if_everything_is_needed(recording):
    done = reduce(recording, "--until", "test $(wc -l <{}) != 162;")
    assert "40 of 40 calls left" in done.stdout
    assert (recording.parent / "life.reduced").read_text(encoding="utf-8") == recording.read_text(encoding="utf-8")


@pytest.mark.parametrize("words, told", [
    (["--until=true"], "succeeds on the whole recording"), (["--until", "exit 1;"], "without calls"),
    (["--until", "no-such-command"], "cannot run the command"), ([], "a command: --until"),
    (["--until"], "--until needs COMMAND"), (["--until", "false", "--time", "0"], "--time"), (["--until", "false", "--time", "1x"], "--time"),
    (["--until", "false", "-o", "/dev/null"], "no ordinary file"), (["--until", "false", "-o", "/no/such/out"], "cannot be written"),
    (["--until", "sleep 60;", "--time", "0.2"], "did not end in time")])
def test_refusals(recording, words, told):
    done = reduce(recording, *words)
    assert done.returncode == 2 and told in done.stderr
    assert [path.name for path in recording.parent.iterdir()] == ["life"]


def test_the_recording_is_not_overwritten(recording):
    done = reduce(recording, "--until", "false", "-o", recording)
    assert done.returncode == 2 and "would overwrite" in done.stderr


def test_a_recording_without_calls_is_refused(tmp_path):
    empty = tmp_path / "empty"
    empty.write_text(recording_of([]), encoding="utf-8")
    done = reduce(empty, "--until", "false")
    assert done.returncode == 2 and "has no calls" in done.stderr


def test_a_command_that_hangs_decides_nothing(recording):
    # Without the call 105 it hangs.
    command = f"grep -q 'create.*\"vid\":105}}' {{}} || test $(wc -l <{{}}) = 2 || sleep 60; {fails_with(105, 130)}"
    recording.write_text(recording_of([104, 105, 130]), encoding="utf-8")
    done = reduce(recording, "--until", command, "--time", "0.5")
    assert ", 2 undecided" in done.stdout or ", 1 undecided" in done.stdout
    assert vids_of(recording.parent / "life.reduced") == [105, 130]


def test_the_smallest_so_far_is_kept_when_someone_interrupts(recording, tmp_path):
    reached = tmp_path / "reached"
    # The runs that would leave out more take long.
    command = f"test $(wc -l <{{}}) -gt 50 || test $(wc -l <{{}}) = 2 || {{ touch {reached}; sleep 60; }}; {fails_with(107)}"
    with subprocess.Popen([*ADPTRACE, "reduce", str(recording), "--until", command], stdout=subprocess.PIPE,
                          text=True) as process:
        deadline = time.monotonic() + 60
        while not reached.exists() and time.monotonic() < deadline:
            time.sleep(0.02)
        process.send_signal(signal.SIGINT)
        said = process.communicate(timeout=60)[0]
    assert process.returncode == 128 + signal.SIGINT
    assert said.endswith(", interrupted\n")
    left = vids_of(recording.parent / "life.reduced")
    assert 107 in left and len(left) < 40


def test_progress_on_a_terminal(recording):
    control, terminal = pty.openpty()
    subprocess.run([*ADPTRACE, "reduce", str(recording), "--until", fails_with(107)], stderr=terminal,
                   stdout=subprocess.DEVNULL, timeout=120, check=True)
    os.close(terminal)
    shown = os.read(control, 65536).decode()
    os.close(control)
    assert shown.startswith("\r\x1b[K40 of 40 calls left after 1 run\r\x1b[K")
    assert shown.endswith("\r\x1b[K") and "\n" not in shown
