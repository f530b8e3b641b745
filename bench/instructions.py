"""Counts the instructions of functions that a program calls through measure(), see bench/measure.h.

On the host a profiler counts, on the target the emulator, which logs each instruction that it executes. Both count what
the process itself executes and nothing of the kernel; pauses and waiting cost nothing. A count is that of one machine
and compiler, and is the same in every run.
"""

import os
import re
import subprocess
import tempfile
from typing import NamedTuple

from adp.lab.builds import Build

from bench.problem import BenchError

SECONDS = 1200
# Names are bound when the program starts, so that nobody's first call pays for that; and the C library copies memory in
# the way that every processor of the host's family knows, so that the host's counts are those of any such machine.
ENVIRONMENT = {
    "LD_BIND_NOW": "1",
    "GLIBC_TUNABLES": "glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX2,-AVX2_Usable,-AVX_Fast_Unaligned_Load,-ERMS,-FSRM",
}
FIXED_ADDRESSES = ("setarch", "--addr-no-randomize")
CALLED = re.compile(r"cfn=(\S+)")


class Count(NamedTuple):
    calls: int
    instructions: int


def run(command, environment, **more):
    done = subprocess.run([*FIXED_ADDRESSES, *map(str, command)], env=ENVIRONMENT | environment, timeout=SECONDS,
                          check=False, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          text=True, errors="replace", **more)  # fmt: skip
    if done.returncode != 0:
        raise BenchError(f"'{' '.join(map(str, command))}' failed:\n{done.stdout[-3000:]}")
    return done.stdout


def read_profile(path):
    """{function: Count} of what measure() calls, out of a profile without compressed names."""
    counts, caller, called = {}, "", ""
    with open(path, encoding="utf-8") as profile:
        for line in profile:
            if line.startswith("fn="):
                caller = line[3:].strip()
            elif caller == "measure" and (match := CALLED.match(line)):
                called = match[1]
            elif caller == "measure" and line.startswith("calls="):
                calls = int(line[6:].split()[0])
                inclusive = int(next(profile).split()[1])
                before = counts.get(called, Count(0, 0))
                counts[called] = Count(before.calls + calls, before.instructions + inclusive)
    return counts


def on_host(program, arguments, environment, within):
    with tempfile.TemporaryDirectory() as folder:
        profile = os.path.join(folder, "profile")
        profiler = ["/usr/bin/valgrind", "--tool=callgrind", f"--callgrind-out-file={profile}",
                    "--compress-strings=no", "--compress-pos=no"]  # fmt: skip
        run([*within, *profiler, *Build("host").command(program, *arguments)], environment)
        return read_profile(profile)


def on_target(program, arguments, environment, within):
    emulator, *rest = Build("mips").command(program, *arguments)
    with tempfile.TemporaryDirectory() as folder:
        # The log is far too large to be kept.
        log = os.path.join(folder, "log")
        os.mkfifo(log)
        with open(os.path.join(folder, "counts"), "w+", encoding="utf-8") as counts:
            adder = ["/bin/sh", "-c", 'exec "$0" <"$1"', *Build("host").command("bench_count_log"), log]
            reader = subprocess.Popen(adder, stdout=counts)
            try:
                run([*within, emulator, "-singlestep", "-d", "nochain,exec", "-D", log, *rest], environment)
                if reader.wait(SECONDS) != 0:
                    raise BenchError("the emulator's log could not be read, see above")
            finally:
                reader.kill()
                reader.wait()
            counts.seek(0)
            lines = [line.split() for line in counts]
        return {name: Count(int(calls), int(instructions)) for name, calls, instructions in lines}


def count(build, program, *arguments, environment=None, within=()):
    """{function: Count} of all that a build's program measures. `within` is a command that runs the program's."""
    counted = (on_target if build == "mips" else on_host)(program, arguments, environment or {}, within)
    if not counted:
        raise BenchError(f"{program} of the build {build} measures nothing")
    return counted


def per_call(build, program, *arguments, **more):
    """{function: instructions per call}."""
    counts = count(build, program, *arguments, **more)
    return {name: found.instructions / found.calls for name, found in counts.items()}
