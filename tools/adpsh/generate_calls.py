"""Writes the shell's table of calls, tables and constants from the library's public headers.

The headers are those that adp.h includes, so a new header, call or table appears in the shell by itself. A call that
the shell could not take on a line is an error here, and thereby of the build.
"""
import argparse
import json
import os
import re
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "calls", "generate"))
import interface  # noqa: E402

KINDS = {"u8": "kU8", "u16": "kU16", "u32": "kU32", "u64": "kU64", "i16": "kI16", "i32": "kI32", "word": "kWord",
         "char": "kText", "void": "kOpaque", "struct": "kRecord", "callback": "kCallback"}
# The size of a block of which only the driver knows the layout.
OPAQUE_BYTES = 1024
LIST_LINK = "adp_list_link_t"
INTERFACE_NUMBER = "adp_intf_t"


class Unsupported(Exception):
    pass


def headers_of(root):
    """Every header that adp.h includes, each after those that it includes itself."""
    found = []

    def visit(name):
        path = os.path.join(root, name)
        with open(path, encoding="utf-8") as source:
            for included in re.findall(r"^#include <(adp/\w+\.h)>", source.read(), flags=re.M):
                visit(included)
        if path not in found:
            found.append(path)

    visit("adp/adp.h")
    return found


def remarks_of(paths):
    """The remark behind each #define and enumerator."""
    remarks = {}
    for path in paths:
        with open(path, encoding="utf-8") as source:
            for name, remark in re.findall(r"^\s*(?:#define )?(ADP_\w+)\b[^\n/]*/\*\*< *([^\n]*?) *\*/$",
                                           source.read(), flags=re.M):
                remarks[name] = remark
    return remarks


def quote(text):
    """A C++ string literal. JSON's escapes are C++'s too, once non-ASCII characters stay as they are."""
    return json.dumps(text, ensure_ascii=False)


class Writer:
    def __init__(self, source, paths):
        self.source = source
        self.paths = paths
        self.remarks = remarks_of(paths)
        self.out = []

    def text(self):
        self.head()
        self.records()
        self.callbacks()
        self.calls()
        self.tables()
        self.constants()
        self.out.append("}  // namespace adpsh\n")
        return "\n".join(self.out)

    def head(self):
        self.out.append("// Generated from the public headers. Changes here are lost.\n"
                        '#include "tools/adpsh/generated_support.h"\n#include "tools/adpsh/table.h"\n\n#include <adp/adp.h>\n\n'
                        "#include <stddef.h>\n")
        self.out.append("// Weak: the shell also works with a library that does not have all of these.")
        names = [each.name for each in self.source.functions] + [each.name for each in self.source.data]
        self.out.extend(f"#pragma weak {name}" for name in sorted(names))
        self.out.append("\nnamespace adpsh {\nnamespace {\n")

    # Types

    def type_of(self, type_name, kind, pointer_field=False):
        if kind not in KINDS:
            raise Unsupported(f"type {type_name}")
        size = {"void": "1", "char": "1"}.get(kind, f"sizeof({type_name})")
        is_interface = "true" if type_name == INTERFACE_NUMBER else "false"
        record = f"&kRecord_{type_name}" if kind == "struct" and not pointer_field else "nullptr"
        callback = f"&kCallback_{type_name}" if kind == "callback" else "nullptr"
        return f"{{Kind::{KINDS[kind]}, {size}, {is_interface}, {record}, {callback}}}"

    def records(self):
        for record in self.source.structs.values():
            rows = []
            for member in record.fields:
                kind = "void" if self.is_self_pointer(record, member) else self.source.kind_of(member.type)
                if kind == "callback":
                    raise Unsupported(f"{record.name}.{member.name}: a callback inside a record")
                rows.append(f"    {{{quote(member.name)}, {self.type_of(member.type, kind, member.pointer)}, "
                            f"{member.count}, offsetof({record.name}, {member.name}), "
                            f"{'true' if member.pointer else 'false'}}},")
            self.out.append(f"[[maybe_unused]] constexpr Field kFields_{record.name}[] = {{\n" + "\n".join(rows) + "\n};")
            self.out.append(f"[[maybe_unused]] constexpr Record kRecord_{record.name} = {{{quote(record.name)}, "
                            f"sizeof({record.name}), kFields_{record.name}}};\n")

    def is_self_pointer(self, record, member):
        """A link of a list: `struct tag *`, which the headers' reader does not know as a type."""
        return member.pointer and member.type not in self.source.structs and member.type not in self.source.aliases \
            and member.type not in interface.SCALARS

    # Parameters

    def parameter(self, owner, parameter, parameters):
        kind, count = parameter.kind, parameter.extent
        if parameter.pointer_depth > 1:
            if parameter.pointer_depth > 2 or kind != "u8" or parameter.direction != "out":
                raise Unsupported(f"{owner}: parameter {parameter.name} is a pointer to a pointer")
        shape = self.shape(owner, parameter)
        if kind == "void" and count == 1:
            count = OPAQUE_BYTES
        if kind == "void" and not parameter.pointer:
            raise Unsupported(f"{owner}: parameter {parameter.name} has no type")
        if kind == "char" and not parameter.is_text:
            raise Unsupported(f"{owner}: parameter {parameter.name} is text that the call writes")
        counter = self.counter(owner, parameter, parameters)
        if kind == "u8" and count == 1 and parameter.direction in ("in", "inout"):
            raise Unsupported(f"{owner}: parameter {parameter.name} addresses bytes, but not said how many")
        direction = {"value": "kValue", "in": "kIn", "out": "kOut", "inout": "kInOut"}[parameter.direction]
        return (f"    {{{quote(parameter.name)}, {self.type_of(parameter.type, kind)}, Direction::{direction}, "
                f"Shape::{shape}, {0 if counter >= 0 else count}, {counter}}},")

    @staticmethod
    def counter(owner, parameter, parameters):
        """The index of the parameter that gives the extent; it must be known before the call."""
        if not isinstance(parameter.extent, str):
            return -1
        index = [each.name for each in parameters].index(parameter.extent)
        if parameters[index].direction == "out":
            raise Unsupported(f"{owner}: the extent of {parameter.name} is only known after the call")
        return index

    def shape(self, owner, parameter):
        if parameter.pointer_depth == 2:
            return "kOutPointer"
        if parameter.kind != "struct":
            return "kPlain"
        if parameter.type == LIST_LINK and parameter.direction == "in":
            return "kList"
        if not self.has_pointer(parameter.type):
            return "kPlain"
        names = {member.name for member in self.source.structs[parameter.type].fields}
        pointers = [member for member in self.source.structs[parameter.type].fields if member.pointer]
        if parameter.pointer and {"frame", "length"} <= names and \
                all(self.source.kind_of(member.type) == "u8" for member in pointers):
            return "kFrameRecord"
        raise Unsupported(f"{owner}: parameter {parameter.name} is a record that holds addresses")

    def has_pointer(self, name):
        return any(member.pointer or (member.type in self.source.structs and self.has_pointer(member.type))
                   for member in self.source.structs[name].fields)

    def parameters(self, owner, symbol, parameters):
        if not parameters:
            return "{}"
        rows = [self.parameter(owner, parameter, parameters) for parameter in parameters]
        self.out.append(f"constexpr Parameter {symbol}[] = {{\n" + "\n".join(rows) + "\n};")
        return symbol

    @staticmethod
    def argument(index, parameter):
        if not parameter.pointer:
            return f"value<{parameter.type}>(arguments[{index}])"
        const = "const " if parameter.const else ""
        stars = " *" if parameter.pointer_depth == 2 else ""
        return f"address<{const}{parameter.type}{stars}>(arguments[{index}])"

    # Callbacks

    def callbacks(self):
        for name, declaration in self.source.callbacks.items():
            result, arguments = re.fullmatch(r"typedef (.*)\(\*\w+\)\((.*)\)", declaration).groups()
            if result.strip() not in ("int32_t", "void"):
                raise Unsupported(f"{name}: a callback that returns {result.strip()}")
            parsed = self.prototype(f"int32_t {name}({arguments})")
            symbol = self.parameters(name, f"kParameters_{name}", parsed.params)
            addresses = ", ".join(parameter.name if parameter.pointer else f"&{parameter.name}"
                                  for parameter in parsed.params)
            self.out.append(f"extern const Callback kCallback_{name};")
            self.out.append(f"{result.strip()} print_{name}({arguments}) {{\n"
                            f"    const void *const arguments[] = {{{addresses}}};\n"
                            + ("    return adpsh::report_event(kCallback_%s, arguments);\n}" if result.strip() != "void" else
                               "    adpsh::report_event(kCallback_%s, arguments);\n}") % name)
            self.out.append(f"[[maybe_unused]] const Callback kCallback_{name} = {{{quote(name)}, {symbol}, "
                            f"as_function(print_{name})}};\n")

    def prototype(self, text):
        """Reads one prototype as the headers' reader does."""
        scratch = interface.Interface(structs=self.source.structs, aliases=self.source.aliases,
                                      arrays=self.source.arrays, callbacks=self.source.callbacks,
                                      constants=self.source.constants)
        reader = object.__new__(interface._Reader)
        reader.interface = scratch
        reader.function(text, "")
        return scratch.functions[0]

    # Calls

    def result_kind(self, function):
        name = function.returns
        if name == "void":
            return "kNone", "nullptr"
        if name == "const char *":
            return "kText", "nullptr"
        pointed = re.fullmatch(r"(?:const )?(\w+) ?\*", name)
        if pointed and pointed.group(1) in self.source.structs:
            return "kRecord", f"&kRecord_{pointed.group(1)}"
        kinds = {"adp_status_t": "kStatus", INTERFACE_NUMBER: "kInterface"}
        kind = kinds.get(name)
        if not kind and "*" not in name:
            kind = {"i32": "kI32", "u32": "kU32"}.get(self.source.kind_of(name))
        if not kind:
            raise Unsupported(f"{function.name}: returns {name}")
        return kind, "nullptr"

    @staticmethod
    def declaration(function):
        """The prototype as a reader knows it, on one line."""
        parts = []
        for parameter in function.params:
            const = "const " if parameter.const else ""
            parts.append(f"{const}{parameter.type} {'*' * parameter.pointer_depth}{parameter.name}")
        separator = "" if function.returns.endswith("*") else " "
        return f"{function.returns}{separator}{function.name}({', '.join(parts) or 'void'})"

    def calls(self):
        rows = []
        for function in sorted(self.source.functions, key=lambda each: each.name):
            if function.variadic:
                raise Unsupported(f"{function.name}: takes a variable number of arguments")
            kind, record = self.result_kind(function)
            symbol = self.parameters(function.name, f"kParameters_{function.name}", function.params)
            call = f"::{function.name}({', '.join(self.argument(*each) for each in enumerate(function.params))})"
            marked = "" if function.params else "[[maybe_unused]] "
            body = f"    {call};\n    return {{0, nullptr}};" if kind == "kNone" else f"    return result_of({call});"
            self.out.append(f"Result invoke_{function.name}({marked}void *const *arguments) {{\n{body}\n}}\n")
            rows.append(f"    {{{quote(function.name)}, ResultKind::{kind}, {record}, {symbol}, "
                        f"invoke_{function.name}, &::{function.name} != nullptr,\n     {quote(self.declaration(function))},\n"
                        f"     {quote(function.doc)}}},")
        self.out.append("const Call kCalls[] = {\n" + "\n".join(rows) + "\n};\n")

    # Tables

    def tables(self):
        rows = []
        for table in sorted(self.source.data, key=lambda each: each.name):
            match = re.fullmatch(r"(?:const )?(\w+) ?(\*?)((?:\[[\w +]+\]){0,2})", table.type)
            if not match:
                raise Unsupported(f"table {table.name} of type {table.type}")
            name, star, bounds = match.groups()
            extents = [self.number(bound) for bound in re.findall(r"\[([\w +]+)\]", bounds)]
            if name in self.source.arrays:
                name, length = self.source.arrays[name]
                extents.append(length)
            extents = (extents + [1, 1])[:2] if len(extents) <= 2 else self.refuse_table(table)
            rows.append(f"    {{{quote(table.name)}, {self.type_of(name, self.source.kind_of(name))}, {extents[0]}, "
                        f"{extents[1]}, {'true' if star else 'false'}, &::{table.name},\n     {quote(table.doc)}}},")
        self.out.append("const Table kTables[] = {\n" + "\n".join(rows) + "\n};\n")

    @staticmethod
    def refuse_table(table):
        raise Unsupported(f"table {table.name} of type {table.type}")

    def number(self, text):
        """A bound: numbers and constants, added up."""
        terms = [term.strip() for term in text.split("+")]
        return sum(self.source.constants[term] if term in self.source.constants else int(term, 0) for term in terms)

    # Constants

    def constants(self):
        rows = [f"    {{{quote(name)}, {value}, {quote(self.remarks.get(name, ''))}}},"
                for name, value in sorted(self.source.constants.items())]
        self.out.append("constexpr Constant kConstants[] = {\n" + "\n".join(rows) + "\n};\n")
        self.out.append("}  // namespace\n")
        for what, name in (("Call", "calls"), ("Table", "tables"), ("Constant", "constants")):
            self.out.append(f"std::span<const {what}> {name}() {{ return k{what}s; }}")
        self.out.append("")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("include", help="the folder that holds adp/adp.h")
    parser.add_argument("output", help="the C++ file to write")
    options = parser.parse_args()
    try:
        paths = headers_of(options.include)
        text = Writer(interface.read(paths), paths).text()
    except (Unsupported, interface.HeaderError) as error:
        sys.exit(f"generate_calls: the shell cannot take {error}")
    except OSError as error:
        sys.exit(f"generate_calls: cannot read {error.filename}: {error.strerror}")
    with open(options.output, "w", encoding="utf-8") as out:
        out.write(text)


if __name__ == "__main__":
    main()
