"""The page of driver calls is what the headers say, and each of its sections is told of in a page."""
import os
import shutil
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import emit_status  # noqa: E402  (the path has to be set first)
import reference    # noqa: E402
from interface import HeaderError  # noqa: E402

ROOT = os.path.dirname(os.path.dirname(HERE))


@pytest.fixture(name="tree")
def tree_fixture(tmp_path):
    for folder in ("platform", "include", reference.FOLDER):
        shutil.copytree(os.path.join(ROOT, folder), tmp_path / folder)
    return tmp_path


def change(tree, page, old, new):
    path = tree / reference.FOLDER / page
    text = path.read_text(encoding="utf-8")
    assert old in text
    path.write_text(text.replace(old, new), encoding="utf-8")


def test_the_committed_page_is_what_script_reference_writes():
    with open(os.path.join(ROOT, reference.FOLDER, reference.PAGE), encoding="utf-8") as page:
        assert page.read() == reference.page(ROOT), "run script/reference"


def test_a_section_without_a_page_is_an_error(tree):
    change(tree, "mirrors.md", f"{reference.PAGE}#mirroring", "mirrors.md")
    with pytest.raises(HeaderError, match="#mirroring"):
        reference.page(tree)


def test_a_link_to_an_unknown_section_is_an_error(tree):
    change(tree, "mirrors.md", f"{reference.PAGE}#mirroring", f"{reference.PAGE}#mirroring) [x]({reference.PAGE}#nowhere")
    with pytest.raises(HeaderError, match="mirrors.md links to .*#nowhere"):
        reference.page(tree)


def test_the_arguments_that_a_call_writes_are_marked(tree):
    assert "- `user_port_speed_get(unit, zero, port, *speed)`: Reads a port's speed in Mb/s.\n" in reference.page(tree)


def test_the_page_of_results_has_the_rows_of_the_table():
    with open(os.path.join(ROOT, reference.FOLDER, "results.md"), encoding="utf-8") as page:
        rows = page.read().splitlines()
    for number, name, text in emit_status.results(os.path.join(ROOT, "include", "adp", "types.h"),
                                                  os.path.join(ROOT, "vdevice", "chip", "frame", "status.h")):
        assert f"| {number} | `{name}` | {text} |" in rows
