"""A device, started once, and adpsh beside it. The tests run in a network namespace of their own, see CMakeLists.txt."""
import os
import subprocess
import tempfile

import pytest

PROGRAMS = os.environ["ADP_PROGRAMS"]
READY_SECONDS = 30


def run(environment, *arguments, text="", program="adpsh", **options):
    """A program's exit status, output and errors; its lines come from the text."""
    options = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **options}
    return subprocess.run([os.path.join(PROGRAMS, program), *arguments], env=environment, input=text, text=True,
                          timeout=READY_SECONDS, check=False, **options)


@pytest.fixture(name="nowhere")
def environment_without_a_device(tmp_path):
    return {**os.environ, "VDEVICE_DIR": str(tmp_path), "HOME": str(tmp_path)}


@pytest.fixture(name="device", scope="session")
def environment_of_a_device():
    """The environment in which a device as it is switched on is found. Tests that change it say so."""
    with tempfile.TemporaryDirectory(prefix="stumbles-") as folder:
        daemon = subprocess.Popen([os.path.join(PROGRAMS, "vdeviced"), "--run-dir", folder, "--create-interfaces"],
                                  stdout=subprocess.PIPE, text=True)
        assert "ready" in daemon.stdout.readline()
        yield {**os.environ, "VDEVICE_DIR": folder, "HOME": folder}
        daemon.terminate()
        daemon.wait(READY_SECONDS)
