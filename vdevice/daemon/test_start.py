"""The daemon starts, refuses to start and ends."""
import os
import shutil
import signal
import socket
import stat
import subprocess
import time

import pytest

from testing.daemon import BOARD, BROADCAST, DEADLINE, PAYLOAD, Nic, carrier, interfaces, station, wait_until


def test_start_and_end_leave_nothing_behind(start, run_dir):
    before = interfaces()
    device = start("--create-interfaces", "--user-ports", "2")
    device.wait_ready()
    assert interfaces() - before == {"cpu0", "eth0", "port1", "host1", "port2", "host2"}
    assert stat.S_IMODE(os.stat(run_dir).st_mode) == 0o700
    for name in ("control", "driver"):
        assert stat.S_IMODE(os.stat(f"{run_dir}/{name}").st_mode) & 0o077 == 0
    assert device.stop() == 0
    assert interfaces() == before
    assert os.listdir(run_dir) == []


def test_a_folder_that_others_may_write_to_is_refused(start, run_dir):
    os.mkdir(run_dir)
    for mode in (0o777, 0o770, 0o702):
        os.chmod(run_dir, mode)
        device = start()
        _, errors = device.process.communicate(timeout=DEADLINE)
        assert device.process.returncode == 1
        assert "is not a folder that belongs to this user alone" in errors
        assert os.listdir(run_dir) == []


def test_a_link_to_a_folder_is_refused(start, run_dir):
    os.mkdir(run_dir + ".real", mode=0o700)
    os.symlink(run_dir + ".real", run_dir)
    device = start()
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert "is not a folder that belongs to this user alone" in errors
    assert os.listdir(run_dir) == []


def test_sockets_are_their_owners_in_an_open_folder_too(start, run_dir):
    os.mkdir(run_dir)
    os.chmod(run_dir, 0o755)
    start("--create-interfaces", "--user-ports", "1").wait_ready()
    for name in ("control", "driver"):
        assert stat.S_IMODE(os.stat(f"{run_dir}/{name}").st_mode) & 0o077 == 0


def test_a_second_device_is_refused_and_the_first_stays(device, start):
    second = start("--user-ports", "4")
    _, errors = second.process.communicate(timeout=DEADLINE)
    assert second.process.returncode == 1
    assert errors == f"vdeviced: cannot use {device.run_dir}: another vdeviced is running there.\n"
    assert device.ask("version")["user_ports"] == 4


def test_a_device_that_is_too_busy_to_answer_is_not_replaced(device, start):
    device.process.send_signal(signal.SIGSTOP)
    waiting = []
    try:
        while True:
            client = socket.socket(socket.AF_UNIX)
            client.setblocking(False)
            client.connect(device.run_dir + "/control")
            waiting.append(client)
    except BlockingIOError:
        client.close()
    second = start(*BOARD)
    _, errors = second.process.communicate(timeout=DEADLINE)
    assert second.process.returncode == 1
    assert "another vdeviced is running there" in errors
    device.process.send_signal(signal.SIGCONT)
    for client in waiting:
        client.close()
    assert device.ask("version")["user_ports"] == 4


def test_of_several_devices_started_at_once_one_runs(cables, start, run_dir):
    for _ in range(5):
        devices = [start(*BOARD) for _ in range(3)]
        lines = [device.process.stdout.readline() for device in devices]
        assert sorted(lines) == ["", "", "vdeviced: ready\n"]
        device = devices.pop(lines.index("vdeviced: ready\n"))
        for other in devices:
            _, errors = other.process.communicate(timeout=DEADLINE)
            assert errors == f"vdeviced: cannot use {run_dir}: another vdeviced is running there.\n"
        assert device.ask("version")["user_ports"] == 4
        assert device.call("enable", 24, 1) == "0"
        assert device.stop() == 0
        assert os.listdir(run_dir) == []


def test_a_device_whose_folder_was_removed_leaves_its_successor_alone(cables, start, run_dir):
    first = start(*BOARD)
    first.wait_ready()
    shutil.rmtree(run_dir)
    second = start(*BOARD)
    second.wait_ready()
    assert first.stop() == 0
    assert sorted(os.listdir(run_dir)) == ["control", "driver"]
    assert second.ask("version")["user_ports"] == 4
    assert second.call("enable", 24, 1) == "0"


@pytest.mark.parametrize("name", ["control", "driver"])
def test_a_file_in_place_of_a_socket_is_refused_and_kept(cables, start, run_dir, name):
    os.mkdir(run_dir, mode=0o700)
    path = f"{run_dir}/{name}"
    with open(path, "w", encoding="ascii") as file:
        file.write("notes")
    device = start(*BOARD)
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors == (f"vdeviced: cannot listen on {path}: a file of that name is there, and it is no socket. "
                      "Move it away.\n")  # fmt: skip
    with open(path, encoding="ascii") as file:
        assert file.read() == "notes"
    assert os.listdir(run_dir) == [name]


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT, signal.SIGHUP, signal.SIGQUIT])
def test_signals_end_it_cleanly(start, run_dir, number):
    before = interfaces()
    device = start("--create-interfaces", "--user-ports", "1")
    device.wait_ready()
    device.process.send_signal(number)
    assert device.process.communicate(timeout=DEADLINE) == ("", "")
    assert device.process.returncode == 0
    assert interfaces() == before
    assert os.listdir(run_dir) == []


def test_it_outlives_its_terminal_under_nohup(cables, start):
    device = start(*BOARD, under=["nohup"])
    device.wait_ready()
    device.process.send_signal(signal.SIGHUP)
    assert device.ask("version")["user_ports"] == 4
    device.process.terminate()
    device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 0


CREATING = ("--create-interfaces", *BOARD)


def kill(device):
    device.process.kill()
    device.process.communicate()


def forwards(device):
    one, two = device.nics("host1", "host2")
    one.send(BROADCAST + station(1) + PAYLOAD)
    return two.receive() == BROADCAST + station(1) + PAYLOAD


def test_the_interfaces_of_a_killed_device_are_taken_up_with_their_hosts(start):
    before = interfaces()
    first = start(*CREATING)
    first.wait_ready()
    hosts = {name: socket.if_nametoindex(name) for name in ("host1", "host2", "eth0")}
    kill(first)
    subprocess.run(["ip", "link", "del", "port3"], check=True)
    second = start(*CREATING)
    second.wait_ready()
    assert {name: socket.if_nametoindex(name) for name in hosts} == hosts
    assert forwards(second)
    assert "host3" in interfaces()
    kill(second)
    third = start("--create-interfaces", "--user-ports", "2", "--first-port", "23")
    third.wait_ready()
    assert interfaces() - before == {"cpu0", "eth0", "port1", "host1", "port2", "host2"}
    assert forwards(third)
    assert third.stop() == 0
    assert interfaces() == before


def test_a_host_that_has_moved_keeps_its_cable(start):
    first = start(*CREATING)
    first.wait_ready()
    with subprocess.Popen(["unshare", "-n", "sh", "-c", "echo; read line"], text=True, stdin=subprocess.PIPE,
                          stdout=subprocess.PIPE) as host:  # fmt: skip
        host.stdout.readline()
        for name in ("host1", "eth0"):
            subprocess.run(["ip", "link", "set", name, "netns", str(host.pid)], check=True)
        kill(first)
        second = start(*CREATING)
        second.wait_ready()
        subprocess.run(["nsenter", "-n", "-t", str(host.pid), "ip", "link", "set", "host1", "up"], check=True)
        wait_until(lambda: second.port(1)["up"], "the link of the host that has moved")
        assert second.stop() == 0


def test_killed_at_any_moment_of_its_start_it_starts_again(start):
    before = interfaces()
    for round_number in range(16):
        device = start("--create-interfaces")
        time.sleep(0.01 * round_number)
        kill(device)
    device = start("--create-interfaces")
    device.wait_ready()
    assert len(interfaces() - before) == 54
    assert device.stop() == 0
    assert interfaces() == before


def test_interfaces_of_others_are_refused_and_kept(start, run_dir):
    subprocess.run(["ip", "link", "add", "host2", "type", "veth", "peer", "name", "other2"], check=True)
    before = interfaces()
    device = start(*CREATING)
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors.startswith("vdeviced: cannot create interface host2: there is one of that name already.")
    assert interfaces() == before
    subprocess.run(["ip", "link", "del", "host2"], check=True)
    device = start(*CREATING)
    device.wait_ready()
    shutil.rmtree(run_dir)
    for folder in (run_dir + "-other", run_dir):
        other = start(*CREATING, run_dir=folder)
        _, errors = other.process.communicate(timeout=DEADLINE)
        assert other.process.returncode == 1
        assert "cannot create interface" in errors
        shutil.rmtree(folder)
    one, two = Nic.of("host1"), Nic.of("host2")
    wait_until(lambda: carrier("host1") and carrier("host2"), "the links")
    one.send(BROADCAST + station(1) + PAYLOAD)
    assert two.receive() == BROADCAST + station(1) + PAYLOAD
    assert device.stop() == 0


def test_what_a_killed_device_left_does_not_hinder_the_next(start):
    first = start("--create-interfaces", "--user-ports", "1")
    first.wait_ready()
    first.process.kill()
    first.process.wait()
    second = start("--user-ports", "1")
    second.wait_ready()
    assert second.ask("version")["user_ports"] == 1
    assert second.stop() == 0


def test_missing_interfaces_are_told(start, run_dir):
    device = start()
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors.startswith("vdeviced: cannot find interface cpu0.")
    assert os.listdir(run_dir) == []


@pytest.mark.parametrize("slots", ["0", "15", "100", "65552"])
def test_impossible_rings_are_told(start, slots):
    device = start("--ring-slots", slots)
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors == ("vdeviced: cannot make such rings: the number of slots must be a multiple of 16 from 16 to "
                      "65536.\n")


def test_impossible_boards_are_told(start):
    device = start("--user-ports", "30", "--first-port", "3")
    _, errors = device.process.communicate(timeout=DEADLINE)
    assert device.process.returncode == 1
    assert errors.startswith("vdeviced: cannot wire such a board")
