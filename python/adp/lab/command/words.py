"""Sentences and tables for people."""

import difflib
import os

PROGRAM = os.environ.get("ADP_LAB_PROGRAM", "adp-lab")


def did_you_mean(given, names):
    """" Did you mean 'sw1'?", or an empty text if no name is similar."""
    similar = difflib.get_close_matches(given, names, 1)
    return f" Did you mean '{similar[0]}'?" if similar else ""


def listed(names):
    """Names for a sentence: "h1, h2 and h3"."""
    *most, last = names
    return f"{', '.join(most)} and {last}" if most else last


def counted(number, noun):
    return f"{number} {noun}{'' if number == 1 else 's'}"


def table(rows):
    """Rows in columns that are as wide as their longest text."""
    widths = [max(map(len, column)) for column in zip(*rows, strict=True)]
    return "\n".join(
        "  ".join(text.ljust(width) for text, width in zip(row, widths, strict=True)).rstrip() for row in rows
    )
