"""The calls of adp/fp.h.

This file is written by script/reference from the headers.
"""

from __future__ import annotations

from ctypes import POINTER, c_int32, c_uint32, c_uint8
from typing import NamedTuple

from ..call import Call, Status
from ..parameters import Count, Counted, InOut, Value
from . import layouts, records

__all__ = [
    "fp_init",
    "adp_fp_find_data_by_submodetype",
    "fp_find_data_by_submodetype",
    "fp_get_true_entity_id",
    "fp_is_double_entity",
    "fp_is_double_entity_2",
    "fp_is_need_set_next_entity_id",
    "fp_find_list_node_by_entity",
    "fp_add_entity_qualify",
    "fp_add_entity_action",
    "fp_delete_entity_rule",
    "fp_delete_entity_rule_ex",
    "fp_add_entity_rule",
    "fp_get_statistics",
    "fp_clear_statistics",
    "fp_lookupMissAct_set",
    "fp_lookupMissAct_pbmp_set",
    "add_remark_rule",
    "del_remark_rule",
    "FpAddEntityQualifyResult",
    "FpAddEntityActionResult",
]

_fp_init: Call[None] = Call("adp_fp_init", Status)


def fp_init() -> None:
    """Empties the list of rules and initialises the driver's field processor.

    status: 0 if the first driver call was not negative, otherwise the third call's result
    """
    _fp_init()


_adp_fp_find_data_by_submodetype: Call[records.FpInfo | None] = Call(
    "adp_fp_find_data_by_submodetype",
    POINTER(layouts.FpInfo),
    Value("submodule_type", c_uint32),
)


def adp_fp_find_data_by_submodetype(submodule_type: int) -> records.FpInfo | None:
    """Finds a submodule.

    submodule_type: submodule type, 1..43
    result: the last row of this type; null when there is none
    """
    return _adp_fp_find_data_by_submodetype(submodule_type)


_fp_find_data_by_submodetype: Call[records.FpInfo | None] = Call(
    "fp_find_data_by_submodetype",
    POINTER(layouts.FpInfo),
    Value("submodule_type", c_uint32),
)


def fp_find_data_by_submodetype(submodule_type: int) -> records.FpInfo | None:
    """The same as adp_fp_find_data_by_submodetype().

    submodule_type: submodule type, 1..43
    result: as adp_fp_find_data_by_submodetype()
    """
    return _fp_find_data_by_submodetype(submodule_type)


_fp_get_true_entity_id: Call[int] = Call(
    "adp_fp_get_true_entity_id",
    c_uint32,
    Value("submodule", layouts.FpInfo),
    Value("entity_id", c_uint32),
)


def fp_get_true_entity_id(submodule: records.FpInfo, entity_id: int) -> int:
    """Computes the hardware entry number of an entity, and logs it (line 864).

    submodule: the submodule
    entity_id: its number in the submodule, from 0; in submodules 42 and 43 from 9
    result: the hardware entry number; for groups 1 and 5 that of the first entry of the pair
    """
    return _fp_get_true_entity_id(submodule, entity_id)


_fp_is_double_entity: Call[int] = Call("adp_fp_is_double_entity", c_int32, Value("submodule", layouts.FpInfo))


def fp_is_double_entity(submodule: records.FpInfo) -> int:
    """Whether a submodule's rules take a pair of entries.

    submodule: the submodule
    result: 1 in groups 1 and 5, else 0
    """
    return _fp_is_double_entity(submodule)


_fp_is_double_entity_2: Call[int] = Call("adp_fp_is_double_entity_2", c_int32, Value("true_entry", c_uint32))


def fp_is_double_entity_2(true_entry: int) -> int:
    """Whether a hardware entry belongs to the groups whose rules take a pair of entries.

    true_entry: hardware entry number, 0..1535
    result: 1 for 1024..1535, else 0
    """
    return _fp_is_double_entity_2(true_entry)


_fp_is_need_set_next_entity_id: Call[int] = Call(
    "adp_fp_is_need_set_next_entity_id",
    c_int32,
    Value("submodule", layouts.FpInfo),
    Value("qualify_type", c_uint32),
)


def fp_is_need_set_next_entity_id(submodule: records.FpInfo, qualify_type: int) -> int:
    """Whether a qualifier belongs on the second entry of a pair.

    submodule: the submodule
    qualify_type: FpQualifier
    result: 1 in group 1 for types 9, 10, 27, 28, 31, 61 and 332, in group 5 for types 1, 27, 28 and 30; else 0
    """
    return _fp_is_need_set_next_entity_id(submodule, qualify_type)


_fp_find_list_node_by_entity: Call[records.FpListNode | None] = Call(
    "adp_fp_find_list_node_by_entity",
    POINTER(layouts.FpListNode),
    Value("submodule_type", c_uint32),
    Value("entity_id", c_uint32),
)


def fp_find_list_node_by_entity(submodule_type: int, entity_id: int) -> records.FpListNode | None:
    """Finds an installed rule.

    submodule_type: the rule's submodule, 1..43
    entity_id: its number in the submodule, from 0; in submodules 42 and 43 from 9
    result: the first node with this pair of numbers; null when there is none
    """
    return _fp_find_list_node_by_entity(submodule_type, entity_id)


class FpAddEntityQualifyResult(NamedTuple):
    """What fp_add_entity_qualify() gives."""

    result: int
    entity: records.FpEntity


_fp_add_entity_qualify: Call[FpAddEntityQualifyResult] = Call(
    "adp_fp_add_entity_qualify",
    c_int32,
    InOut("entity", layouts.FpEntity),
    Value("type", c_uint32),
    Counted("data", c_uint8),
    Count("data_len", c_uint32, "data"),
    Counted("mask", c_uint8),
    Count("mask_len", c_int32, "mask"),
    several=FpAddEntityQualifyResult,
)


def fp_add_entity_qualify(entity: records.FpEntity, type: int, data: bytes, mask: bytes) -> FpAddEntityQualifyResult:
    """Appends a qualifier to a rule record.

    entity: the record
    type: FpQualifier
    data: what is matched
    mask: the bits that count
    result: the qualifier's index. -1 with the record unchanged when it has 16 qualifiers already, which prints
        "%s:[%05d] Fp qualify number=[%d] was full!~\\n", when a length is out of range, and when the count is negative.
    """
    return _fp_add_entity_qualify(entity, type, data, mask)


class FpAddEntityActionResult(NamedTuple):
    """What fp_add_entity_action() gives."""

    result: int
    entity: records.FpEntity


_fp_add_entity_action: Call[FpAddEntityActionResult] = Call(
    "adp_fp_add_entity_action",
    c_int32,
    InOut("entity", layouts.FpEntity),
    Value("type", c_uint32),
    Counted("param", c_uint8),
    Count("param_len", c_int32, "param"),
    Counted("param2", c_uint8),
    Count("param2_len", c_int32, "param2"),
    several=FpAddEntityActionResult,
)


def fp_add_entity_action(entity: records.FpEntity, type: int, param: bytes, param2: bytes) -> FpAddEntityActionResult:
    """Appends an action to a rule record.

    entity: the record
    type: FpActionType, or another code of the driver
    param: parameter, or null for none
    param2: second parameter, or null for none
    result: the action's index. -1 with the record unchanged when it has 8 actions already, which prints "%s:[%05d] Fp
        qualify number=[%d] was full!~\\n" with the record's number of qualifiers, when a parameter that is not null is
        too long, and when the count is negative.
    """
    return _fp_add_entity_action(entity, type, param, param2)


_fp_delete_entity_rule: Call[None] = Call(
    "adp_fp_delete_entity_rule",
    Status,
    Value("submodule_type", c_uint32),
    Value("entity_id", c_uint32),
    Value("action_type", c_uint32),
)


def fp_delete_entity_rule(submodule_type: int, entity_id: int, action_type: int) -> None:
    """Removes an installed rule.

    submodule_type: the rule's submodule, 1..43
    entity_id: its number in the submodule, from 0; in submodules 42 and 43 from 9
    action_type: ADP_FP_ACTION_METER destroys the rule's meter too, any other number does not
    status: the results of all driver calls ORed together; 0 without a log line or driver call when there is no such
        rule
    """
    _fp_delete_entity_rule(submodule_type, entity_id, action_type)


_fp_delete_entity_rule_ex: Call[None] = Call("adp_fp_delete_entity_rule_ex", Status, Value("entity", layouts.FpEntity))


def fp_delete_entity_rule_ex(entity: records.FpEntity) -> None:
    """Removes the installed rule that a new record replaces.

    entity: submodule_type and entity_id name the rule; the types of the first action_num actions, 8 at most, are read
    status: the results of all driver calls ORed together; 0 when there is no such rule
    """
    _fp_delete_entity_rule_ex(entity)


_fp_add_entity_rule: Call[None] = Call("adp_fp_add_entity_rule", Status, Value("entity", layouts.FpEntity))


def fp_add_entity_rule(entity: records.FpEntity) -> None:
    """Installs a rule in the hardware, in place of the one with the same submodule and entity number, and records it.

    entity: the rule
    status: S; with nothing changed and no driver call 101 for a submodule that is not in the table or has no group, -1
        for more than 16 qualifiers or 8 actions. A negative count is none.
    """
    _fp_add_entity_rule(entity)


_fp_get_statistics: Call[int] = Call(
    "adp_fp_get_statistics",
    c_int32,
    Value("counter", c_int32),
    Value("type", c_int32),
)


def fp_get_statistics(counter: int, type: int) -> int:
    """Reads a counter of the field processor.

    counter: the driver's counter number; 0..255 on the virtual device
    type: FpValue
    result: the count; 0 also when the driver wrote none
    """
    return _fp_get_statistics(counter, type)


_fp_clear_statistics: Call[None] = Call(
    "adp_fp_clear_statistics",
    Status,
    Value("unused1", c_uint32),
    Value("unused2", c_uint32),
    Value("counter", c_int32),
    Value("type", c_int32),
)


def fp_clear_statistics(unused1: int, unused2: int, counter: int, type: int) -> None:
    """Clears a counter of the field processor.

    unused1: not used
    unused2: not used
    counter: the driver's counter number; 0..255 on the virtual device
    type: FpValue
    status: the driver's result
    """
    _fp_clear_statistics(unused1, unused2, counter, type)


_fp_lookupMissAct_set: Call[None] = Call(
    "adp_fp_lookupMissAct_set",
    Status,
    Value("intf", c_int32),
    Value("miss_action", c_uint32),
)


def fp_lookupMissAct_set(intf: int, miss_action: int) -> None:
    """Sets what happens to a port's packets that match no rule.

    intf: user port; any other interface is passed on as physical port -1
    miss_action: FpMiss
    status: the driver's result
    """
    _fp_lookupMissAct_set(intf, miss_action)


_fp_lookupMissAct_pbmp_set: Call[None] = Call(
    "adp_fp_lookupMissAct_pbmp_set",
    Status,
    Value("ports", layouts.FpPortBitmap),
    Value("miss_action", c_uint32),
)


def fp_lookupMissAct_pbmp_set(ports: records.FpPortBitmap, miss_action: int) -> None:
    """Sets what happens to packets that match no rule, for each interface of a bitmap from 0 to 26 in this order; as
    adp_fp_lookupMissAct_set().

    ports: the interfaces
    miss_action: FpMiss
    status: the last interface's result, which hides earlier failures; 0 when the bitmap is empty
    """
    _fp_lookupMissAct_pbmp_set(ports, miss_action)


_add_remark_rule: Call[records.RemarkRule] = Call("adp_add_remark_rule", Status, InOut("rule", layouts.RemarkRule))


def add_remark_rule(rule: records.RemarkRule | None = None) -> records.RemarkRule:
    """Installs a rule that rewrites a priority-type field of packets from a set of ports, optionally only of packets
    that match one field.

    rule: the request
    status: 0; 101 for a null record and, with nothing installed, for a form other than 1 and 7; 504 when g_stFpInfo has
        no submodule 1; 102 when installation gave a negative status; also 102, with the rule installed, for a kind
        other than 1 and 2 and, with the rule installed without a field, for a match_field of 12 or more
    """
    return _add_remark_rule(rule)


_del_remark_rule: Call[None] = Call("adp_del_remark_rule", Status, Value("rule_id", c_uint32))


def del_remark_rule(rule_id: int) -> None:
    """Removes a remark rule, as adp_fp_delete_entity_rule() with submodule 1 and action type 0.

    rule_id: low 16 bits used
    status: 0, also when there is no such rule; 102 when a driver call was negative
    """
    _del_remark_rule(rule_id)
