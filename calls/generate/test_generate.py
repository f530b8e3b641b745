"""The generator on small headers: what it writes, what it rejects, and that equal files are not written again."""
import os
import re

import pytest

import emit_calls
import emit_driver
import emit_status
import emit_table
import generate
import interface
import model
import sections

TYPES = """
typedef uint32_t adp_ports_t[8];
typedef struct { uint32_t flags; uint8_t mac[6]; uint16_t vid; adp_ports_t ports; } entry_t;
typedef struct { entry_t entry; uint64_t count; } outer_t;
typedef struct link { struct link *next; } link_t;
"""
DRIVER = """
/*
 * Users: of the ports
 */

/** Creates. */
int32_t user_create(uint32_t unit, const adp_ports_t ports, const outer_t *outer);
/** Lists. */
int32_t user_list(uint32_t unit, int32_t size, ADP_COUNT(size) uint16_t *list);
"""
STATUS = """
enum class Status : int32_t {
    kOk = 0,           ///< done
    kNoRoom = -2,      ///< there is no "room"
    kLongerName = -30  ///< the last
};
"""
SERVICES = """
extern uintptr_t queue;
/** Logs. */
int32_t log_text(int32_t level, const char *format, ...);
/** Local. */
const char *onu_mac2str(const uint8_t mac[6]);
"""


@pytest.fixture(name="headers")
def fixture_headers(tmp_path):
    def write(driver=DRIVER, services=SERVICES, types=TYPES):
        (tmp_path / "adp").mkdir(exist_ok=True)
        for name, text in (("adp/types.h", types), ("adp/adp.h", "#include <adp/types.h>\n"), ("driver.h", driver),
                           ("services.h", services), ("status.h", STATUS)):
            (tmp_path / name).write_text(text, encoding="utf-8")
        return str(tmp_path / "adp/types.h"), [["driver", str(tmp_path / "driver.h")],
                                               ["services", str(tmp_path / "services.h")]]
    return write


def read(headers, **texts):
    return model.read(*headers(**texts))


def test_functions_are_sorted_and_know_their_library(headers):
    calls = read(headers)
    assert [function.name for function in calls.functions] == ["log_text", "onu_mac2str", "user_create", "user_list"]
    assert calls.library_of["user_create"] == "driver"
    assert calls.library_of["log_text"] == "services"
    assert calls.data == {"driver": [], "services": ["queue"]}


def test_structs_come_innermost_first(headers):
    assert [struct.name for struct in read(headers).structs] == ["entry_t", "outer_t"]


def test_table_rows_carry_direction_extent_and_counter(headers):
    table = emit_table.call_table(read(headers))
    assert '{"ports", {Kind::kU32, 4, true}, Direction::kIn, Shape::kPlain, 8, kNotCounted}' in table
    assert '{"outer", {Kind::kStruct, sizeof(outer_t), false, false, &kStruct_outer_t}, Direction::kIn, Shape::kPlain, 1, ' in table
    assert '{"list", {Kind::kU16, 2}, Direction::kOut, Shape::kPlain, 0, 1}' in table
    assert '{"format", {Kind::kChar, 1}, Direction::kIn, Shape::kText, 1, kNotCounted}' in table
    assert "offsetof(entry_t, ports)" in table


def test_stubs_leave_out_the_variadic_call(headers):
    calls = read(headers)
    stubs = emit_calls.stubs(calls, "driver")
    assert "int32_t user_list(uint32_t unit, int32_t size, uint16_t *list) {" in stubs
    assert "{&unit, &size, &list}" in stubs
    assert "log_text" not in emit_calls.stubs(calls, "services")


def test_export_map_names_functions_and_data_of_the_library(headers):
    text = emit_calls.version_script(read(headers), "services")
    names = [line.strip() for line in text.splitlines() if line.startswith("        ")]
    assert names == ["log_text;", "onu_mac2str;", "queue;", "*;"]


def test_word_blocks_travel_as_words(headers):
    calls = read(headers, driver="/** Reads. */ int32_t get_vlan_info(uint32_t vid, uint8_t record[64]);")
    assert '{"record", {Kind::kU32, 4}, Direction::kOut, Shape::kPlain, 16, kNotCounted}' in \
        emit_table.call_table(calls)


@pytest.mark.parametrize("changed", [
    DRIVER.replace("int32_t size", "uint32_t size"),
    DRIVER.replace("const outer_t", "outer_t"),
    DRIVER.replace("uint16_t *list", "uint32_t *list"),
    DRIVER.replace("user_list", "user_lists"),
    DRIVER.replace("uint32_t unit, int32_t size", "int32_t size, uint32_t unit"),
])
def test_checksum_tells_interfaces_apart(headers, changed):
    assert read(headers, driver=changed).checksum() != read(headers).checksum()


def test_checksum_sees_a_struct_change(headers):
    assert read(headers, types=TYPES.replace("uint64_t count", "uint32_t count")).checksum() != \
        read(headers).checksum()


def test_checksum_ignores_comments(headers):
    assert read(headers, driver=DRIVER.replace("Creates", "Makes")).checksum() == read(headers).checksum()


@pytest.mark.parametrize("declaration, sentence", [
    ("int32_t f(ADP_TYPE(uint64_t) void *value);", "has a mark that only exported calls take"),
    ("int32_t f(ADP_PORTS uintptr_t ports);", "has a mark that only exported calls take"),
    ("int32_t f(void *block);", "needs an ADP_COUNT of its bytes"),
    ("int32_t f(uint32_t *n, ADP_COUNT(n) uint8_t *block);", "counted by 'n', which is not a number"),
    ("int32_t f(uint8_t **blocks);", "of a type that no message can carry"),
    ("int32_t f(const link_t *head);", "holds an address ('next')"),
    ("const char *f(void);", "a text result can only come from a local call"),
    ("uint64_t f(void);", "cannot carry a result of type 'uint64_t'"),
])
def test_what_no_message_can_carry_is_rejected(headers, declaration, sentence):
    with pytest.raises(interface.HeaderError) as rejected:
        read(headers, driver=declaration)
    assert sentence in str(rejected.value)


def run(headers, folder, **texts):
    types, libraries = headers(**texts)
    arguments = ["--output", str(folder), "--include", os.path.dirname(os.path.dirname(types))]
    for name, header in libraries:
        arguments += ["--library", name, header]
    return generate.main(arguments + ["--status", os.path.join(os.path.dirname(libraries[0][1]), "status.h")])


RESULTS = """
#define ADP_OK 0 /**< success */
#define ADP_E_FIRST 101 /**< the first */
#define ADP_OTHER 7 /**< no result */
"""


@pytest.fixture(name="results")
def fixture_results(tmp_path):
    def write(library=RESULTS, device=STATUS):
        (tmp_path / "types.h").write_text(library, encoding="utf-8")
        (tmp_path / "status.h").write_text(device, encoding="utf-8")
        return str(tmp_path / "types.h"), str(tmp_path / "status.h")
    return write


def test_the_table_of_results_has_the_librarys_codes_and_the_devices_refusals(results):
    assert re.findall(r"^    (\{.*\}),$", emit_status.table(*results()), flags=re.M) == [
        '{0, "ADP_OK", "success"}', '{101, "ADP_E_FIRST", "the first"}',
        '{-2, "no_room", "there is no \\"room\\""}', '{-30, "longer_name", "the last"}']


@pytest.mark.parametrize("wrong, sentence", [
    ({"device": STATUS.replace('///< there is no "room"', "")}, "no_room has no remark"),
    ({"library": RESULTS.replace("/**< the first */", "")}, "ADP_E_FIRST has no remark"),
    ({"device": STATUS.replace("-30", "-2")}, "longer_name = -2: there is another one"),
    ({"device": ""}, "no enumerators"),
])
def test_a_result_without_a_text_or_a_number_of_its_own_is_rejected(results, wrong, sentence):
    with pytest.raises(interface.HeaderError, match=sentence):
        emit_status.table(*results(**wrong))


def test_equal_files_are_not_written_again(headers, tmp_path):
    folder = tmp_path / "out"
    assert run(headers, folder) == 0
    names = sorted(os.listdir(folder))
    assert names == ["call_id.h", "call_table.cpp", "driver.map", "driver_calls.cpp", "driver_calls.h",
                     "driver_stubs.cpp", "exported_calls.cpp", "exported_stubs.cpp", "forward.cpp", "services.map",
                     "services_stubs.cpp", "status_table.c"]
    for name in names:
        os.utime(folder / name, (1, 1))
    assert run(headers, folder) == 0
    assert all(os.stat(folder / name).st_mtime == 1 for name in names)
    assert run(headers, folder, driver=DRIVER.replace("user_list", "user_lists")) == 0
    assert os.stat(folder / "driver_stubs.cpp").st_mtime != 1
    assert os.stat(folder / "services_stubs.cpp").st_mtime == 1


@pytest.mark.parametrize("driver, sentence", [
    ("int32_t f(void);", "f stands under no heading"),
    (DRIVER + "/*\n * More. Text.\n */\n", "heading 'More' has no calls"),
    (DRIVER + "/*\n * More\n */\nint32_t f(void);\n/*\n * Users (again)\n */\n", "two headings 'Users'"),
    ("/*\n * Users\n */\nuint32_t f(void);", "f: a device answers with a status"),
])
def test_calls_that_no_section_can_have_are_rejected(headers, tmp_path, capsys, driver, sentence):
    assert run(headers, tmp_path / "out", driver=driver) == 1
    assert capsys.readouterr().err == f"generate.py: {sentence}\n"


SECTIONS = DRIVER + """
/*
 * Double-wide tags, each with its
 * own meaning: 802.1Q/D. (See there.)
 */
/** Reads. */
int32_t tag_get(int32_t handle, uint32_t unit, uintptr_t vid, entry_t entry, uint32_t *tag, outer_t *outer);
/* A plain comment is no heading. */
/** Finds. */
int32_t tag_find(uint32_t unit, int32_t port, uintptr_t zero, const entry_t *entry, const uint8_t key[8]);
/** Fills. */
int32_t tag_fill(adp_ports_t ports, const adp_ports_t other, const char *name, uint32_t *unit);
"""


@pytest.fixture(name="driver")
def fixture_driver(headers):
    """Header and source of the driver calls as lines without indentation."""
    calls = read(headers, driver=SECTIONS)
    found = sections.read(calls)
    return [[line.strip() for line in emit(calls, found).splitlines()] for emit in (emit_driver.header,
                                                                                   emit_driver.source)]


def body_of(function, source):
    start = next(i for i, line in enumerate(source) if line.startswith(f"int32_t DriverCalls::{function}("))
    return source[start + 1:source.index("}", source.index("", start) - 1)]


def test_each_heading_makes_a_section_and_the_services_are_one(headers):
    found = [(section.title, section.name, section.class_name, [function.name for function in section.functions])
             for section in sections.read(read(headers, driver=SECTIONS))]
    assert found == [
        ("Users", "users", "UsersCalls", ["user_create", "user_list"]),
        ("Double-wide tags", "double_wide_tags", "DoubleWideTagsCalls", ["tag_get", "tag_find", "tag_fill"]),
        ("Services", "services", "ServicesCalls", ["log_text"])]


def test_a_section_gets_references_numbers_and_no_constant_words(driver):
    header, _ = driver
    assert "virtual chip::Status tag_get(uint32_t vid, const entry_t &entry, uint32_t &tag, outer_t &outer);" in header
    assert "virtual chip::Status tag_find(int32_t port, const entry_t &entry, const uint8_t key[8]);" in header
    assert ("virtual chip::Status tag_fill(uint32_t ports[8], const uint32_t other[8], const char *name, "
            "uint32_t &unit);") in header
    assert "virtual chip::Status user_list(int32_t size, uint16_t *list);" in header


def test_the_dispatch_refuses_constant_words_before_null_addresses(driver):
    _, source = driver
    assert body_of("tag_get", source) == [
        "if (handle != 0 || unit != 0) {", "return chip::code(chip::Status::kBadUnit);", "}",
        "if (tag == nullptr || outer == nullptr) {", "return chip::code(chip::Status::kBadArgument);", "}",
        "return chip::code(sections_.double_wide_tags->tag_get(static_cast<uint32_t>(vid), entry, *tag, *outer));"]
    assert body_of("tag_find", source) == [
        "if (unit != 0 || static_cast<uint32_t>(zero) != 0) {", "return chip::code(chip::Status::kBadUnit);", "}",
        "if (entry == nullptr || key == nullptr) {", "return chip::code(chip::Status::kBadArgument);", "}",
        "return chip::code(sections_.double_wide_tags->tag_find(port, *entry, key));"]


def test_only_texts_and_port_sets_that_are_read_may_be_null(driver):
    _, source = driver
    assert body_of("tag_fill", source)[0] == "if (ports == nullptr || unit == nullptr) {"


def test_what_a_section_does_not_override_is_not_supported(driver):
    _, source = driver
    assert ("chip::Status DoubleWideTagsCalls::tag_find(int32_t, const entry_t &, const uint8_t *) "
            "{ return chip::Status::kNotSupported; }") in source
    assert ("int32_t ServicesCalls::log_line(int32_t, const char *) "
            "{ return chip::code(chip::Status::kNotSupported); }") in source


def test_services_get_text_instead_of_a_format_and_all_else_as_it_is(driver):
    header, source = driver
    assert "virtual int32_t log_line(int32_t level, const char *text);" in header
    assert body_of("log_line", source) == ["return sections_.services->log_line(level, text);"]
    assert not any("onu_mac2str" in line for line in header)
    assert "nullptr,  // onu_mac2str" in source


def test_a_bad_header_is_a_sentence_and_a_status(headers, tmp_path, capsys):
    assert run(headers, tmp_path / "out", driver="int32_t f(void *block);") == 1
    assert capsys.readouterr().err == "generate.py: f: parameter 'block' needs an ADP_COUNT of its bytes\n"
