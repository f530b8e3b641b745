"""Where the files of labs are: a folder a lab, with a lock that is held as long as the lab lives.

Whoever gets the lock of a lab knows that it is dead, and removes what it has left.
"""

import contextlib
import fcntl
import os
import pathlib
import shutil
import stat
import time

from ..problem import LabError
from ..topology.names import WHAT_NAMES_ARE, is_name
from .words import PROGRAM, did_you_mean, listed

LOCK, RECORD = "lock", "lab.json"
CLAIM_SECONDS = 1.0


def base_folder():
    """The folder of this user's labs."""
    return pathlib.Path(os.environ.get("ADP_LAB_DIR") or f"/tmp/adp-lab-{os.getuid()}").absolute()


def _make_base():
    base = base_folder()
    base.mkdir(mode=0o700, parents=True, exist_ok=True)
    found = base.lstat()
    if not stat.S_ISDIR(found.st_mode) or found.st_uid != os.geteuid() or found.st_mode & 0o022:
        raise LabError(f"{base} must be a folder of yours that nobody else may write to. Remove it, or set ADP_LAB_DIR.")


class RunFolder:
    """The folder of one lab."""

    def __init__(self, name):
        self.name = name
        self.path = base_folder() / name
        self.record_path = self.path / RECORD

    def _lock(self):
        """A descriptor that holds the lock, or None: the lab runs."""
        lock = os.open(self.path / LOCK, os.O_RDWR | os.O_CREAT | os.O_CLOEXEC, 0o600)
        try:
            fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
            if os.fstat(lock).st_ino == os.stat(self.path / LOCK).st_ino:
                return lock
        except (BlockingIOError, FileNotFoundError):
            pass
        os.close(lock)
        return None

    def claim(self):
        """Makes the folder for a lab that starts; gives the lock, and whether a dead lab was there."""
        if not is_name(self.name):
            raise LabError(f"'{self.name}' cannot be a lab's name: {WHAT_NAMES_ARE}.")
        _make_base()
        try:
            return self._claim()
        except OSError:
            with contextlib.suppress(OSError):
                self.path.rmdir()
            raise

    def _claim(self):
        deadline = time.monotonic() + CLAIM_SECONDS
        while True:
            self.path.mkdir(mode=0o700, exist_ok=True)
            was_there = self.record_path.exists()
            with contextlib.suppress(FileNotFoundError):
                if (lock := self._lock()) is not None:
                    self._empty()
                    return lock, was_there
            # Another command may be looking whether the lab lives.
            if time.monotonic() > deadline:
                raise LabError(
                    f"A lab with the name '{self.name}' is running. '{PROGRAM} down --lab {self.name}' ends it; "
                    "--name gives the new one another name."
                )
            time.sleep(0.05)

    def _empty(self):
        for entry in self.path.iterdir():
            if entry.is_dir() and not entry.is_symlink():
                shutil.rmtree(entry, ignore_errors=True)
            elif entry.name != LOCK:
                entry.unlink()

    def remove(self):
        shutil.rmtree(self.path, ignore_errors=True)

    def remove_if_dead(self):
        """Whether the lab was dead. Then what it has left is gone."""
        try:
            lock = self._lock()
        except FileNotFoundError:
            return True
        if lock is None:
            return False
        self.remove()
        os.close(lock)
        return True

    def how_it_ended(self):
        """A sentence about a lab whose background process was found to be gone."""
        deadline = time.monotonic() + CLAIM_SECONDS
        while self.record_path.exists() and time.monotonic() < deadline:
            if self.remove_if_dead():
                return death_notice(self.name)
            time.sleep(0.01)
        return f"The lab '{self.name}' has just ended."


def folders():
    """The run folders of this user."""
    with contextlib.suppress(FileNotFoundError):
        return [RunFolder(entry.name) for entry in sorted(base_folder().iterdir()) if (entry / LOCK).exists()]
    return []


def sweep():
    """Removes what dead labs have left; gives (names of those, folders of the labs that run)."""
    dead, alive = [], []
    for folder in folders():
        if folder.remove_if_dead():
            dead.append(folder.name)
        else:
            alive.append(folder)
    return dead, alive


def death_notice(name):
    return f"The lab '{name}' has ended unexpectedly: its background process was killed. What it left has been removed."


def find(name=None):
    """The folder of the lab that a command means: by name, else $ADP_LAB, else the only one that runs."""
    name = name or os.environ.get("ADP_LAB")
    dead, alive = sweep()
    names = [folder.name for folder in alive]
    if name in dead or (name is None and dead and not alive):
        raise LabError(death_notice(name or dead[0]))
    if name is None and len(alive) == 1:
        return alive[0]
    if name is None:
        raise LabError(
            f"Several labs are running: {listed(names)}. Name one with --lab or in ADP_LAB."
            if alive
            else f"No lab is running. '{PROGRAM} up' starts one."
        )
    if name not in names:
        running = f"Running: {listed(names)}." if names else f"'{PROGRAM} up' starts one."
        raise LabError(f"No lab with the name '{name}' is running.{did_you_mean(name, names)} {running}")
    return alive[names.index(name)]
