"""Derives the model of a call from its contract, the comment in the public header.

The comment's purpose is free, and so is what it says of most parameters. The rest has to be one of FORMS, word by word.
"""
import re

import emit_calls
import emit_exported
from interface import HeaderError

CALL = r"\w+\([^()]*\)"
CONTRACT = re.compile(rf"Driver call(?P<when>[^:]*): (?P<calls>{CALL}(?:; {CALL})*)(?P<clause>[^.]*)\."
                      r'(?: A (?P<failure>negative result|failure) is reported: "(?P<report>[^"]*)"\.)?')
CONSTANTS = ("unit", "zero", "handle")  # of the driver: always 0, and left out by most comments
MASKS = {"low 16 bits used": "0xFFFF", "low byte used": "0xFF"}

FAILED = "0; 102 when the driver call failed"
REFUSED = "; 201 for another type, -1 for a group outside 1..8"
ON_MANAGER = ", on a group for its management interface"
STEP = "[&](int32_t port) {{ return {call}; }}"
STEP_102 = "[&](int32_t port) {{ return or_102({call}); }}"
# What the comment says of the driver call and of the result: the model.
FORMS = {
    ("", "the driver's result"): "return {call};",
    ("", FAILED): "return or_102({call});",
    (", its result ignored", "0"): "{call};\n    return 0;",
    (" by mode", "the driver's result; 101 without a driver call for another mode"):
        "switch ({mode}) {{\n        case 0: return {calls[0]};\n        case 1: return {calls[1]};\n"
        "        case 2: return {calls[2]};\n        default: return 101;\n    }}",
    (" for each of user ports 1 to 26, whatever the number of ports in the map, its result ignored", "0"):
        "for (uint32_t n = 1; n <= 26; ++n) {{\n        const int32_t port = adp_intf_2_phy_id(n);\n        {call};\n"
        "    }}\n    return 0;",
    ("", FAILED + ", and without one for a group; 201 for another type"): f"return on_port_only({{intf}}, {STEP});",
    ("", FAILED + "; 201 for a group and for another type"):
        f"return is_agg({{intf}}) ? 201 : on_port_only({{intf}}, {STEP});",
    (ON_MANAGER, "the driver's result" + REFUSED): f"return on_port_or_manager({{intf}}, {STEP});",
    (ON_MANAGER, FAILED + REFUSED): f"return on_port_or_manager({{intf}}, {STEP_102});",
    (ON_MANAGER + ", without one for its lowest configured member",
     FAILED + "; 203 for a group with neither" + REFUSED): f"return on_port_or_answering_member({{intf}}, {STEP_102});",
}
for kind in ("active", "configured"):
    clause, policy = f", on a group for each {kind} member", f"return on_port_or_members({{intf}}, {kind}_members, "
    FORMS[clause, "0; 102 at the first failure" + REFUSED] = f"{policy}{STEP_102});"
    FORMS[clause, "user port: the driver's result; group: 0, 102 at the first failure" + REFUSED] = f"{policy}{STEP});"


class Contract:
    """The comment of a call, and the model that follows from it."""

    def __init__(self, function, driver):
        self.function = function
        self.driver = driver
        self.params = {param.name: param for param in function.params}
        self.used = set()
        doc = re.sub(r"\b(an )?aggregation interface\b", lambda match: "a group" if match[1] else "group", function.doc)
        self.comment, _, tags = doc.partition("@")
        said = re.findall(r"@(?:param(?:\[[\w,]+\])? (\w+)|return) (.*?)(?= @(?:param|return)|$)",
                          " ".join(("@" + tags).split()))
        self.said = dict(said)
        self.returns = self.said.pop("", "")

    def refuse(self, reason):
        raise HeaderError(f"{self.function.name}: {reason}")

    def expect_return(self, text):
        if self.returns != text:
            self.refuse(f"'@return {self.returns}' instead of '@return {text}'")

    def body(self):
        text = " ".join(self.comment.split())
        if same := re.fullmatch(r"The same as (\w+)\(\)\.", text):
            self.expect_return(f"as {same[1]}()")
            return f"return {same[1]}({', '.join(self.params)});"
        if text.startswith("Does nothing"):
            self.expect_return("0")
            return "return 0;"
        return self.on_driver()

    def after_purpose(self):
        purpose, _, rest = self.comment.partition("\n\n")
        start = purpose.find("Driver call")
        return " ".join((purpose[start:] + " " + rest if start >= 0 else rest).split())

    def on_driver(self):
        match = CONTRACT.fullmatch(self.after_purpose())
        if not match:
            self.refuse(f"not understood: '{self.after_purpose()}'")
        clause = match["clause"].removeprefix(", no unit")
        form = FORMS.get((match["when"] + clause, self.returns))
        if not form:
            self.refuse(f"no known form: 'Driver call{match['when']}: ...{clause}' with '@return {self.returns}'")
        calls = [self.call(text, "int32_t port" in form) for text in re.findall(CALL, match["calls"])]
        if len(calls) != form.count("{call"):
            self.refuse(f"{len(calls)} driver calls instead of {form.count('{call')}")
        body = form.format(call=calls[0], calls=calls, intf=self.interface() if "{intf}" in form else "",
                           mode=self.cut("mode") if "{mode}" in form else "")
        return self.before() + (self.reported(body, match) if match["report"] else body)

    def before(self):
        """What comes before the driver call. Every parameter must have its place by now."""
        lines = ""
        for name, param in self.params.items():
            said = self.said.get(name, "")
            if said == "1 for nothing":
                lines += f"if ({name} == 1) {{\n        return 0;\n    }}\n    "
            elif said.startswith("set to 0, then written by the driver"):
                lines += f"*{name} = 0;\n    "
            elif param.direction in ("out", "inout") and "written by the driver" not in said:
                self.refuse(f"'@param {name} {said}' does not say 'written by the driver'")
            elif (said == "not used") == (name in self.used):
                where = "in" if name in self.used else "not in"
                self.refuse(f"'{name}' is {where} the driver call, and '@param {name} {said}'")
        return lines

    def reported(self, body, match):
        """The first number of a report is a line of the source, which the contract leaves open."""
        report = match["report"].replace("%d", "%s", 1)
        if not body.startswith("return user_") or report.count("%") != 3:
            self.refuse(f"a report that is not understood: '{match['report']}'")
        failed = "result < 0" if match["failure"] == "negative result" else "result != 0"
        return (f"{body.replace('return', 'const int32_t result =')}\n    if ({failed}) {{\n"
                f'        printf("{report}", "{self.function.name}", kAnyNumber, result);\n    }}\n    return result;')

    def call(self, text, has_port):
        name, arguments = re.fullmatch(r"(\w+)\((.*)\)", text).groups()
        if name not in self.driver:
            self.refuse(f"there is no driver call {name}()")
        takes = self.driver[name].params
        words = arguments.split(", ") if arguments else []
        left_out = takes[:len(takes) - len(words)] if len(words) < len(takes) else []
        if len(words) > len(takes) or len(left_out) not in (0, 2) or any(p.name not in CONSTANTS for p in left_out):
            self.refuse(f"{name}() takes {len(takes)} arguments, not {len(words)}")
        values = [self.value(word, to, has_port) for word, to in zip(words, takes[len(left_out):])]
        return f"{name}({', '.join(['0'] * len(left_out) + values)})"

    def value(self, word, to, has_port):
        """An argument of the driver call, as what the driver takes."""
        name, port, less = re.fullmatch(r"(.*?)( port)?( - 1)?", word).groups()
        if re.fullmatch(r"-?\d+", word):
            return word
        if word == "port" and word not in self.params:
            return word if has_port else f"adp_intf_2_phy_id({self.interface()})"
        if word == "key":
            return f"key_of({self.cut('mac')}).data()"
        if word == "type":
            return f"storm_type({self.cut('storm_code')})"
        if port:
            return f"adp_intf_2_phy_id({self.cut(name)})"
        value = self.cut(name) + (less or "")
        given = self.params[name]
        if (given.type, given.pointer) == (to.type, to.pointer):
            return value
        cast = "reinterpret_cast" if given.type == "adp_word_t" and to.pointer else "static_cast"
        return f"{cast}<{emit_calls.declare(to, named=False)}>({value})"

    def interface(self):
        found = [name for name, param in self.params.items() if param.type == "adp_intf_t"]
        return self.cut(found[0]) if len(found) == 1 else self.refuse(f"{len(found)} interfaces")

    def cut(self, name):
        """A parameter, as many bits of it as are used."""
        if name not in self.params:
            self.refuse(f"'{name}' is neither a parameter nor a number")
        self.used.add(name)
        masks = [mask for words, mask in MASKS.items() if words in self.said.get(name, "")]
        return f"({name} & {masks[0]})" if masks else name


def model(function, driver):
    """The definition of the model; HeaderError when none follows from the comment."""
    return f"{emit_exported.declaration(function)} {{\n    {Contract(function, driver).body()}\n}}\n"
