"""The imported interface as the emitters see it: functions in alphabetic order, each with its library.

Checks what the generated code relies on, so that the generator rejects a header that messages cannot carry, and not a
compiler or, worse, a daemon that reads other words than its client wrote.
"""
import os
import zlib
from dataclasses import dataclass, field

import headers
import interface

# Local and stateless: answered in the calling process, unknown to the daemon.
LOCAL_CALLS = ("onu_mac2str",)

# Blocks that are declared as bytes but hold native 32-bit words. They are sent and shown as words, so that a
# big-endian client and a little-endian daemon agree on them.
WORD_BLOCKS = {
    ("user_field_action_add", "param"), ("user_field_action_add", "param2"), ("get_vlan_info", "record"),
}

# Blocks of words whose last one is the address of a record.
MESSAGES = {("equeue_send_ucast", "message")}

RESULT_KINDS = {"int32_t": "kI32", "int": "kI32", "uint32_t": "kU32", "void": "kNothing", "const char *": "kText"}
KIND_NAMES = {"u8": "kU8", "u16": "kU16", "u32": "kU32", "u64": "kU64", "i32": "kI32", "char": "kChar", "word": "kWord",
              "struct": "kStruct", "void": "kU8"}


@dataclass
class Calls:
    functions: list = field(default_factory=list)   # sorted by name
    library_of: dict = field(default_factory=dict)  # function name -> library
    libraries: dict = field(default_factory=dict)   # library -> header file name
    structs: list = field(default_factory=list)     # those that parameters need, innermost first
    data: dict = field(default_factory=dict)        # library -> data names
    headers: interface.Interface = None

    @property
    def remote(self):
        """The functions that a daemon answers."""
        return [function for function in self.functions if function.name not in LOCAL_CALLS]

    def checksum(self):
        """Differs whenever client and daemon would read a message differently."""
        lines = [describe_function(function) for function in self.functions]
        lines += [f"{s.name}{{{','.join(f'{f.type}:{f.name}[{f.count}]' for f in s.fields)}}}" for s in self.structs]
        return zlib.crc32("\n".join(lines).encode())


def describe_function(function):
    parts = [f"{p.direction} {table_kind(function, p)} {p.type} {p.name}[{table_extent(function, p)}]"
             for p in function.params]
    return f"{function.returns} {function.name}({','.join(parts)}{',...' if function.variadic else ''})"


def is_word_block(function, param):
    return (function.name, param.name) in WORD_BLOCKS and param.kind in ("u8", "void")


def shape_of(function, param):
    if (function.name, param.name) in MESSAGES:
        return "kMessage"
    return "kText" if param.is_text else "kPlain"


def table_kind(function, param):
    return "kU32" if is_word_block(function, param) else KIND_NAMES[param.kind]


def table_extent(function, param):
    return param.extent // 4 if is_word_block(function, param) else param.extent


def read(types, libraries):
    """libraries: pairs of a name and its header."""
    calls = Calls()
    known = set()
    calls.headers = headers.read([types])
    for name, header in libraries:
        parsed = headers.read([types] + [other for _, other in libraries[:len(calls.libraries)]] + [header])
        calls.libraries[name] = os.path.basename(header)
        calls.data[name] = [data.name for data in parsed.data if data.name not in known]
        for function in parsed.functions:
            if function.name not in known:
                calls.library_of[function.name] = name
                calls.functions.append(function)
        known.update(function.name for function in parsed.functions)
        known.update(data.name for data in parsed.data)
        calls.headers = parsed
    calls.functions.sort(key=lambda function: function.name)
    for function in calls.functions:
        check(calls, function)
    return calls


def check(calls, function):
    if function.returns not in RESULT_KINDS:
        raise interface.HeaderError(f"{function.name}: cannot carry a result of type '{function.returns}'")
    if RESULT_KINDS[function.returns] == "kText" and function.name not in LOCAL_CALLS:
        raise interface.HeaderError(f"{function.name}: a text result can only come from a local call")
    for index, param in enumerate(function.params):
        where = f"{function.name}: parameter '{param.name}'"
        if param.kind not in KIND_NAMES or param.pointer_depth > 1:
            raise interface.HeaderError(f"{where} is of a type that no message can carry")
        if param.pointed or param.is_ports_word:
            raise interface.HeaderError(f"{where} has a mark that only exported calls take")
        if param.kind == "void" and (not param.pointer or param.extent == 1):
            raise interface.HeaderError(f"{where} needs an ADP_COUNT of its bytes")
        if isinstance(param.extent, str):
            counter = next(p for p in function.params if p.name == param.extent)
            if counter.pointer or counter.kind not in ("u32", "i32", "u16", "u8"):
                raise interface.HeaderError(f"{where} is counted by '{param.extent}', which is not a number")
        elif is_word_block(function, param) and param.extent % 4:
            raise interface.HeaderError(f"{where} is not a whole number of words")
        if param.kind == "struct":
            need_struct(calls, param.type, where)


def need_struct(calls, type_name, where):
    structs = calls.headers.structs
    type_name = calls.headers.unaliased(type_name)
    if any(known.name == type_name for known in calls.structs):
        return
    for member in structs[type_name].fields:
        if member.pointer:
            raise interface.HeaderError(f"{where}: '{type_name}' holds an address ('{member.name}')")
        if calls.headers.kind_of(member.type) == "struct":
            need_struct(calls, member.type, where)
    calls.structs.append(structs[type_name])
