"""Programs with threads that share a connection, several at once."""
import os
import subprocess

from testing.daemon import DEADLINE, PROGRAMS

FIRST_CHIP_PORT = 23
PORTS = 32
PROGRAM_COUNT, THREADS, CALLS = 2, 2, 300


def test_threads_that_call_watch_and_fork_get_their_own_answers(device):
    def arguments(number):
        process = device.calling()
        words = [f"{PROGRAMS}/vdevice_test_threads", FIRST_CHIP_PORT + number * THREADS, THREADS, CALLS]
        return {**process, "args": [*map(str, words)]}

    programs = [subprocess.Popen(**arguments(number), stdout=subprocess.PIPE, stderr=subprocess.PIPE)
                for number in range(PROGRAM_COUNT)]
    for program in programs:
        said, errors = program.communicate(timeout=2 * DEADLINE)
        assert (program.returncode, errors) == (0, "")
        right, told, children = map(int, said.split())
        assert (right, children) == (THREADS * CALLS, 5)
        assert told >= PORTS
    assert len(os.listdir(f"/proc/{device.process.pid}/task")) == 1, "the thread sanitizer need not look at the daemon"
