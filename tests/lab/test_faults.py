"""What goes wrong with a lab: each time a sentence, and nothing is left behind."""

import os
import signal
import subprocess
import time

import pytest
from conftest import COMMAND

RESTARTED = """\
name: lab
topology:
  nodes:
    sw1: {kind: adp, config: {vars: {adp: {programs: {waiting: sleep 1000}}}}, binds: ["lines:/etc/adp/startup.adpsh"]}
    h1: {kind: linux, exec: ["ip address add 10.0.0.1/24 dev eth1"]}
    h2: {kind: linux, exec: ["ip address add 10.0.0.2/24 dev eth1"]}
  links:
    - {endpoints: ["sw1:eth1", "h1:eth1"], vars: {adp: {delay: 1ms}}}
    - endpoints: ["sw1:eth2", "h2:eth1"]
"""


def await_text(labs, text, seconds=10):
    """Waits until `ps` says something."""
    deadline = time.monotonic() + seconds
    while text not in (said := labs.do("ps")):
        assert time.monotonic() < deadline, said
        time.sleep(0.05)
    return said


def test_a_killed_device_is_told_and_started_again_on_its_cables(labs):
    labs.file("map\nadp_vlan_create 77\n", "lines")
    labs.do("up", labs.file(RESTARTED))
    pid = labs.do("ps").split("\n")[2].split()[3]
    os.kill(int(pid), signal.SIGKILL)
    said = await_text(labs, "sw1: vdeviced was ended by the signal SIGKILL.")
    assert "'adp-lab restart sw1' starts it again." in said
    assert labs.try_to("exec", "h1", "ping", "-c1", "-W0.2", "h2").status == 1
    labs.do("restart", "sw1")
    assert "SIGKILL" not in labs.do("ps")
    assert " 0% packet loss" in labs.do("exec", "h1", "ping", "-c2", "-i0.1", "-W2", "h2")
    assert "delay 1ms" in labs.do("vdevctl", "sw1", "cables")
    assert "77" in labs.do("vdevctl", "sw1", "vlans")
    assert labs.do("exec", "sw1", "pgrep", "-c", "sleep") == "1\n"


def test_a_killed_host_is_told_and_stays_reachable(labs):
    labs.do("up", labs.switch())
    pid = labs.do("ps").split("\n")[3].split()[3]
    os.kill(int(pid), signal.SIGKILL)
    await_text(labs, "h1: the process that stands for it was ended by the signal SIGKILL. 'adp-lab restart h1'")
    assert " 0% packet loss" in labs.do("exec", "h1", "ping", "-c1", "-W2", "h2")
    labs.do("restart", "h1")
    assert "SIGKILL" not in labs.do("ps")


def test_everything_ends_with_the_background_process(labs):
    labs.do("up", labs.switch(host=', "sh -c \'setsid sleep 1000 >/dev/null 2>&1 &\'"'))
    shell = labs.popen("exec", "h1", "sleep", "1000")
    deadline = time.monotonic() + 5
    while labs.do("exec", "h1", "pgrep", "-c", "sleep") != "2\n":
        assert time.monotonic() < deadline
    os.kill(labs.records()["lab"]["keeper"], signal.SIGKILL)
    assert shell.wait(5) == 128 + signal.SIGKILL
    shell.communicate()
    assert labs.refuse("exec", "h1", "true") == (
        "The lab 'lab' has ended unexpectedly: its background process was killed. What it left has been removed."
    )
    labs.assert_nothing_is_left()


def test_a_lab_can_start_in_a_killed_ones_place(labs):
    labs.do("up", labs.switch())
    os.kill(labs.records()["lab"]["keeper"], signal.SIGKILL)
    time.sleep(0.2)
    said = labs.do("up", labs.switch())
    assert said.startswith("The lab 'lab' has ended unexpectedly: its background process was killed.")
    assert " 0% packet loss" in labs.do("exec", "h1", "ping", "-c1", "-W2", "h2")


def test_ps_tells_of_a_killed_lab(labs):
    labs.do("up", labs.switch())
    os.kill(labs.records()["lab"]["keeper"], signal.SIGKILL)
    time.sleep(0.2)
    assert "ended unexpectedly" in labs.do("ps")
    labs.assert_nothing_is_left()


def test_a_program_that_ends_is_told(labs):
    labs.do("up", labs.switch(device=", config: {vars: {adp: {programs: {short: sh -c 'echo one; echo two; exit 3'}}}}"))
    said = await_text(labs, "short ended with status 3.")
    assert "sw1: short ended with status 3. Its last line: \"two\". 'adp-lab restart sw1' starts it again." in said
    assert labs.do("logs", "sw1", "short") == "one\ntwo\n"
    assert labs.do("logs", "sw1") == "==> vdeviced <==\n==> short <==\none\ntwo\n"


REFUSED = [
    ({"host": ', "sh -c \'echo first; echo no such luck; exit 5\'"'},
     "On h1, the command 'sh -c 'echo first; echo no such luck; exit 5'' ended with status 5: no such luck"),
    ({"host": ', "ip address add nonsense dev eth1"'},
     "On h1, the command 'ip address add nonsense dev eth1' ended with status 1: Error: any valid prefix is expected "
     'rather than "nonsense".'),
    ({"host": ', "true \'"'}, "On h1, the command 'true '' cannot be read: No closing quotation."),
    ({"host": ', "nonsense"'}, "On h1, there is no program 'nonsense'."),
    ({"device": ", config: {vars: {adp: {programs: {a: nonsense}}}}"},
     "On sw1, there is no program 'nonsense'."),
    ({"device": ", config: {vars: {adp: {programs: {vdeviced: sleep 9}}}}"},
     "On sw1, a program cannot have the name vdeviced: the device itself has it."),
]


@pytest.mark.parametrize("fault, sentence", REFUSED)
def test_a_command_or_program_that_fails_fails_up(labs, fault, sentence):
    assert labs.refuse("up", labs.switch(**fault)) == sentence
    labs.assert_nothing_is_left()


def test_a_bad_configuration_of_a_device_fails_up(labs):
    labs.file("nonsense = 1\n", "device.toml")
    complaint = labs.refuse("up", labs.switch(device=', binds: ["device.toml:/etc/adp/vdeviced.toml"]'))
    assert "device.toml" in complaint and "nonsense" in complaint
    labs.assert_nothing_is_left()


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM, signal.SIGHUP])
def test_an_interrupt_of_up_leaves_nothing(labs, number):
    process = labs.popen("up", labs.switch(host=', "sleep 30"'))
    deadline = time.monotonic() + 10
    while len(labs.pids()) < 6:  # the hosts are there
        assert time.monotonic() < deadline
        time.sleep(0.05)
    process.send_signal(number)
    said, complaint = process.communicate(timeout=20)
    assert (process.returncode, said, complaint) == (130, "", "adp-lab: interrupted.\n")
    labs.assert_nothing_is_left()


def test_a_killed_up_leaves_no_process(labs):
    process = labs.popen("up", labs.switch(host=', "sleep 1"'))
    while len(labs.pids()) < 6:
        time.sleep(0.05)
    process.kill()
    process.communicate(timeout=20)
    deadline = time.monotonic() + 10
    while labs.pids() and time.monotonic() < deadline:
        time.sleep(0.05)
    labs.assert_nothing_is_left()


FULL_DISK = """\
mount -t tmpfs -o size=64k,mode=700 tmpfs "$ADP_LAB_DIR" && head -c "$1" /dev/zero >"$ADP_LAB_DIR/filler" && shift || exit 9
"$@"; status=$?; ls "$ADP_LAB_DIR"; exit $status
"""


@pytest.mark.parametrize("room", [0, 4, 8])
def test_a_full_disk_is_told(labs, room):
    """The labs' folder is on a file system that has room for some of a lab's files."""
    filler = (64 - room) * 1024
    command = ["unshare", "--mount", "sh", "-c", FULL_DISK, "sh", str(filler), *COMMAND, "up", str(labs.switch())]
    done = subprocess.run(command, env=labs.environment, capture_output=True, text=True, timeout=30)
    assert (done.returncode, done.stdout) == (1, "filler\n"), done
    assert "No space left on device" in done.stderr and done.stderr.count("\n") == 1


def test_a_folder_of_somebody_else_is_refused(labs):
    labs.folder.chmod(0o777)
    assert labs.refuse("up") == (
        f"{labs.folder} must be a folder of yours that nobody else may write to. Remove it, or set ADP_LAB_DIR."
    )


def test_a_folder_that_is_too_long_is_told(labs):
    folder = labs.folder / ("x" * 90)
    complaint = labs.refuse("up", more={"ADP_LAB_DIR": str(folder)})
    assert complaint == f"{folder}/lab is too long for the sockets of sw1. Set ADP_LAB_DIR to a shorter one."


def test_a_lab_whose_folder_is_removed_ends(labs):
    labs.do("up", labs.switch())
    subprocess.run(["rm", "-r", labs.folder / "lab"], check=True)
    labs.assert_nothing_is_left()
