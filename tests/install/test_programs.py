"""Programs outside the project, built in each way, run with the virtual device and with a board's own libraries."""
import pytest
from conftest import BUILD, COMPILER, EMULATOR, EXAMPLES, ROOT, TOOLCHAIN, configure, install, run, succeed

STRICT = ("-Wall", "-Wextra", "-Werror")
RUNS = {  # a program's arguments, and what it says when its work is done
    "frame_path": ((), "every step had the expected result"),
    "acl": ((), "deleted: the port is open"),
    "igmp_snooping": ((), "ready\nended"),
    "link_aggregation": (("1", "2"), "ready: group 1 is down"),
    "ring_protection": (("owner", "1", "2"), "ready: port 1 is blocked\nended"),
}
PROJECT = """cmake_minimum_required(VERSION 3.16)
project(my_switch C)
find_package(adp 0.1 REQUIRED{components})
set(DEVICE_LIBRARIES {libraries} CACHE STRING "")
add_executable(vlan {source})
target_link_libraries(vlan PRIVATE adp::adp ${{DEVICE_LIBRARIES}})
"""


def make_project(folder, vlan_program, libraries, components=""):
    folder.mkdir()
    text = PROJECT.format(libraries=libraries, components=components, source=vlan_program)
    (folder / "CMakeLists.txt").write_text(text, encoding="utf-8")


@pytest.fixture(name="sources", scope="session")
def source_files(examples, vlan_program):
    """The files of each program."""
    return {**{name: [examples / file for file in files] for name, files in EXAMPLES.items()}, "vlan": [vlan_program]}


def found_in(prefix):
    """The option of CMake; for the target, packages are looked for in the folders of its toolchain file alone."""
    return f"-Dadp_DIR={prefix}/lib/cmake/adp" if TOOLCHAIN else f"-DCMAKE_PREFIX_PATH={prefix}"


def build_by_hand(folder, sources, prefix, libdir):
    device = libdir / "adp/virtual-device"
    for name, files in sources.items():
        succeed([COMPILER, *STRICT, f"-I{prefix}/include", *files, "-o", folder / name, f"-L{libdir}", f"-L{device}",
                 "-ladp", "-Wl,--no-as-needed", "-lnetlink_api", "-ldevice_services", f"-Wl,-rpath,{libdir}:{device}"])


def pkg_config(libdir, *words):
    return succeed(["pkg-config", *words], PKG_CONFIG_LIBDIR=str(libdir / "pkgconfig")).split()


def build_by_pkg_config(folder, sources, prefix, libdir):
    words = pkg_config(libdir, "--cflags", "--libs", "adp-virtual-device")
    for name, files in sources.items():
        succeed([COMPILER, *STRICT, *files, "-o", folder / name, *words, f"-Wl,-rpath,{libdir}"])


def build_by_cmake(folder, sources, prefix, libdir):
    make_project(folder / "project", sources["vlan"][0], "adp::virtual_device", " COMPONENTS virtual_device")
    for source in (sources["acl"][0].parent, folder / "project"):
        build = folder / f"build-{source.name}"
        configure(source, build, found_in(prefix), f"-DCMAKE_RUNTIME_OUTPUT_DIRECTORY={folder}",
                  f"-DCMAKE_C_FLAGS={' '.join(STRICT)}")
        succeed(["cmake", "--build", build])


@pytest.mark.parametrize("build", (build_by_hand, build_by_pkg_config, build_by_cmake))
def test_programs_drive_the_virtual_device(build, sources, prefix, libdir, device, tmp_path):
    folder = tmp_path / "programs"
    folder.mkdir()
    build(folder, sources, prefix, libdir)
    for name, (arguments, said) in RUNS.items():
        done = device.run(folder / name, *arguments)
        assert (done.returncode, said in done.stdout) == (0, True), f"{name}\n{done.stdout}{done.stderr}"
    done = device.run(folder / "vlan")
    assert done.returncode == 0, done.stderr
    assert "\n  100  1-2                            1-2\n" in device.ask("vlans")


@pytest.fixture(name="board", scope="session")
def libraries_of_a_board(tmp_path_factory):
    """A driver and services of someone else: every call succeeds, and the creation of a VLAN is printed."""
    folder = tmp_path_factory.mktemp("board")
    for library, names in (("netlink_api", "driver-calls"), ("board", "platform-services")):
        lines = (ROOT / "platform/symbols" / f"{names}.txt").read_text(encoding="utf-8").splitlines()
        calls = {line for line in lines if line and not line.startswith("#")} - {"user_vlan_create", "erps_event_queue"}
        text = "#include <stdio.h>\n" + "".join(f"int {call}(void) {{ return 0; }}\n" for call in sorted(calls))
        if library == "netlink_api":
            text += 'int user_vlan_create(void) { return puts("board: a VLAN is created") < 0; }\n'
        else:
            text += "unsigned long erps_event_queue;\n"
        (folder / f"{library}.c").write_text(text, encoding="utf-8")
        succeed([COMPILER, "-shared", "-fPIC", folder / f"{library}.c", "-o", folder / f"lib{library}.so",
                 f"-Wl,-soname,lib{library}.so"])
    return folder


BOARD_LIBRARIES = ("-ladp", "-Wl,--no-as-needed", "-lnetlink_api", "-lboard")


@pytest.mark.parametrize("way", ("hand", "pkg-config", "cmake"))
def test_board_takes_the_place_of_the_virtual_device(way, vlan_program, prefix, libdir, board, tmp_path):
    program = tmp_path / "build" / "vlan"
    program.parent.mkdir()
    if way == "cmake":
        make_project(tmp_path / "project", vlan_program, "adp::virtual_device")
        configure(tmp_path / "project", program.parent, found_in(prefix),
                  f"-DDEVICE_LIBRARIES=-Wl,--no-as-needed;{board}/libnetlink_api.so;{board}/libboard.so")
        succeed(["cmake", "--build", program.parent])
    else:
        words = pkg_config(libdir, "--cflags", "--libs", "adp") if way == "pkg-config" else [f"-I{prefix}/include",
                                                                                             f"-L{libdir}"]
        succeed([COMPILER, vlan_program, "-o", program, *words, f"-L{board}", *BOARD_LIBRARIES])
    # As on a board, where the loader finds all libraries by itself.
    done = run([*EMULATOR, program], LD_LIBRARY_PATH=f"{libdir}:{board}")
    assert (done.returncode, done.stdout) == (0, "board: a VLAN is created\n"), done.stderr


def test_board_driver_can_be_tried_without_linking_again(sources, prefix, libdir, board, tmp_path):
    build_by_hand(tmp_path, {"vlan": sources["vlan"]}, prefix, libdir)
    done = run([*EMULATOR, tmp_path / "vlan"], LD_LIBRARY_PATH=str(board))
    assert (done.returncode, done.stdout) == (0, "board: a VLAN is created\n"), done.stderr


def test_services_can_be_the_program_s_own(vlan_program, prefix, libdir, board, tmp_path):
    succeed([COMPILER, vlan_program, board / "board.c", f"-I{prefix}/include", "-o", tmp_path / "vlan", f"-L{libdir}",
             f"-L{board}", *BOARD_LIBRARIES[:-1], f"-Wl,-rpath,{libdir}:{board}"])
    assert run([*EMULATOR, tmp_path / "vlan"]).stdout == "board: a VLAN is created\n"


LOADER = """#include <dlfcn.h>
#include <stdio.h>
int main(int argc, char **argv) {
    void *library = dlopen(argv[argc - 1], RTLD_NOW);
    if (library == NULL)
        return puts(dlerror()) < 0;
    return ((int (*)(unsigned))dlsym(library, "adp_vlan_create"))(100);
}
"""


@pytest.mark.parametrize("options, said", (([], "undefined symbol"), (["-rdynamic"], "board: a VLAN is created\n")),
                         ids=("not exported", "exported"))
def test_program_with_services_loads_the_library(options, said, libdir, board, tmp_path):
    (tmp_path / "loader.c").write_text(LOADER, encoding="utf-8")
    succeed([COMPILER, tmp_path / "loader.c", board / "board.c", "-o", tmp_path / "loader", "-ldl", *options])
    assert said in run([*EMULATOR, tmp_path / "loader", libdir / "libadp.so"], LD_LIBRARY_PATH=str(board)).stdout


def test_pkg_config_for_an_image_of_a_file_system(vlan_program, board, tmp_path):
    for component in ("runtime", "dev"):
        succeed(["cmake", "--install", BUILD, "--prefix", "/usr", "--component", component], DESTDIR=str(tmp_path / "image"))
    words = succeed(["pkg-config", "--cflags", "--libs", "adp"], PKG_CONFIG_SYSROOT_DIR=str(tmp_path / "image"),
                    PKG_CONFIG_LIBDIR=str(tmp_path / "image/usr/lib/pkgconfig")).split()
    succeed([COMPILER, vlan_program, "-o", tmp_path / "vlan", *words, f"-L{board}", *BOARD_LIBRARIES[1:]])
    done = run([*EMULATOR, tmp_path / "vlan"], LD_LIBRARY_PATH=f"{tmp_path}/image/usr/lib:{board}")
    assert done.stdout == "board: a VLAN is created\n", done.stderr


def test_program_without_a_device_says_what_to_do(sources, prefix, libdir, tmp_path):
    build_by_hand(tmp_path, {"vlan": sources["vlan"]}, prefix, libdir)
    done = run([*EMULATOR, tmp_path / "vlan"], VDEVICE_DIR=str(tmp_path))
    assert done.returncode == 1
    assert f"the virtual device at {tmp_path}/driver cannot be reached: no vdeviced is running there. Start it" in done.stderr


def test_program_without_a_driver_does_not_link(vlan_program, prefix, libdir, tmp_path):
    done = run([COMPILER, vlan_program, "-o", tmp_path / "vlan", *pkg_config(libdir, "--cflags", "--libs", "adp")])
    assert done.returncode != 0 and "libnetlink_api.so, needed by" in done.stderr


def test_package_says_that_the_virtual_device_is_not_installed(vlan_program, tmp_path):
    for component in ("runtime", "dev"):
        install(component, tmp_path / "prefix")
    make_project(tmp_path / "project", vlan_program, "adp::virtual_device", " COMPONENTS virtual_device")
    with pytest.raises(AssertionError, match="The virtual device is not installed"):
        configure(tmp_path / "project", tmp_path / "build", found_in(tmp_path / "prefix"))
