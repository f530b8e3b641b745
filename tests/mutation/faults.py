"""Faults to plant in C++ sources: one small change each, found by the text alone.

The sources are formatted by clang-format, so that binary operators stand between blanks and unary ones do not.
"""

import re
from dataclasses import dataclass

OPERATORS = {
    "==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&", "+": "-", "-": "+",
    "*": "+", "/": "*", "%": "/", "&": "|", "|": "&", "^": "|", "<<": ">>", ">>": "<<",
    "=": None, "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=", "^=": "|=", "<<=": ">>=", ">>=": "<<=",
}
WORDS = {"true": "false", "false": "true", "++": "--", "--": "++", "break": "continue", "continue": "break"}
OPERATOR = re.compile(r"(?<= )(" + "|".join(re.escape(op) for op in sorted(OPERATORS, key=len, reverse=True)) + r")(?=\s)")
NUMBER = re.compile(r"(?<![\w.\"'])(0[xX][0-9a-fA-F']+|\d[\d']*)(?=[uUlL]*(?![\w.]))")
WORD = re.compile(r"\b(true|false|break|continue)\b|(\+\+|--)")
NEGATION = re.compile(r"(?<![\w!)])!(?=[\w(])")
CONDITION = re.compile(r"\b(if|while) \(")
NAMED = re.compile(r"(?<!case )\b(k[A-Z]\w*|[A-Z]\w*::k[A-Z]\w*|ADP_(?:OK|FAIL|E_\w+))\b")
STATEMENT = re.compile(r"^\s*(?!return\b|if\b|for\b|while\b|else\b|break\b|continue\b|using\b|case\b|static_assert\b)"
                       r"(?:[\w:.\->\[\]]+\(.*\)|[\w.\->\[\]()]+ (?:[-+|&^]|<<|>>)?= .*|(?:\+\+|--)[\w.\->]+);$")
DECLARATION = re.compile(r"^\s*(?:static |constexpr |const |auto |extern |using |template|namespace |class |struct |enum |#|@)")


@dataclass(frozen=True)
class Fault:
    line: int  # from 1
    kind: str
    start: int  # offsets in the text of the file
    end: int
    new: str

    def planted(self, text):
        return text[:self.start] + self.new + text[self.end:]


def blanked(text):
    """The text with comments and the insides of literals as blanks, offsets unchanged."""
    pattern = re.compile(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|'(?:\\.|[^'\\\n])'|^#[^\n]*", re.S | re.M)
    return pattern.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), text)


def closing(text, opened):
    """The offset of the bracket that closes the one at `opened`."""
    depth = 0
    for at in range(opened, len(text)):
        depth += (text[at] == "(") - (text[at] == ")")
        if depth == 0:
            return at
    return None


def next_number(digits):
    plain = digits.replace("'", "")
    return hex(int(plain, 16) + 1) if plain[:2].lower() == "0x" else str(int(plain) + 1)


def of_tokens(code):
    for m in OPERATOR.finditer(code):
        if OPERATORS[m.group()] is not None:
            yield "operator", m.start(), m.end(), OPERATORS[m.group()]
    for m in NUMBER.finditer(code):
        yield "constant", m.start(), m.end(), next_number(m.group(1))
    for m in WORD.finditer(code):
        yield "constant" if m.group() in ("true", "false") else "operator", m.start(), m.end(), WORDS[m.group()]
    for m in NEGATION.finditer(code):
        yield "condition", m.start(), m.end(), ""


def of_conditions(code):
    for m in CONDITION.finditer(code):
        opened = m.end() - 1
        closed = closing(code, opened)
        inside = code[opened + 1:closed] if closed else ""
        if closed and ";" not in inside and not re.search(r"\w[\w:<>]*[ *&]+\w+ = ", inside):
            yield "condition", opened, closed + 1, f"(!({inside}))"


def of_names(code):
    """A named constant becomes the next one that the file uses with the same prefix."""
    names = [m for m in NAMED.finditer(code)]

    def prefix(name):
        return name.rsplit("::", 1)[0] if "::" in name else name[:4] if name.startswith("ADP_") else "k"
    used = {}
    for m in names:
        family = used.setdefault(prefix(m.group()), [])
        if m.group() not in family:
            family.append(m.group())
    for m in names:
        family = used[prefix(m.group())]
        other = family[(family.index(m.group()) + 1) % len(family)]
        if other != m.group():
            yield "constant", m.start(), m.end(), other


def of_statements(code, text):
    """A statement is left out; two that follow each other change places."""
    offset, before = 0, None
    for line in code.splitlines(keepends=True):
        here = None
        body = line.rstrip("\n")
        if STATEMENT.match(body) and not DECLARATION.match(body):
            here = (offset, offset + len(body))
            start = offset + len(body) - len(body.lstrip())
            yield "statement left out", start, here[1], ";"
            if before and indent(code, before) == indent(code, here):
                first, second = text[before[0]:before[1]], text[here[0]:here[1]]
                yield "order", before[0], here[1], f"{second}\n{first}"
        before = here
        offset += len(line)


def indent(code, span):
    line = code[span[0]:span[1]]
    return len(line) - len(line.lstrip())


def faults_in(text):
    """All faults of a source, in the order of its lines."""
    code = blanked(text)
    found = {}
    for kind, start, end, new in (*of_tokens(code), *of_conditions(code), *of_names(code), *of_statements(code, text)):
        if kind == "condition" and new:  # texts inside the condition come from the source itself
            new = f"(!({text[start + 1:end - 1]}))"
        head = code[code.rfind("\n", 0, start) + 1:start]
        if re.match(r"\s*(?:template|static_assert|namespace|using|class|struct|enum)\b", head) or "[[" in head:
            continue
        if text[start:end] != new:
            found[(start, end, new)] = Fault(code.count("\n", 0, start) + 1, kind, start, end, new)
    return [found[key] for key in sorted(found)]
