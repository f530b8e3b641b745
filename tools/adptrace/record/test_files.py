"""The recording's file, and what befalls it: closed descriptors, limits, a full disk. The program goes on."""

import os
import resource
import signal
import subprocess

import pytest
from conftest import Recorder
from test_processes import CALLS

LIMIT = 20000
STOPS = "adptrace: the recording stops, and the program goes on: {path}: {reason}.\n"


def limited():
    signal.signal(signal.SIGXFSZ, signal.SIG_DFL)
    resource.setrlimit(resource.RLIMIT_FSIZE, (LIMIT, LIMIT))


def test_a_program_that_closes_all_descriptors_gets_no_line_into_its_files(recorder):
    own = recorder.folder / "own"
    run = recorder.program("close", env=os.environ | {"OWN_FILE": str(own)})
    assert run.status == 0
    assert own.read_bytes() == b""
    assert run.calls[-len(CALLS) :] == CALLS


def test_a_recording_that_cannot_be_opened_again_ends(recorder):
    run = recorder.program("close", env=os.environ | {"OWN_FILE": str(recorder.folder / "own"), "REMOVED_FILE": str(recorder.path)})
    assert run.status == 0
    assert run.errors == (STOPS.format(path=run.path, reason="No such file or directory")
                          + f"adptrace: {run.path}: the recording was removed while the program ran.\n")  # fmt: skip


def test_a_limit_on_the_size_of_files_ends_the_recording_and_not_the_program(recorder):
    run = recorder.program("limit", preexec_fn=limited)
    assert run.status == 0
    assert run.errors.startswith(STOPS.format(path=run.path, reason="File too large"))
    assert run.errors.count("\n") == 2
    assert LIMIT // 2 < run.path.stat().st_size <= LIMIT
    assert run.of_kind("begin")


def test_a_limit_that_the_program_sets_ends_the_recording_too(recorder, restored_signals):
    run = recorder.program("lower", **restored_signals)
    assert run.status == 0
    assert STOPS.format(path=run.path, reason="File too large") in run.errors
    assert run.calls == CALLS[:3]


@pytest.fixture
def small_disk(tmp_path):
    folder = tmp_path / "disk"
    folder.mkdir()
    subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "tmpfs", folder], check=True)
    yield folder
    subprocess.run(["umount", folder], check=True)


def test_a_full_disk_ends_the_recording_and_not_the_program(small_disk):
    run = Recorder(small_disk).program("limit")
    assert run.status == 0
    assert run.errors.startswith(STOPS.format(path=run.path, reason="No space left on device"))
    assert run.errors.count("\n") == 2
    assert len(run.of_kind("begin")) > 100


def test_a_disk_without_room_for_the_header_is_refused_before_the_program_starts(small_disk):
    (small_disk / "filling").write_bytes(bytes(1 << 16))
    run = Recorder(small_disk).command("echo", "started")
    assert (run.status, run.output) == (2, "")
    assert run.errors == f"adptrace: '{run.path}': No space left on device.\n"
    assert not run.path.exists()
