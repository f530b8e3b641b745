"""The commands `adptrace show` and `adptrace stat` as a user has them: files, pipes, terminals, refusals."""
import json
import os
import pathlib
import pty
import signal
import subprocess
import xml.etree.ElementTree

import pytest

ADPTRACE = os.environ["ADPTRACE"].split()
SAMPLE = pathlib.Path(__file__).parents[1] / "recording/samples/version-1-every-kind.adptrace"


def run(*arguments, **more):
    return subprocess.run([*ADPTRACE, *arguments], capture_output=True, text=True, timeout=60, **more)


def test_standard_input_is_read_like_a_file():
    from_file = run("show", SAMPLE)
    assert from_file.returncode == 0 and from_file.stderr == "" and "adp_vlan_create(vid=100) = 0" in from_file.stdout
    assert run("show", "-", input=SAMPLE.read_text()).stdout == from_file.stdout
    assert json.loads(run("stat", "--json", "-", input=SAMPLE.read_text()).stdout)["driver_calls_by_program"] == 3


def test_a_reader_that_has_seen_enough_is_no_failure_where_sigpipe_is_ignored():
    reader, writer = os.pipe()
    os.close(reader)
    with os.fdopen(writer, "wb") as output:
        done = subprocess.run([*ADPTRACE, "show", SAMPLE], stdout=output, stderr=subprocess.PIPE, timeout=60,
                              restore_signals=False)
    assert (done.returncode, done.stderr) == (0, b"")


@pytest.mark.parametrize("command", ["show", "stat"])
def test_a_refusal_is_a_sentence(command, tmp_path):
    bad = tmp_path / "bad.adptrace"
    bad.write_text(SAMPLE.read_text() + "{}]\n{}\n")
    lines = len(SAMPLE.read_text().splitlines())
    for arguments, reason in (([bad], f"{bad}: line {lines + 1} is no JSON object."),
                              ([tmp_path / "none"], f"{tmp_path}/none: cannot be opened: No such file or directory."),
                              ([tmp_path], f"{tmp_path}: cannot be read: Is a directory."),
                              (["/dev/zero"], "/dev/zero: line 1 is longer than 1 MiB."),
                              ([], "it needs the FILE of a recording, or - for standard input.")):
        result = run(command, *arguments)
        assert (result.returncode, result.stdout, result.stderr) == (2, "", f"adptrace: {reason}\n")


def test_a_reader_that_has_seen_enough_ends_it_quietly(tmp_path):
    # More than fits in a pipe.
    long = tmp_path / "long.adptrace"
    start = SAMPLE.read_text().splitlines(keepends=True)[:2]
    call = '{"begin":%d,"thread":1,"at":9,"call":"adp_vlan_create","arguments":{"vid":1}}\n'
    long.write_text("".join(start + [call % number for number in range(1, 5000)]))
    shell = f'{{ {" ".join(ADPTRACE)} show {long}; echo "ended with $?" >&2; }} | head -1'
    result = subprocess.run(shell, shell=True, capture_output=True, text=True, timeout=60, restore_signals=True)
    assert result.stdout.count("\n") == 1
    assert result.stderr == f"ended with {128 + signal.SIGPIPE}\n"


def test_what_is_chosen_in_vain_is_told():
    result = run("show", "--calls", "adp_vlna_*", SAMPLE)
    assert (result.returncode, result.stdout, result.stderr) == (0, "--- no call is chosen\n", "")


def test_a_full_disk_is_told():
    with open("/dev/full", "w") as full:
        for command in ("show", "stat"):
            result = subprocess.run([*ADPTRACE, command, SAMPLE], stdout=full, stderr=subprocess.PIPE, text=True, timeout=60)
            assert result.returncode == 2
            assert result.stderr == "adptrace: the output cannot be written: No space left on device.\n"


def shown_on_a_terminal(**environment):
    master, slave = pty.openpty()
    with os.fdopen(slave, "wb") as terminal:
        subprocess.run([*ADPTRACE, "show", "--failed", SAMPLE], stdout=terminal, timeout=60, check=True,
                       env={**os.environ, "TERM": "xterm", **environment})
    with os.fdopen(master, "rb") as output:
        return output.read1(65536)


def test_colours_are_for_terminals():
    assert b"\x1b[31m-11 (vlan_exists)\x1b[0m" in shown_on_a_terminal()
    for plain in ({"NO_COLOR": "1"}, {"TERM": "dumb"}):
        shown = shown_on_a_terminal(**plain)
        assert b"-11 (vlan_exists)" in shown and b"\x1b" not in shown


CALL = ('{"begin":%d,"thread":1,"at":%d,"call":"adp_vlan_create","arguments":{"vid":1}}\n'
        '{"end":%d,"at":%d,"result":0,"outputs":{}}\n')


class Followed:
    """A recording that grows, and what is shown of it."""

    def __init__(self, path, *options, calls=1):
        self.path, self.calls = path, 0
        path.write_text("".join(SAMPLE.read_text().splitlines(keepends=True)[:2]))
        self.call(calls)
        self.process = subprocess.Popen([*ADPTRACE, "show", "--follow", "--calls=*", *options, path], text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def write(self, text):
        with open(self.path, "a", encoding="ascii") as file:
            file.write(text)

    def call(self, count=1):
        for number in range(self.calls + 1, self.calls + count + 1):
            self.write(CALL % (number, 1000000 * number, number, 1000000 * number + 9000))
        self.calls += count

    def line(self):
        return self.process.stdout.readline()

    def end(self):
        output, errors = self.process.communicate(timeout=60)
        return self.process.returncode, output, errors


@pytest.fixture(name="followed")
def fixture_followed(tmp_path):
    followed = []

    def follow(*options, **more):
        followed.append(Followed(tmp_path / "growing.adptrace", *options, **more))
        return followed[-1]

    yield follow
    for each in followed:
        each.process.kill()
        each.process.communicate()


def test_a_recording_is_followed_to_the_end_of_the_program(followed):
    growing = followed()
    assert growing.line() == "    0.001000 [1] adp_vlan_create(vid=1) = 0  (9.0 us)\n"
    begin, end = (CALL % (2, 2000000, 2, 2009000)).splitlines(keepends=True)
    growing.write(begin + end[:9])
    growing.write(end[9:])
    assert growing.line().startswith("    0.002000 [1] adp_vlan_create(vid=1) = 0")
    growing.write((CALL % (3, 3000000, 4, 0)).splitlines(keepends=True)[0] + '{"exit":412,"at":5000000,"status":0}\n')
    assert growing.end() == (0, "    0.003000 [1] adp_vlan_create(vid=1) = ?  (did not return)\n", "")


def test_it_is_followed_in_json_from_the_newest_calls_on(followed):
    growing = followed("--json", "--last=2", calls=500)
    told = [json.loads(growing.line()) for _ in range(2)]
    growing.call()
    told.append(json.loads(growing.line()))
    assert [call["at"] for call in told] == [0.499, 0.5, 0.501]
    assert {**told[2], "at": 0} == {"at": 0, "process": 412, "thread": 1, "text": "adp_vlan_create(vid=1) = 0",
                                    "failed": False, "microseconds": 9.0, "within": []}


@pytest.mark.parametrize("change, reason", [
    (lambda path: os.truncate(path, 10), "was truncated while it was followed."),
    (lambda path: path.unlink(), "is not there any more: No such file or directory."),
    (lambda path: (path.rename(f"{path}.old"), path.write_text("")), "was replaced by another file while it was followed.")])
def test_a_recording_that_cannot_grow_any_more_is_told(followed, change, reason):
    growing = followed()
    growing.line()
    change(growing.path)
    assert growing.end() == (2, "", f"adptrace: {growing.path}: {reason}\n")


def test_following_ends_when_interrupted_and_when_nobody_reads(followed):
    growing = followed()
    growing.line()
    growing.process.send_signal(signal.SIGINT)
    assert growing.end() == (-signal.SIGINT, "", "")
    growing = followed()
    growing.line()
    growing.process.stdout.close()
    assert growing.process.wait(timeout=60) == 0 and growing.process.stderr.read() == ""


# The address sanitizer keeps freed memory, to detect its use.
@pytest.mark.skipif("/asan/" in ADPTRACE[-1], reason="memory is not freed")
def test_a_long_recording_is_followed_in_little_memory(followed):
    memory = []
    for calls in (1, 30000):
        growing = followed("--last=1", calls=calls)
        assert growing.line().split()[0] == f"{calls / 1000:.6f}"
        with open(f"/proc/{growing.process.pid}/statm", encoding="ascii") as pages:
            memory.append(int(pages.read().split()[1]) * os.sysconf("SC_PAGE_SIZE"))
    assert memory[1] - memory[0] < growing.path.stat().st_size / 2


def test_what_can_be_followed():
    for options, reason in ((["--follow", "-"], "--follow takes a FILE, not standard input."),
                            (["--json", "--timeline=x.svg", SAMPLE], "--timeline draws the whole recording: it takes neither "
                             "--last nor --follow nor --json.")):
        assert run("show", *options).stderr == f"adptrace: {reason}\n"
    for options in ((SAMPLE,), ("-",)):
        shown = run("show", "--json", "--failed", *options, input=SAMPLE.read_text())
        assert shown.returncode == 0 and [json.loads(line)["failed"] for line in shown.stdout.splitlines()] == [True, True]


def test_a_timeline_is_a_picture_with_titles(tmp_path):
    picture = tmp_path / "calls.svg"
    result = run("show", "--timeline", picture, SAMPLE)
    assert result.stdout == f"{picture}: 25 calls of 2 threads, from 0.001204 s to 0.003507 s of the recording.\n"
    root = xml.etree.ElementTree.parse(picture).getroot()
    space = "{http://www.w3.org/2000/svg}"
    titles = [title.text for title in root.iter(f"{space}title")]
    assert len(titles) == 26 and titles[0].startswith("Calls over time: 25 calls")
    assert "0.001230 s: adp_vlan_create(vid=100) = -11 (vlan_exists)  (35 us)" in titles
    assert not list(root.iter(f"{space}script"))
    width, height = (float(root.get(name)) for name in ("width", "height"))
    for mark in root.iter(f"{space}rect"):
        x, y, w, h = (float(mark.get(name, 0)) for name in ("x", "y", "width", "height"))
        assert 0 <= x and 0 <= y and x + w <= width and y + h <= height
    refused = run("show", "--timeline", tmp_path / "none" / "calls.svg", SAMPLE)
    assert refused.returncode == 2 and "cannot be written: No such file or directory." in refused.stderr
