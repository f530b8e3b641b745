"""The table of calls follows the headers; what the shell could not take stops the build."""
import os
import subprocess
import sys

import pytest

GENERATOR = os.path.join(os.path.dirname(os.path.abspath(__file__)), "generate_calls.py")
TYPES = """
typedef uint32_t adp_intf_t;
typedef int32_t adp_status_t;
typedef struct { uint8_t *frame; uint32_t length; } with_frame_t;
typedef struct { uint32_t *words; } with_address_t;
"""


def generate(tmp_path, declarations):
    (tmp_path / "adp").mkdir(exist_ok=True)
    (tmp_path / "adp" / "adp.h").write_text("#include <adp/more.h>\n")
    (tmp_path / "adp" / "more.h").write_text(TYPES + declarations)
    output = tmp_path / "calls.cpp"
    ended = subprocess.run([sys.executable, "-B", GENERATOR, str(tmp_path), str(output)], capture_output=True,
                           text=True)
    return ended, output.read_text() if output.exists() else ""


def test_a_new_call_appears_with_its_text(tmp_path):
    ended, text = generate(tmp_path, "/** Does something new. */\nadp_status_t adp_new(adp_intf_t intf, uint32_t *n);")
    assert ended.returncode == 0, ended.stderr
    assert '{"adp_new", ResultKind::kStatus' in text
    assert '"Does something new."' in text
    assert "::adp_new(value<adp_intf_t>(arguments[0]), address<uint32_t>(arguments[1]))" in text


@pytest.mark.parametrize("declaration, reason", {
    "int32_t adp_bad(uint32_t **x);": "adp_bad: parameter x is a pointer to a pointer",
    "int32_t adp_bad(const with_address_t *x);": "adp_bad: parameter x is a record that holds addresses",
    "int32_t adp_bad(with_frame_t x);": "adp_bad: parameter x is a record that holds addresses",
    "int32_t adp_bad(char *x);": "adp_bad: parameter x is text that the call writes",
    "int32_t adp_bad(uint32_t *n, ADP_COUNT(n) uint32_t *x);": "the extent of x is only known after the call",
    "int32_t adp_bad(const uint8_t *mac);": "adp_bad: parameter mac addresses bytes, but not said how many",
    "int32_t adp_bad(const char *format, ...);": "adp_bad: takes a variable number of arguments",
    "uint32_t *adp_bad(void);": "adp_bad: returns uint32_t *",
    "int32_t adp_bad(something_t x);": "unknown type 'something_t'",
}.items())
def test_what_the_shell_cannot_take_stops_the_build(tmp_path, declaration, reason):
    ended, text = generate(tmp_path, declaration)
    assert ended.returncode != 0
    assert reason in ended.stderr
    assert text == ""
