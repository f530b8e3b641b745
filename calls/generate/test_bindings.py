"""The committed bindings are what the headers say, and what Python cannot have a name for is refused."""
import os
import re
import shutil
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)

import bindings                       # noqa: E402  (the path has to be set first)
from interface import HeaderError     # noqa: E402

ROOT = os.path.dirname(os.path.dirname(HERE))


@pytest.fixture(name="tree")
def tree_fixture(tmp_path):
    shutil.copytree(os.path.join(ROOT, "include"), tmp_path / "include")
    shutil.copytree(os.path.join(ROOT, "vdevice/chip/frame"), tmp_path / "vdevice/chip/frame")
    return tmp_path


def add(tree, header, declaration, before="\nADP_END_DECLS"):
    path = tree / "include/adp" / header
    text = path.read_text(encoding="utf-8")
    assert before in text
    path.write_text(text.replace(before, f"\n{declaration}\n{before}"), encoding="utf-8")


def test_the_committed_modules_are_what_script_reference_writes():
    folder = os.path.join(ROOT, bindings.FOLDER)
    committed = {}
    for name in sorted(os.listdir(folder)):
        if name.endswith(".py"):
            with open(os.path.join(folder, name), encoding="utf-8") as source:
                committed[name] = source.read()
    assert committed == bindings.files(ROOT), "run script/reference"


def test_a_new_call_has_a_function(tree):
    add(tree, "vlan.h", "/**\n * Counts.\n *\n * @param vid  VLAN id\n * @param[out] seen  a number\n * @return 0\n */\n"
                        "adp_status_t adp_vlan_seen(uint32_t vid, uint64_t *seen);")
    text = bindings.files(tree)["vlan.py"]
    assert 'Call("adp_vlan_seen", Status, Value("vid", c_uint32), Out("seen", c_uint64))' in text
    assert re.search(r'def vlan_seen\(vid: int\) -> int:\n    """Counts\.\n\n    vid: VLAN id\n    seen: a number', text)


def test_a_prefix_stays_where_the_rest_is_another_name():
    assert "def fp_find_data_by_submodetype(" in bindings.files(ROOT)["fp.py"]
    assert "def adp_fp_find_data_by_submodetype(" in bindings.files(ROOT)["fp.py"]


@pytest.mark.parametrize("declaration, complaint", [
    ("adp_status_t adp_import(void);", "'import' is no name"),
    ("adp_status_t adp_vlan_x(uint32_t class);", "'class' is no name"),
    ("adp_status_t __adp_other(void);", "has to say its name"),
    ("adp_status_t adp_map_ports(void);", "map_ports: another name"),
    ("adp_status_t adp_StgState(void);", "StgState: another name"),
    ("adp_status_t adp_lab(void);", "lab: another name"),
])
def test_a_name_that_python_cannot_have_is_an_error(tree, declaration, complaint):
    add(tree, "vlan.h", f"/** Does. */\n{declaration}")
    with pytest.raises(HeaderError, match=complaint):
        bindings.files(tree)


def test_two_results_of_one_name_and_other_fields_are_an_error(tree):
    add(tree, "agg.h", "/** Does. @param[out] a  a\n * @param[out] b  b */\n"
                       "adp_status_t GET_AGG_STATES(uint32_t *a, uint32_t *b);\n"
                       "/** Does. @param[out] a  a\n * @param[out] c  c */\n"
                       "adp_status_t adp_get_agg_states(uint32_t *a, uint32_t *c);")
    with pytest.raises(HeaderError, match="GetAggStatesResult of other fields"):
        bindings.files(tree)
