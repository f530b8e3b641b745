"""A board's shell that does something wrong: a sentence, soon, that shows what the board said and is safe to print."""

import contextlib
import pathlib
import sys
import time

import pytest
from adp.lab import LabError, board_shell, process, serial_line
from adp.lab.board import open_board
from adp.lab.board_shell import LONGEST_TERMINAL_LINE, BoardShell
from remote_board import RemoteBoard, served_at_console

FALSE_ADPSH = str(pathlib.Path(__file__).with_name("false_adpsh.py"))
SOON = 5.0
LOGIN = r"while read name; do printf 'Login incorrect\n\nboard login: '; done"


@pytest.fixture(autouse=True)
def hurry(monkeypatch):
    monkeypatch.setattr(board_shell, "QUIT_SECONDS", 0.1)
    monkeypatch.setattr(process, "LONGEST_LINE", 1 << 20)


def start(fault):
    return contextlib.closing(BoardShell([sys.executable, "-B", FALSE_ADPSH, fault]))


def check_sentence(text, *words):
    assert all(word in text for word in words), text
    assert len(text) < 20_000
    assert all(line.isprintable() for line in text.split("\n"))


@pytest.mark.parametrize(
    "fault, words",
    [
        ("silent", ["adpsh, asked 'fault', did not answer within 0.5 seconds."]),
        ("ends", ["adpsh, asked 'fault', ended without an answer.", "It wrote: \ufffd[31mSegmentation fault"]),
        ("ends in a record", ["ended without an answer. It last wrote: '{\"line\":2,\"res'"]),
        ("garbage", ["did not answer within 0.5 seconds. It said: ", "\\x1b]0;title\\x07{] | "]),
        ("garbage in a record", ["did not answer in JSON: '{\"line\":2,\"result\":[\\x1b[2J'"]),
        ("deep", ["did not answer in JSON: '{\"line\":[[["]),
        ("digits", ["did not answer in JSON: '{\"line\":2,\"result\":999"]),
        ("endless lines", ["adpsh, asked 'fault', wrote ", " characters, and no answer among them. It said: spam | spam"]),
        ("endless line", ["wrote more than 1048576 bytes without the end of a line. It said: spamspam"]),
        ("endless errors", ["ended without an answer", "It wrote: "]),
    ],
)
def test_a_fault_is_told_and_ends_the_shell(fault, words):
    with start(fault) as shell:
        before = time.monotonic()
        with pytest.raises(LabError) as problem:
            shell.ask("fault", seconds=SOON if "endless" in fault else 0.5)
        assert time.monotonic() - before < 2 * SOON
        check_sentence(str(problem.value), *words)
        with pytest.raises(LabError, match="adpsh on the board is no longer asked, since before: adpsh, asked 'fault'"):
            shell.ask("echo 1")


def test_a_late_answer_is_not_taken_for_that_of_the_next_call():
    with start("late") as shell:
        with pytest.raises(LabError, match="did not answer within 0.3 seconds"):
            shell.ask("fault", seconds=0.3)
        time.sleep(0.5)
        with pytest.raises(LabError, match="no longer asked"):
            shell.ask("echo next")


def test_what_comes_between_the_records_is_skipped():
    with start("noise") as shell:
        assert shell.result("fault") == 7
        assert shell.call("echo on")["echo"] == "on"


def test_an_error_of_the_board_is_printable():
    with start("bad error") as shell, pytest.raises(LabError) as problem:
        shell.call("fault")
    check_sentence(str(problem.value), "adpsh refused 'fault': \ufffd[2J")
    assert len(str(problem.value)) < 1100


def test_a_record_without_a_result_is_told():
    with start("no result") as shell, pytest.raises(LabError, match="adpsh has no result of 'fault'"):
        shell.result("fault")


@pytest.mark.parametrize(
    "command, words",
    [
        (["true"], ["ended"]),
        (["/no/such/program"], ["No such file or directory"]),
        (["sh", "-c", "echo Host key verification failed. >&2; exit 255"], ["It wrote: Host key verification failed."]),
        ([sys.executable, serial_line.__file__, "/dev/none", "9600"], ["/dev/none cannot be opened: No such file"]),
        ([sys.executable, serial_line.__file__, "/dev/null", "9600"], ["/dev/null is no serial line that can be used"]),
    ],
)
def test_a_way_to_the_board_that_ends_is_told(command, words):
    check_start_fails(command, words)


@pytest.mark.parametrize(
    "command, words",
    [
        (["sleep", "9"], ["did not answer within 0.3 seconds"]),
        (["sh", "-c", LOGIN], ["Login incorrect", "board login:"]),
        (["cat"], ["It said: echo ready-1"]),
        (["yes"], ["It said: y | y"]),
    ],
)
def test_a_board_without_adpsh_is_told(command, words, monkeypatch):
    monkeypatch.setattr(board_shell, "ATTEMPTS_SECONDS", (0.2, 0.3))
    check_start_fails(command, words)


def check_start_fails(command, words):
    before = time.monotonic()
    with pytest.raises(LabError) as problem:
        BoardShell(command)
    assert time.monotonic() - before < SOON
    check_sentence(str(problem.value), "adpsh does not start on the board: ", *words)


def test_a_line_that_a_terminal_would_cut_is_refused():
    with contextlib.closing(BoardShell([sys.executable, "-B", FALSE_ADPSH, ""], longest_line=LONGEST_TERMINAL_LINE)) as shell:
        for line in ("echo " + "x" * 5000, "echo 1\necho 2"):
            with pytest.raises(LabError, match="takes one line of at most 4095 bytes, not 'echo "):
                shell.ask(line)
        long = "x" * (LONGEST_TERMINAL_LINE - 5)
        assert shell.call("echo " + long)["echo"] == long


@pytest.fixture(name="console", scope="module")
def make_console():
    """(lab, serial line) of a board"""
    with RemoteBoard() as board, served_at_console(board) as line, board.tester.entered():
        with open_board(board.file(serial=line)) as lab:
            yield lab, line


def test_adpsh_on_a_console_is_started_again_after_it_was_closed(console):
    lab, _ = console
    for word in ("once", "again"):
        with contextlib.closing(lab.shell("host")) as shell:
            assert shell.call(f"echo {word}") == {"line": 2, "echo": word}


def test_an_adpsh_that_was_left_on_the_console_is_ended(console):
    lab, _ = console
    left = lab.shell("host")
    left._process.kill()
    left._process.wait()
    with contextlib.closing(lab.shell("host")) as shell:
        assert shell.call("echo new")["echo"] == "new"
        assert shell.call("show agg_info")


def test_a_serial_line_is_used_by_one(console):
    lab, line = console
    with contextlib.closing(lab.shell("host")) as shell:
        with pytest.raises(LabError, match=f"The serial line {line} is in use by another program."):
            lab.shell("host")
        assert shell.call("echo on")["echo"] == "on"
