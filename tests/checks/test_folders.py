"""Holds the check of folders to its word: what the table does not have is found, and only that."""
import pathlib
import subprocess
import sys

import folders
import pytest

DOCUMENT = """# Architecture

## Folders

| folder | what it is | may use |
|---|---|---|
| `src/core` | numbers | nothing |
| `src/vlan`, `src/qos` | VLANs; queues | `src/core` |
| `tools` | the shell | `src` |
| `tests` | tests | everything |

## One call

| `not/a/folder` | of this table | nothing |
"""
PICTURE = '"src/vlan" -> "src/core"\n"src/core" -> "src/qos" [dir=back]\n"src/core" -> "tools" [style=invis]\n'
TREE = {
    "docs/architecture.md": DOCUMENT,
    "docs/architecture.dot": PICTURE,
    "src/core/a.h": "#include <stdint.h>\n",
    "src/vlan/a.cpp": '#include "core/a.h"\n#include "b.h"\n',
    "src/vlan/b.h": "",
    "src/qos/a.cpp": '#include "core/a.h"\n',
    "src/qos/a_test.cpp": '#include "vlan/b.h"\n',
    "tools/a.cpp": '#include "src/vlan/b.h"\n',
    "tests/a.cpp": '#include "src/vlan/b.h"\n',
}


def check(root, changes):
    for name, text in {**TREE, **changes}.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
    done = subprocess.run([sys.executable, "-B", str(pathlib.Path(folders.__file__)), str(root)], capture_output=True,
                          text=True, check=False)
    assert done.stderr == ""
    return done.returncode, done.stdout


def test_a_tree_that_keeps_to_its_table_passes(tmp_path):
    assert check(tmp_path, {}) == (0, "ok: 6 includes and 2 arrows are in the table\n")


PLANTED = {
    "sideways": ({"src/vlan/b.h": '#include "qos/c.h"\n', "src/qos/c.h": ""}, "src/vlan/b.h:1: src/vlan must not include src/qos/c.h"),
    "upwards": ({"src/core/a.h": '#include "vlan/b.h"\n'}, "src/core/a.h:1: src/core must not include src/vlan/b.h"),
    "a folder without a row": ({"src/fp/a.cpp": ""}, "src/fp/a.cpp: its folder is not in the table"),
    "a row without a folder": ({"docs/architecture.md": DOCUMENT.replace("`src/qos`", "`src/qos`, `src/fp`")},
                               "there is no folder src/fp"),
    "an arrow without a row": ({"docs/architecture.dot": PICTURE + '"src/core" -> "src/vlan"\n'}, "src/core -> src/vlan is not"),
    "no table": ({"docs/architecture.md": "# Architecture\n"}, "its folder is not in the table"),
    "no arrow": ({"docs/architecture.dot": ""}, "no include or no arrow was found"),
}


@pytest.mark.parametrize(("changes", "finding"), PLANTED.values(), ids=PLANTED.keys())
def test_what_the_table_does_not_have_is_found(tmp_path, changes, finding):
    status, text = check(tmp_path, changes)
    assert status == 1
    assert finding in text
