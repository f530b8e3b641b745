"""Ports on the front."""

import re


def port(page, number):
    """The port's button on the plate."""
    return page.wait_for(f"#front-port-{number}")


def name_of(page, number):
    """What a screen reader calls the port: the title of its drawing."""
    script = "return document.querySelector(arguments[0])?.textContent ?? ''"
    return page.script(script, f"#front-port-{number} > title")


def wait_for_name(page, number, pattern):
    return page.until(lambda: re.fullmatch(pattern, name_of(page, number)), f"Port {number} as {pattern}")


def wait_for_marks(page, number, *kinds):
    """Exactly these marks are drawn at a port."""
    css = "return [...document.querySelectorAll(arguments[0])].map((mark) => mark.getAttribute('class'))"

    def has_them():
        marks = page.script(css, f"#front-port-{number} .front-mark")
        return [re.search(r"kind-(\w+)( hollow)?", each).group(1, 2) for each in marks] == [
            (kind.removesuffix("?"), " hollow" if kind.endswith("?") else None) for kind in kinds
        ]

    page.until(has_them, f"Port {number} with {kinds}")
