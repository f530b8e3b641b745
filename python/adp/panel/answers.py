"""What a device has answered, made part of a message to the page.

A device may be hostile. Its answer goes into the message as it came, so it must be a JSON value and nothing besides: it
could otherwise end early and go on with members of its own.
"""

import json
import re

from .problem import PanelError

MAX_VALUES = 1_000_000  # each takes far more memory than its letter
_TIME = re.compile(rb'"time":[-+.0-9e]+')


def _no_number(text):
    raise ValueError(text)  # a browser knows no NaN


def _checked(octets):
    if sum(map(octets.count, (b",", b"[", b"{"))) > MAX_VALUES:
        raise PanelError(f"The device sent more than {MAX_VALUES} values.")
    try:
        text = octets.decode()
        return text, json.loads(text, parse_constant=_no_number)
    except (ValueError, RecursionError):
        raise PanelError("The device sent what is no JSON.") from None


def checked_answer(octets):
    """The text of an answer; raises the sentence of a refused request."""
    text, answer = _checked(octets)
    if not isinstance(answer, dict):
        raise PanelError("The device sent what is no answer.")
    if "error" in answer:
        raise PanelError(str(answer["error"])[:1000])
    return text


def answer_member(octets):
    """The member of a message that has an answer."""
    return f'"answer":{checked_answer(octets)}'


def error_member(problem):
    """The member of a message that says why there is no answer."""
    return f'"error":{json.dumps(str(problem))}'


def lines_text(lines):
    """Lines of a stream as a JSON array."""
    return _checked(b"[" + b",".join(lines) + b"]")[0]


def without_time(octets):
    """An answer without the time of the reading, which is behind its tables."""
    tables = octets.rfind(b"]") + 1
    return octets[:tables] + _TIME.sub(b"", octets[tables:], count=1)
