"""Emits the table of results: the library's codes, then the virtual device's, from the remarks in both headers."""
import json
import re

import emit_table
import headers
from interface import HeaderError

ENUMERATOR = re.compile(r"^    k(\w+) = (-?\d+),? *(?:///< (.+))?$", re.M)


def snake(name):
    """vlan_exists for VlanExists."""
    return re.sub(r"(?<!^)(?=[A-Z])", "_", name).lower()


def library_results(types):
    """(number, name, text) of each of the library's codes."""
    codes, remarks = headers.read([types]).constants, headers.remarks_of([types])
    return [(codes[name], name, remarks.get(name)) for name in codes
            if name in ("ADP_OK", "ADP_FAIL") or name.startswith("ADP_E_")]


def device_results(status):
    """(number, name, text) of each of the virtual device's refusals."""
    with open(status, encoding="utf-8") as header:
        rows = ENUMERATOR.findall(header.read())
    return [(int(number), snake(name), remark) for name, number, remark in rows if int(number)]


def results(types, status):
    """All results; each has a number, a name and a text of its own."""
    rows = library_results(types) + device_results(status)
    for place, (number, name, text) in enumerate(rows):
        if not text:
            raise HeaderError(f"result {name} has no remark")
        if any(number == other[0] or name == other[1] for other in rows[:place]):
            raise HeaderError(f"result {name} = {number}: there is another one of this name or number")
    if len(rows) == len(library_results(types)):
        raise HeaderError("the header of the chip's results has no enumerators")
    return rows


def table(types, status):
    """The whole file."""
    rows = "".join(f"    {{{number}, {json.dumps(name)}, {json.dumps(text)}}},\n"
                   for number, name, text in results(types, status))
    return f"""{emit_table.BANNER}#include <adp/status.h>

static const adp_status_entry_t kEntries[] = {{
{rows}}};

const adp_status_entry_t *adp_status_entries(uint32_t *count) {{
    *count = sizeof kEntries / sizeof *kEntries;
    return kEntries;
}}
"""
