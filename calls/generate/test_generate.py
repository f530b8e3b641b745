"""The generator on small headers: what it writes, what it rejects, and that equal files are not written again."""
import os

import pytest

import emit_calls
import emit_table
import generate
import interface
import model

TYPES = """
typedef uint32_t adp_ports_t[8];
typedef struct { uint32_t flags; uint8_t mac[6]; uint16_t vid; adp_ports_t ports; } entry_t;
typedef struct { entry_t entry; uint64_t count; } outer_t;
typedef struct link { struct link *next; } link_t;
"""
DRIVER = """
/** Creates. */
int32_t user_create(uint32_t unit, const adp_ports_t ports, const outer_t *outer);
/** Lists. */
int32_t user_list(uint32_t unit, int32_t size, ADP_COUNT(size) uint16_t *list);
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
                           ("services.h", services)):
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


def test_device_gets_text_instead_of_a_format_and_no_local_calls(headers):
    header = emit_calls.driver_calls_header(read(headers))
    assert "virtual int32_t log_line(int32_t level, const char *text);" in header
    assert "onu_mac2str" not in header
    assert "nullptr,  // onu_mac2str" in emit_calls.driver_calls_source(read(headers))


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
    return generate.main(arguments)


def test_equal_files_are_not_written_again(headers, tmp_path):
    folder = tmp_path / "out"
    assert run(headers, folder) == 0
    names = sorted(os.listdir(folder))
    assert names == ["call_id.h", "call_table.cpp", "driver.map", "driver_calls.cpp", "driver_calls.h",
                     "driver_stubs.cpp", "exported_calls.cpp", "forward.cpp", "services.map", "services_stubs.cpp"]
    for name in names:
        os.utime(folder / name, (1, 1))
    assert run(headers, folder) == 0
    assert all(os.stat(folder / name).st_mtime == 1 for name in names)
    assert run(headers, folder, driver=DRIVER.replace("user_list", "user_lists")) == 0
    assert os.stat(folder / "driver_stubs.cpp").st_mtime != 1
    assert os.stat(folder / "services_stubs.cpp").st_mtime == 1


def test_a_bad_header_is_a_sentence_and_a_status(headers, tmp_path, capsys):
    assert run(headers, tmp_path / "out", driver="int32_t f(void *block);") == 1
    assert capsys.readouterr().err == "generate.py: f: parameter 'block' needs an ADP_COUNT of its bytes\n"
