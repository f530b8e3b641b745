"""Writes the reference model as far as it follows from the public headers.

That is the declaration of every exported function in the namespace `reference`, the table of their addresses, and a
definition where the comment says everything (contract.py). The others are written by hand, in the folder reference; a
function without any model fails the link by its name.
"""
import argparse
import os
import re
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "calls", "generate"))
import contract  # noqa: E402  (the path has to be set first)
import emit_exported  # noqa: E402
import emit_table  # noqa: E402
import exported  # noqa: E402
import headers  # noqa: E402
from interface import HeaderError  # noqa: E402


def defined_in(source):
    """The functions that a source of the model defines."""
    return set(re.findall(r"^\w[\w ]*[ *](\w+)\(", source, flags=re.M))


def derived(functions, driver, by_hand):
    """The definitions that follow from the comments, of the functions that have no other."""
    models = []
    for function in functions:
        try:
            models.append(contract.model(function, driver))
        except HeaderError as error:
            if function.name not in by_hand and "Driver call" in function.doc:
                raise HeaderError(f"{error}; no model is written by hand either") from None
            continue
        if function.name in by_hand:
            raise HeaderError(f"{function.name}: two models, one by hand and one that follows from the header")
    return "\n".join(models)


def declarations(functions):
    lines = "".join(f"{emit_exported.declaration(function)};\n" for function in functions)
    return f"{emit_table.BANNER}#pragma once\n\n#include <adp/adp.h>\n\nnamespace reference {{\n\n{lines}\n}}\n"


def source(functions, models):
    rows = "".join(f"    reinterpret_cast<void *>(&reference::{function.name}),\n" for function in functions)
    return f"""{emit_table.BANNER}#include <cstdio>

#include "platform/netlink_api.h"
#include "tests/differential/reference/l2.h"
#include "tests/differential/reference_table.h"

#pragma GCC diagnostic ignored "-Wunused-parameter"

namespace reference {{

{models}
}}  // namespace reference

std::span<void *const> differential::models() {{
    static void *const all[] = {{
{rows}    }};
    return all;
}}
"""


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--include", required=True, help="folder of the public headers")
    parser.add_argument("--driver", required=True, help="header of the driver calls")
    parser.add_argument("--by-hand", required=True, nargs="+", help="sources with models")
    parser.add_argument("--output", required=True, nargs=2, help="header and source that are written")
    options = parser.parse_args(arguments)
    by_hand = set()
    for path in options.by_hand:
        with open(path, encoding="utf-8") as text:
            by_hand |= defined_in(text.read())
    functions = exported.read(options.include).functions
    driver = headers.read([os.path.join(options.include, "adp", "types.h"), options.driver])
    try:
        models = derived(functions, {function.name: function for function in driver.functions}, by_hand)
    except HeaderError as error:
        sys.exit(f"generate_reference.py: {error}")
    for path, text in zip(options.output, (declarations(functions), source(functions, models))):
        with open(path, "w", encoding="utf-8") as out:
            out.write(text)


if __name__ == "__main__":
    main(sys.argv[1:])
