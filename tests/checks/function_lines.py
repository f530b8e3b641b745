"""Finds the functions of a C, C++, Python or JavaScript source and how many lines each has.

A C or C++ function is counted from the line of its opening brace to that of its closing brace; clang-format fixes where
these stand. A lambda belongs to the function around it, and one in a table's initialiser to the table. A Python
function is counted from its `def` to its last line. JavaScript is read by TypeScript's parser, all files at once.
"""
import ast
import bisect
import json
import os
import pathlib
import re
import subprocess
from dataclasses import dataclass

NOT_CODE = re.compile(
    r"""//[^\n]* | /\*.*?\*/ | R"(?P<mark>[^\s(]*)\(.*?\)(?P=mark)" | "(?:\\.|[^"\\\n])*"
    | (?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])+'                        # not the separator of 1'000
    | ^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*                             # a directive""",
    re.S | re.M | re.X)
SCOPE = re.compile(r'\b(?:namespace|class|struct|union)\b|\bextern ""')
# What stands between the parameters of a function and its body.
FUNCTION_HEAD = re.compile(r"@(?:\s*(?:const|noexcept|override|final|&&?|@|->[^{}]*))*\s*$|@[^;]*:\s*\w")


@dataclass
class Function:
    name: str
    line: int
    lines: int


class Scope:
    """What a brace opened. Functions are defined at the file's level and in scopes that are open."""

    def __init__(self, is_open, at, function=None):
        self.is_open, self.at, self.function = is_open, at, function
        self.parentheses = 0


SCRIPT_READER = pathlib.Path(__file__).with_name("script_functions.js")


def functions_of(paths):
    """{path: its functions}"""
    scripts = [path for path in paths if path.suffix == ".js"]
    found = script_functions(scripts) if scripts else {}
    for path in set(paths) - set(scripts):
        text = path.read_text(encoding="utf-8")
        found[path] = python_functions(text) if path.suffix == ".py" else c_functions(text)
    return found


def script_functions(paths):
    environment = {**os.environ, "NODE_PATH": "/usr/share/nodejs"}  # for a node that is not Debian's, too
    done = subprocess.run(["node", SCRIPT_READER, *paths], stdout=subprocess.PIPE, text=True, check=True, env=environment)
    return {pathlib.Path(path): [Function(**each) for each in found] for path, found in json.loads(done.stdout).items()}


def python_functions(text):
    kinds = (ast.FunctionDef, ast.AsyncFunctionDef)
    return [Function(node.name, node.lineno, node.end_lineno - node.lineno + 1)
            for node in ast.walk(ast.parse(text)) if isinstance(node, kinds)]


def c_functions(text):
    return Reader(NOT_CODE.sub(blank, text)).run()


def blank(match):
    """The same number of lines without the words; a string stays a string."""
    return ('""' if '"' in match.group()[:2] else "") + "\n" * match.group().count("\n")


class Reader:
    def __init__(self, code):
        self.code = code
        self.line_starts = [0] + [match.end() for match in re.finditer("\n", code)]
        self.scopes = [Scope(True, 0)]
        self.head_at = 0  # where the declaration begins that is being read
        self.functions = []

    def run(self):
        for match in re.finditer(r"[{}();]", self.code):
            self.take(match.group(), match.start())
        return self.functions

    def take(self, mark, at):
        scope = self.scopes[-1]
        if mark == "{":
            self.scopes.append(self.opened(at))
        elif mark == "}" and len(self.scopes) > 1:
            self.close(self.scopes.pop(), at)
        elif mark in "()":
            scope.parentheses += 1 if mark == "(" else -1
        elif scope.is_open:
            self.head_at = at + 1

    def opened(self, at):
        outer = self.scopes[-1]
        # Where a name ends at the brace it is a member's initial value.
        if not outer.is_open or outer.parentheses > 0 or not self.code[at - 1].isspace():
            return Scope(False, at)
        head = self.code[self.head_at:at]
        shape = without_parameters(head)
        if FUNCTION_HEAD.search(shape) and "=" not in shape:
            return Scope(False, at, name_of(head, shape))
        is_open = bool(SCOPE.search(shape)) and "=" not in shape and not re.search(r"\benum\b", shape)
        self.head_at = at + 1
        return Scope(is_open, at)

    def close(self, scope, at):
        if scope.function is not None:
            first, last = self.line_of(scope.at), self.line_of(at)
            self.functions.append(Function(scope.function, first, last - first + 1))
        if scope.function is not None or scope.is_open:
            self.head_at = at + 1

    def line_of(self, at):
        return bisect.bisect_right(self.line_starts, at)


def without_parameters(head):
    """The head of a definition with an @ for each pair of parentheses, and without template arguments."""
    shape = re.sub(r"operator\s*(?:\(\)|\[\]|[^\s\w(]+)", "operator", head)
    for nested, instead in ((r"\([^()]*\)", "@"), (r"<[^<>]*>", "")):
        found = 1
        while found:
            shape, found = re.subn(nested, instead, shape)
    return shape


def name_of(head, shape):
    names = [name for name in re.findall(r"([~\w:]*\w)\s*@", shape) if name not in ("__attribute__", "alignas", "explicit")]
    name = names[0] if names else " ".join(shape.split())
    arguments = re.search(rf"\b{name}(\([^()]*\))", head) if name.startswith("TEST") else None
    return name + (arguments.group(1) if arguments else "")
