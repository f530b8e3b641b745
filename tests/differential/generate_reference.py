"""Writes down what the reference model has to define: every exported function, in the namespace `reference`.

The declarations and the table of invokers come from the public headers, so a function that is added there without a
model fails the link by its name.
"""
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path[:0] = [os.path.join(HERE, "..", "..", "tools", "adpsh"), os.path.join(HERE, "..", "..", "calls", "generate")]
import generate_calls  # noqa: E402
import interface  # noqa: E402


def declarations(functions):
    lines = ["// Generated from the public headers. Changes here are lost.", "#ifndef GENERATED_REFERENCE_H",
             "#define GENERATED_REFERENCE_H", "", "#include <adp/adp.h>", "", "namespace reference {", ""]
    lines += [generate_calls.Writer.declaration(function) + ";" for function in functions]
    return "\n".join(lines + ["", "}  // namespace reference", "", "#endif", ""])


def table(functions):
    lines = ["// Generated from the public headers. Changes here are lost.", '#include "tools/adpsh/generated_support.h"',
             '#include "generated/reference.h"', '#include "tests/differential/reference_table.h"', "", "namespace differential {",
             "namespace {", "", "using adpsh::address;", "using adpsh::result_of;", "using adpsh::value;", ""]
    for function in functions:
        arguments = ", ".join(generate_calls.Writer.argument(*each) for each in enumerate(function.params))
        call = f"reference::{function.name}({arguments})"
        body = f"    {call};\n    return {{0, nullptr}};" if function.returns == "void" else f"    return result_of({call});"
        marked = "" if function.params else "[[maybe_unused]] "
        lines.append(f"adpsh::Result model_{function.name}({marked}void *const *arguments) {{\n{body}\n}}\n")
    lines += ["constexpr Model kModels[] = {"]
    lines += [f'    {{"{function.name}", model_{function.name}}},' for function in functions]
    return "\n".join(lines + ["};", "", "}  // namespace", "", "std::span<const Model> models() { return kModels; }", "",
                              "}  // namespace differential", ""])


def main():
    include, header, source = sys.argv[1:]
    functions = sorted(interface.read(generate_calls.headers_of(include)).functions, key=lambda each: each.name)
    for path, text in ((header, declarations(functions)), (source, table(functions))):
        with open(path, "w", encoding="utf-8") as out:
            out.write(text)


if __name__ == "__main__":
    main()
