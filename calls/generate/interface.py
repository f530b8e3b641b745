"""The declarations of the project's own C headers, as headers.py reads them."""
from dataclasses import dataclass, field

SCALARS = {
    "uint8_t": "u8", "uint16_t": "u16", "uint32_t": "u32", "uint64_t": "u64",
    "int16_t": "i16", "int32_t": "i32", "int": "i32", "unsigned": "u32", "char": "char", "uintptr_t": "word", "void": "void",
}


class HeaderError(Exception):
    pass


@dataclass
class Field:
    """A member of a struct; count is 1 unless it is an array."""
    name: str
    type: str
    count: int = 1
    pointer: bool = False
    is_ports: bool = False  # declared with an array typedef of port words


@dataclass
class Struct:
    name: str
    fields: list
    doc: str = ""


@dataclass
class Param:
    """direction is value, in, out or inout; extent a number of elements or the name of another parameter."""
    name: str
    type: str
    pointer: bool = False
    const: bool = False
    pointer_depth: int = 0
    direction: str = "value"
    extent: object = 1
    is_ports: bool = False
    kind: str = ""  # u8 u16 u32 u64 i32 word char void struct callback
    pointed: str = ""  # the type that a pointer to void is the address of
    most: int = 0  # of a count above this number the call reads no element; 0: no limit
    counts_16_bits: bool = False
    is_ports_word: bool = False  # a word that is the address of a set of ports

    @property
    def is_text(self):
        return self.pointer_depth == 1 and self.const and self.kind == "char"


@dataclass
class Function:
    name: str
    returns: str
    params: list
    variadic: bool = False
    doc: str = ""
    heading: str = ""  # the section that it stands in
    header: str = ""   # the file with its folder, as programs include it


@dataclass
class Data:
    name: str
    type: str
    doc: str = ""


@dataclass
class Interface:
    functions: list = field(default_factory=list)
    headings: list = field(default_factory=list)   # titles of sections, in order
    data: list = field(default_factory=list)
    structs: dict = field(default_factory=dict)
    aliases: dict = field(default_factory=dict)    # typedef name -> scalar or struct name
    arrays: dict = field(default_factory=dict)     # typedef name -> (element type, count)
    callbacks: dict = field(default_factory=dict)  # typedef name -> Function
    constants: dict = field(default_factory=dict)  # name of a #define or an enumerator -> number
    enums: dict = field(default_factory=dict)      # enumerator -> tag of its enumeration

    def unaliased(self, type_name):
        while type_name in self.aliases:
            type_name = self.aliases[type_name]
        return type_name

    def kind_of(self, type_name):
        """The scalar kind of a type, or struct, or callback."""
        seen = self.unaliased(type_name)
        if seen in SCALARS:
            return SCALARS[seen]
        if seen in self.structs:
            return "struct"
        if seen in self.callbacks:
            return "callback"
        raise HeaderError(f"unknown type '{type_name}'")
