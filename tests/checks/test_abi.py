"""A changed interface is seen: each planted change of a small library fails the comparison, and its name is said."""
import os
import pathlib
import subprocess

import pytest

ROOT = pathlib.Path(__file__).parents[2]

SOURCE = """\
#include <stdint.h>
#define EXPORTED __attribute__((visibility("default")))
struct inner { uint16_t first; uint16_t second; };
struct record { uint32_t kind; struct inner *inner; };
static uint32_t count;
EXPORTED uint32_t table[8];
EXPORTED int32_t given(uint32_t number, uint32_t *result) { *result = number; return 0; }
EXPORTED int32_t filled(struct record *record) { record->kind = table[count++]; return 0; }
"""


@pytest.fixture
def compare(tmp_path):
    """Compiles a source and runs script/abi on it: its exit status and what it printed."""
    def compare_with_description(source, *options, compiled=("-g", "-O2")):
        library = tmp_path / "libsmall.so"
        (tmp_path / "include").mkdir(exist_ok=True)
        subprocess.run(["gcc", *compiled, "-shared", "-fPIC", "-fvisibility=hidden", "-x", "c", "-", "-o", library],
                       input=source, text=True, check=True, cwd=tmp_path)
        run = subprocess.run([ROOT / "script/abi", *options, library], text=True, check=False, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, env={**os.environ, "ADP_ABI_FOLDER": str(tmp_path)})
        return run.returncode, run.stdout

    assert compare_with_description(SOURCE, "--update")[0] == 0
    return compare_with_description


def test_the_same_interface_is_as_described(compare):
    inside = SOURCE.replace("static uint32_t count;", "static uint64_t count;")
    assert inside != SOURCE
    for source in SOURCE, inside:
        status, said = compare(source)
        assert status == 0 and "as described: 2 functions, 1 tables" in said


@pytest.mark.parametrize("what, old, new, name", [
    ("a parameter's type", "given(uint32_t number", "given(uint16_t number", "uint16_t"),
    ("a parameter more", "given(uint32_t number", "given(uint32_t more, uint32_t number", "given"),
    ("a result's type", "EXPORTED int32_t given", "EXPORTED int8_t given", "int8_t"),
    ("an export gone", "EXPORTED int32_t filled", "int32_t filled", "filled"),
    ("an export more", "static uint32_t count", "EXPORTED uint32_t count", "count"),
    ("a field moved", "uint32_t kind; struct inner *inner;", "struct inner *inner; uint32_t kind;", "'uint32_t kind' offset"),
    ("a field behind a pointer moved", "uint16_t first; uint16_t second;", "uint16_t second; uint16_t first;", "'uint16_t first' offset"),
    ("a table's size", "table[8]", "table[9]", "table"),
])  # fmt: skip
def test_a_change_is_seen(compare, what, old, new, name):
    changed = SOURCE.replace(old, new)
    assert changed != SOURCE
    status, said = compare(changed)
    assert status == 1 and name in said and "script/abi --update" in said, what


def test_a_library_without_types_is_not_as_described(compare):
    status, said = compare(SOURCE, compiled=("-O2",))
    assert status == 1 and "needs debugging data" in said


def test_a_machine_without_description_is_said(compare, tmp_path):
    for description in tmp_path.glob("*.abi"):
        description.unlink()
    status, said = compare(SOURCE)
    assert status == 1 and "there is no description" in said
