"""A call's comment as data, and what is missing in it: a call's page needs all of it.

The comment is a purpose, paragraphs and lists, an @param for each argument with its direction, and an @return. What is
said of a number has its range, its unit or what it identifies.
"""
import re
from dataclasses import dataclass, field

DIRECTIONS = {"value": "", "in": "", "out": "[out]", "inout": "[in,out]"}
NUMBERS = ("u8", "u16", "u32", "u64", "i16", "i32", "word")
# What says which values a number has: a range, an enumeration, single values; bits; a count or a unit; what types.h or a
# standard defines; what another call says or does; what nobody reads.
RANGE = re.compile("|".join((
    r"\d\.\.", r"\benum adp_\w+", r"\bADP_[A-Z]\w+", r"(^|[;:,] )-?\d+( |;|:|$)", r"\b(on the virtual device|mode) \d",
    r"\bbits?\b", r"\bbitmap\b|\b256-bit set\b", r"\b(number|count|length) (of|from|in)\b", r"\bentries that\b",
    r"\b(seconds|bytes|octets|kilobits|in the driver's unit|Mb/s|as many as)\b",
    r"\b(user ports?|aggregation interfaces?|interface number|physical port|any interface)\b",
    r"\b(VLAN ids?|MAC address|EtherType|IPv4 address)\b", r"\b(counter|handle|address of)\b", r"\bany number\b",
    r"\bas in \w+\(\)|\bsee \w+", r"^not used$|\bignored by the virtual device$|\bthe virtual device refuses\b",
    r"\bstored for the caller\b|\bcaller-defined\b")))


@dataclass
class Doc:
    purpose: str = ""                           # the first sentence
    text: list = field(default_factory=list)    # what follows: paragraphs, and lists as lists of items
    params: dict = field(default_factory=dict)  # name -> (direction as written, text)
    result: str = ""


def one_line(text):
    return " ".join(text.split())


def first_sentence(text):
    """The first sentence, on one line."""
    return re.split(r"(?<=\.) (?=[A-Z])", one_line(text))[0]


def block(text):
    """A paragraph as a line; a list as its items."""
    items = re.split(r"^(?:-|\d+\.) ", text, flags=re.M)
    return one_line(text) if len(items) == 1 else [one_line(item) for item in items if item.strip()]


def read(comment):
    head, *tags = re.split(r"(?:^|(?<=[\n ]))@(?=param|return)", comment)
    blocks = [block(part) for part in re.split(r"\n\s*\n", head.strip()) if part.strip()]
    doc = Doc()
    if blocks:
        doc.purpose = first_sentence(blocks[0])
        rest = blocks[0][len(doc.purpose):].strip()
        doc.text = ([rest] if rest else []) + blocks[1:]
    for tag in tags:
        param = re.fullmatch(r"param(\[[\w,]+\])?\s+(\w+)\s+(.*)", tag, re.S)
        if param:
            doc.params[param[2]] = (param[1] or "", one_line(param[3]))
        else:
            doc.result = one_line(tag.removeprefix("return"))
    return doc


def gaps(function):
    """What a call's comment lacks, a sentence each."""
    doc = read(function.doc)
    if not doc.purpose:
        yield "no purpose"
    if not doc.result and function.returns != "void":
        yield "no @return"
    for name in doc.params.keys() - {param.name for param in function.params}:
        yield f"'@param {name}' is no parameter"
    for param in function.params:
        if param.name not in doc.params:
            yield f"no '@param {param.name}'"
            continue
        direction, text = doc.params[param.name]
        if direction != DIRECTIONS[param.direction]:
            yield f"'@param{direction} {param.name}' instead of '@param{DIRECTIONS[param.direction]} {param.name}'"
        if param.kind in NUMBERS and param.pointer_depth < 2 and not RANGE.search(text):
            yield f"'@param {param.name} {text}' has neither range nor unit"
