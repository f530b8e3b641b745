"""Descriptors and memory run out, and come back."""
import contextlib
import os
import resource
import socket
import subprocess
import time

import pytest

from testing.daemon import BROADCAST, PAYLOAD, PROGRAMS, Control, station, wait_until

CLIENTS = 40


def processor_seconds(device):
    with open(f"/proc/{device.process.pid}/stat", encoding="ascii") as stat:
        fields = stat.read().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def limit_descriptors(device, spare):
    """Lets the device open so many descriptors more."""
    opened = [int(name) for name in os.listdir(f"/proc/{device.process.pid}/fd")]
    _, hard = resource.prlimit(device.process.pid, resource.RLIMIT_NOFILE)
    resource.prlimit(device.process.pid, resource.RLIMIT_NOFILE, (max(opened) + 1 + spare, hard))


def restore_descriptors(device):
    _, hard = resource.prlimit(device.process.pid, resource.RLIMIT_NOFILE)
    resource.prlimit(device.process.pid, resource.RLIMIT_NOFILE, (hard, hard))


def test_it_may_open_as_many_descriptors_as_the_system_lets_it(device):
    soft, hard = resource.prlimit(device.process.pid, resource.RLIMIT_NOFILE)
    assert soft == hard


def test_without_descriptors_it_waits_and_forwards(device):
    one, two = device.nics("host1", "host2")
    for name in ("control", "driver"):
        with contextlib.ExitStack() as clients:
            limit_descriptors(device, CLIENTS // 4)
            for _ in range(CLIENTS):
                client = clients.enter_context(socket.socket(socket.AF_UNIX))
                client.connect(f"{device.run_dir}/{name}")
            time.sleep(0.2)
            before, begin = processor_seconds(device), time.monotonic()
            time.sleep(1.5)
            spent = processor_seconds(device) - before
            assert spent < (time.monotonic() - begin) / 4, "it goes round and round"
            one.send(BROADCAST + station(1) + PAYLOAD)
            assert two.receive() == BROADCAST + station(1) + PAYLOAD
        restore_descriptors(device)
        assert device.ask("version")["user_ports"] == 4
        assert device.call("enable", 24, 1) == "0"


def test_a_program_that_is_one_too_many_is_told_the_limit(device):
    most_clients = 1024
    soft, hard = resource.getrlimit(resource.RLIMIT_NOFILE)
    resource.setrlimit(resource.RLIMIT_NOFILE, (hard, hard))
    try:
        with contextlib.ExitStack() as clients:
            for _ in range(most_clients):
                client = clients.enter_context(socket.socket(socket.AF_UNIX))
                client.connect(f"{device.run_dir}/driver")
            said = subprocess.run(**device.calling("enable", 24, 1), capture_output=True, check=False)
            assert said.stdout.strip() == "-1"
            assert str(most_clients) in said.stderr
    finally:
        resource.setrlimit(resource.RLIMIT_NOFILE, (soft, hard))
    assert device.call("enable", 24, 1) == "0"


def heap_bytes(device):
    """What the heap of the daemon has in use of the machine's memory."""
    with open(f"/proc/{device.process.pid}/smaps", encoding="ascii") as maps:
        lines = iter(maps)
        for line in lines:
            if line.endswith("[heap]\n"):
                return next(1024 * int(each.split()[1]) for each in lines if each.startswith("Rss:"))
    return 0


@pytest.mark.skipif(PROGRAMS.endswith("/asan"), reason="the address sanitizer has a heap of its own")
def test_what_many_clients_took_is_given_back(device):
    """Every other client stays a little longer, so that the memory of the others is in pieces."""
    before = heap_bytes(device)
    clients = [Control(device) for _ in range(200)]
    for client in clients:
        client.say(b'{"command": "' + b"x" * 50000)
    wait_until(lambda: heap_bytes(device) - before > 8 << 20, "the clients' requests")
    stay = [Control(device), Control(device)]
    for client in stay:
        client.say(b'{"command": "watch"}\n')
        assert client.hear() == {"watching": True}
    for client in clients:
        client.reader.close()
        client.socket.close()
    wait_until(lambda: heap_bytes(device) - before < 1 << 20, "the memory to be given back")
