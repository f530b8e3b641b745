"""The daemon as a process: its file, its folder, its rights, and what a service manager hears."""
import os
import signal
import socket
import subprocess
import time

import pytest

from conftest import BOARD, PROGRAMS, SECONDS

NETWORK = (1 << 12) | (1 << 13)
USER = 12345


def capabilities(process):
    with open(f"/proc/{process.pid}/status", encoding="ascii") as file:
        return {name: int(value, 16) for name, value in (line.split(":") for line in file)
                if name.startswith("Cap") or name == "NoNewPrivs"}


def test_a_file_is_checked_without_a_daemon(switchd):
    right = switchd.run("--config", switchd.file, "--check")
    assert (right.returncode, right.stdout, right.stderr) == (0, f"{switchd.file}: no mistakes\n", "")
    switchd.file.write_text(BOARD + "[bridges]\nbr = 5000\n", encoding="utf-8")
    wrong = switchd.run("--config", switchd.file, "--check")
    assert (wrong.returncode, wrong.stdout) == (1, "")
    assert wrong.stderr == f"adp-switchd: {switchd.file}:4: VLAN 5000 is not in 1 to 4094.\n"
    missing = switchd.run("--config", "/nowhere.toml", "--check")
    assert missing.returncode == 1 and "/nowhere.toml" in missing.stderr
    assert not switchd.run_dir.exists()


def test_it_starts_and_ends(switchd):
    process = switchd.start()
    assert process.first_line == "adp-switchd: ready\n", process.stderr.read()
    assert switchd.run_dir.stat().st_mode & 0o777 == 0o700
    assert (switchd.run_dir / "control").stat().st_mode & 0o077 == 0
    assert switchd.stop(process)[0] == 0
    assert not (switchd.run_dir / "control").exists()


def test_the_run_folder_may_be_relative(switchd, tmp_path):
    daemon = switchd.start("--run-dir", "run", cwd=tmp_path)
    assert daemon.first_line == "adp-switchd: ready\n"
    assert switchd.stop(daemon) == (0, "")


def test_a_second_one_is_refused(switchd):
    first = switchd.start()
    second = switchd.start()
    assert (second.first_line, second.wait(SECONDS)) == ("", 1)
    assert second.stderr.read() == f"adp-switchd: cannot use {switchd.run_dir}: another adp-switchd is running there.\n"
    assert switchd.stop(first)[0] == 0


def test_the_next_one_takes_the_place_of_a_killed_one(switchd):
    killed = switchd.start()
    assert switchd.stop(killed, signal.SIGKILL)[0] == -signal.SIGKILL
    following = switchd.start()
    assert following.first_line == "adp-switchd: ready\n"
    assert switchd.stop(following)[0] == 0


def test_a_folder_that_others_may_write_to_is_refused(switchd):
    switchd.run_dir.mkdir()
    switchd.run_dir.chmod(0o777)
    process = switchd.start()
    assert (process.first_line, process.wait(SECONDS)) == ("", 1)
    assert "does not belong" not in (said := process.stderr.read()) and "belongs to this user alone" in said
    assert "--run-dir or in ADP_SWITCHD_DIR" in said


def test_it_keeps_two_capabilities(switchd):
    process = switchd.start()
    sets = capabilities(process)
    assert (sets["CapPrm"], sets["CapEff"], sets["CapInh"], sets["CapAmb"], sets["NoNewPrivs"]) == (NETWORK, NETWORK, 0, 0, 1)
    assert sets["CapBnd"] & ~NETWORK == 0
    assert switchd.stop(process)[0] == 0


def as_user(*ambient):
    """Runs a program as an ordinary user, as systemd does with ambient capabilities."""
    wanted = ",".join(f"+{name}" for name in ambient) or "-all"
    return ("setpriv", f"--reuid={USER}", f"--regid={USER}", "--clear-groups", f"--inh-caps={wanted}",
            *((f"--ambient-caps={wanted}",) if ambient else ()))


@pytest.fixture(name="user")
def may_be_another_user(switchd):
    if subprocess.run([*as_user(), "true"], check=False, capture_output=True).returncode != 0:
        pytest.skip("only root can be another user")
    for folder in (switchd.run_dir.parent, *switchd.run_dir.parent.parents):
        if folder.stat().st_mode & 0o001 == 0:
            folder.chmod(0o755)  # pytest's own folders
    return USER


def test_an_ordinary_user_needs_the_two_capabilities(switchd, user):
    switchd.run_dir.mkdir()
    os.chown(switchd.run_dir, user, user)
    switchd.run_dir.chmod(0o700)
    refused = switchd.start(under=as_user())
    assert (refused.first_line, refused.wait(SECONDS)) == ("", 1)
    assert "needs the capabilities CAP_NET_ADMIN and CAP_NET_RAW" in refused.stderr.read()


def test_the_control_socket_is_its_users_alone(switchd, user):
    process = switchd.start()
    assert process.first_line == "adp-switchd: ready\n"
    said = subprocess.run([*as_user(), f"{PROGRAMS}/adp-switchd", "status"], env=switchd.environment, capture_output=True,
                          text=True, timeout=SECONDS, check=False)
    assert user == USER and said.returncode == 1 and "Permission denied" in said.stderr
    assert switchd.stop(process)[0] == 0


def reload(switchd, process, text):
    switchd.file.write_text(text, encoding="utf-8")
    process.send_signal(signal.SIGHUP)
    return process.stderr.readline()


def test_a_file_is_read_again(switchd):
    process = switchd.start()
    assert reload(switchd, process, BOARD + "flood_limit = 100\n") == "adp-switchd: the configuration was read again\n"
    told = reload(switchd, process, BOARD + 'cpu_interface = "other"\n')
    assert told == "adp-switchd: cpu_interface has changed in the file: it changes when adp-switchd starts again\n"
    assert process.stderr.readline() == "adp-switchd: the configuration was read again\n"
    for text in ("user_ports = 4\nx = 1\n", "\0\xff", BOARD + "[ports.swp9]\nmtu = 1400\n"):
        assert reload(switchd, process, text).startswith("adp-switchd: the configuration stays as it was: ")
    switchd.file.unlink()
    process.send_signal(signal.SIGHUP)
    assert process.stderr.readline().startswith("adp-switchd: the configuration stays as it was: cannot read ")
    assert switchd.stop(process) == (0, "")


def test_a_service_manager_is_told(switchd, tmp_path):
    with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as manager:
        manager.bind(str(tmp_path / "notify"))
        manager.settimeout(SECONDS)
        process = switchd.start(variables={"NOTIFY_SOCKET": str(tmp_path / "notify")})
        told = [manager.recv(4096)]
        process.send_signal(signal.SIGHUP)
        while not told[-1].startswith(b"RELOADING=1\nMONOTONIC_USEC="):
            told.append(manager.recv(4096))
        while told[-1] != b"WATCHDOG=1":
            told.append(manager.recv(4096))
        process.send_signal(signal.SIGTERM)
        while told[-1] != b"STOPPING=1":
            told.append(manager.recv(4096))
        assert told.count(b"READY=1") == 2 and process.wait(SECONDS) == 0


def test_the_journal_gets_priorities(switchd):
    reader, writer = os.pipe()
    where = os.fstat(writer)
    process = subprocess.Popen([f"{PROGRAMS}/adp-switchd", "--config", switchd.file], stdout=subprocess.PIPE, stderr=writer,
                               env={**switchd.environment, "JOURNAL_STREAM": f"{where.st_dev}:{where.st_ino}"})
    os.close(writer)
    assert process.stdout.readline() == b"adp-switchd: ready\n"
    process.send_signal(signal.SIGHUP)
    with os.fdopen(reader, encoding="utf-8") as journal:
        assert "<5>the configuration was read again\n" in (journal.readline() for _ in range(20))
    process.terminate()
    assert process.wait(SECONDS) == 0
    process.stdout.close()


def test_the_log_level_chooses_what_is_written(switchd):
    process = switchd.start("--log-level", "error")
    process.send_signal(signal.SIGHUP)
    time.sleep(0.2)
    assert switchd.stop(process) == (0, "")
