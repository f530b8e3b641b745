"""The page of the manual of an exported call, from its header."""
import os
import re

import doc
import emit_exported
import roff

SECTION = 3
APART = ("adp/status.h",)  # what adp.h does not include
LINE = 78


def intros(paths):
    """What the comment of each header's file says, as blocks, by the header's name."""
    found = {}
    for path in paths:
        with open(path, encoding="utf-8") as source:
            comment = re.search(r"/\*\*\n \* @file \w+\.h\n(.*?) \*/", source.read(), re.S)
        text = re.sub(r"^ \* ?", "", comment[1], flags=re.M)
        found[f"adp/{os.path.basename(path)}"] = [doc.block(part) for part in text.split("\n\n") if part.strip()]
    return found


def synopsis(function):
    """The prototype, an argument a line where it is too long for one."""
    line = emit_exported.declaration(function) + ";"
    if len(line) <= LINE:
        return [line]
    head, arguments = line.split("(", 1)
    first, *rest = arguments.split(", ")
    return [f"{head}({first}{',' if rest else ''}",
            *(f"        {argument}{',' if argument is not rest[-1] else ''}" for argument in rest)]


def mentioned(pattern, function):
    """What a call's comment names, in order and once."""
    return list(dict.fromkeys(re.findall(pattern, function.doc)))


def constants(page, library, function):
    """The enumerations that the comment names, with their values."""
    for tag in mentioned(r"\benum (adp_\w+)", function):
        page.section(f"ENUM {tag.upper()}")
        for name, enumeration in library.headers.enums.items():
            if enumeration == tag:
                page.entry(f"{name} = {library.headers.constants[name]}", library.remarks[name])


def page(library, function, intro, version):
    comment = doc.read(function.doc)
    text = roff.Page(function.name, SECTION, version, "Switch adaptation layer")
    text.name(function.name, comment.purpose.rstrip("."))
    text.section("SYNOPSIS")
    text.code([f"#include <{function.header if function.header in APART else 'adp/adp.h'}>", "", *synopsis(function)])
    if comment.text:
        text.section("DESCRIPTION")
        text.blocks(comment.text)
    if function.params:
        text.section("ARGUMENTS")
    for param in function.params:
        text.entry(param.name, " ".join(filter(None, comment.params[param.name])))
    if comment.result:
        text.section("RETURN VALUE")
        text.text(comment.result)
    constants(text, library, function)
    text.section(f"NOTES ON {function.header.upper()}")
    text.blocks(intro)
    known = {each.name for each in library.headers.functions} - {function.name}
    text.references([*((name, SECTION) for name in mentioned(r"\b(\w+)\(\)", function) if name in known),
                     ("adp_status_text", SECTION), ("adpsh", 1)])
    return str(text)
