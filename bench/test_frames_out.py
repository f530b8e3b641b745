"""What is read from traces of system calls."""

import pytest

from bench import frames_out
from bench.problem import BenchError

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
