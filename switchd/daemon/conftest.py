"""The program as a daemon and as its client, and a device beside it. The tests run in a network namespace of their own:

    VDEVICE_PROGRAMS=build/host unshare -Urn /usr/bin/python3 -m pytest switchd/daemon
"""
import os
import signal
import subprocess

import pytest

PROGRAMS = os.environ["VDEVICE_PROGRAMS"]
SECONDS = 60  # on a machine with much to do
BOARD = "user_ports = 4\nfirst_physical_port = 23\n"


@pytest.fixture(name="device", scope="session")
def folder_of_a_device(tmp_path_factory):
    """A switch of four ports, whose CPU port is eth0."""
    folder = tmp_path_factory.mktemp("device") / "run"
    process = subprocess.Popen([f"{PROGRAMS}/vdeviced", "--run-dir", folder, "--create-interfaces", "--user-ports", "4",
                                "--first-port", "23"], stdout=subprocess.PIPE, text=True)
    assert process.stdout.readline() == "vdeviced: ready\n"
    subprocess.run(["ip", "link", "set", "eth0", "up"], check=True)
    yield folder
    process.terminate()
    process.wait(SECONDS)


class Switchd:
    """Folder and file of a daemon, and what is typed beside it."""

    def __init__(self, folder, device):
        self.run_dir, self.file = folder / "run", folder / "switchd.toml"
        self.file.write_text(BOARD, encoding="utf-8")
        self.environment = {**os.environ, "ADP_SWITCHD_DIR": str(self.run_dir), "VDEVICE_DIR": str(device)}
        self.processes = []

    def start(self, *options, under=(), **more):
        """A daemon that is ready, or has ended."""
        process = subprocess.Popen([*under, f"{PROGRAMS}/adp-switchd", "--config", self.file, *options],
                                   env={**self.environment, **more.pop("variables", {})}, stdout=subprocess.PIPE,
                                   stderr=subprocess.PIPE, text=True, **more)
        self.processes.append(process)
        process.first_line = process.stdout.readline()
        return process

    def run(self, *words, **more):
        return subprocess.run([f"{PROGRAMS}/adp-switchd", *map(str, words)], env=self.environment, capture_output=True,
                              text=True, timeout=SECONDS, check=False, **more)

    def stop(self, process, number=signal.SIGTERM):
        """Its status, and what it wrote on standard error."""
        process.send_signal(number)
        _, errors = process.communicate(timeout=SECONDS)
        return process.returncode, errors


@pytest.fixture(name="switchd")
def switchd_beside_a_device(tmp_path, device):
    switchd = Switchd(tmp_path, device)
    yield switchd
    for process in switchd.processes:
        if process.poll() is None:
            process.terminate()  # a killed one leaves its interfaces standing
        process.communicate(timeout=SECONDS)
