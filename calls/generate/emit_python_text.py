"""Python source: modules, docstrings, strings."""
import json
import textwrap

WIDTH = 120
WRITTEN_BY = "This file is written by script/reference from the headers."


def quote(text):
    return json.dumps(text, ensure_ascii=False)


def wrapped(text, indent, hanging=""):
    return textwrap.fill(text, WIDTH, initial_indent=indent, subsequent_indent=indent + hanging,
                         break_long_words=False, break_on_hyphens=False)


def docstring(text, indent="    ", entries=()):
    """A docstring: a sentence or paragraphs, then a line or more for each entry."""
    text = text.replace("\\", "\\\\")
    paragraphs = [" ".join(part.split()) for part in text.split("\n\n")]
    lines = [wrapped('"""' + paragraphs[0], indent)]
    for part in paragraphs[1:]:
        lines += ["", wrapped(part, indent)]
    if entries:
        lines += ["", *(wrapped(each.replace("\\", "\\\\"), indent, "    ") for each in entries)]
    one_line = len(lines) == 1 and "\n" not in lines[0] and len(lines[0]) + 3 <= WIDTH
    return lines[0] + '"""' if one_line else "\n".join(lines) + f'\n{indent}"""'


def module(purpose, body, public, unused=False):
    """A module; public is what it has for others."""
    ruff = "  # noqa: F401" if unused else ""
    names = "" if public is None else f"__all__ = [\n{''.join(f'    {quote(name)},{chr(10)}' for name in public)}]\n\n"
    return f'"""{purpose}\n\n{WRITTEN_BY}\n"""{ruff}\n\nfrom __future__ import annotations\n\n' + _with_names(body, names)


def _with_names(body, names):
    """The public names stand behind the imports."""
    lines = body.split("\n")
    last = max((place for place, line in enumerate(lines[:20]) if line.startswith(("import ", "from "))), default=-1)
    head, rest = lines[:last + 1], lines[last + 1:]
    return ("\n".join(head) + "\n\n" if head else "") + names + "\n".join(rest).lstrip("\n").rstrip("\n") + "\n"
