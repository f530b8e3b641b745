"""Emits the table of exported calls, with the exported tables and the constants of the headers."""
import json

import emit_calls
import emit_table
import exported
from interface import HeaderError


NAMES = ("Direction", "Field", "invoke_function", "Kind", "kNoLimit", "kNotCounted", "Octets", "Param",
         "Result", "Shape", "Struct")


def source(library):
    """The whole file."""
    names = sorted([each.name for each in library.headers.functions] + [each.name for each in library.headers.data])
    weak = "".join(f"#pragma weak {name}\n" for name in names)
    usings = "".join(f"using calls::{name};\n" for name in NAMES)
    structs = "".join(struct_rows(library, struct) for struct in library.headers.structs.values())
    callbacks = "".join(callback_rows(library, callback) for callback in library.headers.callbacks.values())
    params = "".join(param_rows(library, function) for function in library.functions)
    return f"""{emit_table.BANNER}#include <adp/adp.h>

#include <stddef.h>

#include "calls/exported.h"
#include "calls/invoke.h"

// Weak: programs also run with a library that does not have all of these.
{weak}
namespace exported {{
namespace {{

{usings}
{structs}
{callbacks}
{params}
{table("Call", (call_row(library, function) for function in library.functions))}
{table("Table", (table_row(library, data) for data in sorted(library.headers.data, key=lambda each: each.name)))}
{"".join(remark_rows(library, struct) for struct in library.headers.structs.values())}
{table("Structure", (structure_row(struct) for struct in library.headers.structs.values()))}
{table("Constant", (constant_row(library, name) for name in sorted(library.headers.constants)))}
}}  // namespace

std::span<const Call> calls() {{ return kCalls; }}
std::span<const Table> tables() {{ return kTables; }}
std::span<const Structure> structures() {{ return kStructures; }}
std::span<const Constant> constants() {{ return kConstants; }}

}}  // namespace exported
"""


def quote(text):
    """A C++ string literal. JSON's escapes are C++'s too, once non-ASCII characters stay as they are."""
    return json.dumps(text, ensure_ascii=False)


def table(what, rows):
    return f"const {what} k{what}s[] = {{\n{''.join(rows)}}};\n"


def struct_rows(library, struct):
    kinds = [library.kind_of_member(struct, member) for member in struct.fields]
    return emit_table.struct_rows(library.headers, struct, kinds, library.meaning_of)


def param_rows(library, function):
    rows = []
    for param in function.params:
        where = f"{function.name}: parameter '{param.name}'"
        if param.kind not in exported.KIND_NAMES:
            raise HeaderError(f"{where} is of type {param.type}")
        extent, counter = library.extent_of(where, function, param)
        rows.append(emit_table.param_row(library.headers, param, exported.KIND_NAMES[param.kind],
                                         library.shape_of(where, param), extent, counter,
                                         library.meaning_of(function, param.name)))
    return emit_table.params(function.name, rows)


def callback_rows(library, callback):
    """A callback's description, and the function that reports its events to the program."""
    if callback.returns not in ("int32_t", "void"):
        raise HeaderError(f"{callback.name}: a callback that returns {callback.returns}")
    arguments = ", ".join(f"&{param.name}" for param in callback.params)
    returned = "" if callback.returns == "void" else "return "
    name = callback.name
    return (f"{param_rows(library, callback)}extern const Callback kCallback_{name};\n"
            f"{callback.returns} report_{name}({emit_calls.parameters(callback)}) {{\n"
            f"    const void *const arguments[] = {{{arguments}}};\n"
            f"    {returned}report_event(kCallback_{name}, arguments);\n}}\n"
            f'const Callback kCallback_{name} = {{"{name}", kParams_{name}, '
            f"reinterpret_cast<void (*)()>(report_{name})}};\n")


def declaration(function):
    """The prototype as a reader knows it, on one line."""
    params = ", ".join(f"{'const ' if param.const else ''}{param.type} {'*' * param.pointer_depth}{param.name}"
                       for param in function.params)
    return f"{emit_calls.spaced(function.returns)}{function.name}({params or 'void'})"


def call_row(library, function):
    name = function.name
    kind, struct = library.result_of(function)
    layout = f"&kStruct_{struct}" if struct else "nullptr"
    return (f'    {{"{name}", Result::{kind}, {layout}, {emit_table.params_name(function)},\n'
            f"     reinterpret_cast<void *>(&::{name}), invoke_function<decltype(&::{name})>,\n"
            f"     {quote(declaration(function))},\n     {quote(function.doc)}}},\n")


def table_row(library, data):
    type_name, rows, columns, is_pointer = library.table_of(data)
    element = emit_table.element(library.headers, type_name, exported.KIND_NAMES[library.headers.kind_of(type_name)])
    return (f'    {{"{data.name}", {element}, {rows}, {columns}, {emit_table.boolean(is_pointer)}, &::{data.name},\n'
            f"     {quote(data.doc)}}},\n")


def constant_row(library, name):
    return (f"    {{{quote(name)}, {library.headers.constants[name]}, {quote(library.remarks.get(name, ''))}, "
            f"{quote(library.headers.enums.get(name, ''))}}},\n")


def remark_rows(library, struct):
    rows = "".join(f"    {quote(library.field_remarks.get((struct.name, member.name), ''))},\n"
                   for member in struct.fields)
    return f"const char *const kRemarks_{struct.name}[] = {{\n{rows}}};\n"


def structure_row(struct):
    return f"    {{&kStruct_{struct.name}, {quote(struct.doc)}, kRemarks_{struct.name}}},\n"
