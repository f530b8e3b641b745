"""Reads the project's own C headers into plain records.

The headers under include/adp and platform keep to a small subset of C: typedefs of scalars, arrays, structs and
function pointers, extern data, and prototypes whose parameters all have names. A pointer to const is read, any
other pointer is written, ADP_INOUT marks both; `T x[n]` and ADP_COUNT(parameter) give a pointer's extent.
Whatever does not fit this subset is an error, so that a header and what is generated from it cannot drift apart.
"""
import re
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
    callbacks: dict = field(default_factory=dict)  # typedef name -> declaration text
    constants: dict = field(default_factory=dict)  # #define name -> number

    def kind_of(self, type_name):
        """The scalar kind of a type, or struct, or callback."""
        seen = type_name
        while seen in self.aliases:
            seen = self.aliases[seen]
        if seen in SCALARS:
            return SCALARS[seen]
        if seen in self.structs:
            return "struct"
        if seen in self.callbacks:
            return "callback"
        raise HeaderError(f"unknown type '{type_name}'")


DOC = r"/\*\*(?:[^*]|\*(?!/))*\*/"
# A heading is a plain comment of several lines; its title ends with its first line or before the first of these marks.
HEADING = r"^/\*\n \* ([^\n:.,(]+)[^\n]*\n(?: \*(?!/)[^\n]*\n)* \*/$"
SECTION = "@section "  # how run() is told of a heading
NOT_A_DECLARATION = ("@file", "@name", "@{", "@}", SECTION)  # docs that describe the file or a group


def read(paths):
    """Parses the headers in order into one Interface; later headers may use the types of earlier ones."""
    interface = Interface()
    for path in paths:
        with open(path, encoding="utf-8") as source:
            try:
                _Reader(interface, source.read()).run()
            except HeaderError as error:
                raise HeaderError(f"{path}: {error}") from None
    return interface


def clean_doc(comment):
    """A doc comment's text without its stars."""
    body = re.sub(r"^/\*\*<?|\*/$", "", comment.strip())
    lines = [re.sub(r"^\s*\* ?", "", line).rstrip() for line in body.split("\n")]
    return "\n".join(lines).strip()


class _Reader:
    heading = ""  # the last one

    def __init__(self, interface, text):
        self.interface = interface
        self.constants(text)
        text = re.sub(HEADING, lambda match: f"/** {SECTION}{match[1].strip()} */", text, flags=re.M)
        text = re.sub(r"/\*\*<(?:[^*]|\*(?!/))*\*/", "", text)           # trailing member docs
        text = re.sub(r"/\*(?!\*)(?:[^*]|\*(?!/))*\*/|//[^\n]*", "", text)  # plain comments
        # A directive leaves an empty doc comment, so that its own doc does not fall to the next declaration.
        text = re.sub(r"^[ \t]*#(?:[^\n]*\\\n)*[^\n]*$", "/** */", text, flags=re.M)
        text = re.sub(r"\bADP_(?:BEGIN|END)_DECLS\b", "", text)
        self.text = text

    def constants(self, text):
        for name, value in re.findall(r"^#define (\w+)[ \t]+\(?(-?(?:0x[0-9A-Fa-f]+|\d+))u?\)?[ \t]*(?:/\*.*)?$",
                                      text, flags=re.M):
            self.interface.constants[name] = int(value, 0)

    def run(self):
        position, doc = 0, ""
        token = re.compile(rf"\s*(?:(?P<doc>{DOC})|(?P<decl>(?:typedef\s+struct\b[^{{;]*\{{.*?\}}\s*\w+\s*;)|[^;]+;))",
                           re.S)
        while self.text[position:].strip():
            match = token.match(self.text, position)
            if not match:
                raise HeaderError(f"cannot read: {self.text[position:position + 80]!r}")
            position = match.end()
            if match.group("doc"):
                doc = clean_doc(match.group("doc"))
                if doc.startswith(SECTION):
                    self.heading = doc[len(SECTION):]
                    self.interface.headings.append(self.heading)
                doc = "" if doc.startswith(NOT_A_DECLARATION) else doc
                continue
            declaration = re.sub(DOC, "", match.group("decl"), flags=re.S)
            self.declaration(" ".join(declaration.split())[:-1].strip(), doc)
            doc = ""

    def declaration(self, text, doc):
        if text.startswith("typedef struct"):
            self.struct(text, doc)
        elif text.startswith("typedef"):
            self.typedef(text)
        elif text.startswith("enum"):
            for name, value in re.findall(r"(\w+)\s*=\s*(\w+)", text):
                self.interface.constants[name] = self.number(value)
        elif text.startswith("struct"):
            pass  # a forward declaration
        elif text.startswith("extern"):
            self.data(text, doc)
        else:
            self.function(text, doc)

    def number(self, text):
        text = text.strip()
        if text in self.interface.constants:
            return self.interface.constants[text]
        try:
            return int(text.rstrip("u"), 0)
        except ValueError:
            raise HeaderError(f"not a number: '{text}'") from None

    def struct(self, text, doc):
        match = re.fullmatch(r"typedef struct\s*(\w*)\s*\{(.*)\}\s*(\w+)", text)
        if not match:
            forward = re.fullmatch(r"typedef struct (\w+) (\w+)", text)
            if not forward:
                raise HeaderError(f"cannot read struct: {text[:80]}")
            self.interface.aliases.setdefault(forward.group(2), "void")
            return
        fields = []
        for member in filter(None, (part.strip() for part in match.group(2).split(";"))):
            fields.append(self.member(member))
        refuse_duplicates(f"struct {match.group(3)}", fields)
        if match.group(3) in self.interface.structs:
            raise HeaderError(f"'{match.group(3)}' is defined twice")
        self.interface.structs[match.group(3)] = Struct(match.group(3), fields, doc)
        self.interface.aliases.pop(match.group(3), None)

    def member(self, text):
        match = re.fullmatch(r"(?:const )?(struct )?(\w+) ?(\*?) ?(?<!\w)(\w+)(?:\[(\w+)\])?", text)
        if not match:
            raise HeaderError(f"cannot read struct member: {text}")
        tagged, kind, star, name, count = match.groups()
        if kind in self.interface.arrays:
            if star or count:
                raise HeaderError(f"cannot read struct member: {text}")
            element, length = self.interface.arrays[kind]
            return Field(name, element, length, False, True)
        if not (tagged and star):  # a link to a struct that need not be known here
            self.interface.kind_of(kind)
        return Field(name, kind, self.number(count) if count else 1, bool(star))

    def typedef(self, text):
        pointer = re.fullmatch(r"typedef .*\(\*(\w+)\)\(.*\)", text)
        array = re.fullmatch(r"typedef (\w+) (\w+)\[(\w+)\]", text)
        plain = re.fullmatch(r"typedef (\w+) (\w+)", text)
        if pointer:
            self.interface.callbacks[pointer.group(1)] = text
        elif array:
            self.interface.arrays[array.group(2)] = (array.group(1), self.number(array.group(3)))
        elif plain:
            self.interface.aliases[plain.group(2)] = plain.group(1)
        else:
            raise HeaderError(f"cannot read typedef: {text}")

    def data(self, text, doc):
        match = re.fullmatch(r"extern ([^()]*\W)(\w+)((?:\[[^\]]*\])*)", text)
        if not match:
            raise HeaderError(f"cannot read data: {text}")
        self.interface.data.append(Data(match.group(2), (match.group(1).strip() + match.group(3)), doc))

    def function(self, text, doc):
        match = re.fullmatch(r"((?:const )?(?:struct )?(\w+) ?\**) ?(?<!\w)(\w+)\((.*)\)", text)
        if not match:
            raise HeaderError(f"cannot read declaration: {text[:100]}")
        returns, name, arguments = match.group(1).strip(), match.group(3), match.group(4).strip()
        try:
            self.interface.kind_of(match.group(2))
        except HeaderError as error:
            raise HeaderError(f"{name}: {error}") from None
        if any(known.name == name for known in self.interface.functions):
            raise HeaderError(f"{name}: declared twice")
        function = Function(name, returns, [], doc=doc, heading=self.heading)
        if arguments not in ("", "void"):
            for argument in map(str.strip, re.split(r",(?![^()]*\))", arguments)):  # not at commas in parentheses
                if argument == "...":
                    function.variadic = True
                else:
                    function.params.append(self.parameter(argument, name))
        refuse_duplicates(name, function.params)
        names = [parameter.name for parameter in function.params]
        for parameter in function.params:
            if isinstance(parameter.extent, str) and parameter.extent not in names:
                raise HeaderError(f"{name}: ADP_COUNT({parameter.extent}) names no parameter")
        self.interface.functions.append(function)

    def parameter(self, text, function):
        inout = bool(re.search(r"\bADP_INOUT\b", text))
        count = re.search(r"\bADP_COUNT\((\w+)\)", text)
        plain = re.sub(r"\bADP_INOUT\b|\bADP_COUNT\(\w+\)", "", text).strip()
        match = re.fullmatch(r"(const )?(?:struct )?(\w+) ?((?:\* ?(?:const )?)*)(?<!\w)(\w+)(?:\[(\w+)\])?", plain)
        if not match:
            raise HeaderError(f"{function}: cannot read parameter '{text}'")
        const, kind, stars, name, bound = match.groups()
        result = Param(name, kind, const=bool(const), pointer_depth=stars.count("*"))
        if kind in self.interface.arrays:
            if stars or bound is not None:
                raise HeaderError(f"{function}: a pointer to or array of a port set: '{text}'")
            result.type, result.extent = self.interface.arrays[kind]
            result.is_ports, result.pointer_depth = True, 1
        elif bound is not None:
            result.extent, result.pointer_depth = self.number(bound), result.pointer_depth + 1
        if count:
            name = count.group(1)
            result.extent = self.interface.constants.get(name, int(name) if name.isdigit() else name)
        result.pointer = result.pointer_depth > 0
        if (inout or count) and not result.pointer:
            raise HeaderError(f"{function}: only a pointer has a direction or an extent: '{text}'")
        if inout and result.const:
            raise HeaderError(f"{function}: a pointer to const cannot be written: '{text}'")
        if count and (bound is not None or result.is_ports):
            raise HeaderError(f"{function}: two extents: '{text}'")
        try:
            result.kind = self.interface.kind_of(result.type)
        except HeaderError as error:
            raise HeaderError(f"{function}: {error}") from None
        if result.pointer:
            result.direction = "inout" if inout else "in" if result.const else "out"
        return result


def refuse_duplicates(owner, named):
    names = [one.name for one in named]
    for name in names:
        if names.count(name) > 1:
            raise HeaderError(f"{owner}: two named '{name}'")
