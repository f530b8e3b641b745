"""The conditions of a bad cable as a topology file gives them, for `vdevctl cable`."""

import re

_SHARE = re.compile(r"(\d{1,3}(?:\.\d{1,6})?)%")
_TIME = re.compile(r"\d{1,9}(?:\.\d{1,6})?(?:us|ms|s)")
_RATE = re.compile(r"\d{1,12}(?:\.\d{1,6})?[kMG]?")
_SEED = re.compile(r"\d{1,20}")
MOST_PERCENT = 100


def _is_share(text):
    match = _SHARE.fullmatch(text)
    return match is not None and float(match[1]) <= MOST_PERCENT


# Each condition: whether a text can be its value, and what the value is, for a sentence.
_FORMS = {
    **dict.fromkeys(("loss", "corrupt", "duplicate"), (_is_share, "a share of the frames: 5% or 0.1%")),
    **dict.fromkeys(("delay", "jitter"), (_TIME.fullmatch, "a time: 20ms, 500us or 1s")),
    "rate": (_RATE.fullmatch, "bits per second: 100M, 64k or 1G"),
    "seed": (_SEED.fullmatch, "a number: 7"),
}


def condition(name, value):
    """The value of a condition as text, checked."""
    is_right, form = _FORMS[name]
    text = value.line_of_text()
    if not is_right(text):
        value.fail(f"{value.what} should be {form}.")
    return text
