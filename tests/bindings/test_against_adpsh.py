"""The same random calls through the bindings and through adpsh, each on a device of its own: same results, same outputs."""
import contextlib
import pickle
import random
import subprocess
import sys

import pytest
from lines import line, same
from random_arguments import RandomArguments
from test_coverage import CALLS

from adp.call import Status
from adp.lab.builds import Build
from adp.lab.device import Device
from adp.lab.process import stop
from adp.lab.shell import Shell

ROUNDS = 12
# A descriptor: another number in each process.
DESCRIPTORS = ("adp_pkt_init",)
CALLER = [sys.executable, "-B", __file__.replace("test_against_adpsh", "caller")]


class Caller:
    """The bindings on a device's CPU."""

    def __init__(self, device):
        self._process = device.popen(CALLER, stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    def call(self, name, arguments):
        pickle.dump((name, arguments), self._process.stdin)
        self._process.stdin.flush()
        return pickle.load(self._process.stdout)

    def close(self):
        stop(self._process)


@pytest.fixture(name="both")
def bindings_and_shell():
    """The bindings on one device, adpsh on another, both with the board's port map."""
    build = Build("host")
    with contextlib.ExitStack() as stack:
        devices = [stack.enter_context(contextlib.closing(Device(build, name=name))) for name in ("bindings", "shell")]
        caller = stack.enter_context(contextlib.closing(Caller(devices[0])))
        shell = stack.enter_context(
            contextlib.closing(Shell(devices[1], build.command("adpsh", "--json", "--keep-going", "--map"))))
        assert caller.call("map_ports", []) == (0, None)
        yield caller, shell


def differences(call, status, returned, answer):
    """What the two say differently of one call."""
    fields = [each.name for each in call.parameters if each.returned]
    values = list(returned) if call._several else [returned]
    if call.result is Status:
        if status != answer["result"]:
            yield f"status {status}, {answer['result']}"
    elif call.result is not None:
        result = values.pop(0)
        if call.name in DESCRIPTORS:
            result, answer["result"] = result >= 0, answer["result"] >= 0
        if not same(result, answer["result"]):
            yield f"result {result}, {answer['result']}"
    for name, value in zip(fields, values):
        if not same(value, answer["outputs"][name]):
            yield f"{name} {value}, {answer['outputs'][name]}"


def test_same_results_and_outputs(both):
    caller, shell = both
    source = random.Random(22)
    arguments_of = RandomArguments(source)
    found, made = [], {name: 0 for name in CALLS}
    for _ in range(ROUNDS):
        for name in source.sample(sorted(CALLS), len(CALLS)):
            own, call = CALLS[name]
            arguments = arguments_of.arguments(call)
            asked = line(call, arguments)
            answer = shell.ask(asked)
            if "error" in answer:
                found.append(f"{asked}: {answer['error']}")
                continue
            made[name] += 1
            status, returned = caller.call(own.removeprefix("_"), arguments)
            found += [f"{asked}: {each}" for each in differences(call, status, returned, answer)]
    assert not found, "\n".join(found)
    assert [name for name, count in made.items() if not count] == []
