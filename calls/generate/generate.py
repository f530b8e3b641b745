#!/usr/bin/env python3
"""Writes what follows from the headers: the tables of imported and exported calls, stubs, driver calls, export maps.

    generate.py --output DIR --include DIR --library netlink_api netlink_api.h --library device_services services.h
                --status status.h

It writes tables and one-line definitions only. Describing, encoding and dispatching are hand-written C++ that walks
these tables.
"""
import argparse
import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

import emit_calls     # noqa: E402  (the path has to be set first)
import emit_driver    # noqa: E402
import emit_exported  # noqa: E402
import emit_status    # noqa: E402
import emit_table     # noqa: E402
import exported       # noqa: E402
import interface      # noqa: E402
import model          # noqa: E402
import sections       # noqa: E402


def write_if_changed(path, text):
    """Does not touch an equal file, so that a comment in a header rebuilds nothing."""
    try:
        with open(path, encoding="utf-8") as old:
            if old.read() == text:
                return False
    except FileNotFoundError:
        pass
    with open(path, "w", encoding="utf-8") as new:
        new.write(text)
    return True


def outputs(calls, library):
    """File name to text, for every generated file: of the imported calls, and of the exported ones of a library."""
    driver = sections.read(calls)
    files = {
        "call_id.h": emit_table.call_ids(calls),
        "call_table.cpp": emit_table.call_table(calls),
        "driver_calls.h": emit_driver.header(calls, driver),
        "driver_calls.cpp": emit_driver.source(calls, driver),
        "forward.cpp": emit_calls.forward_source(calls),
        "exported_calls.cpp": emit_exported.source(library),
        "exported_stubs.cpp": emit_calls.exported_stubs(library),
    }
    for library in calls.libraries:
        files[f"{library}_stubs.cpp"] = emit_calls.stubs(calls, library)
        files[f"{library}.map"] = emit_calls.version_script(calls, library)
    return files


def main(arguments):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--output", required=True, help="folder that receives the generated files")
    parser.add_argument("--include", required=True, help="folder that holds adp/adp.h and adp/types.h")
    parser.add_argument("--library", required=True, action="append", nargs=2, metavar=("NAME", "HEADER"),
                        help="an imported library and its header")
    parser.add_argument("--status", required=True, metavar="HEADER", help="the results of the virtual chip")
    options = parser.parse_args(arguments)
    try:
        calls = model.read(os.path.join(options.include, "adp", "types.h"), options.library)
        files = outputs(calls, exported.read(options.include))
        files["status_table.c"] = emit_status.table(os.path.join(options.include, "adp", "types.h"), options.status)
    except interface.HeaderError as error:
        print(f"generate.py: {error}", file=sys.stderr)
        return 1
    os.makedirs(options.output, exist_ok=True)
    for name, text in files.items():
        write_if_changed(os.path.join(options.output, name), text)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
