"""The background process of a lab: python3 -m adp.lab.command.keeper FOLDER LOCK

It is the first process of a process id namespace, so everything ends with it. While it makes the lab it writes its
progress on standard output, a line a step; the last line is READY, or FAILED and a sentence. Afterwards SIGTERM ends
the lab, and SIGUSR1 has it read the file REQUEST in the run folder, whose answer is the file ANSWER.
"""

import contextlib
import json
import os
import pathlib
import select
import shutil
import signal
import sys
import time

from ..problem import LabError
from . import record
from .building import LiveLab, mount
from .run_folder import RECORD

READY, FAILED = "ready", "failed: "
REQUEST, ANSWER = "request.json", "answer.json"
LOOK_SECONDS = 1.0
GRACE_SECONDS = 2.0


class Ended(BaseException):
    """Somebody wants the lab to end, and removes its folder."""


class Abandoned(BaseException):
    """Nobody waits for the lab any more."""


def _raise_ended(*_):
    raise Ended


def _say(line):
    """Tells `up`. If that has ended before the lab was ready, nobody wants the lab."""
    try:
        print(line, flush=True)
    except BrokenPipeError:
        raise Abandoned from None


class Keeper:
    """Makes the lab, and watches it until somebody ends it."""

    def __init__(self, folder):
        self._path = pathlib.Path(folder)
        self._data = json.loads((self._path / RECORD).read_text(encoding="utf-8"))
        self._data["keeper"] = int(os.readlink("/proc/self"))
        self._lab = LiveLab(folder, self._data)
        self._is_wanted = True
        self._is_asked = False

    def make(self):
        # Where the system hides parts of its own /proc it refuses another one, and the lab's programs see its processes.
        with contextlib.suppress(LabError):
            mount("-t", "proc", "proc", "/proc")
        self._lab.make(_say)
        self._data["state"] = "up"
        self._data["started"] = time.time()
        self._write()

    def _write(self):
        """Writes lab.json, if something has changed. A full disk leaves the old one."""
        state = self._lab.state()
        if state != self._data.get("nodes"):
            self._data["nodes"] = state
            record.write(self._path / RECORD, self._data)

    def watch(self):
        wake, waker = os.pipe2(os.O_NONBLOCK | os.O_CLOEXEC)
        signal.set_wakeup_fd(waker, warn_on_full_buffer=False)
        signal.signal(signal.SIGCHLD, lambda *_: None)
        signal.signal(signal.SIGUSR1, self._ask)
        signal.signal(signal.SIGTERM, self._end)
        while self._is_wanted and (self._path / RECORD).exists():
            if select.select([wake], [], [], LOOK_SECONDS)[0]:
                os.read(wake, 4096)
            self._reap()
            if self._is_asked:
                self._answer()
            with contextlib.suppress(OSError):
                self._write()

    def _end(self, *_):
        self._is_wanted = False

    def _ask(self, *_):
        self._is_asked = True

    def _reap(self):
        """Takes the exit statuses of its own processes, and of those whose parents have ended."""
        own = {process.pid: process for process in self._lab.processes()}
        with contextlib.suppress(ChildProcessError):
            while ended := os.waitid(os.P_ALL, 0, os.WEXITED | os.WNOHANG | os.WNOWAIT):
                if ended.si_pid in own:
                    own[ended.si_pid].poll()
                else:
                    os.waitpid(ended.si_pid, 0)

    def _answer(self):
        self._is_asked = False
        with contextlib.suppress(OSError):
            request = json.loads((self._path / REQUEST).read_text(encoding="utf-8"))
            problem = ""
            try:
                self._lab.restart(request["restart"])
            except (LabError, OSError) as error:
                problem = str(error)
            self._write()
            record.write(self._path / ANSWER, {"number": request["number"], "problem": problem})

    def end_programs(self):
        """Lets the programs end by themselves; after a moment the kernel ends the others."""
        running = [process for process in self._lab.processes() if process.poll() is None]
        for process in running:
            process.terminate()
        deadline = time.monotonic() + GRACE_SECONDS
        while any(process.poll() is None for process in running) and time.monotonic() < deadline:
            time.sleep(0.01)


def _detach():
    """Lets go of the pipe to `up`: what is said from now on goes where errors go, to the log."""
    os.dup2(2, 1)


def main(folder, lock):
    os.set_inheritable(int(lock), False)
    signal.signal(signal.SIGTERM, _raise_ended)
    os.chdir("/")
    try:
        keeper = Keeper(folder)
        keeper.make()
        _say(READY)
        _detach()
        keeper.watch()
        keeper.end_programs()
    except Ended:
        return
    except Abandoned:
        shutil.rmtree(folder, ignore_errors=True)
    except LabError as problem:
        _say(f"{FAILED}{' '.join(str(problem).split())}")
    except OSError as problem:
        _say(f"{FAILED}{problem.filename or folder}: {problem.strerror}.")


if __name__ == "__main__":
    main(*sys.argv[1:])
