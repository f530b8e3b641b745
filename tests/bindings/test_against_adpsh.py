"""The same random calls through the bindings and through adpsh, each on a device of its own: same results, same outputs."""
import contextlib
import pickle
import random
import subprocess
import sys

import pytest
from caller import HANDLER
from random_arguments import RandomArguments
from test_coverage import CALLS

import adp
from adp.lab.builds import Build
from adp.lab.device import Device
from adp.lab.process import stop
from adp.lab.shell import Shell
from adp.testing.calls import RemoteCall, text_of

ROUNDS = 12
# A descriptor: another number in each process.
DESCRIPTORS = ("adp_pkt_init",)
# Python looks at the octets around each block when it frees it, and ends where the library has written there.
CALLER = ["env", "PYTHONMALLOC=debug", sys.executable, "-B", __file__.replace("test_against_adpsh", "caller")]


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


def result_of(remote, answer):
    """(status, what is returned) of adpsh's answer."""
    try:
        return 0, remote.outcome(answer)
    except adp.Error as error:
        return error.status, error.outputs


def test_same_results_and_outputs(both):
    caller, shell = both
    source = random.Random(22)
    arguments_of = RandomArguments(source)
    found, made = [], {name: 0 for name in CALLS}
    for _ in range(ROUNDS):
        for name in source.sample(sorted(CALLS), len(CALLS)):
            own, call = CALLS[name]
            arguments = arguments_of.arguments(call)
            remote = RemoteCall(getattr(adp, own.removeprefix("_")))
            given = [each.name for each in call.parameters if each.given]
            asked = remote.line(dict(zip(given, arguments))).replace(text_of(HANDLER), "print")
            answer = shell.ask(asked)
            if "error" in answer:
                found.append(f"{asked}: {answer['error']}")
                continue
            made[name] += 1
            ours, theirs = caller.call(own.removeprefix("_"), arguments), result_of(remote, answer)
            if name in DESCRIPTORS:
                ours, theirs = ours[1] >= 0, theirs[1] >= 0
            if ours != theirs:
                found.append(f"{asked}: {ours}, {theirs}")
    assert not found, "\n".join(found)
    assert [name for name, count in made.items() if not count] == []
