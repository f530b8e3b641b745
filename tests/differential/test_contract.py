"""A model follows from the comment of its call; a comment that is wrong gives another model, or none."""
import os
import sys

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [HERE, os.path.join(HERE, "..", "..", "calls", "generate")]

import generate_reference  # noqa: E402  (the path has to be set first)
import headers  # noqa: E402
from interface import HeaderError  # noqa: E402

TYPES = "typedef uint32_t adp_intf_t;\ntypedef int32_t adp_status_t;\ntypedef uintptr_t adp_word_t;\n"
DRIVER = """
int32_t user_set(uint32_t unit, uint32_t zero, int32_t port, uint32_t vid);
int32_t user_get(uint32_t unit, uint32_t zero, int32_t port, uint32_t *value);
int32_t user_table(uint32_t unit, const uint32_t ports[8], int32_t session);
"""
SET = """
/**
 * Sets the VLAN of a port. Driver call: user_set(port, vid)CLAUSE.
 *
 * @param intf  an interface
 * @param vid   VLAN id, low 16 bits used
 * @return RESULT
 */
adp_status_t adp_set(adp_intf_t intf, uint32_t vid);
"""
MEMBERS = ", on a group for each active member"
OWN_ON_PORT = "user port: the driver's result; group: 0, 102 at the first failure; 201 for another type, -1 for a group outside 1..8"


def set_call(clause="", result="the driver's result"):
    return SET.replace("CLAUSE", clause).replace("RESULT", result)


@pytest.fixture(name="derive")
def derive_fixture(tmp_path):
    """The models of some declarations."""
    def derive(declarations, by_hand=()):
        for name, text in (("own.h", TYPES + declarations), ("driver.h", DRIVER)):
            (tmp_path / name).write_text(text, encoding="utf-8")
        driver = {call.name: call for call in headers.read([tmp_path / "driver.h"]).functions}
        return generate_reference.derived(headers.read([tmp_path / "own.h"]).functions, driver, set(by_hand))
    return derive


def test_a_plain_call_passes_on_what_the_comment_says(derive):
    assert derive(set_call()) == """adp_status_t adp_set(adp_intf_t intf, uint32_t vid) {
    return user_set(0, 0, adp_intf_2_phy_id(intf), (vid & 0xFFFF));
}
"""


@pytest.mark.parametrize("clause, result, statement", [
    ("", "0; 102 when the driver call failed", "return or_102(user_set(0, 0, adp_intf_2_phy_id(intf), (vid & 0xFFFF)));"),
    ("", "0; 102 when the driver call failed, and without one for an aggregation interface; 201 for another type",
     "return on_port_only(intf, [&](int32_t port) { return user_set(0, 0, port, (vid & 0xFFFF)); });"),
    (MEMBERS, OWN_ON_PORT,
     "return on_port_or_members(intf, active_members, [&](int32_t port) { return user_set(0, 0, port, (vid & 0xFFFF)); });"),
    (MEMBERS.replace("active", "configured"),
     "0; 102 at the first failure; 201 for another type, -1 for a group outside 1..8",
     "return on_port_or_members(intf, configured_members, "
     "[&](int32_t port) { return or_102(user_set(0, 0, port, (vid & 0xFFFF))); });"),
    (", on a group for its management interface",
     "0; 102 when the driver call failed; 201 for another type, -1 for a group outside 1..8",
     "return on_port_or_manager(intf, [&](int32_t port) { return or_102(user_set(0, 0, port, (vid & 0xFFFF))); });"),
])
def test_clause_and_result_choose_the_statement(derive, clause, result, statement):
    assert f"{{\n    {statement}\n}}\n" in derive(set_call(clause, result))


def test_a_comment_that_is_wrong_gives_another_model(derive):
    right = derive(set_call())
    assert derive(set_call().replace("low 16 bits used", "low byte used")) != right
    assert derive(set_call().replace("user_set(port, vid)", "user_set(vid, port)")) != right
    assert derive(set_call().replace("user_set(port, vid)", "user_set(0, 0, 3, vid)")
                  .replace("an interface", "not used")) != right
    assert derive(set_call(MEMBERS, OWN_ON_PORT)) != derive(set_call(MEMBERS.replace("active", "configured"), OWN_ON_PORT))


@pytest.mark.parametrize("was, becomes, reason", [
    ("user_set(port", "user_sot(port", "there is no driver call user_sot()"),
    ("user_set(port, vid)", "user_set(vid)", "user_set() takes 4 arguments, not 1"),
    ("user_set(port, vid)", "user_set(port, 0, vid)", "user_set() takes 4 arguments, not 3"),
    ("user_set(port, vid)", "user_set(port, vlan)", "'vlan' is neither a parameter nor a number"),
    ("user_set(port, vid)", "user_set(port, 1)", "'vid' is not in the driver call, and '@param vid VLAN id, low 16 bits used'"),
    ("VLAN id, low 16 bits used", "not used", "'vid' is in the driver call, and '@param vid not used'"),
    ("the driver's result", "the driver's answer", "no known form: 'Driver call: ...' with '@return the driver's answer'"),
    ("vid).", "vid), twice.", "no known form: 'Driver call: ..., twice'"),
    ("vid).", "vid). Then nothing.", "not understood: 'Driver call: user_set(port, vid). Then nothing.'"),
    ("Driver call:", "Driver call", "not understood: 'Driver call user_set(port, vid).'"),
])
def test_a_comment_that_cannot_be_understood_is_refused(derive, was, becomes, reason):
    assert was in set_call()
    with pytest.raises(HeaderError) as refused:
        derive(set_call().replace(was, becomes))
    assert f"adp_set: {reason}" in str(refused.value)
    assert "no model is written by hand either" in str(refused.value)


GET = """
/**
 * Reads a value.
 *
 * Driver call: user_get(port, value).REPORT
 *
 * @param dev_id      1 for nothing
 * @param intf        an interface
 * @param[out] value  WRITTEN
 * @return the driver's result
 */
adp_status_t adp_get(uint32_t dev_id, adp_intf_t intf, uint32_t *value);
"""


def get_call(written="written by the driver", report=""):
    return GET.replace("WRITTEN", written).replace("REPORT", report)


def test_an_output_is_the_drivers_and_may_be_cleared_before(derive):
    assert "{\n    if (dev_id == 1) {\n        return 0;\n    }\n    return user_get(" in derive(get_call())
    assert "    *value = 0;\n    return user_get(" in derive(get_call("set to 0, then written by the driver"))
    with pytest.raises(HeaderError, match="does not say 'written by the driver'"):
        derive(get_call("always 16"))


def test_a_report_leaves_the_source_line_open(derive):
    text = derive(get_call(report=' A negative result is reported: "%s %d: no. ret=%d\\n".'))
    assert 'if (result < 0) {\n        printf("%s %s: no. ret=%d\\n", "adp_get", kAnyNumber, result);\n' in text
    assert "if (result != 0) {" in derive(get_call(report=' A failure is reported: "%s %d: no. ret=%d\\n".'))
    with pytest.raises(HeaderError, match="a report that is not understood"):
        derive(get_call(report=' A failure is reported: "%s %d: no\\n".'))


def test_arguments_are_converted_to_what_the_driver_takes(derive):
    assert "user_table(0, reinterpret_cast<const uint32_t *>(set), static_cast<int32_t>(session - 1))" in derive("""
/** Sets. Driver call: user_table(0, set, session - 1). @param set a set @param session from 1 @return the driver's result */
adp_status_t adp_table(adp_word_t set, uint32_t session);
""")


ALIAS = "/** The same as adp_set(). @param n a number @return as adp_set() */ adp_status_t adp_alias(uint32_t n);"
NOTHING = "/** Does nothing. @return 0 */ adp_status_t adp_nothing(void);"


def test_an_alias_calls_the_other_and_nothing_is_nothing(derive):
    assert derive(ALIAS + NOTHING) == ("adp_status_t adp_alias(uint32_t n) {\n    return adp_set(n);\n}\n\n"
                                       "adp_status_t adp_nothing(void) {\n    return 0;\n}\n")


def test_a_call_has_one_model(derive):
    with pytest.raises(HeaderError, match="adp_set: two models"):
        derive(set_call(), by_hand=["adp_set"])
    assert derive(set_call(", twice"), by_hand=["adp_set"]) == ""


def test_a_comment_without_a_driver_call_is_left_to_the_link(derive):
    assert derive("/** Adds two numbers. @return the sum */ uint32_t adp_sum(uint32_t a, uint32_t b);") == ""


def test_models_by_hand_are_found_in_their_source():
    source = "adp_status_t adp_one(int32_t a) {\n    adp_two(a);\n}\nFpInfo *adp_three(\nconst Row *adp_four(void) {\n"
    assert generate_reference.defined_in(source) == {"adp_one", "adp_three", "adp_four"}
