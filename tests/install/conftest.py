"""An installation of each component, and commands to build and run programs with it."""
import os
import pathlib
import re
import shlex
import subprocess

import pytest

ROOT = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ["ADP_BUILD"])
DEVICE_BUILD = ROOT / "build" / "host"
TOOLCHAIN = os.environ.get("ADP_TOOLCHAIN", "")
COMPILER = os.environ["ADP_COMPILER"]
EMULATOR = os.environ.get("ADP_EMULATOR", "").split()
COMPONENTS = ("runtime", "dev", "vdevice", "tools", "switchd", "python", "examples", "doc")
EXAMPLES = {
    "frame_path": ("frame_path.c", "frame_reception.c"),
    "acl": ("acl.c",),
    "igmp_snooping": ("igmp_snooping.c", "multicast_groups.c", "multicast_messages.c", "multicast_queries.c",
                      "multicast_relay.c", "multicast_routers.c"),
    "link_aggregation": ("link_aggregation.c",),
    "ring_protection": ("ring_protection.c",),
}
SECONDS = 120
# What a developer's shell may have set for the project's own builds.
OWN_SETTINGS = ("CC", "CXX", "CFLAGS", "CXXFLAGS", "LDFLAGS", "LD_LIBRARY_PATH", "PKG_CONFIG_PATH",
                "CMAKE_C_COMPILER_LAUNCHER", "CMAKE_CXX_COMPILER_LAUNCHER")


def run(command, folder=None, **environment):
    """A command's exit status, output and errors."""
    inherited = {name: value for name, value in os.environ.items() if name not in OWN_SETTINGS}
    return subprocess.run([*map(str, command)], cwd=folder, env={**inherited, **environment}, stdin=subprocess.DEVNULL,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=SECONDS, check=False)


def succeed(command, folder=None, **environment):
    """What a command prints; it must succeed."""
    done = run(command, folder, **environment)
    assert done.returncode == 0, f"{shlex.join(map(str, command))}\n{done.stdout}{done.stderr}"
    return done.stdout


def configure(source, build, *options):
    """Configures a project, for the target where this is the target's build."""
    toolchain = ["--toolchain", TOOLCHAIN] if TOOLCHAIN else [f"-DCMAKE_C_COMPILER={COMPILER}"]
    succeed(["cmake", "-S", source, "-B", build, "-G", "Ninja", *toolchain, *options])


def files_of(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def install(component, prefix):
    succeed(["cmake", "--install", BUILD, "--prefix", prefix, *(["--component", component] if component else [])])
    return files_of(prefix)


@pytest.fixture(name="prefix", scope="session")
def all_components(tmp_path_factory):
    """A folder with every component, each installed by itself."""
    prefix = tmp_path_factory.mktemp("adp")
    for component in COMPONENTS:
        install(component, prefix)
    return prefix


@pytest.fixture(name="libdir", scope="session")
def folder_of_libraries(prefix):
    return next(prefix.rglob("libadp.so")).parent


@pytest.fixture(name="examples", scope="session")
def folder_of_examples(prefix):
    return prefix / "share" / "doc" / "adp" / "examples"


@pytest.fixture(name="vlan_program", scope="session")
def program_of_the_readme(tmp_path_factory):
    """The file that the README shows."""
    text = re.search(r"^```c file=build/vlan.c\n(.*?)^```$", (ROOT / "README.md").read_text(encoding="utf-8"), re.M | re.S)
    path = tmp_path_factory.mktemp("readme") / "vlan.c"
    path.write_text(text[1], encoding="utf-8")
    return path


class Device:
    """A device that is on, and programs on its CPU."""

    def __init__(self, programs, folder):
        self.folder, self.programs = folder, programs
        self.daemon = subprocess.Popen([programs / "vdeviced", "--run-dir", folder, "--create-interfaces"],
                                       stdout=subprocess.PIPE, text=True)
        assert "ready" in self.daemon.stdout.readline()

    def run(self, program, *arguments, **environment):
        return run([*EMULATOR, program, *arguments], VDEVICE_DIR=str(self.folder), **environment)

    def ask(self, *words):
        return succeed([self.programs / "vdevctl", "--run-dir", self.folder, *words])

    def close(self):
        self.daemon.terminate()
        self.daemon.wait(SECONDS)


@pytest.fixture(name="device")
def device_that_is_on(prefix, tmp_path):
    """The device that was installed; beside the target's programs, the one of this machine's build."""
    device = Device(DEVICE_BUILD if TOOLCHAIN else prefix / "bin", tmp_path / "run")
    yield device
    device.close()
