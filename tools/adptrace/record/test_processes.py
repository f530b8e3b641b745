"""Other processes, ends of all kinds, and what cannot be recorded."""

import os
import shutil
import signal
import subprocess
import time

import pytest
from conftest import BUILD, SECONDS, command_of
from test_calls import BOARD, DRIVER_GET, DRIVER_SET, GET, SET

NOBODY = 65534
CALLS = [*BOARD, SET, DRIVER_SET, GET, DRIVER_GET]
OTHER = os.environ | {"OTHER_PROGRAM": " ".join(command_of("adptrace_test_program", "calls"))}


def of_others(run):
    return [line for line in run.lines if "of" in line]


def test_a_child_is_recorded_with_f_only(recorder):
    assert recorder.program("fork").calls == [*BOARD, SET, DRIVER_SET]
    run = recorder.program("fork", "-f")
    assert run.status == 0
    first, child = run.of_kind("process")
    assert child["parent"] == first["process"]
    begun = [line for line in of_others(run) if "begin" in line]
    assert [(line["begin"], line["thread"], line["call"]) for line in begun] == [(1, 1, SET), (2, 1, DRIVER_SET)]
    assert {line["of"] for line in of_others(run)} == {child["process"]}
    assert run.calls == [*BOARD, SET, DRIVER_SET, SET, DRIVER_SET]


def test_a_program_that_becomes_another_one_is_recorded_on(recorder):
    run = recorder.program("exec", env=OTHER)
    assert run.status == 0
    processes = run.of_kind("process")
    assert len(processes) > 1 and {line["process"] for line in processes} == {run.lines[-1]["exit"]}
    assert of_others(run) == []
    begun = [line["begin"] for line in run.of_kind("begin")]
    assert begun == [1, 2, 3, 1, 2, 3, 4, 5, 6, 7] and run.calls == BOARD + CALLS


def test_a_program_that_is_started_is_recorded_with_f_only(recorder):
    assert recorder.program("spawn", env=OTHER).calls == [*BOARD, SET, DRIVER_SET]
    run = recorder.program("spawn", "-f", env=OTHER)
    assert run.calls == [*BOARD, *CALLS, SET, DRIVER_SET]
    first, second = run.of_kind("process")[0], run.of_kind("process")[-1]
    assert second["parent"] == first["process"]
    begun = [line for line in of_others(run) if "begin" in line]
    assert [line["call"] for line in begun] == CALLS and {line["of"] for line in begun} == {second["process"]}


def test_a_daemon_is_recorded_in_the_background(recorder):
    run = recorder.program("daemon", "-f")
    assert run.status == 0
    deadline = time.monotonic() + SECONDS
    while not any(line.get("end") == 1 and "of" in line for line in run.lines):
        assert time.monotonic() < deadline
        time.sleep(0.01)
    assert [line["call"] for line in of_others(run) if "begin" in line] == [SET, DRIVER_SET]


def test_a_crash_leaves_the_call_that_did_not_return(recorder):
    run = recorder.program("crash")
    assert run.status == 128 + signal.SIGSEGV
    ended = {line["end"] for line in run.of_kind("end")}
    assert [line["call"] for line in run.of_kind("begin") if line["begin"] not in ended] == [SET, DRIVER_SET]
    assert run.lines[-1]["signal"] == signal.SIGSEGV


def test_a_killed_program_has_all_its_lines(recorder):
    run = recorder.program("kill")
    assert run.status == 128 + signal.SIGKILL
    assert run.calls == CALLS and run.lines[-1]["signal"] == signal.SIGKILL


def test_the_status_is_the_programs(recorder):
    assert recorder.command("sh", "-c", "exit 7").status == 7


def test_the_end_is_handed_on_and_an_interrupt_is_the_programs_own(recorder):
    script = "trap 'echo ended; exit 3' TERM; echo ready; while :; do sleep 0.01; done"
    process = recorder.start([], ["sh", "-c", script])
    assert process.stdout.readline() == "ready\n"
    process.send_signal(signal.SIGINT)  # as a terminal does, though that one tells the program, too
    process.send_signal(signal.SIGTERM)
    run = recorder.finish(process)
    assert (run.status, run.output) == (3, "ended\n")


def test_a_program_without_a_loader_is_told_apart(recorder):
    if not (BUILD / "adptrace_test_static").exists():
        return
    run = recorder.command(*command_of("adptrace_test_static"))
    assert run.status == 0
    reason = "is for another machine than adptrace" if os.environ.get("ADP_EMULATOR") else "is linked statically"
    assert run.errors.startswith("adptrace: nothing was recorded: ") and reason in run.errors
    assert [next(iter(line)) for line in run.lines] == ["adptrace"]


@pytest.mark.skipif(bool(os.environ.get("ADP_EMULATOR")), reason="the emulator's own privileges would be meant")
def test_a_setuid_program_is_told_apart(recorder):
    program = recorder.folder / "program"
    shutil.copy("/bin/true", program)
    try:
        os.chown(program, NOBODY, -1)
    except OSError:
        pytest.skip("there is no other user in this namespace")
    program.chmod(0o4755)
    run = recorder.command(program)
    assert run.status == 0
    assert run.errors.startswith("adptrace: nothing was recorded: ") and "is setuid or has capabilities" in run.errors


def test_a_program_without_calls_says_so(recorder):
    run = recorder.command(*command_of("adptrace_test_program"))
    assert "0 calls" in run.errors and "record with -f" in run.errors


def refusal(*arguments, folder):
    done = subprocess.run(command_of("adptrace", "record", *arguments), cwd=folder, capture_output=True, text=True,
                          timeout=SECONDS, check=False)  # fmt: skip
    assert done.returncode == 2 and done.stdout == ""
    return done.stderr


def test_what_cannot_be_done_is_said_in_a_sentence(tmp_path):
    other = tmp_path / "letter"
    other.write_text("Dear all,\n")
    script = tmp_path / "script"
    script.write_text("true\n")
    for arguments, words in (
        ((), "which program?"),
        (("--",), "which program?"),
        (("-o",), "'-o' needs a file"),
        (("-x", "true"), "there is no option '-x'"),
        (("-p", "1"), "a running program cannot be recorded"),
        (("--", "no-such-program"), "there is no program 'no-such-program' in PATH"),
        (("--", "./script"), "'./script': Permission denied."),
        (("--", "./none"), "'./none': No such file or directory."),
        (("-o", "letter", "--", "true"), "is no recording, so it is not replaced"),
        (("-o", "/dev/full", "--", "true"), "this is no regular file"),
        (("-o", "none/file", "--", "true"), "'none/file': No such file or directory."),
    ):
        assert words in refusal(*arguments, folder=tmp_path), arguments
    assert other.read_text() == "Dear all,\n"


def test_a_recording_is_replaced_and_named_after_its_program(recorder):
    for _ in range(2):
        command = command_of("adptrace", "record", "--", *command_of("adptrace_test_program", "calls"))
        done = subprocess.run(command, cwd=recorder.folder, timeout=SECONDS, check=False, capture_output=True, text=True)
        name = command_of("adptrace_test_program")[0].rsplit("/", maxsplit=1)[-1] + ".adptrace"
        assert done.stderr == f"adptrace: {name}: 7 calls, 2 KiB.\n"
        assert (recorder.folder / name).read_text().count('"adptrace":1') == 1
