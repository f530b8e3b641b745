"""A device that podman runs as a container, and the podman that does it."""

import contextlib
import json
import resource
import shutil
import subprocess

from running import SECONDS, Running

NAME = "localhost/adp:latest"
LOAD_SECONDS = 300.0
PROCESSES = 4096


class Engine:
    """Podman with a storage of its own, in which there is nothing but the image."""

    def __init__(self, image, folder):
        folders = [word for name in ("root", "runroot", "tmpdir") for word in (f"--{name}", folder / name)]
        self._podman = [shutil.which("podman"), *folders, "--storage-driver", "overlay",
                        "--cgroup-manager", "cgroupfs", "--events-backend", "file"]
        self._image = image

    def __enter__(self):
        self("load", "--quiet", "--input", self._image, seconds=LOAD_SECONDS)
        return self

    def __exit__(self, *_):
        self("rm", "--all", "--force", "--time", "0")
        self("rmi", "--all", "--force")

    def command(self, *words):
        return [*map(str, (*self._podman, *words))]

    def __call__(self, *words, seconds=3 * SECONDS):
        """Runs podman, which must succeed; gives what it printed."""
        done = self.attempt(*words, seconds=seconds)
        assert done.returncode == 0, f"podman {words}: {done.stdout}{done.stderr}"
        return done.stdout.strip()

    def attempt(self, *words, seconds=3 * SECONDS):
        return subprocess.run(self.command(*words), capture_output=True, text=True, timeout=seconds, check=False)

    def labels(self):
        return json.loads(self("image", "inspect", NAME))[0]["Labels"]


def options():
    """Those of every container: without control groups and timers of systemd. Podman raises limits where nothing else is
    said, which not every sandbox lets it do.
    """
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    return ["--cgroups=disabled", "--health-interval=disable",
            "--ulimit", f"nofile={soft}:{hard}", "--ulimit", f"nproc={PROCESSES}:{PROCESSES}"]


class Container(Running):
    def __init__(self, engine, etc):
        super().__init__()
        self.etc = "/etc/adp"
        self._engine = engine
        binds = [word for file in etc.iterdir() for word in ("--volume", f"{file}:/etc/adp/{file.name}:ro")]
        self._name = engine("create", *options(), "--privileged", "--network=none", *binds, NAME)

    def _start(self):
        self._engine("start", self._name)

    def _state(self):
        return json.loads(self._engine("inspect", self._name))[0]["State"]

    @property
    def pid(self):
        """Process id of the container's first process, as it is outside."""
        return self._state()["Pid"]

    def is_running(self):
        return self._state()["Running"]

    def inside(self, *command):
        """The command line that runs a command inside."""
        return self._engine.command("exec", self._name, *command)

    def log(self):
        done = self._engine.attempt("logs", self._name)
        return done.stdout + done.stderr

    def health(self):
        """Whether the container says that it is healthy."""
        return self._engine.attempt("healthcheck", "run", self._name).returncode == 0

    def signal(self, name):
        """Sends a signal to the first process."""
        self._engine("kill", "--signal", name, self._name)

    def wait(self):
        """Waits for the end, and gives the status."""
        return int(self._engine("wait", self._name))

    def stop(self):
        """Ends it, and gives the status."""
        self._engine("stop", "--time", "10", self._name)
        return self.wait()

    def close(self):
        with contextlib.suppress(AssertionError):
            self._engine("rm", "--force", "--time", "0", self._name)
