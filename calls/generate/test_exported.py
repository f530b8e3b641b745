"""The table of exported calls follows the headers; a declaration that it cannot hold is rejected."""
import os
import sys

import pytest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import emit_calls     # noqa: E402  (the path has to be set first)
import emit_exported  # noqa: E402
import exported       # noqa: E402
import interface      # noqa: E402

TYPES = """
typedef uint32_t adp_intf_t;
typedef int32_t adp_status_t;
typedef struct { uint8_t *frame; uint32_t length; } with_frame_t;
typedef struct { uint32_t *words; } with_address_t;
"""


@pytest.fixture(name="source")
def source_fixture(tmp_path):
    """The table for a header with some declarations."""
    def source(declarations):
        (tmp_path / "adp").mkdir(exist_ok=True)
        (tmp_path / "adp" / "adp.h").write_text("#include <adp/more.h>\n", encoding="utf-8")
        (tmp_path / "adp" / "more.h").write_text(TYPES + declarations, encoding="utf-8")
        return emit_exported.source(exported.read(str(tmp_path)))
    return source


def test_a_stub_is_declared_as_its_call(source, tmp_path):
    source("int32_t adp_b(uint8_t **out, ADP_TYPE(uint64_t) void *value); void adp_a(void);")
    assert ("void adp_a(void) {\n    return forward<void>(0, nullptr);\n}\n\n"
            "int32_t adp_b(uint8_t **out, void *value) {\n    const void *const arguments[] = {&out, &value};\n"
            "    return forward<int32_t>(1, arguments);\n}\n") in emit_calls.exported_stubs(exported.read(str(tmp_path)))


def test_a_new_call_appears_with_its_text(source):
    text = source("/** Does something new. */\nadp_status_t adp_new(adp_intf_t intf, ADP_COUNT(4) uint32_t *n);")
    assert '{"adp_new", Result::kStatus, nullptr, kParams_adp_new,' in text
    assert "reinterpret_cast<void *>(&::adp_new), invoke_function<decltype(&::adp_new)>," in text
    assert '"Does something new."' in text
    assert '{"intf", {Kind::kU32, 4, false, true}, Direction::kValue, Shape::kPlain, 1, kNotCounted}' in text
    assert '{"n", {Kind::kU32, 4}, Direction::kOut, Shape::kPlain, 4, kNotCounted}' in text


def test_a_parameters_shape_follows_its_type(source):
    text = source("int32_t adp_new(const with_frame_t *in, const char *name, ADP_COUNT(8) uint8_t **out, void *block);")
    assert '{"in", {Kind::kStruct, sizeof(with_frame_t), false, false, &kStruct_with_frame_t}, Direction::kIn, ' \
        "Shape::kFrameRecord," in text
    assert '{"name", {Kind::kChar, 1}, Direction::kIn, Shape::kText,' in text
    assert '{"out", {Kind::kU8, 1}, Direction::kOut, Shape::kOutPointer,' in text
    assert '{"block", {Kind::kOpaque, 1}, Direction::kOut, Shape::kPlain, 1024, kNotCounted}' in text


def test_what_the_marks_say_is_in_the_table(source):
    text = source("int32_t adp_new(ADP_TYPE(uint64_t) void *value, ADP_PORTS uintptr_t ports, ADP_COUNT16(n) const uint8_t "
                  "*frame, ADP_COUNT_UP_TO(64, n) const void *data, uint32_t n);")
    assert '{"value", {Kind::kU64, 8}, Direction::kOut, Shape::kPlain, 1, kNotCounted}' in text
    assert '{"ports", {Kind::kWord, sizeof(uintptr_t)}, Direction::kValue, Shape::kPortsWord, 1, kNotCounted}' in text
    assert '{"frame", {Kind::kU8, 1}, Direction::kIn, Shape::kPlain, 0, 4, true, kNoLimit}' in text
    assert '{"data", {Kind::kOpaque, 1}, Direction::kIn, Shape::kPlain, 0, 4, false, 64}' in text


def test_octets_name_the_number_that_says_what_they_are(source):
    text = source("typedef struct { uint32_t other; uint32_t type; uint8_t data[64]; } FpQualify;")
    assert '{"data", {Kind::kU8, 1, false, false, nullptr, nullptr, Octets::kCondition, 1}, 64,' in text


def test_a_constant_names_its_enumeration(source):
    text = source("enum adp_kind {\n    ADP_KIND_ONE = 1, /**< the first */\n};\n#define ADP_LONE 7 /**< alone */\n")
    assert '{"ADP_KIND_ONE", 1, "the first", "adp_kind"},' in text
    assert '{"ADP_LONE", 7, "alone", ""},' in text


def test_a_structs_fields_have_their_remarks(source):
    text = source("/** A pair. */\ntypedef struct {\n    uint32_t one; /**< the first */\n    uint32_t two[2];\n} pair_t;\n")
    assert 'const char *const kRemarks_pair_t[] = {\n    "the first",\n    "",\n};' in text
    assert '{&kStruct_pair_t, "A pair.", kRemarks_pair_t},' in text


def test_a_callback_reports_its_events(source):
    text = source("typedef int32_t (*notice_t)(uint32_t port, const uint8_t mac[6]); int32_t adp_new(notice_t notice);")
    assert "int32_t report_notice_t(uint32_t port, const uint8_t mac[6]) {" in text
    assert "{&port, &mac};\n    return report_event(kCallback_notice_t, arguments);" in text


def test_a_table_has_rows_and_columns(source):
    text = source("#define N 3\nextern uint16_t plain[N + 1][2]; extern uint32_t *pointed; extern uint8_t one;")
    assert '{"plain", {Kind::kU16, 2}, 4, 2, false, &::plain,' in text
    assert '{"pointed", {Kind::kU32, 4}, 1, 1, true, &::pointed,' in text
    assert '{"one", {Kind::kU8, 1}, 1, 1, false, &::one,' in text


def test_a_constant_has_the_remark_after_it(source):
    assert '{"ADP_OK", 0, "all is well", ""}' in source("#define ADP_OK 0 /**< all is well */\n")


@pytest.mark.parametrize("declaration, reason", {
    "int32_t adp_bad(uint32_t **x);": "adp_bad: parameter 'x' is a pointer to a pointer",
    "int32_t adp_bad(const with_address_t *x);": "adp_bad: parameter 'x' is a struct that holds addresses",
    "int32_t adp_bad(with_frame_t x);": "adp_bad: parameter 'x' is a struct that holds addresses",
    "int32_t adp_bad(char *x);": "adp_bad: parameter 'x' is text that the call writes",
    "int32_t adp_bad(uint32_t *n, ADP_COUNT(n) uint32_t *x);": "adp_bad: parameter 'x': its extent is only known after the call",
    "int32_t adp_bad(const uint8_t *mac);": "adp_bad: parameter 'mac' addresses bytes, and does not say how many",
    "int32_t adp_bad(const char *format, ...);": "adp_bad: takes a variable number of arguments",
    "uint32_t *adp_bad(void);": "adp_bad: returns uint32_t *",
    "typedef uint8_t *(*bad_t)(void); int32_t adp_bad(bad_t x);": "bad_t: a callback that returns uint8_t *",
    "typedef int32_t (*cb_t)(void); typedef struct { cb_t x; } bad_t;": "bad_t.x: a callback in a struct",
    "extern uint8_t bad[1][2][3];": "table bad of type uint8_t[1][2][3]",
    "int32_t adp_bad(something_t x);": "unknown type 'something_t'",
}.items())
def test_what_the_table_cannot_hold_is_rejected(source, declaration, reason):
    with pytest.raises(interface.HeaderError) as rejected:
        source(declaration)
    assert reason in str(rejected.value)
