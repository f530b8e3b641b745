"""vdevctl and the libraries at a socket that another program serves in a device's place."""
import contextlib
import os
import resource
import socket
import subprocess
import threading
import time

import pytest

from testing.daemon import DEADLINE, PROGRAMS

MIB = 1 << 20
STRANGER = 12345


@contextlib.contextmanager
def false_device(run_dir, answer):
    """Serves one client of the control socket: answer(connection) says what it hears."""
    os.mkdir(run_dir, 0o700)
    with socket.socket(socket.AF_UNIX) as listener:
        listener.bind(f"{run_dir}/control")
        listener.listen()

        def serve():
            connection, _ = listener.accept()
            with connection, contextlib.suppress(BrokenPipeError, ConnectionResetError):
                answer(connection)

        thread = threading.Thread(target=serve)
        thread.start()
        yield
        thread.join()


def say(piece, times, pause=0.0):
    def answer(connection):
        for _ in range(times):
            connection.sendall(piece)
            time.sleep(pause)
    return answer


def hang_up(connection):
    connection.close()


def ask(run_dir, **options):
    return subprocess.run([f"{PROGRAMS}/vdevctl", "--run-dir", run_dir, "ports"], capture_output=True, text=True,
                          timeout=DEADLINE, **options)


def most_memory_of_children():
    return resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss * 1024


@pytest.mark.parametrize("answer, complaint", [
    (say(b"x" * MIB, 4096), "gave an answer of more than 16 MiB. It is no vdeviced."),
    (say(b"[" + b"[]," * (MIB // 2) + b"[]]\n", 1), "gave an answer that cannot be read."),
    (say(b"[" * MIB + b"\n", 1), "gave an answer that cannot be read."),
    (say(b'{"error": 7}\n', 1), "gave an answer without a text. Is it of another version?"),
    (say(b"x", 10 * int(DEADLINE), 0.1), "gave no answer within 5 s."),
    (hang_up, "closed the connection without an answer."),
], ids=["endless", "large", "deep", "no sentence", "slow", "silent"])
def test_what_is_no_answer_of_a_device_is_told_in_time(run_dir, answer, complaint):
    with false_device(run_dir, answer):
        result = ask(run_dir)
        assert (result.returncode, result.stdout) == (1, "")
        assert complaint in result.stderr
        assert most_memory_of_children() < 1024 * MIB


@pytest.mark.parametrize("mode", [0o777, 0o770])
def test_a_folder_that_others_may_write_to_is_refused(device, mode):
    os.chmod(device.run_dir, mode)
    result = device.control("ports")
    refused = "it is another user's, or others may write to its folder.\n"
    assert result.returncode == 1 and result.stderr.endswith(refused)
    call = subprocess.run(**device.calling("enable", 24, 1), capture_output=True, timeout=DEADLINE)
    assert call.stdout == "-1\n" and call.stderr.endswith(refused)
    os.chmod(device.run_dir, 0o700)
    assert device.control("ports").returncode == 0


def may_be_stranger():
    """Root of a user namespace has one user id, its own."""
    with open("/proc/self/uid_map", encoding="ascii") as uids:
        return os.geteuid() == 0 and int(uids.read().split()[2]) > STRANGER


@pytest.mark.skipif(not may_be_stranger(), reason="only root can be another user")
def test_another_users_folder_is_refused(device):
    os.chown(device.run_dir, STRANGER, STRANGER)
    result = device.control("ports")
    assert result.returncode == 1 and "it is another user's" in result.stderr
    os.chown(device.run_dir, 0, 0)


@pytest.mark.skipif(not may_be_stranger(), reason="only root can be another user")
def test_a_user_may_talk_to_roots_device_if_root_lets_him(device):
    for path, mode in ((os.path.dirname(device.run_dir), 0o755), (device.run_dir, 0o755),
                       (f"{device.run_dir}/control", 0o666), (f"{device.run_dir}/driver", 0o666)):
        os.chmod(path, mode)
    assert ask(device.run_dir, user=STRANGER).returncode == 0
    call = subprocess.run(**device.calling("enable", 24, 1), capture_output=True, timeout=DEADLINE, user=STRANGER)
    assert (call.stdout, call.stderr) == ("0\n", "")


@pytest.mark.skipif(not may_be_stranger(), reason="only root can be another user")
def test_a_program_with_borrowed_rights_does_not_follow_the_environment(device, tmp_path):
    """The copy runs with the rights of another user than the one who starts it."""
    tmp_path.chmod(0o755)
    copy = tmp_path / "vdevctl"
    copy.write_bytes(open(f"{PROGRAMS}/vdevctl", "rb").read())
    os.chown(copy, STRANGER, STRANGER)
    copy.chmod(0o4755)
    for path, mode in ((os.path.dirname(device.run_dir), 0o755), (device.run_dir, 0o755),
                       (f"{device.run_dir}/control", 0o666)):
        os.chmod(path, mode)
    for folder in tmp_path.parents[:2]:
        folder.chmod(0o755)
    environment = {**os.environ, "VDEVICE_DIR": device.run_dir}
    said = subprocess.run([copy, "ports"], capture_output=True, text=True, timeout=DEADLINE, env=environment)
    assert said.returncode == 1
    assert f"the device at /tmp/vdevice-{STRANGER}/control: no vdeviced is running there" in said.stderr
