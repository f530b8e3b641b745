"""Checks the shape of the sources: lengths of functions and files, and the conventions that no compiler checks.

shape.py SOURCE_DIR

Prints each offender and then the figures.
"""
import pathlib
import re
import statistics
import sys

import function_lines

LONGEST_FUNCTION = 40
LONGEST_FILE = 300
# Files that may be longer, and why.
MAY_BE_LONG = {
    "include/adp/*.h": "declarations, each with its contract",
    "platform/netlink_api.h": "declarations, each with its contract",
    "python/adp/calls/*.py": "written from the headers",
}

LANGUAGES = {"C and C++": (".c", ".cpp", ".h"), "Python": (".py",), "JavaScript": (".js",)}
NEEDED = ("C and C++", "Python")  # a tree without them is none that is worth a check
QUALIFIED_INTEGER = re.compile(r"\bstd::(?:u?int(?:8|16|32|64|max|ptr)_t|size_t|ptrdiff_t)\b|#include <c(?:stdint|stddef)>")
TEST_LIBRARY = re.compile(r"^\s*#include <(?:gtest|gmock)/|^(?:import|from) pytest\b", re.M)
FOR_TESTS = re.compile(r"(?:^|/)testing/|^tests/|^bench/|_test\.cpp$|(?:^|/)(?:test_\w+|conftest)\.py$")
TESTING_INCLUDE = re.compile(r'^\s*#include "([^"]*\btesting/[^"]*)"', re.M)


def sources(root):
    """Every source, but nothing that was built, nothing of other projects and nothing in a hidden folder."""
    for path in sorted(root.rglob("*")):
        parts = path.relative_to(root).parts
        hidden = parts[0] == "build" or "vendor" in parts or any(part.startswith(".") for part in parts)
        if path.suffix in sum(LANGUAGES.values(), ()) and not hidden:
            yield path, path.relative_to(root)


def purpose_is_first(name, text):
    if name.suffix == ".py":
        return not text or re.match(r'(?:#![^\n]*\n)?r?"""\w', text)
    if name.match("include/adp/*.h") or name.match("platform/*.h"):
        return text.startswith("/**\n * @file")
    if name.suffix == ".js":
        return re.match(r"// \w", text)
    return re.match(r"// \w|/\*\*?\s+(?:\* )?(?:@file|\w)", text)


def unconventional(name, text):
    """Which conventions a file does not keep."""
    if not purpose_is_first(name, text):
        yield "it does not begin with a comment that says its purpose"
    if name.suffix == ".h" and "\n#pragma once\n" not in text:
        yield "a header needs #pragma once"
    if name.suffix in (".py", ".js"):
        code = text
    else:
        code = "\n".join(line.partition("//")[0] for line in text.splitlines())
        yield from (f"{match.group()}: integer types are unqualified, from <stdint.h> and <stddef.h>"
                    for match in QUALIFIED_INTEGER.finditer(code))
    if not FOR_TESTS.search(str(name)):
        if TEST_LIBRARY.search(code):
            yield "what only tests use is named X_test.cpp or test_X.py, or stands in testing/ or under tests/"
        yield from (f"includes {match.group(1)}, which only tests may use" for match in TESTING_INCLUDE.finditer(code))


def too_long(name, text, functions):
    lines = text.count("\n")
    if lines > LONGEST_FILE and not any(name.match(pattern) for pattern in MAY_BE_LONG):
        yield f"{name}: {lines} lines, of {LONGEST_FILE}"
    for function in functions:
        if function.lines > LONGEST_FUNCTION:
            yield f"{name}:{function.line}: {function.name}: {function.lines} lines, of {LONGEST_FUNCTION}"


class Figures:
    """What one language's sources amount to."""

    def __init__(self, suffixes):
        self.suffixes = suffixes
        self.files, self.functions = [], []

    def text(self):
        if not self.files or not self.functions:
            return "no files or no functions"
        longest = max(self.functions, key=lambda found: found[1].lines)
        longest_file = max(self.files, key=lambda found: found[1])
        return (f"{len(self.functions)} functions, median {statistics.median(f.lines for _, f in self.functions):g} lines, "
                f"longest {longest[1].lines} ({longest[0]}: {longest[1].name}), "
                f"{sum(f.lines > LONGEST_FUNCTION for _, f in self.functions)} over {LONGEST_FUNCTION}; "
                f"{len(self.files)} files, median {statistics.median(n for _, n in self.files):g} lines, "
                f"longest {longest_file[1]} ({longest_file[0]}), {sum(n > LONGEST_FILE for _, n in self.files)} over "
                f"{LONGEST_FILE}")


def main():
    root = pathlib.Path(sys.argv[1]).resolve()
    figures = {language: Figures(suffixes) for language, suffixes in LANGUAGES.items()}
    offenders = []
    found = dict(sources(root))
    functions_of = function_lines.functions_of(list(found))
    for path, name in found.items():
        text = path.read_text(encoding="utf-8")
        functions = functions_of[path]
        figure = next(each for each in figures.values() if path.suffix in each.suffixes)
        figure.files.append((name, text.count("\n")))
        figure.functions += [(name, function) for function in functions]
        offenders += too_long(name, text, functions)
        offenders += [f"{name}: {what}" for what in unconventional(name, text)]
    print("\n".join(offenders))
    for language, figure in figures.items():
        print(f"{language}: {figure.text()}")
    return 1 if offenders or not all(figure.functions for language, figure in figures.items() if language in NEEDED) else 0


if __name__ == "__main__":
    sys.exit(main())
