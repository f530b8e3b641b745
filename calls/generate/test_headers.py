"""The header reader on small headers: what it reads, and what it rejects."""
import os
import sys

import pytest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import headers    # noqa: E402  (the path has to be set first)
import interface  # noqa: E402

PORTS = "typedef uint32_t set_t[8];"


@pytest.fixture(name="read")
def read_fixture(tmp_path):
    """Reads a header given as text."""
    def read(*texts):
        paths = []
        for number, text in enumerate(texts):
            paths.append(tmp_path / f"h{number}.h")
            paths[-1].write_text(text, encoding="utf-8")
        return headers.read(paths)
    return read


@pytest.fixture(name="only")
def only_fixture(read):
    """The one function that a text declares."""
    def only(text):
        functions = read(text).functions
        assert len(functions) == 1
        return functions[0]
    return only


def shape(param):
    return param.name, param.kind, param.direction, param.extent


class TestParameters:
    def test_scalars_are_values(self, only):
        function = only("int32_t f(uint32_t a, int32_t b, uint8_t c, uint64_t d, uintptr_t e);")
        assert [shape(p) for p in function.params] == [
            ("a", "u32", "value", 1), ("b", "i32", "value", 1), ("c", "u8", "value", 1), ("d", "u64", "value", 1),
            ("e", "word", "value", 1)]
        assert not any(p.pointer for p in function.params)

    def test_a_pointer_to_const_is_read_and_another_written(self, only):
        function = only("int32_t f(const uint32_t *a, uint32_t *b, ADP_INOUT uint32_t *c);")
        assert [(p.name, p.direction) for p in function.params] == [("a", "in"), ("b", "out"), ("c", "inout")]
        assert all(p.pointer and p.pointer_depth == 1 and p.extent == 1 for p in function.params)

    def test_an_array_is_a_pointer_with_an_extent(self, only):
        function = only("int32_t f(const uint8_t key[8], uint8_t mac[6]);")
        assert [shape(p) for p in function.params] == [("key", "u8", "in", 8), ("mac", "u8", "out", 6)]

    def test_an_extent_may_be_a_constant(self, only):
        function = only("#define N 6u /**< bytes */\nint32_t f(const uint8_t mac[N], ADP_COUNT(N) uint8_t *out);")
        assert [p.extent for p in function.params] == [6, 6]

    def test_a_count_names_a_parameter_or_is_a_number(self, only):
        function = only("int32_t f(ADP_COUNT(n) uint16_t *list, uint32_t n, ADP_COUNT(64) void *record);")
        assert [shape(p) for p in function.params] == [
            ("list", "u16", "out", "n"), ("n", "u32", "value", 1), ("record", "void", "out", 64)]

    def test_marks_stand_in_either_order(self, only):
        for marks in ("ADP_INOUT ADP_COUNT(n)", "ADP_COUNT(n) ADP_INOUT"):
            function = only(f"int32_t f({marks} uint32_t *list, uint32_t n);")
            assert shape(function.params[0]) == ("list", "u32", "inout", "n")

    def test_a_count_can_be_cut_or_limited(self, only):
        function = only("#define N 64\nint32_t f(ADP_COUNT16(n) uint8_t *a, ADP_COUNT_UP_TO(N, n) const void *b, uint32_t n);")
        assert [(p.extent, p.counts_16_bits, p.most) for p in function.params[:2]] == [("n", True, 0), ("n", False, 64)]

    def test_a_pointer_to_void_can_be_given_a_type(self, only):
        param = only("int32_t f(ADP_TYPE(uint64_t) void *value);").params[0]
        assert (param.type, param.pointed, param.kind, param.extent, param.direction) == ("void", "uint64_t", "u64", 1, "out")

    def test_a_word_can_be_the_address_of_ports(self, only):
        function = only("int32_t f(ADP_PORTS uintptr_t ports, uintptr_t other);")
        assert [(p.kind, p.is_ports_word) for p in function.params] == [("word", True), ("word", False)]

    def test_text(self, only):
        function = only("int32_t f(const char *text, char *buffer, const char *const *list);")
        assert [p.is_text for p in function.params] == [True, False, False]

    def test_a_pointer_to_a_pointer_keeps_its_depth(self, only):
        function = only("int32_t f(uint8_t **frame);")
        assert (function.params[0].pointer_depth, function.params[0].direction) == (2, "out")

    def test_a_port_set_is_a_pointer_to_words(self, only):
        function = only(PORTS + "int32_t f(const set_t in, set_t out, ADP_INOUT set_t both);")
        assert [shape(p) for p in function.params] == [
            ("in", "u32", "in", 8), ("out", "u32", "out", 8), ("both", "u32", "inout", 8)]
        assert all(p.is_ports and p.pointer and p.type == "uint32_t" for p in function.params)

    def test_a_struct_by_value_and_by_address(self, only):
        function = only("typedef struct { uint32_t a; } s_t; int32_t f(s_t v, const s_t *in, s_t *out);")
        assert [shape(p) for p in function.params] == [
            ("v", "struct", "value", 1), ("in", "struct", "in", 1), ("out", "struct", "out", 1)]

    def test_an_alias_has_the_kind_of_its_type(self, only):
        function = only("typedef uintptr_t w_t; typedef w_t x_t; int32_t f(x_t a);")
        assert (function.params[0].kind, function.params[0].type) == ("word", "x_t")

    def test_a_callback(self, only):
        function = only("typedef int32_t (*cb_t)(uint32_t a, int32_t b); int32_t f(cb_t callback);")
        assert shape(function.params[0]) == ("callback", "callback", "value", 1)

    def test_a_forward_declared_struct_is_opaque(self, only):
        function = only("typedef struct node node_t; int32_t f(node_t *n);")
        assert shape(function.params[0]) == ("n", "void", "out", 1)


class TestDeclarations:
    def test_no_parameters(self, only):
        assert only("int32_t f(void);").params == []

    def test_variadic(self, only):
        function = only("int32_t f(const char *format, ...);")
        assert function.variadic and len(function.params) == 1

    def test_results(self, read):
        functions = read("typedef int32_t s_t; s_t a(void); const char *b(void); void c(void);").functions
        assert [(f.name, f.returns) for f in functions] == [("a", "s_t"), ("b", "const char *"), ("c", "void")]

    def test_a_declaration_may_span_lines(self, only):
        function = only("int32_t f(uint32_t a, /* plain comment; with a semicolon */\n          uint32_t b); // end")
        assert [p.name for p in function.params] == ["a", "b"]

    def test_data(self, read):
        data = read("extern uintptr_t q; extern uint16_t table[4096]; extern const char *text;").data
        assert [(d.name, d.type) for d in data] == [
            ("q", "uintptr_t"), ("table", "uint16_t[4096]"), ("text", "const char *")]

    def test_struct_members(self, read):
        text = PORTS + "typedef struct { uint8_t mac[6]; set_t ports; struct s *next; int32_t p; } s_t;"
        fields = read(text).structs["s_t"].fields
        assert [(f.name, f.type, f.count, f.pointer, f.is_ports) for f in fields] == [
            ("mac", "uint8_t", 6, False, False), ("ports", "uint32_t", 8, False, True),
            ("next", "s", 1, True, False), ("p", "int32_t", 1, False, False)]

    def test_constants(self, read):
        text = "#define A 101 /**< doc */\n#define B (-1)\n#define C 0xFFu\n#define D \"text\"\n#define E(x) (x)\n"
        assert read(text).constants == {"A": 101, "B": -1, "C": 255}

    def test_a_later_header_uses_the_types_of_an_earlier_one(self, read):
        functions = read("typedef int32_t s_t;", "int32_t f(s_t a);").functions
        assert functions[0].params[0].kind == "i32"

    def test_c_plus_plus_guards_and_includes_are_passed_over(self, only):
        text = ("#ifndef H\n#define H\n#include <stdint.h>\n"
                "#ifdef __cplusplus\n#define ADP_BEGIN_DECLS extern \"C\" {\n#endif\n"
                "#define LONG(x) \\\n    x;\nADP_BEGIN_DECLS\nint32_t f(void);\nADP_END_DECLS\n#endif\n")
        assert only(text).name == "f"


class TestDocs:
    def test_a_doc_belongs_to_the_next_declaration(self, read):
        text = ("/** First. */\nint32_t f(void);\nint32_t g(void);\n"
                "/**\n * Two\n * lines.\n */\nint32_t h(void);")
        functions = read(text).functions
        assert [f.doc for f in functions] == ["First.", "", "Two\nlines."]

    def test_a_constants_doc_is_not_the_next_functions(self, only):
        assert only("/** Of N. */\n#define N 1\nint32_t f(void);").doc == ""

    def test_docs_of_files_and_groups_belong_to_nobody(self, only):
        assert only("/** @file h.h\n * Text. */\n/** @name Marks\n * @{ */\n/** @} */\nint32_t f(void);").doc == ""

    def test_member_docs_do_not_disturb(self, read):
        text = ("/** S. */ typedef struct {\n    uint32_t a; /**< a; first */\n"
                "    /** second */\n    uint32_t b;\n} s_t;")
        struct = read(text).structs["s_t"]
        assert struct.doc == "S." and [f.name for f in struct.fields] == ["a", "b"]


class TestHeadings:
    def test_a_heading_belongs_to_all_functions_after_it(self, read):
        functions = read("int32_t f(void);\n/*\n * One: of (two).\n */\nint32_t g(void);\nint32_t h(void);\n"
                         "/*\n * Two\n *\n * Lines.\n */\n/** Doc. */\nint32_t i(void);")
        assert [(f.name, f.heading) for f in functions.functions] == [("f", ""), ("g", "One"), ("h", "One"),
                                                                      ("i", "Two")]
        assert functions.headings == ["One", "Two"] and functions.functions[3].doc == "Doc."

    def test_a_heading_ends_with_its_header(self, read):
        functions = read("/*\n * One\n */\nint32_t f(void);", "int32_t g(void);").functions
        assert [f.heading for f in functions] == ["One", ""]


REJECTED = {
    "unnamed parameter": ("int32_t f(uint32_t);", "f: "),
    "unnamed pointer": ("int32_t f(uint32_t *);", "cannot read parameter"),
    "unknown type": ("int32_t f(foo_t a);", "f: unknown type 'foo_t'"),
    "unknown result": ("foo_t f(void);", "f: unknown type 'foo_t'"),
    "no result": ("f(uint32_t a);", "cannot read declaration"),
    "two-word type": ("int32_t f(unsigned long a);", "cannot read parameter"),
    "function as parameter": ("int32_t f(int32_t (*g)(int32_t a));", "cannot read parameter"),
    "two parameters of a name": ("int32_t f(uint32_t a, uint32_t a);", "f: two named 'a'"),
    "declared twice": ("int32_t f(void); int32_t f(void);", "f: declared twice"),
    "count of a stranger": ("int32_t f(ADP_COUNT(n) uint32_t *a);", "names no parameter"),
    "count of a value": ("int32_t f(ADP_COUNT(2) uint32_t a);", "only a pointer"),
    "direction of a value": ("int32_t f(ADP_INOUT uint32_t a);", "only a pointer"),
    "const both ways": ("int32_t f(ADP_INOUT const uint32_t *a);", "pointer to const"),
    "two extents": ("int32_t f(ADP_COUNT(2) uint32_t a[3]);", "two extents"),
    "count and a set": (PORTS + "int32_t f(ADP_COUNT(2) set_t a);", "two extents"),
    "limit that is no number": ("int32_t f(ADP_COUNT_UP_TO(N, n) void *a, uint32_t n);", "not a number: 'N'"),
    "type of a type": ("int32_t f(ADP_TYPE(uint64_t) uint32_t *a);", "only a pointer to void"),
    "type of a value": ("int32_t f(ADP_TYPE(uint64_t) uint32_t a);", "only a pointer to void"),
    "type that is unknown": ("int32_t f(ADP_TYPE(foo_t) void *a);", "unknown type 'foo_t'"),
    "ports of a number": ("int32_t f(ADP_PORTS uint32_t a);", "only a word"),
    "ports of an address": ("int32_t f(ADP_PORTS uintptr_t *a);", "only a word"),
    "unknown mark": ("int32_t f(ADP_SOMETHING(2) void *a);", "cannot read parameter"),
    "extent that is no number": ("int32_t f(uint32_t a[N]);", "not a number: 'N'"),
    "pointer to a port set": (PORTS + "int32_t f(set_t *a);", "port set"),
    "member of unknown type": ("typedef struct { foo_t a; } s_t;", "unknown type 'foo_t'"),
    "bit-field": ("typedef struct { uint32_t a : 3; } s_t;", "cannot read struct member"),
    "two members of a name": ("typedef struct { int32_t a; int32_t a; } s_t;", "two named 'a'"),
    "struct defined twice": ("typedef struct { int32_t a; } s_t; typedef struct { int32_t a; } s_t;", "defined twice"),
    "enumeration": ("typedef enum { A, B } e_t;", "cannot read typedef"),
    "union": ("typedef union { int32_t a; } u_t;", "cannot read"),
    "inline function": ("static inline int32_t f(int32_t a) { return a; }", "cannot read"),
    "unfinished": ("int32_t f(void)", "cannot read"),
    "extern function pointer": ("extern int32_t (*f)(void);", "cannot read data"),
}


@pytest.mark.parametrize("case", REJECTED)
def test_what_does_not_fit_is_rejected(read, case):
    text, message = REJECTED[case]
    with pytest.raises(interface.HeaderError) as error:
        read(text)
    assert message in str(error.value)
    assert "h0.h: " in str(error.value)
