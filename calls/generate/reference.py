"""Writes the page of driver calls from the headers: each call with its arguments and the first sentence about it.

What the virtual device decides about a call is told in the page that links to the call's section; the section links back.
"""
import os
import re
import sys

import headers
import interface
import model
import sections

TITLE = """# Driver calls

The calls that the library makes, by the headings of [`netlink_api.h`](../../platform/netlink_api.h), and the services of
[`device_services.h`](../../platform/device_services.h). `*` marks what a call writes. The headers have the types and the
full text; the linked pages say what the virtual device decides. [Results](results.md) has the checks that come first.

This page is written by `script/reference`.
"""
FOLDER, PAGE = "docs/reference", "driver-calls.md"


def anchor(title):
    """GitHub's anchor of a heading."""
    return re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-")


def links_of(folder):
    """{anchor: [(title, page)]} of the pages in a folder that link to a section of the page of driver calls."""
    found = {}
    for page in sorted(os.listdir(folder)):
        if not page.endswith(".md") or page == PAGE:
            continue
        with open(os.path.join(folder, page), encoding="utf-8") as source:
            text = source.read()
        title = re.match(r"# (.+)\n", text)[1]
        for target in dict.fromkeys(re.findall(rf"\]\({PAGE}#([\w-]+)\)", text)):
            found.setdefault(target, []).append((title, page))
    return found


def first_sentence(doc):
    """A doc's first sentence, on one line."""
    text = " ".join(doc.partition("\n\n")[0].split())
    return re.split(r"(?<=\.) (?=[A-Z])", text)[0]


def argument(param):
    return f"*{param.name}" if param.direction in ("out", "inout") else param.name


def section_text(section, pages):
    told = ", ".join(f"[{title}]({page})" for title, page in pages)
    lines = [f"## {section.title}", "", f"On the virtual device: {told}.", ""]
    for function in section.functions:
        arguments = ", ".join(map(argument, function.params)) + (", ..." if function.variadic else "")
        lines.append(f"- `{function.name}({arguments})`: {first_sentence(function.doc)}")
    return "\n".join(lines) + "\n"


def page(root):
    """The text of the page, from the headers and pages of a tree."""
    libraries = [(name, os.path.join(root, "platform", f"{name}.h")) for name in ("netlink_api", "device_services")]
    calls = model.read(os.path.join(root, "include", "adp", "types.h"), libraries)
    links = links_of(os.path.join(root, FOLDER))
    parts = [TITLE]
    for section in sections.read(calls):
        pages = links.pop(anchor(section.title), None)
        if not pages:
            raise interface.HeaderError(f"no page in {FOLDER} links to {PAGE}#{anchor(section.title)}")
        parts.append(section_text(section, pages))
    for unknown in links:
        raise interface.HeaderError(f"{links[unknown][0][1]} links to {PAGE}#{unknown}, which is no heading")
    return "\n".join(parts)


def main():
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    try:
        text = page(root)
    except interface.HeaderError as error:
        sys.exit(f"script/reference: {error}")
    with open(os.path.join(root, FOLDER, PAGE), "w", encoding="utf-8") as output:
        output.write(text)


if __name__ == "__main__":
    main()
