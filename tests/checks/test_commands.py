"""Holds the check of the documents' commands to its word: a page that is wrong is found, and only that."""
import commands
import pytest


def fence(words, text):
    return f"```{words}\n{text}\n```\n"


def check(root, *fences, build="host"):
    (root / "docs").mkdir()
    (root / "build").mkdir()
    (root / "python").symlink_to(commands.pathlib.Path(__file__).parents[2] / "python")
    (root / "docs" / "page.md").write_text("# Page\n\n" + "\n".join(fences), encoding="utf-8")
    return commands.main(root, root / "build" / build, build)


@pytest.mark.parametrize("printed, wanted", [("a", "a"), ("a\nb", "a\nb\n"), ("took 12 ms", "took ... ms"), ("a\nb\nc", "a\n...\nc"),
                                             ("a.b", "a.b")])
def test_outputs_that_agree(printed, wanted):
    assert commands.agrees(printed, wanted)


@pytest.mark.parametrize("printed, wanted", [("a", "b"), ("ab", "a"), ("a b", "a  b"), ("axb", "a.b"), ("a", "a...b"), ("", "a")])
def test_outputs_that_differ(printed, wanted):
    assert not commands.agrees(printed, wanted)


def test_a_page_that_is_right(tmp_path):
    assert check(tmp_path, fence("text file=build/words", "hello"), fence("sh run", "cat build/words"),
                 fence("text output", "hello"), fence("sh", "false"), fence("sh run", "x=2"), fence("sh run", "echo $x"),
                 fence("text output", "2"), fence("sh run", "echo no; false"), fence("text output", "no")) == 0


@pytest.mark.parametrize("fences, told", [
    ([fence("sh run", "echo one"), fence("text output", "two")], "page.md:3: printed"),
    ([fence("sh run", "false")], "page.md:3: ended with 1"),
    ([fence("sh run", "exit 0"), fence("sh run", "echo")], "page.md:7: was not reached"),
    ([fence("sh", "echo nothing is run")], "no commands for host")])
def test_a_page_that_is_wrong(tmp_path, capsys, fences, told):
    assert check(tmp_path, *fences) == 1
    assert told in capsys.readouterr().out


@pytest.mark.parametrize("words", ["sh runn", "c file=docs/page.md"])
def test_unknown_words_are_an_error(tmp_path, words):
    with pytest.raises(ValueError, match=words.split()[1]):
        check(tmp_path, fence(words, "echo"))


def test_each_build_runs_its_own_blocks(tmp_path, capsys):
    assert check(tmp_path, fence("sh run", "echo one"), fence("text output", "two"), fence("sh run mips", "echo three"),
                 fence("text output", "three"), build="mips") == 0
    assert "1 blocks" in capsys.readouterr().out


def test_the_machines_interfaces_are_out_of_reach(tmp_path):
    assert check(tmp_path, fence("sh run", "ip -brief link"), fence("text output", "lo  ...DOWN ...")) == 0
