"""Random lives: calls with random arguments, recorded, and made again on a new device, which then is as the recorded one.

    ADPTRACE_CALLS=100000 VDEVICE_PROGRAMS=build/host python3 -m adp.lab.isolate python3 -m pytest -s \\
        tools/adptrace/replay/test_lives.py

makes a long life and prints its figures.
"""
import os
import pathlib
import random
import sys
import time

import pytest
from testing.programs import BUILD, EQUAL, record, replay

ROOT = pathlib.Path(__file__).parents[3]
sys.path.append(str(ROOT / "calls/generate"))
import headers  # noqa: E402

CALLS = int(os.environ.get("ADPTRACE_CALLS", "1500"))
SEED = int(os.environ.get("ADPTRACE_SEED", "1"))
SECONDS = 60 + CALLS // 100
NUMBERS = (0, 1, 2, 3, 5, 7, 26, 27, 100, 100, 101, 102, 4095, 4096, 0x10000001, 0x10000002, 0xFFFFFFFF)
SUBJECTS = ("vlans", "ports", "trunks", "mirrors", "groups", "translations", "priorities", "fields", "storm", "limits",
            "mcast", "queues", "gpio", "log")
MOVING = ("time",)


def callable_by_numbers():
    """The exported calls that take numbers and sets of ports alone, whatever they give."""
    functions = headers.read([str(ROOT / "include/adp" / name) for name in header_names()]).functions
    return [function for function in functions if all(is_simple(param) for param in function.params)]


def header_names():
    names = sorted(path.name for path in (ROOT / "include/adp").glob("*.h"))
    return ["types.h", *(name for name in names if name != "types.h")]


def is_simple(param):
    if param.is_ports or param.is_ports_word:
        return True
    return param.direction == "out" or (not param.pointer and param.kind in ("u8", "u16", "u32", "i32", "word"))


def word_of(chance, param):
    if param.is_ports or param.is_ports_word:
        return "{" + ",".join(str(chance.randrange(30)) for _ in range(chance.randrange(4))) + "}"
    return str(chance.choice((*NUMBERS, chance.randrange(1, 27)))) if param.kind != "u8" else str(chance.randrange(8))


def life(calls):
    """Lines of adpsh; it answers those that it cannot execute with an error."""
    chance = random.Random(SEED)
    functions = callable_by_numbers()
    for _ in range(calls):
        function = chance.choice(functions)
        read = [param for param in function.params if param.direction != "out"]
        yield " ".join([function.name, *(word_of(chance, param) for param in read)])


def settled(answer):
    """Without what goes on by itself."""
    if isinstance(answer, dict):
        return {name: settled(value) for name, value in answer.items() if name not in MOVING}
    return [settled(value) for value in answer] if isinstance(answer, list) else answer


def state(device):
    return {subject: settled(device.ask(subject)) for subject in SUBJECTS}


def differences(one, other, place=""):
    """Where two states differ."""
    if isinstance(one, dict) and isinstance(other, dict) and one.keys() == other.keys():
        return [found for name in one for found in differences(one[name], other[name], f"{place}.{name}")]
    if isinstance(one, list) and isinstance(other, list) and len(one) == len(other):
        return [found for index, value in enumerate(one)
                for found in differences(value, other[index], f"{place}[{index}]")]
    return [] if one == other else [f"{place}: {one} and {other}"]


@pytest.mark.parametrize("options", [(), ("--driver-only",)])
def test_a_life_is_made_again_and_the_device_is_as_the_recorded_one(device, tmp_path, options):
    device.restart()
    path = record(device, tmp_path / "life", *BUILD.command("adpsh", "--json", "--keep-going", "--map"),
                  given="\n".join(life(CALLS)) + "\n", seconds=SECONDS)
    recorded = state(device)
    device.restart()
    start = time.monotonic()
    status, lines, errors = replay(device, path, *options, seconds=SECONDS)
    assert lines, errors
    print(f"{lines[-1]} {time.monotonic() - start:.1f} s, {os.path.getsize(path) >> 10} KiB")
    assert status == EQUAL, lines[-4:]
    assert not differences(recorded, state(device))
