"""The conditions of a bad cable as a topology file gives them, checked as `vdevctl cable` checks them, before anything
runs.
"""

import re

_NUMBER = re.compile(r"([0-9]{1,10})(?:\.([0-9]+))?([a-zA-Z%]*)")

# Units with their size, all powers of ten; the greatest value; what a value is, for sentences.
_SHARE = {"%": 10_000}, 1_000_000, "a percentage from 0% to 100%, as 5% or 0.1%, with at most four decimals"
_TIME = {"us": 1000, "ms": 10**6, "s": 10**9}, 10 * 10**9, "a time up to 10s, as 20ms, 1.5ms or 300us"
_RATE = {"k": 1, "M": 1000, "G": 10**6}, 100 * 10**6, "a rate up to 100G, as 64k, 100M or 2.5G"
_SEED = {"": 1}, 2**32 - 1, "a number from 0 to 4294967295"
SEED = "seed"
FORMS = {
    "loss": _SHARE,
    "duplicate": _SHARE,
    "corrupt": _SHARE,
    "rate": _RATE,
    "delay": _TIME,
    "jitter": _TIME,
    SEED: _SEED,
}


def conditions_of(values):
    """{name: text} of a cable's conditions."""
    if set(values) == {SEED}:
        values[SEED].fail("A seed alone makes no cable a bad one.")
    amounts = {name: _amount(name, value) for name, value in values.items()}
    if amounts.get("jitter", 0) > amounts.get("delay", 0):
        values["jitter"].fail("The jitter of a cable is at most its delay.")
    return {name: value.text() for name, value in values.items()}


def _amount(name, value):
    units, most, form = FORMS[name]
    match = _NUMBER.fullmatch(value.text())
    if match and match[3] in units:
        size, decimals = units[match[3]], match[2] or ""
        places = len(str(size)) - 1
        amount = int(match[1]) * size + int(decimals.ljust(places, "0") or 0)
        if len(decimals) <= places and amount <= most:
            return amount
    return value.fail(f"{value.what} should be {form}.")
