"""Programs of a build folder, run by themselves or, when they are the target's, under the emulator."""

import os
import pathlib
import shutil

from .problem import LabError

ROOT = pathlib.Path(__file__).resolve().parents[3]
EMULATOR = ("qemu-mips-static", "-L", "/usr/mips-linux-gnu")
ELF_HEADER_BYTES = 20
BIG_ENDIAN = 2
MACHINE_MIPS = 8


def _is_target_program(path):
    with open(path, "rb") as program:
        header = program.read(ELF_HEADER_BYTES)
    return header[5] == BIG_ENDIAN and int.from_bytes(header[18:20], "big") == MACHINE_MIPS


INSTALLED = "installed"


class Build:
    """build/NAME: `host`, `asan`, `mips` or another folder; `installed` has the programs that are found in $PATH."""

    def __init__(self, name):
        self.name = name
        self.folder = None if name == INSTALLED else ROOT / "build" / name

    def path_of(self, program):
        """Where one of the build's programs is."""
        path = shutil.which(program) if self.folder is None else self.folder / program
        if self.folder is None and path is None:
            raise LabError(f"{program} is not installed: it is in no folder of $PATH.")
        if not os.access(path, os.X_OK):
            raise LabError(f"{path.relative_to(ROOT)} is missing. Build it with 'script/build {self.name}'.")
        return path

    def command(self, program, *arguments):
        """The command line that runs one of the build's programs."""
        path = self.path_of(program)
        emulator = EMULATOR if _is_target_program(path) else ()
        return [*emulator, str(path), *map(str, arguments)]

    @property
    def is_emulated(self):
        """Whether the programs are the target's. Their process is the emulator, which keeps memory that they free."""
        return _is_target_program(self.path_of("adpsh"))

    @property
    def byte_order(self):
        """Byte order of the programs: "big" or "little"."""
        return "big" if self.is_emulated else "little"


def native_build():
    """The build whose devices run on this machine: the checkout's, or what is installed."""
    return Build("host" if (ROOT / "CMakeLists.txt").exists() else INSTALLED)
