"""The package as pip installs it: all of it, its version, its program, and calls on a device."""
import os
import pathlib
import re
import subprocess
import sys
import tomllib
import zipfile

import pytest

from adp.lab import Lab

ROOT = pathlib.Path(__file__).resolve().parents[2]
PYTHON = ROOT / "python"
SECONDS = 60
USE = """import adp
adp.map_ports()
adp.vlan_create(100)
adp.vlan_port_set(100, adp.PortSet({1, 2}), adp.PortSet())
print(adp.vlan_port_get(100).members, adp.__file__)
"""


def succeed(*command, **options):
    done = subprocess.run([*map(str, command)], capture_output=True, text=True, timeout=SECONDS, check=False, **options)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


@pytest.fixture(name="wheel", scope="module")
def wheel_of_the_package(tmp_path_factory):
    """Built from a copy without the network, so that nothing is left among the sources."""
    folder = tmp_path_factory.mktemp("package")
    succeed("cp", "-r", PYTHON, folder / "python")
    succeed(sys.executable, "-m", "pip", "wheel", "-q", "--no-index", "--no-deps", "--no-build-isolation", "-w", folder,
            folder / "python")
    return next(folder.glob("*.whl"))


def sources():
    """What the package must contain."""
    kept = {path.relative_to(PYTHON) for path in (PYTHON / "adp").rglob("*") if path.is_file()}
    return {str(path) for path in kept if "__pycache__" not in path.parts}


def test_wheel_has_all_that_the_sources_have(wheel):
    with zipfile.ZipFile(wheel) as files:
        assert {name for name in files.namelist() if name.startswith("adp/")} == sources()


def test_version_is_that_of_the_build():
    project = tomllib.loads((PYTHON / "pyproject.toml").read_text(encoding="utf-8"))["project"]
    assert re.search(r"^project\(adp VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text(encoding="utf-8"), re.M)[1] == \
        project["version"]


@pytest.fixture(name="installed", scope="module")
def installed_package(wheel, tmp_path_factory):
    """The programs of an environment with the package."""
    folder = tmp_path_factory.mktemp("environment")
    succeed(sys.executable, "-m", "venv", "--system-site-packages", "--without-pip", folder)
    succeed(sys.executable, "-m", "pip", "--python", folder / "bin" / "python", "install", "-q", "--no-index", "--no-deps",
            wheel)
    return folder / "bin"


def test_installed_package_makes_calls(installed, tmp_path):
    with Lab(device_build="host", hosts=[]) as lab:
        environment = {**lab.device.environment, "PYTHONPATH": ""}
        said = succeed(installed / "python", "-B", "-c", USE, env=environment, cwd=tmp_path)
    assert said.startswith("PortSet({1, 2}) " + str(installed.parent / "lib"))


def test_installed_package_has_programs_and_plugin(installed, tmp_path):
    outside = {"env": {**os.environ, "PYTHONPATH": ""}, "cwd": tmp_path}
    for program in ("adp-lab", "adp-panel"):
        assert succeed(installed / program, "--help", **outside).startswith(f"Usage: {program} ")
    assert "@pytest.mark.virtual_device(reason)" in succeed(installed / "python", "-B", "-m", "pytest", "--markers", **outside)
