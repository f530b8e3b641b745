"""The generated documents: pages without a warning, complete, and a completion that completes."""
import glob
import os
import re
import shutil
import subprocess

import exported
import manual
import pytest

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PROGRAMS, VERSION = os.environ["PROGRAMS"], os.environ["VERSION"]
COMPLETE = """source "$1"; COMP_WORDS=("${@:2}"); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
"_${COMP_WORDS[0]}"; printf '%s\\n' "${COMPREPLY[@]}" """


@pytest.fixture(name="folder", scope="module")
def folder_fixture(tmp_path_factory):
    folder = tmp_path_factory.mktemp("manual")
    assert manual.main(["--output", str(folder), "--include", os.path.join(ROOT, "include"), "--programs", PROGRAMS,
                        "--version", VERSION]) == 0
    return folder


def shown(page):
    """A page as a reader sees it, on one line."""
    done = subprocess.run(["groff", "-man", "-Tascii", "-P-cbou", page], capture_output=True, text=True, check=True)
    return " ".join(done.stdout.split())


def test_no_page_has_a_warning(folder):
    pages = sorted(glob.glob(f"{folder}/man?/*"))
    done = subprocess.run(["groff", "-ww", "-b", "-man", "-Tutf8", "-z", *pages], capture_output=True, text=True,
                          check=False)
    assert (done.returncode, done.stderr) == (0, "")


def test_every_exported_call_has_a_page(folder):
    with open(os.path.join(ROOT, "platform", "symbols", "exported-functions.txt"), encoding="utf-8") as names:
        calls = {name for name in names.read().split("\n") if name and not name.startswith("#")}
    assert len(calls) > 200
    assert calls <= {os.path.basename(page)[:-2] for page in glob.glob(f"{folder}/man3/*.3")}


def test_a_page_of_a_call_has_what_its_header_says(folder):
    page = shown(folder / "man3" / "adp_intf_learn_get.3")
    for text in ("adp_intf_learn_get - Reads an interface's address learning", "#include <adp/adp.h>",
                 "adp_status_t adp_intf_learn_get(adp_intf_t intf, uint32_t *mode);",
                 "intf user port or aggregation interface",
                 "mode [out] written by the driver, enum adp_learn_mode",
                 "the driver's result; 201 for another type, -1 for a group outside 1..8",
                 "ADP_LEARN_OFF = 4 addresses are not learned, frames go on", "Ports: the map between logical interface numbers"):
        assert text in page


@pytest.mark.parametrize("name, section, commands", [
    ("vdeviced", 8, ()), ("adp-switchd", 8, ()), ("vdevctl", 1, ()), ("adpsh", 1, ()),
    ("adptrace", 1, ("record", "show", "stat", "replay", "diff", "reduce")),
    ("adp-lab", 1, ("up", "ps", "exec", "capture", "graph", "down")), ("adp-panel", 1, ())])
def test_the_page_of_a_program_has_every_option_of_its_help(folder, name, section, commands):
    page = shown(folder / f"man{section}" / f"{name}.{section}")
    helps = [manual.output_of(PROGRAMS, name, *words, "--help") for words in ((), *((word,) for word in commands))]
    options = re.findall(r"^ {2,8}.*?(--[\w-]+)", "\n".join(helps), re.M)
    assert len(options) > 5
    for option in options:
        assert option in page
    assert "/nonexistent" not in page


def test_the_page_of_vdevctl_has_the_commands_of_the_device(folder):
    page = shown(folder / "man1" / "vdevctl.1")
    assert "vlans [VLANS] the VLAN table --vlan VLANS rows of these VLANs: 10 or 1-99,200" in page


@pytest.mark.parametrize("name", ["vdeviced", "adp-switchd", "vdevctl", "adptrace", "adpsh"])
def test_a_program_says_its_version(name):
    assert manual.output_of(PROGRAMS, name, "--version").startswith(f"{name} {VERSION}\n")


@pytest.mark.parametrize("words, replies", [
    (["vdeviced", "--ch"], ["--check"]),
    (["vdeviced", "--user-ports", "="], [""]),
    (["vdeviced", "--config", "=", "CMakeL"], ["CMakeLists.txt"]),
    (["adp-switchd", "stati"], ["statistics"]),
    (["vdevctl", "trans"], ["translations"]),
    (["vdevctl", "--run-dir", "=", "docs", "--json", "macs", "--vl"], ["--vlan"]),
    (["vdevctl", "macs", "--non"], [""]),
    (["vdevctl", "--run-dir", "plat"], ["platform"]),
    (["vdevctl", "capture", "CMakeL"], ["CMakeLists.txt"]),
    (["vdevctl", "ports", "CMakeL"], [""]),
    (["adpsh", "--map", "adp_vlan_createE"], ["adp_vlan_createEx"]),
    (["adpsh", "wait"], ["wait_frame"]),
    (["adp-panel", "--re"], ["--read-only", "--recording"]),
    (["adp-lab", "--lab", "=", "x", "ca"], ["capture", "cable"]),
    (["adp-lab", "up", "CMakeL"], ["CMakeLists.txt"]),
    (["adp-lab", "plu"], ["plug"]),
    (["adp-lab", "--lab", "=", "x", "caba"], [""]),
])
def test_bash_completes_command_lines(folder, words, replies):
    done = subprocess.run(["bash", "-c", COMPLETE, "bash", str(folder / "completions" / words[0]), *words], cwd=ROOT,
                          capture_output=True, text=True, check=True)
    assert (done.stdout.split("\n")[:-1], done.stderr) == (replies, "")


def lacking(tmp_path, header, old, new):
    """What manual.py says of headers in which a text is replaced."""
    include = tmp_path / "include"
    shutil.copytree(os.path.join(ROOT, "include"), include)
    path = include / "adp" / header
    text = path.read_text(encoding="utf-8")
    assert old in text
    path.write_text(text.replace(old, new, 1), encoding="utf-8")
    with pytest.raises(manual.HeaderError) as error:
        manual.read_calls(str(include))
    return str(error.value)


@pytest.mark.parametrize("header, old, new, complaint", [
    ("vlan.h", " * @param vid  VLAN id, low 16 bits used\n", "", "adp_vlan_create: no '@param vid'"),
    ("vlan.h", "VLAN id, low 16 bits used", "what is created", "adp_vlan_create: '@param vid what is created' has neither"),
    ("vlan.h", "@param[out] vid ", "@param vid ", "adp_vlan_default_get: '@param vid' instead of '@param[out] vid'"),
    ("vlan.h", " * @return the driver's result\n", "", "adp_vlan_create: no @return"),
    ("port.h", "= 5,         /**< flow control (IEEE 802.3 annex 31B): 0 off, non-zero on */", "= 5,",
     "ADP_ATTR_PAUSE: no remark"),
])
def test_a_call_that_lacks_something_is_named(tmp_path, header, old, new, complaint):
    assert complaint in lacking(tmp_path, header, old, new)


def reference(tmp_path, include):
    """Runs doxygen on headers; what it complains about."""
    with open(os.path.join(ROOT, "docs", "Doxyfile.in"), encoding="utf-8") as template:
        text = template.read()
    for name, value in (("PROJECT_VERSION", VERSION), ("PROJECT_SOURCE_DIR", ROOT), ("PROJECT_BINARY_DIR", tmp_path)):
        text = text.replace(f"@{name}@", str(value))
    text = text.replace(f"{ROOT}/include", str(include))
    done = subprocess.run(["doxygen", "-"], input=text, capture_output=True, text=True, check=False, cwd=tmp_path)
    assert bool(done.stderr) == (done.returncode != 0)
    return done.stderr


def test_the_api_reference_has_every_call_and_no_warning(tmp_path):
    assert reference(tmp_path, os.path.join(ROOT, "include")) == ""
    pages = "".join((tmp_path / "html" / page).read_text(encoding="utf-8")
                    for page in os.listdir(tmp_path / "html") if page.endswith("_8h.html"))
    for function in exported.read(os.path.join(ROOT, "include")).functions:
        assert f"{function.name}()</h2>" in pages, function.name


def test_the_api_reference_complains_about_a_constant_without_a_remark(tmp_path):
    shutil.copytree(os.path.join(ROOT, "include"), tmp_path / "include")
    (tmp_path / "include" / "adp" / "gpio.h").write_text("/** @file */\n#define ADP_BARE 1\n", encoding="utf-8")
    assert "ADP_BARE" in reference(tmp_path, tmp_path / "include")
