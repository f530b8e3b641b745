"""Emits the Python package's constants, results, layouts and records: what the calls' modules stand on."""
import emit_python_text as text
import exported
import python_names as names
from interface import HeaderError

LONGEST_DECIMAL = 9999


def constant(library, name):
    """A #define."""
    value = library.headers.constants[name]
    line = f"{names.checked(name.removeprefix('ADP_'))} = {value if value <= LONGEST_DECIMAL else hex(value)}"
    return [line, text.docstring(library.remarks[name], "")] if name in library.remarks else [line]


def constants(library):
    plain = [name for name in library.headers.constants if name.startswith("ADP_") and name not in library.headers.enums]
    lines = [line for name in plain for line in constant(library, name)]
    tags = list(dict.fromkeys(library.headers.enums.values()))
    for tag in tags:
        lines.append(f"\n\nclass {names.enumeration_of(library, tag)}(enum.IntEnum):\n{text.docstring(f'enum {tag}')}\n")
        for short, name in names.enumerators(library, tag).items():
            lines.append(f"    {short} = {library.headers.constants[name]}\n{text.docstring(library.remarks[name])}")
    public = [name.removeprefix("ADP_") for name in plain] + [names.enumeration_of(library, tag) for tag in tags]
    return text.module("Constants and enumerations of the headers.", "import enum\n\n" + "\n".join(lines), public)


def results(rows):
    lines = "".join(f"    {number}: ({text.quote(name)}, {text.quote(meaning)}),\n" for number, name, meaning in rows)
    body = f"# status -> its name, what it means\nRESULTS: dict[int, tuple[str, str]] = {{\n{lines}}}\n"
    return text.module("Results of the library and of the virtual device.", body, ["RESULTS"])


def layout_field(library, member):
    if member.pointer:
        return "c_void_p"
    element = names.ctype(library.headers, member.type).removeprefix("layouts.")
    if member.is_ports:
        return "Ports"
    return f"{element} * {member.count}" if member.count > 1 else element


def layouts(library):
    parts = []
    for struct in library.headers.structs.values():
        fields = "".join(f'        ("{member.name}", {layout_field(library, member)}),\n' for member in struct.fields)
        parts.append(f"class {names.class_of(struct.name)}(ctypes.Structure):\n{text.docstring(struct.name)}\n\n"
                     f"    _fields_ = [\n{fields}    ]\n")
    for callback in library.headers.callbacks.values():
        kinds = [f"ctypes.POINTER({names.ctype(library.headers, param.type).removeprefix('layouts.')})"
                 if param.pointer else names.ctype(library.headers, param.type) for param in callback.params]
        parts.append(f"{names.class_of(callback.name)} = ctypes.CFUNCTYPE({', '.join(['c_int32', *kinds])})\n")
    imports = ("import ctypes\nfrom ctypes import c_int16, c_int32, c_size_t, c_uint8, c_uint16, c_uint32, c_uint64, "
               "c_void_p\n\nfrom ..memory import Ports\n\n\n")
    return text.module("The structs of the headers as they are in C's memory.", imports + "\n\n".join(parts), None,
                       unused=True)


def has_record(struct):
    return struct.name not in names.WITHOUT_RECORD


def record_field(library, struct, member):
    """A field of a dataclass; None for what is C's alone."""
    if member.pointer:
        raise HeaderError(f"{struct.name}.{member.name}: a record with an address")
    if member.type in names.LIST_PARTS:
        return None
    kind = layout_field(library, member)
    if kind == "Ports":
        return "PortSet", "PortSet()"
    element, star, count = kind.partition(" * ")
    is_record = library.headers.kind_of(member.type) == "struct"
    if not star:
        return (element, f"field(default_factory={element})") if is_record else ("int", "0")
    if element == "c_uint8":
        return "bytes", f"bytes({count})"
    if is_record:
        return f"list[{element}]", f"field(default_factory=lambda: [{element}() for _ in range({count})])"
    return "list[int]", f"field(default_factory=lambda: [0] * {count})"


def record(library, struct):
    name = names.class_of(struct.name)
    lines = [f"@dataclass\nclass {name}(Record):", text.docstring(struct.doc or struct.name), "",
             f"    LAYOUT: ClassVar[type[ctypes.Structure]] = layouts.{name}\n"]
    for member in struct.fields:
        declared = record_field(library, struct, member)
        if declared:
            lines.append(f"    {names.checked(member.name)}: {declared[0]} = {declared[1]}")
            remark = library.field_remarks.get((struct.name, member.name))
            lines += [text.docstring(remark)] if remark else []
    return "\n".join(lines) + "\n"


def records(library):
    structs = [struct for struct in library.headers.structs.values() if has_record(struct)]
    classes = [names.class_of(struct.name) for struct in structs]
    imports = ("import ctypes\nfrom dataclasses import dataclass, field\nfrom typing import ClassVar\n\n"
               "from ..memory import RECORDS, Record\nfrom ..ports import PortSet\nfrom . import layouts\n\n\n")
    known = f"\n\nfor each in ({', '.join(classes)}):\n    RECORDS[each.LAYOUT] = each  # type: ignore[attr-defined]  # as all records\n"
    return text.module("The structs of the headers as dataclasses.",
                       imports + "\n\n".join(record(library, struct) for struct in structs) + known, classes)


def table(library, data):
    """A table's declaration."""
    type_name, rows, columns, is_pointer = library.table_of(data)
    name, quoted = names.name_of(library, data.name), text.quote(data.name)
    if data.type in library.headers.callbacks:
        declared = f"Handler({quoted}, layouts.{names.class_of(type_name)})"
    elif type_name == exported.LIST_LINK:
        if "FpListNode by FpListNode" not in data.doc:
            raise HeaderError(f"{data.name}: the comment does not say what is in the list")
        declared = (f"LinkedList[records.FpEntity]({quoted}, layouts.ListLink, layouts.FpListNode, \"entity\")")
    else:
        element = names.ctype(library.headers, type_name)
        kind = element if columns == 1 else names.array(element, columns)
        python = names.annotation(kind, True)
        if is_pointer:
            if "adp_max_phy_port_num + 1" not in data.doc:
                raise HeaderError(f"{data.name}: the comment does not say how many rows there are")
            declared = f"PortTable[{python}]({quoted}, {kind}, max_phy_port_num)"
        elif "[" in data.type:
            declared = f"Table[{python}]({quoted}, {kind}, {rows})"
        else:
            declared = f"Variable[{python}]({quoted}, {kind})"
    return f"{name} = {declared}\n{text.docstring(data.doc, '')}"


def tables(library):
    imports = ("from ctypes import c_int16, c_uint32\n\nfrom ..memory import FewPorts\n"
               "from ..ports import PortSet\n"
               "from ..tables import Handler, LinkedList, PortTable, Table, Variable\nfrom . import layouts, records\n\n")
    data = library.headers.data
    return text.module("The exported tables.", imports + "\n".join(table(library, each) for each in data),
                       [names.name_of(library, each.name) for each in data])
