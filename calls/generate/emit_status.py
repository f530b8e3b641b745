"""Emits the table of the virtual chip's results, from the enumeration with its remarks."""
import json
import re

import emit_table
from interface import HeaderError

ENUMERATOR = re.compile(r"^    k(\w+) = -?\d+,? *(?:///< (.+))?$", re.M)


def snake(name):
    """vlan_exists for VlanExists."""
    return re.sub(r"(?<!^)(?=[A-Z])", "_", name).lower()


def table(header):
    """The whole file, for the text of the header."""
    rows = ""
    for name, remark in ENUMERATOR.findall(header):
        if not remark:
            raise HeaderError(f"status k{name} has no remark")
        rows += f'    {{Status::k{name}, "{snake(name)}", {json.dumps(remark)}}},\n'
    if not rows:
        raise HeaderError("the header of the chip's results has no enumerators")
    return f"""{emit_table.BANNER}#include "vdevice/chip/frame/status.h"

namespace vdevice::chip {{
namespace {{

constexpr StatusEntry kStatusTable[] = {{
{rows}}};

}}  // namespace

std::span<const StatusEntry> status_table() {{ return kStatusTable; }}

}}  // namespace vdevice::chip
"""
