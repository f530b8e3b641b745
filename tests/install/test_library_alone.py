"""The library is built with a compiler, CMake and ninja: nothing else of the build machine is seen."""
import pathlib
import shutil

import pytest
from conftest import COMPILER, ROOT, TOOLCHAIN, configure, run, succeed

ALONE = [f"-DADP_BUILD_{part}=OFF" for part in ("TESTS", "VDEVICE", "TOOLS")]
BINUTILS = ("ar", "as", "ld", "nm", "objcopy", "objdump", "ranlib", "readelf", "strip")
HIDDEN_FOLDERS = ("/usr/src/googletest", "/usr/include/fmt", "/usr/include/nlohmann", "/usr/include/toml++",
                  "/usr/include/systemd", "/usr/include/editline", "/usr/include/gtest", "/usr/include/pcap")
HIDDEN_PROGRAMS = ("/usr/bin/python3", "/usr/bin/pkg-config")
# Folders are covered by empty ones, programs by what is no program; then the rest of the words are run.
HIDE = """set -e
for folder in {folders}; do [ ! -d "$folder" ] || mount -t tmpfs none "$folder"; done
for program in {programs}; do [ ! -e "$program" ] || mount --bind /dev/null "$program"; done
PATH={path} exec "$@"
"""
OTHER_PROJECT = """cmake_minimum_required(VERSION 3.25)
project(product C CXX)
include(FetchContent)
FetchContent_Declare(adp SOURCE_DIR {root})
FetchContent_MakeAvailable(adp)
if(CMAKE_UNITY_BUILD OR CMAKE_CXX_STANDARD OR CMAKE_RUNTIME_OUTPUT_DIRECTORY OR DEFINED CMAKE_TESTING_ENABLED)
    message(FATAL_ERROR "adp has changed the settings of the project that it is a part of")
endif()
add_executable(vlan {source} board.c)
target_link_libraries(vlan PRIVATE adp::adp)
set_target_properties(vlan PROPERTIES ENABLE_EXPORTS ON)
target_link_options(vlan PRIVATE -Wl,--unresolved-symbols=ignore-in-shared-libs)
install(TARGETS vlan)
"""


def tools():
    """cmake, ninja, and the compiler with what belongs to it."""
    prefix = COMPILER.removesuffix("gcc") if TOOLCHAIN else ""
    prefix = pathlib.Path(prefix).name if prefix else ""
    return ("cmake", "ninja", *(prefix + name for name in ("gcc", "g++", *BINUTILS)))


@pytest.fixture(name="bare", scope="session")
def bare_machine(tmp_path_factory):
    """The beginning of a command that sees nothing but the tools."""
    path = tmp_path_factory.mktemp("bin")
    for name in tools():
        (path / name).symlink_to(shutil.which(name))
    script = HIDE.format(folders=" ".join(HIDDEN_FOLDERS), programs=" ".join(HIDDEN_PROGRAMS), path=path)
    return ["unshare", "--mount", "sh", "-c", script, "sh"]


def configuration(bare, source, build, *options):
    toolchain = ["--toolchain", TOOLCHAIN] if TOOLCHAIN else ["-DCMAKE_C_COMPILER=gcc", "-DCMAKE_CXX_COMPILER=g++"]
    return [*bare, "cmake", "-S", source, "-B", build, "-G", "Ninja", *toolchain, *options]


def build_with(bare, source, build, *options):
    succeed(configuration(bare, source, build, *options))
    succeed([*bare, "cmake", "--build", build])


def test_bare_machine_has_not_what_everything_needs(bare, tmp_path):
    assert run([*bare, "python3", "--version"]).returncode != 0
    done = run(configuration(bare, ROOT, tmp_path, "-DADP_BUILD_TESTS=OFF"))
    assert done.returncode != 0 and "ADP_PYTHON" in done.stderr


def test_library_alone(bare, tmp_path):
    build_with(bare, ROOT, tmp_path, *ALONE)
    succeed(["/usr/bin/python3", "-B", ROOT / "tests/checks/library.py", tmp_path / "libadp.so", ROOT / "platform/symbols",
             *(["--target"] if TOOLCHAIN else [])])
    assert run(["cmake", "--install", tmp_path, "--prefix", tmp_path / "prefix", "--component", "runtime"]).returncode == 0
    assert [path.name for path in (tmp_path / "prefix").rglob("*.so")] == ["libadp.so"]


def test_part_of_another_project(bare, vlan_program, tmp_path):
    source, build = tmp_path / "product", tmp_path / "build"
    source.mkdir()
    (source / "CMakeLists.txt").write_text(OTHER_PROJECT.format(root=ROOT, source=vlan_program), encoding="utf-8")
    (source / "board.c").write_text("int user_vlan_create(void) { return 0; }\n", encoding="utf-8")
    build_with(bare, source, build)
    succeed(["cmake", "--install", build, "--prefix", tmp_path / "prefix"])
    installed = {str(path.relative_to(tmp_path / "prefix")) for path in (tmp_path / "prefix").rglob("*") if path.is_file()}
    assert {pathlib.Path(name).name for name in installed} == {"vlan", "libadp.so"}


@pytest.mark.parametrize("options", (["TESTS"], ["TESTS", "TOOLS"]), ids=("without tests", "without tests and tools"))
def test_parts_can_be_left_out(options, tmp_path):
    configure(ROOT, tmp_path, *(f"-DADP_BUILD_{option}=OFF" for option in options))


@pytest.mark.parametrize("options, said", (
    (["-DADP_BUILD_VDEVICE=OFF", "-DADP_BUILD_TOOLS=ON"], "ADP_BUILD_TOOLS needs ADP_BUILD_VDEVICE"),
    (["-DADP_BUILD_TOOLS=OFF", "-DADP_BUILD_TESTS=ON"], "ADP_BUILD_TESTS needs ADP_BUILD_VDEVICE and ADP_BUILD_TOOLS"),
))
def test_what_does_not_go_together_is_refused(options, said, tmp_path):
    done = run(["cmake", "-S", ROOT, "-B", tmp_path, "-G", "Ninja", *options])
    assert done.returncode != 0 and said in done.stderr
