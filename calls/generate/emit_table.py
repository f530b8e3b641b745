"""Emits the call ids and the table of imported calls, and the rows that the table of exported calls has too."""
import model

BANNER = "// Generated from the headers. Do not edit.\n"
INTERFACE = "adp_intf_t"
# Elements whose type does not say their size.
SIZES = {"kU8": "1", "kU16": "2", "kU32": "4", "kU64": "8", "kI16": "2", "kI32": "4", "kChar": "1", "kOpaque": "1"}


def call_ids(calls):
    names = "".join(f"    {function.name},\n" for function in calls.functions)
    return f"""{BANNER}#pragma once

#include <stddef.h>
#include <stdint.h>

namespace calls {{

/** One per imported function, in alphabetic order. */
enum class CallId : uint32_t {{
{names}}};

inline constexpr size_t kCallCount = {len(calls.functions)};
/** Differs whenever two builds would read each other's messages differently. */
inline constexpr uint32_t kInterfaceChecksum = 0x{calls.checksum():08x};

}}  // namespace calls
"""


def call_table(calls):
    includes = "".join(f'#include "platform/{header}"\n' for header in calls.libraries.values())
    structs = "".join(struct_rows(calls.headers, struct,
                                  [model.KIND_NAMES[calls.headers.kind_of(member.type)] for member in struct.fields])
                      for struct in calls.structs)
    rows = "".join(param_rows(calls, function) for function in calls.functions)
    names = "".join(call_row(function) for function in calls.functions)
    return f"""{BANNER}#include "calls/call_table.h"

#include <array>
#include <stddef.h>

{includes}
namespace calls {{
namespace {{

{structs}
{rows}
constexpr std::array<Call, kCallCount> kCalls = {{{{
{names}}}}};

}}  // namespace

std::span<const Call> calls() {{ return kCalls; }}

}}  // namespace calls
"""


def boolean(value):
    return "true" if value else "false"


def element(headers, type_name, kind, is_ports=False, is_pointed=False, meaning=("kPlain", 0)):
    """is_pointed: the element is only pointed at, and its layout does not matter. meaning: see exported.MEANINGS."""
    known = headers.unaliased(type_name)
    size = SIZES.get(kind, f"sizeof({known})")
    layout = f"&kStruct_{known}" if kind == "kStruct" and not is_pointed else "nullptr"
    callback = f"&kCallback_{known}" if kind == "kCallback" else "nullptr"
    octets, beside = meaning
    parts = [f"Kind::{kind}", size, boolean(is_ports), boolean(type_name == INTERFACE), layout, callback,
             f"Octets::{octets}", str(beside)]
    while parts[-1] in ("false", "nullptr", "Octets::kPlain", "0"):
        parts.pop()
    return f"{{{', '.join(parts)}}}"


def struct_rows(headers, struct, kinds, meaning_of=lambda owner, name: ("kPlain", 0)):
    rows = "".join(
        f'    {{"{member.name}", '
        f"{element(headers, member.type, kind, member.is_ports, member.pointer, meaning_of(struct, member.name))}, "
        f"{member.count}, offsetof({struct.name}, {member.name}), {boolean(member.pointer)}}},\n"
        for member, kind in zip(struct.fields, kinds, strict=True))
    return (f"[[maybe_unused]] constexpr Field kFields_{struct.name}[] = {{\n{rows}}};\n"
            f'[[maybe_unused]] constexpr Struct kStruct_{struct.name} = {{"{struct.name}", sizeof({struct.name}), '
            f"kFields_{struct.name}}};\n")


def param_row(headers, param, kind, shape, extent, counter, meaning=("kPlain", 0)):
    # What most parameters do not have is left out.
    rest = "" if counter is None else str(counter)
    if param.most or param.counts_16_bits:
        rest += f", {boolean(param.counts_16_bits)}, {param.most or 'kNoLimit'}"
    direction = {"value": "kValue", "in": "kIn", "out": "kOut", "inout": "kInOut"}[param.direction]
    row = element(headers, param.pointed or param.type, kind, param.is_ports, meaning=meaning)
    return (f'    {{"{param.name}", {row}, Direction::{direction}, '
            f"Shape::{shape}, {extent}, {rest or 'kNotCounted'}}},\n")


def param_rows(calls, function):
    names = [param.name for param in function.params]
    rows = []
    for param in function.params:
        extent = model.table_extent(function, param)
        extent, counter = (0, names.index(extent)) if isinstance(extent, str) else (extent, None)
        rows.append(param_row(calls.headers, param, model.table_kind(function, param), model.shape_of(function, param),
                              extent, counter))
    return params(function.name, rows)


def params(name, rows):
    return f"constexpr Param kParams_{name}[] = {{\n{''.join(rows)}}};\n" if rows else ""


def params_name(function):
    return f"kParams_{function.name}" if function.params else "{}"


def call_row(function):
    return f'    {{"{function.name}", Result::{model.RESULT_KINDS[function.returns]}, {params_name(function)}}},\n'
