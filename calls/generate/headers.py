"""Reads the project's own C headers.

The headers under include/adp and platform keep to a small subset of C: typedefs of scalars, arrays, structs and
function pointers, extern data, and prototypes whose parameters all have names. A pointer to const is read, any
other pointer is written, ADP_INOUT marks both; `T x[n]` and the marks ADP_COUNT.. give a pointer's extent, ADP_TYPE
what a pointer to void is the address of, ADP_PORTS which words are addresses of sets of ports. Anything else is an error,
so that a header and what is generated from it cannot differ.
"""
import os
import re

from interface import Data, Field, Function, HeaderError, Interface, Param, Struct

DOC = r"/\*\*(?:[^*]|\*(?!/))*\*/"
# A heading is a plain comment of several lines; its title ends with its first line or before the first of these marks.
HEADING = r"^/\*\n \* ([^\n:.,(]+)[^\n]*\n(?: \*(?!/)[^\n]*\n)* \*/$"
MARK = r"\bADP_(INOUT|PORTS|COUNT|COUNT16|COUNT_UP_TO|TYPE)\b(?:\(([\w, ]+)\))?"
SECTION = "@section "  # marks a heading for run()
NOT_A_DECLARATION = ("@file", "@name", "@{", "@}", SECTION)  # docs that describe the file or a group


def read(paths):
    """Parses the headers in order into one Interface; later headers may use the types of earlier ones."""
    interface = Interface()
    for path in paths:
        known = len(interface.functions)
        with open(path, encoding="utf-8") as source:
            try:
                Reader(interface, source.read()).run()
            except HeaderError as error:
                raise HeaderError(f"{path}: {error}") from None
        for function in interface.functions[known:]:
            function.header = os.path.join(*os.path.normpath(path).split(os.sep)[-2:])
    return interface


def included_by(header, root):
    """The paths of the project's headers that a header includes, each after those that it includes itself; then its own."""
    found = []

    def visit(name):
        path = os.path.join(root, name)
        with open(path, encoding="utf-8") as source:
            for included in re.findall(r"^#include <(adp/\w+\.h)>", source.read(), flags=re.M):
                visit(included)
        if path not in found:
            found.append(path)

    visit(header)
    return found


def remarks_of(paths):
    """The remark after each #define and enumerator, by its name."""
    remarks = {}
    for path in paths:
        with open(path, encoding="utf-8") as source:
            remarks.update(re.findall(r"^\s*(?:#define )?(ADP_\w+)\b[^\n/]*/\*\*< *([^\n]*?) *\*/$", source.read(),
                                      flags=re.M))
    return remarks


def field_remarks_of(paths):
    """The remark after each member of a struct, by the names of struct and member."""
    remarks = {}
    for path in paths:
        with open(path, encoding="utf-8") as source:
            text = source.read()
        for body, name in re.findall(r"^typedef struct \w*\s*\{\n(.*?)^\} (\w+);", text, flags=re.M | re.S):
            for member, remark in re.findall(r"(\w+)(?:\[\w+\])?; */\*\*< *([^\n]*?) *\*/$", body, flags=re.M):
                remarks[name, member] = remark
    return remarks


def clean_doc(comment):
    """A doc comment's text without its stars."""
    body = re.sub(r"^/\*\*<?|\*/$", "", comment.strip())
    lines = [re.sub(r"^\s*\* ?", "", line).rstrip() for line in body.split("\n")]
    return "\n".join(lines).strip()


class Reader:
    heading = ""  # the last one

    def __init__(self, interface, text):
        self.interface = interface
        self.constants(text)
        text = re.sub(HEADING, lambda match: f"/** {SECTION}{match[1].strip()} */", text, flags=re.M)
        text = re.sub(r"/\*\*<(?:[^*]|\*(?!/))*\*/", "", text)           # trailing member docs
        text = re.sub(r"/\*(?!\*)(?:[^*]|\*(?!/))*\*/|//[^\n]*", "", text)  # plain comments
        # A directive becomes an empty doc comment, so that its doc is not taken for the next declaration's.
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
                self.interface.enums[name] = text.split()[1]
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
        check_duplicates(f"struct {match.group(3)}", fields)
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
        callback = re.fullmatch(r"typedef (.*)\(\*(\w+)\)\((.*)\)", text)
        array = re.fullmatch(r"typedef (\w+) (\w+)\[(\w+)\]", text)
        plain = re.fullmatch(r"typedef (\w+) (\w+)", text)
        if callback:
            returns, name, arguments = (part.strip() for part in callback.groups())
            self.interface.callbacks[name] = self.signature(name, returns, arguments)
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
        self.interface.functions.append(self.signature(name, returns, arguments, doc))

    def signature(self, name, returns, arguments, doc=""):
        function = Function(name, returns, [], doc=doc, heading=self.heading)
        if arguments not in ("", "void"):
            for argument in map(str.strip, re.split(r",(?![^()]*\))", arguments)):  # not at commas in parentheses
                if argument == "...":
                    function.variadic = True
                else:
                    function.params.append(self.parameter(argument, name))
        check_duplicates(name, function.params)
        names = [parameter.name for parameter in function.params]
        for parameter in function.params:
            if isinstance(parameter.extent, str) and parameter.extent not in names:
                raise HeaderError(f"{name}: ADP_COUNT({parameter.extent}) names no parameter")
        return function

    def parameter(self, text, function):
        marks = dict(re.findall(MARK, text))
        plain = re.sub(MARK, "", text).strip()
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
        result.pointer = result.pointer_depth > 0
        try:
            result.kind = self.interface.kind_of(marks.get("TYPE", result.type))
        except HeaderError as error:
            raise HeaderError(f"{function}: {error}") from None
        self.mark(result, marks, f"{function}: {{}}: '{text}'", bound is not None or result.is_ports)
        return result

    def mark(self, param, marks, error, has_extent):
        """What the marks say; error has a place for the reason."""
        count = next((mark for mark in marks if mark.startswith("COUNT")), None)
        if ("INOUT" in marks or count) and not param.pointer:
            raise HeaderError(error.format("only a pointer has a direction or an extent"))
        if "INOUT" in marks and param.const:
            raise HeaderError(error.format("a pointer to const cannot be written"))
        if count and has_extent:
            raise HeaderError(error.format("two extents"))
        if "TYPE" in marks and (param.type != "void" or param.pointer_depth != 1):
            raise HeaderError(error.format("only a pointer to void needs a type"))
        if "PORTS" in marks and (param.kind != "word" or param.pointer):
            raise HeaderError(error.format("only a word can be the address of a set of ports"))
        if count:
            most, _, name = marks[count].rpartition(", ")
            param.extent = self.interface.constants.get(name, int(name) if name.isdigit() else name)
            param.counts_16_bits, param.most = count == "COUNT16", self.number(most or "0")
        param.pointed, param.is_ports_word = marks.get("TYPE", ""), "PORTS" in marks
        if param.pointer:
            param.direction = "inout" if "INOUT" in marks else "in" if param.const else "out"


def check_duplicates(owner, named):
    names = [one.name for one in named]
    for name in names:
        if names.count(name) > 1:
            raise HeaderError(f"{owner}: two named '{name}'")
