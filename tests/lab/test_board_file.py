"""A board file that is wrong is told in a sentence with the key's name."""

import re

import pytest
from adp.lab import LabError
from adp.lab.board_file import read_board_file
from adp.lab.builds import ROOT

PORTS = 'interfaces = {1 = "eth1", 5 = "eth2"}\n'
GOOD = PORTS + 'shell = "ssh -p 22 board \'my adpsh\'"\n'


@pytest.fixture(name="read")
def make_reader(tmp_path):
    def read(text):
        path = tmp_path / "board.toml"
        path.write_bytes(text if isinstance(text, bytes) else text.encode())
        return read_board_file(path)

    return read


def test_a_short_file_has_defaults(read):
    board = read(GOOD)
    assert board.interfaces == {1: "eth1", 5: "eth2"}
    assert board.command == ("ssh", "-p", "22", "board", "my adpsh", "--json", "--keep-going")
    assert (board.serial, board.settle, board.name, board.build, board.force) == (None, 0.2, "board", "mips", False)


def test_the_files_of_the_page_are_right(read):
    page = (ROOT / "docs" / "how-to" / "test-a-board.md").read_text(encoding="utf-8")
    first, second = map(read, re.findall("```toml\n(.*?)```", page, re.S))
    assert first.command[:3] == ("ssh", "board", "adpsh")
    assert (second.serial, second.settle) == (("/dev/ttyUSB0", 115200), 0.5)


def test_a_full_file_is_read(read):
    board = read(PORTS + 'serial = "/dev/ttyUSB0"\nspeed = 9600\nstart = "/opt/adpsh --json"\nsettle = "1.5s"\n'
                 'name = "rack 3"\nbuild = "host"\nforce = true\n')
    assert (board.command, board.serial, board.start) == (None, ("/dev/ttyUSB0", 9600), "/opt/adpsh --json")
    assert (board.settle, board.name, board.build, board.force) == (1.5, "rack 3", "host", True)


@pytest.mark.parametrize(
    "text, sentence",
    [
        ("", "'interfaces' is missing"),
        ("interfaces = {}\nshell = 'x'", "'interfaces' is missing"),
        ("interfaces = 3", "'interfaces' must be a table, not 3."),
        ("interfaces = {1 = 2}", "'interfaces' has 2 at port 1, which is no name of an interface."),
        ("interfaces = {1 = 'eth1/..'}", "'interfaces' has 'eth1/..' at port 1, which is no name of an interface."),
        ("interfaces = {1 = 'sixteen-letters-'}", "which is no name of an interface."),
        ("interfaces = {1 = ''}", "'interfaces' has '' at port 1, which is no name of an interface."),
        ("interfaces = {0 = 'eth1'}", "'interfaces' has '0', which is no user port (1 to 26)."),
        ("interfaces = {27 = 'eth1'}", "'interfaces' has '27', which is no user port (1 to 26)."),
        ("interfaces = {one = 'eth1'}", "'interfaces' has 'one', which is no user port (1 to 26)."),
        ("interfaces = {1 = 'eth1', 2 = 'eth1'}", "'interfaces' has 'eth1' at two ports."),
        (PORTS, "the board's shell is reached by 'shell' or by 'serial'; give one of the two."),
        (GOOD + "serial = '/dev/ttyS0'", "the board's shell is reached by 'shell' or by 'serial'; give one of the two."),
        (GOOD + "speed = 9600", "'speed' belongs to 'serial', which is not given."),
        (GOOD + "start = 'adpsh'", "'start' belongs to 'serial', which is not given."),
        (PORTS + "shell = ''", "'shell' must be one line of text, not ''."),
        (PORTS + "shell = 'ssh \"board'", "'shell' is no command line: No closing quotation."),
        (PORTS + "serial = 5", "'serial' must be a text, not 5."),
        (PORTS + "serial = '/dev/ttyS0'\nspeed = 12345", "'speed' is 12345, which is no speed of a serial line here."),
        (PORTS + "serial = '/dev/ttyS0'\nspeed = true", "'speed' must be a number, not True."),
        (PORTS + "serial = '/dev/ttyS0'\nstart = \"a\\nb\"", "'start' must be one line of text, not 'a\\nb'."),
        (GOOD + "settle = 200", "'settle' must be a text, not 200."),
        (GOOD + "settle = '0ms'", "'settle' must be a time such as \"200ms\" or \"2s\", at most 60s, not '0ms'."),
        (GOOD + "settle = '61s'", "'settle' must be a time such as"),
        (GOOD + "settle = '2 hours'", "'settle' must be a time such as"),
        (GOOD + "name = ''", "'name' must have 1 to 32 printable ASCII characters, not ''."),
        (GOOD + f"name = '{'n' * 5000}'", "'name' must have 1 to 32 printable ASCII characters, not 'nnn"),
        (GOOD + "force = 'yes'", "'force' must be true or false, not 'yes'."),
        (GOOD + "interface = 1", "there is no key 'interface'; the keys are interfaces, shell, serial, speed, start,"),
        (GOOD + "shell", "is no TOML: "),
        (b"\xff", "is no TOML: "),
        ("a = " + "[" * 10000, "is no TOML: "),
        ("#" * 70000, "is longer than 65536 bytes."),
    ],
)
def test_what_is_wrong_is_named(read, text, sentence):
    with pytest.raises(LabError) as problem:
        read(text)
    said = str(problem.value)
    assert sentence in said and "board.toml" in said
    assert len(said) < 400 and said.isprintable()


def test_a_file_that_cannot_be_read_is_named(tmp_path):
    for path, reason in ((tmp_path / "none.toml", "No such file or directory"), (tmp_path, "Is a directory")):
        with pytest.raises(LabError, match=f"{path} cannot be read: {reason}."):
            read_board_file(path)
