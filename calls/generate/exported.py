"""The exported interface as the emitter sees it.

A declaration that the table of exported calls cannot hold is an error of the build.
"""
import re
from dataclasses import dataclass

import headers
import model
from interface import SCALARS, HeaderError, Interface

KIND_NAMES = {**model.KIND_NAMES, "i16": "kI16", "void": "kOpaque", "callback": "kCallback"}
# The extent of a block of which only the driver knows the layout.
OPAQUE_BYTES = 1024
# Octets that stand for something else, see calls::Octets; which number beside them says what, or None.
MEANINGS = {
    ("FpQualify", "data"): ("kCondition", "type"), ("FpQualify", "mask"): ("kCondition", "type"),
    ("adp_fp_add_entity_qualify", "data"): ("kCondition", "type"),
    ("adp_fp_add_entity_qualify", "mask"): ("kCondition", "type"),
    ("FpAction", "param"): ("kWords", None), ("FpAction", "param2"): ("kWords", None),
    ("adp_fp_add_entity_action", "param"): ("kWords", None), ("adp_fp_add_entity_action", "param2"): ("kWords", None),
    ("RemarkRule", "match_value"): ("kRemark", "match_field"),
}
LIST_LINK = "adp_list_link_t"
RESULTS = {"void": "kNothing", "const char *": "kText", "adp_status_t": "kStatus", "adp_intf_t": "kInterface"}
NUMBERS = {"i32": "kI32", "u32": "kU32"}


@dataclass
class Exported:
    headers: Interface
    remarks: dict  # constant -> remark
    field_remarks: dict  # (struct, member) -> remark

    @property
    def functions(self):
        return sorted(self.headers.functions, key=lambda function: function.name)

    def is_link(self, member):
        """A list's link: `struct tag *`, whose type the header reader does not know."""
        return member.pointer and member.type not in SCALARS and member.type not in self.headers.structs \
            and member.type not in self.headers.aliases

    def kind_of_member(self, struct, member):
        kind = "void" if self.is_link(member) else self.headers.kind_of(member.type)
        if kind == "callback":
            raise HeaderError(f"{struct.name}.{member.name}: a callback in a struct")
        return KIND_NAMES[kind]

    def holds_address(self, struct_name):
        return any(member.pointer or (member.type in self.headers.structs and self.holds_address(member.type))
                   for member in self.headers.structs[struct_name].fields)

    @staticmethod
    def meaning_of(owner, name):
        """Of a parameter of a function or a member of a struct."""
        octets, beside = MEANINGS.get((owner.name, name), ("kPlain", None))
        named = owner.params if hasattr(owner, "params") else owner.fields
        return octets, [one.name for one in named].index(beside) if beside else 0

    def shape_of(self, where, param):
        if param.is_ports_word:
            return "kPortsWord"
        if param.pointer_depth > 1:
            if param.pointer_depth > 2 or param.kind != "u8" or param.direction != "out":
                raise HeaderError(f"{where} is a pointer to a pointer")
            return "kOutPointer"
        if param.kind == "char":
            if not param.is_text:
                raise HeaderError(f"{where} is text that the call writes")
            return "kText"
        if param.kind != "struct" or not self.holds_address(param.pointed or param.type):
            return "kPlain"
        if param.type == LIST_LINK and param.direction == "in":
            return "kList"
        members = self.headers.structs[param.type].fields
        addresses = [member for member in members if member.pointer]
        if param.pointer and {"frame", "length"} <= {member.name for member in members} and \
                all(self.headers.kind_of(member.type) == "u8" for member in addresses):
            return "kFrameRecord"
        raise HeaderError(f"{where} is a struct that holds addresses")

    @staticmethod
    def extent_of(where, function, param):
        """The extent, or 0 and the index of the parameter that counts the elements."""
        if isinstance(param.extent, str):
            index = [each.name for each in function.params].index(param.extent)
            if function.params[index].direction == "out":
                raise HeaderError(f"{where}: its extent is only known after the call")
            return 0, index
        if param.kind == "void" and not param.pointer:
            raise HeaderError(f"{where} has no type")
        if param.kind == "u8" and param.extent == 1 and param.direction in ("in", "inout"):
            raise HeaderError(f"{where} addresses bytes, and does not say how many")
        return (OPAQUE_BYTES if param.kind == "void" and param.extent == 1 else param.extent), None

    def result_of(self, function):
        """The kind of the result, and the struct that it is the address of."""
        returns = function.returns
        if returns in RESULTS:
            return RESULTS[returns], None
        pointed = re.fullmatch(r"(?:const )?(\w+) ?\*", returns)
        if pointed and pointed.group(1) in self.headers.structs:
            return "kStruct", pointed.group(1)
        kind = None if "*" in returns else NUMBERS.get(self.headers.kind_of(returns))
        if not kind:
            raise HeaderError(f"{function.name}: returns {returns}")
        return kind, None

    def table_of(self, data):
        """The element type of exported data, rows, columns, and whether it is a pointer to rows."""
        match = re.fullmatch(r"(?:const )?(\w+) ?(\*?)((?:\[[\w +]+\]){0,2})", data.type)
        if not match:
            raise HeaderError(f"table {data.name} of type {data.type}")
        name, star, bounds = match.groups()
        extents = [self.sum(bound) for bound in re.findall(r"\[([\w +]+)\]", bounds)]
        if name in self.headers.arrays:
            name, length = self.headers.arrays[name]
            extents.append(length)
        if len(extents) > 2:
            raise HeaderError(f"table {data.name} of type {data.type}")
        rows, columns = (extents + [1, 1])[:2]
        return name, rows, columns, bool(star)

    def sum(self, text):
        """A bound: numbers and constants, added up."""
        terms = [term.strip() for term in text.split("+")]
        return sum(self.headers.constants[term] if term in self.headers.constants else int(term, 0) for term in terms)


def read(include):
    """The headers that adp.h includes: a new header, call or table is in the table by itself."""
    paths = headers.included_by("adp/adp.h", include)
    exported = Exported(headers.read(paths), headers.remarks_of(paths), headers.field_remarks_of(paths))
    for function in exported.functions:
        if function.variadic:
            raise HeaderError(f"{function.name}: takes a variable number of arguments")
    return exported
