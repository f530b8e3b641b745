"""Names of labs, nodes and programs."""

import re

from .document import quoted

# They become names of files, and parts of sockets' names, which the kernel bounds.
_NAME = re.compile(r"[A-Za-z0-9][A-Za-z0-9_.-]{0,31}")
WHAT_NAMES_ARE = "up to 32 letters, digits, hyphens, dots and underlines, the first a letter or digit"


def is_name(text):
    return _NAME.fullmatch(text) is not None


def name_of(value, name=None):
    """A name: the value's text, or the given one, which is the value's key."""
    name = value.text() if name is None else name
    if not is_name(name):
        value.fail(f"{quoted(name)} cannot be a name: {WHAT_NAMES_ARE}.")
    return name
