"""The faults that are found in a text, and what becomes of it."""

from tests.mutation.faults import faults_in


def planted(text):
    return [(fault.line, fault.kind, fault.planted(text)) for fault in faults_in(text)]


def kinds(text):
    return sorted({fault.kind for fault in faults_in(text)})


def test_an_operator_and_a_constant():
    assert planted("    return a + 1;\n") == [(1, "operator", "    return a - 1;\n"), (1, "constant", "    return a + 2;\n")]


def test_a_condition_is_negated():
    assert (1, "condition", "    if (!(ready(a))) {\n") in planted("    if (ready(a)) {\n")


def test_a_condition_that_declares_is_left():
    assert kinds("    if (const int a = b(); a) {\n") == []


def test_statements_are_left_out_and_change_places():
    text = "    first(a);\n    second(b);\n"
    found = planted(text)
    assert (1, "statement left out", "    ;\n    second(b);\n") in found
    assert (1, "order", "    second(b);\n    first(a);\n") in found


def test_statements_of_two_blocks_do_not_change_places():
    assert "order" not in kinds("        first(a);\n    second(b);\n")


def test_a_named_constant_becomes_another_of_its_family():
    text = "    return a ? ADP_OK : ADP_FAIL;\n"
    assert (1, "constant", "    return a ? ADP_FAIL : ADP_FAIL;\n") in planted(text)


def test_comments_texts_and_directives_are_no_code():
    assert planted('#include <a-1>\n// a + 1\nprint("a + 1 == 2", \'1\');  // 2\n') == []


def test_signs_pointers_and_declarations_are_no_operators():
    assert kinds("void f(const char *text, int &value);\n") == []
