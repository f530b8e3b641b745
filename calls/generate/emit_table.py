"""Emits the call ids and the call table: what each call is named, takes and returns, as data."""
import model

BANNER = "// Generated from the headers of the imported libraries. Do not edit.\n"


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
    structs = "".join(struct_rows(calls, struct) for struct in calls.structs)
    params = "".join(param_rows(calls, function) for function in calls.functions if function.params)
    rows = "".join(call_row(calls, function) for function in calls.functions)
    return f"""{BANNER}#include "calls/call_table.h"

#include <array>
#include <stddef.h>

{includes}
namespace calls {{
namespace {{

{structs}
{params}
constexpr std::array<Call, kCallCount> kCalls = {{{{
{rows}}}}};

}}  // namespace

std::span<const Call> calls() {{ return kCalls; }}

}}  // namespace calls
"""


def element(calls, type_name, kind, is_ports):
    layout = f"&kStruct_{struct_name(calls, type_name)}" if kind == "Struct" else "nullptr"
    return f"{{Kind::{kind}, {'true' if is_ports else 'false'}, {layout}}}"


def struct_name(calls, type_name):
    while type_name in calls.headers.aliases:
        type_name = calls.headers.aliases[type_name]
    return type_name


def struct_rows(calls, struct):
    rows = "".join(
        f'    {{"{member.name}", '
        f"{element(calls, member.type, model.KIND_NAMES[calls.headers.kind_of(member.type)], member.is_ports)}, "
        f"{member.count}, offsetof({struct.name}, {member.name})}},\n" for member in struct.fields)
    return (f"constexpr Field kFields_{struct.name}[] = {{\n{rows}}};\n"
            f'constexpr Struct kStruct_{struct.name} = {{"{struct.name}", sizeof({struct.name}), '
            f"kFields_{struct.name}}};\n")


def param_rows(calls, function):
    names = [param.name for param in function.params]
    rows = ""
    for param in function.params:
        direction = {"value": "Value", "in": "In", "out": "Out", "inout": "InOut"}[param.direction]
        extent = model.table_extent(function, param)
        counted_by = names.index(extent) if isinstance(extent, str) else "kNotCounted"
        kind = element(calls, param.type, model.table_kind(function, param), param.is_ports)
        rows += (f'    {{"{param.name}", {kind},'
                 f" Direction::{direction}, {'true' if param.is_text else 'false'},"
                 f" {0 if isinstance(extent, str) else extent}, {counted_by}}},\n")
    return f"constexpr Param kParams_{function.name}[] = {{\n{rows}}};\n"


def call_row(calls, function):
    params = f"kParams_{function.name}" if function.params else "{}"
    return f'    {{"{function.name}", Result::{model.RESULT_KINDS[function.returns]}, {params}}},\n'
