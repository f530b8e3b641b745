"""What each component contains: all of it, and nothing else."""
from fnmatch import fnmatchcase

import pytest
from conftest import BUILD, COMPILER, COMPONENTS, EMULATOR, ROOT, TOOLCHAIN, files_of, install, run, succeed

PACKAGE = "lib/cmake/adp/adp"


def of_source(folder, installed, *patterns):
    return {f"{installed}/{path.relative_to(ROOT / folder)}" for pattern in patterns
            for path in (ROOT / folder).rglob(pattern)}


NATIVE = {"bin/vdeviced", "bin/vdevctl", "lib/systemd/system/vdeviced.service"}
CONTENTS = {
    "runtime": {"lib/libadp.so"},
    "dev": {"lib/libadp_status.a", "lib/pkgconfig/adp.pc", f"{PACKAGE}-config.cmake", f"{PACKAGE}-config-version.cmake",
            f"{PACKAGE}-targets.cmake", f"{PACKAGE}-targets-*.cmake"}
           | of_source("include", "include", "*.h") | of_source("platform", "include/adp/platform", "*.h"),
    "vdevice": {"lib/adp/virtual-device/libnetlink_api.so", "lib/adp/virtual-device/libdevice_services.so",
                "lib/pkgconfig/adp-virtual-device.pc", f"{PACKAGE}-virtual-device-targets.cmake",
                f"{PACKAGE}-virtual-device-targets-*.cmake", "include/adp/vdevice/vdev_linkscan.h",
                "include/adp/vdevice/vdev_equeue.h"} | (set() if TOOLCHAIN else NATIVE),
    "tools": {"bin/adpsh", "bin/adptrace", "lib/adp/libadptrace.so", "share/adp/adp_switch_tag.lua"},
    "switchd": {"bin/adp-switchd", "libexec/adp-switchd-dot1x", "share/adp/switchd.toml",
                "lib/systemd/system/adp-switchd.service"},
    "python": of_source("python/adp", "lib/python3/dist-packages/adp", "*.py", "*.yml", "py.typed")
              | of_source("python/adp/panel/page", "lib/python3/dist-packages/adp/panel/page", "*.*", "LICENCE-*")
              | {"bin/adp-lab", "bin/adp-panel", "lib/python3/dist-packages/adp-*.dist-info/*"},
    "examples": of_source("examples", "share/doc/adp/examples", "*.c", "*.h", "CMakeLists.txt"),
    "doc": of_source("docs", "share/doc/adp/docs", "*.md", "*.svg", "*.png") | {"share/doc/adp/README.md"},
}


def unlike(files, patterns):
    """Files that no pattern stands for, and patterns without a file."""
    return ({file for file in files if not any(fnmatchcase(file, pattern) for pattern in patterns)},
            {pattern for pattern in patterns if not any(fnmatchcase(file, pattern) for file in files)})


@pytest.mark.parametrize("component", COMPONENTS)
def test_component(component, tmp_path):
    assert unlike(install(component, tmp_path), CONTENTS[component]) == (set(), set())


def test_everything_is_in_a_component(prefix, tmp_path):
    assert install(None, tmp_path) == files_of(prefix)


def delivered(path, folder):
    """What a file contains, without debugging data, which names the sources."""
    if path.open("rb").read(4) != b"\x7fELF":
        return path.read_bytes()
    succeed([f"{COMPILER.removesuffix('gcc')}strip", "-g", "-o", folder / path.name, path])
    return (folder / path.name).read_bytes()


def test_nothing_installed_names_the_project_s_folder(prefix, tmp_path):
    assert [name for name in files_of(prefix) if str(ROOT).encode() in delivered(prefix / name, tmp_path)] == []


def test_library_is_the_product(prefix, libdir):
    checked = succeed(["/usr/bin/python3", "-B", ROOT / "tests/checks/library.py", libdir / "libadp.so",
                       ROOT / "platform/symbols", *(["--target"] if TOOLCHAIN else [])])
    assert "RUNPATH is $ORIGIN: []" in checked


@pytest.mark.parametrize("program", ["adpsh", "adptrace", "adp-switchd"])
def test_programs_find_their_libraries(prefix, program):
    assert run([*EMULATOR, prefix / "bin" / program, "--version"]).stdout.startswith(f"{program} ")


def test_recorder_finds_what_it_puts_in_front_of_a_program(prefix, tmp_path):
    done = run([*EMULATOR, prefix / "bin/adptrace", "record", "-o", tmp_path / "recording", "--", *EMULATOR,
                prefix / "bin/adpsh", "--version"])
    assert ": 0 calls" in done.stderr


@pytest.mark.skipif(bool(TOOLCHAIN), reason="the interpreter is of this machine")
def test_python_package_finds_the_driver_and_the_services(prefix, libdir, device):
    program = "import adp; adp.map_ports(); adp.vlan_create(100); print(adp.vlan_port_get(100).members)"
    done = device.run("/usr/bin/python3", "-B", "-c", program, ADP_LIBRARY=str(libdir / "libadp.so"),
                      PYTHONPATH=str(prefix / "lib/python3/dist-packages"))
    assert (done.stdout, done.stderr) == ("PortSet()\n", "")


@pytest.mark.skipif(bool(TOOLCHAIN), reason="the device is a program of this machine")
@pytest.mark.parametrize("program, start", [("vdeviced", "/bin/vdeviced --config"), ("adp-switchd", "/bin/adp-switchd\n")])
def test_unit_names_the_installed_daemon(program, start):
    unit = (BUILD / f"{program}.service").read_text(encoding="utf-8")
    assert "@" not in unit.split("[Service]")[1] and start in unit
