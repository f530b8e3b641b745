"""Emits the Python package's calls: a module for each header, a function for each call."""
import re

import doc
import emit_python_text as text
import python_names as names
from interface import HeaderError

RESULTS = {"adp_status_t": "Status", "void": "None"}
TUPLE_METHODS = ("count", "index")
PARAMETERS = ("Callback", "Count", "Counted", "CountedInOut", "In", "InOut", "Out", "PortsWord", "Room", "Text", "Value")


class Parameter:
    """How one parameter is declared and written in Python."""

    def __init__(self, library, function, param):
        self.param, self.name = param, names.checked(param.name)
        self.is_given = param.direction != "out"
        self.is_returned = param.direction in ("out", "inout")
        self.given_type = self.returned_type = "int"
        self.declared = self.declare(library, function)
        self.default = ""

    def declare(self, library, function):
        """The declaration: a parameter of another kind for each way in which calls take values."""
        param, shape = self.param, library.shape_of(f"{function.name}: parameter '{self.name}'", self.param)
        special = {"kText": self.text, "kPortsWord": self.ports_word, "kList": self.destinations,
                   "kFrameRecord": self.frame_record, "kOutPointer": self.frame_start}.get(shape)
        if special:
            return special(function)
        if param.kind == "callback":
            return self.callback(library)
        counted = [each for each in function.params if each.extent == self.name and each.direction != "out"]
        if counted:
            return self.count(library, counted)
        return self.plain(library, function)

    def made(self, kind, *more):
        return f"{kind}({', '.join([text.quote(self.name), *more])})"

    def text(self, _function):
        self.given_type = "str"
        return self.made("Text")

    def ports_word(self, _function):
        self.given_type = "PortSet | None"
        return self.made("PortsWord", "c_size_t")

    def destinations(self, _function):
        self.given_type = "Sequence[int] | None"
        return self.made("DestinationsIn", "layouts.ListLink")

    def frame_record(self, _function):
        self.given_type = self.returned_type = names.class_of(self.param.type)
        return self.made(f"{self.given_type}{'InOut' if self.is_returned else 'In'}", f"layouts.{self.given_type}")

    def frame_start(self, function):
        self.returned_type = "int | None"
        [frame] = [each for each in function.params if each.direction == "inout" and each.kind == "u8"]
        return self.made("FrameStart", text.quote(frame.name))

    def callback(self, library):
        kinds = [names.annotation(names.ctype(library.headers, each.type), False)
                 for each in library.headers.callbacks[self.param.type].params]
        self.given_type = f"Callable[[{', '.join(kinds)}], int | None] | None"
        return self.made("Callback", f"layouts.{names.class_of(self.param.type)}")

    def count(self, library, counted):
        if len(counted) != 1:
            raise HeaderError(f"'{self.name}' counts the elements of several arguments")
        self.is_given = False
        most = ["0xFFFF"] if counted[0].counts_16_bits else []
        return self.made("Count", names.ctype(library.headers, self.param.type), text.quote(counted[0].name), *most)

    def plain(self, library, function):
        param = self.param
        seen = param.pointed or param.type
        element = "c_uint8" if seen == "void" else names.ctype(library.headers, seen)
        kind = "InOut" if param.direction == "inout" else param.direction.capitalize()
        if isinstance(param.extent, str):
            self.given_type = names.annotation(f"{element} * n", False)
            self.returned_type = names.annotation(f"{element} * n", True)
            if param.direction == "out":
                return self.made("Room", element, text.quote(param.extent))
            return self.made("CountedInOut" if self.is_returned else "Counted", element)
        if param.extent > 1:
            element = names.array(element, param.extent, param.is_ports)
        self.given_type, self.returned_type = names.annotation(element, False), names.annotation(element, True)
        return self.made(kind, element)

    @property
    def written(self):
        """In the list of the function's parameters."""
        return f"{self.name}: {self.given_type}{' | None = None' if self.default else ''}"


class Function:
    """A call in Python."""

    def __init__(self, library, function):
        self.library, self.function, self.name = library, function, names.name_of(library, function.name)
        self.parameters = [Parameter(library, function, param) for param in function.params]
        self.given = [each for each in self.parameters if each.is_given]
        for each in reversed(self.given):  # what is also written can be left out if it comes last
            if each.param.direction != "inout" or "list" in each.given_type or each.declared.startswith("Counted"):
                break
            each.default = "RxFrame" not in each.given_type
        self.fields = [(each.name, each.returned_type) for each in self.parameters if each.is_returned]
        self.result, result_type = self.result_of(library)
        if result_type:
            self.fields.insert(0, ("result", result_type))

    def result_of(self, library):
        """The declaration of the result, and its type if Python returns it."""
        returns = self.function.returns
        if returns in RESULTS:
            return RESULTS[returns], None
        kind, struct = library.result_of(self.function)
        if kind == "kStruct":
            return (f"POINTER(layouts.{names.class_of(struct)})", f"records.{names.class_of(struct)} | None")
        return names.ctype(library.headers, returns), "int"

    @property
    def tuple_name(self):
        return names.camel(self.name.lower()) + "Result"

    @property
    def returned(self):
        if len(self.fields) > 1:
            return self.tuple_name
        return self.fields[0][1] if self.fields else "None"

    def tuple_class(self):
        lines = [f"class {self.tuple_name}(NamedTuple):", text.docstring(f"What {self.name}() gives."), ""]
        for name, kind in self.fields:
            remark = "  # type: ignore[assignment]  # not the tuple's" if name in TUPLE_METHODS else ""
            lines.append(f"    {name}: {kind}{remark}")
        return "\n".join(lines) + "\n"

    def definition(self):
        several = [f"several={self.tuple_name}"] if len(self.fields) > 1 else []
        declared = [text.quote(self.function.name), self.result, *(each.declared for each in self.parameters), *several]
        head = f"_{self.name}: Call[{self.returned}] = Call("
        call = f"_{self.name}({', '.join(each.name for each in self.given)})"
        statement = call if self.returned == "None" else f"return {call}"
        return (f"{joined(head, declared, ')')}\n\n\n"
                f"{joined(f'def {self.name}(', [each.written for each in self.given], f') -> {self.returned}:')}\n"
                f"{self.docstring()}\n    {statement}\n")

    def docstring(self):
        comment = doc.read(self.function.doc)
        entries = [f"{each.name}: {comment.params[each.name][1]}" for each in self.parameters
                   if each.is_given or each.is_returned]
        if comment.result:
            entries.append(f"{'status' if self.result == 'Status' else 'result'}: {comment.result}")
        return text.docstring(comment.purpose, entries=[self.with_classes(entry) for entry in entries])

    def with_classes(self, entry):
        """Enumerations by their names in Python."""
        return re.sub(r"\benum (adp_\w+)", lambda match: names.enumeration_of(self.library, match[1]), entry)


def joined(head, parts, tail):
    """On one line, or a part a line."""
    line = head + ", ".join(parts) + tail
    return line if len(line) <= text.WIDTH else head + "\n" + "".join(f"    {part},\n" for part in parts) + tail


def used(body, module, candidates):
    found = [name for name in candidates
             if re.search(rf"(?:[\[(,>=:] ?|^    ){name}(?=[\[\](),:\n]| [|*=])", body, re.M)]
    return f"from {module} import {', '.join(found)}\n" if found else ""


def imports(body):
    """What a module's text needs."""
    standard = [used(body, "collections.abc", ("Callable", "Sequence")),
                used(body, "ctypes", ("POINTER", *(kind for kind in sorted(names.TYPES.values())))),
                used(body, "typing", ("NamedTuple",))]
    own = [used(body, "..call", ("Call", "Status")),
           used(body, "..frames", ("DestinationsIn", "FrameStart", "RxFrame", "RxFrameInOut", "TxFrame", "TxFrameIn")),
           used(body, "..memory", ("FewPorts", "Ports")),
           used(body, "..parameters", PARAMETERS), used(body, "..ports", ("PortSet",))]
    types = [name for name in ("layouts", "records") if f"{name}." in body]
    own.append(f"from . import {', '.join(types)}\n" if types else "")
    return "".join(filter(None, standard)) + "\n" + "".join(filter(None, own)) + "\n"


def module(library, header):
    functions = [Function(library, each) for each in library.headers.functions if each.header == header]
    parts, tuples = [], {}
    for function in functions:
        if len(function.fields) > 1:
            if tuples.setdefault(function.tuple_name, function.fields) is function.fields:
                parts.append(function.tuple_class())
            elif tuples[function.tuple_name] != function.fields:
                raise HeaderError(f"{function.name}: another call has a result {function.tuple_name} of other fields")
        parts.append(function.definition())
    body = "\n\n".join(parts)
    public = [function.name for function in functions] + list(tuples)
    return text.module(f"The calls of {header}.", imports(body) + "\n\n" + body, public)
