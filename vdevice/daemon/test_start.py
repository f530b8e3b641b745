"""The daemon starts, refuses to start and ends."""
import os
import stat

import pytest

from testing.daemon import DEADLINE, interfaces


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
    assert errors.startswith("vdeviced: cannot listen on") and "another vdeviced" in errors
    assert device.ask("version")["user_ports"] == 4


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
