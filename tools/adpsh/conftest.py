"""Shells for the tests, each in a network namespace of its own and without a virtual device."""
import os

import pytest

from json_shell import Shell, can_isolate


@pytest.fixture
def environment(tmp_path):
    """The driver finds no virtual device."""
    return {**os.environ, "VDEVICE_DIR": str(tmp_path), "HOME": str(tmp_path)}


@pytest.fixture
def start(environment):
    if not can_isolate():
        pytest.skip("network namespaces are not permitted here")
    shells = []

    def begin(*options, prologue=""):
        shells.append(Shell(environment, *options, prologue=prologue))
        return shells[-1]

    yield begin
    for each in shells:
        if not each.process.stdin.closed:
            each.close()


@pytest.fixture
def shell(start):
    return start()


@pytest.fixture
def mapped(shell):
    assert shell.result("map") == 0
    return shell
