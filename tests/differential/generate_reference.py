"""Writes down what the reference model has to define: every exported function, in the namespace `reference`.

The declarations and the table of addresses come from the public headers, so a function that is added there without a
model fails the link by its name.
"""
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "..", "..", "calls", "generate"))
import emit_exported  # noqa: E402
import exported  # noqa: E402


def declarations(functions):
    lines = ["// Generated from the public headers. Changes here are lost.", "#pragma once", "", "#include <adp/adp.h>", "",
             "namespace reference {", ""]
    lines += [emit_exported.declaration(function) + ";" for function in functions]
    return "\n".join(lines + ["", "}  // namespace reference", ""])


def table(functions):
    lines = ["// Generated from the public headers. Changes here are lost.", '#include "generated/reference.h"',
             '#include "tests/differential/reference_table.h"', "", "namespace differential {", "namespace {", "",
             "const Model kModels[] = {"]
    lines += [f'    {{"{function.name}", reinterpret_cast<void *>(&reference::{function.name})}},' for function in functions]
    return "\n".join(lines + ["};", "", "}  // namespace", "", "std::span<const Model> models() { return kModels; }", "",
                              "}  // namespace differential", ""])


def main():
    include, header, source = sys.argv[1:]
    functions = exported.read(include).functions
    for path, text in ((header, declarations(functions)), (source, table(functions))):
        with open(path, "w", encoding="utf-8") as out:
            out.write(text)


if __name__ == "__main__":
    main()
