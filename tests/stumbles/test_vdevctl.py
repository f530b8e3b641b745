"""What somebody who sees vdevctl for the first time types, and what the answer must contain."""
from conftest import run

# Words behind vdevctl, the exit status, and texts that the answer must contain.
BESIDE_A_DEVICE = [
    ("", 1, ["a command is missing", "--help"]),
    ("portz", 1, ["unknown command 'portz', did you mean 'ports'?"]),
    ("overview", 1, ["unknown command 'overview'", "'help' lists them"]),
    ("help", 0, ["ports [PORTS]", "the MAC table"]),
    ("--help", 0, ["--run-dir", "Commands:", "ports [PORTS]"]),
    ("help counters", 0, ["counters [PORTS]", "--nonzero", "--rate TIME"]),
    ("help portz", 1, ["did you mean 'ports'?"]),
    ("--version", 0, ["vdevctl ", "virtual device "]),
    ("counters 1", 0, ["RX FRAMES", "1 of 27 rows"]),
    ("counters 1-4,7", 0, ["5 of 27 rows"]),
    ("counters cpu", 0, ["1 of 27 rows"]),
    ("counters --nonzro", 1, ["did you mean '--nonzero'?"]),
    ("counters one", 1, ["1-4,7"]),
    ("counters --rate 1x", 1, ["--rate takes a time from 1ms to 60m, not '1x'"]),
    ("counters --rate 10ms 1", 0, ["counts per second, over ", " s\n1 of 27 rows"]),
    ("macs --vlan 100 --port 3", 0, ["VLAN", "ADDRESS"]),
    ("macs --port", 1, ["'--port PORTS'"]),
    ("pull", 1, ["'pull PORT'"]),
    ("pull 40", 1, ["1 to 26"]),
    ("cable", 1, ["'cable PORT'"]),
    ("cable 3", 1, ["conditions", "--clear"]),
    ("cable 3 --loss 5", 1, ["percentage", "5%"]),
    ("cable 3 --delay 20", 1, ["20ms"]),
    ("cable 3 --rate 100", 1, ["100M"]),
    ("cable 3 --los 5%", 1, ["did you mean '--loss'?"]),
    ("cable cpu --loss 5%", 1, ["1 to 26"]),
    ("cable 3 --rate 100M --clear", 1, ["or --clear"]),
    ("cables", 0, ["PORT", "CONDITIONS"]),
    ("clear", 1, ["clear WHAT [PORT]"]),
    ("watch links --for 10ms", 0, []),
    ("watch linkz", 1, ["nothing to watch named 'linkz', did you mean 'links'?"]),
    ("watch xyzzy", 1, ["links, learning, ageing, drops, full"]),
]


def test_beside_a_device(device):
    for words, status, texts in BESIDE_A_DEVICE:
        ended = run(device, *words.split(), program="vdevctl")
        assert ended.returncode == status, (words, ended.stdout, ended.stderr)
        for text in texts:
            assert text in ended.stdout + ended.stderr, (words, ended.stdout, ended.stderr)


def test_without_a_device(nowhere):
    ended = run(nowhere, "ports", program="vdevctl")
    assert ended.returncode == 1
    assert "no vdeviced is running there. Start it, or name its folder with --run-dir or in VDEVICE_DIR." in ended.stderr
    assert "no device is running" in run(nowhere, "--version", program="vdevctl").stdout
