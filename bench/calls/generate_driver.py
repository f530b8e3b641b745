#!/usr/bin/env python3
"""Writes the driver that answers at once: every imported call zeroes what it writes, and succeeds.

    generate_driver.py --answers answers.txt --output instant.c --types types.h --library NAME HEADER ...

The code is compiled as the imported libraries, and once more for a program that finds the calls by their numbers, in the
table instant_calls.
"""
import argparse
import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "calls" / "generate"))

import emit_calls  # noqa: E402  (the path has to be set first)
import model       # noqa: E402

HEAD = """// Generated from the headers of the imported libraries. Do not edit.
#include <string.h>

"""
# Calls whose success is not 0, and how they say it.
RESULTS = {"equeue_send_ucast": "1", "onu_mac2str": '"aa:bb:cc:dd:ee:ff"'}


def read_answers(path):
    """{(call, output): text}"""
    lines = (line.partition("#")[0].strip() for line in path.read_text(encoding="utf-8").splitlines())
    answers = {}
    for target, _, value in (line.partition("=") for line in lines if line):
        call, _, output = target.partition(".")
        answers[call, output] = value
    return answers


def size_of(param):
    """The bytes behind a pointer parameter, as C."""
    element = "1" if param.kind == "void" else f"sizeof({param.type})"
    return element if param.extent == 1 else f"{param.extent} * {element}"


def written(param, answer):
    """The statement that answers one output."""
    if answer is not None and not answer.startswith("every "):
        return f"    *{param.name} = {answer};\n"
    byte = "0" if answer is None else "0x" + answer.removeprefix("every ")
    return f"    memset({param.name}, {byte}, {size_of(param)});\n"


def definition(function, answers):
    outputs = [param for param in function.params if param.direction == "out"]
    body = "".join(written(param, answers.pop((function.name, param.name), None)) for param in outputs)
    result = "" if function.returns == "void" else f"    return {RESULTS.get(function.name, '0')};\n"
    unused = "".join(f"    (void){param.name};\n" for param in function.params)
    rest = ", ..." if function.variadic else ""
    fixed = ", ".join(emit_calls.declare(param) for param in function.params) or "void"
    return f"{emit_calls.spaced(function.returns)}{function.name}({fixed}{rest}) {{\n{unused}{body}{result}}}\n\n"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--answers", required=True, type=pathlib.Path)
    parser.add_argument("--output", required=True, type=pathlib.Path)
    parser.add_argument("--types", required=True)
    parser.add_argument("--library", required=True, action="append", nargs=2, metavar=("NAME", "HEADER"))
    options = parser.parse_args()
    calls = model.read(options.types, options.library)
    answers = read_answers(options.answers)
    includes = "".join(f"#include <{header}>\n" for header in calls.libraries.values())
    bodies = "".join(definition(function, answers) for function in calls.functions)
    if answers:
        sys.exit(f"generate_driver.py: nobody writes {', '.join('.'.join(key) for key in answers)}")
    # A function's address fits a data pointer on every machine that has a dynamic linker.
    table = "".join(f"    (void *){function.name},\n" for function in calls.functions)
    options.output.write_text(f"{HEAD}{includes}\nuintptr_t erps_event_queue = 0;\n\n{bodies}"
                              f"void *const instant_calls[] = {{\n{table}}};\n", encoding="utf-8")


if __name__ == "__main__":
    main()
