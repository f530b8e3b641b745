"""Holds the check of shape to its word: it finds what is planted, and passes a tree without it."""
import pathlib
import subprocess
import sys

import function_lines
import pytest
import shape

CPP = '// Says something.\n#include "a.h"\n\nint add(int a, int b) {\n    return a + b;\n}\n'
HEADER = "// Adds.\n#pragma once\n\nint add(int a, int b);\n"
PYTHON = '"""Does something."""\n\n\ndef run():\n    pass\n'
SCRIPT = "// Shows something.\nexport function show() {\n    return 1;\n}\n"


def long_body(lines):
    return "".join(f"    step({n});\n" for n in range(lines))


def write(root, files):
    for name, text in files.items():
        path = root / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)


def check(root, **files):
    write(root, {"src/add.cpp": CPP, "src/add.h": HEADER, "tools/run.py": PYTHON})
    write(root, {name.replace("__", "/"): text for name, text in files.items()})
    return run(root)


def run(root):
    script = pathlib.Path(shape.__file__)
    done = subprocess.run([sys.executable, "-B", str(script), str(root)], capture_output=True, text=True, check=False)
    assert done.stderr == ""
    return done.returncode, done.stdout


def test_a_good_tree_passes_and_shows_its_figures(tmp_path):
    status, text = check(tmp_path, **{"page/show.js": SCRIPT})
    assert status == 0
    assert "C and C++: 1 functions, median 3 lines, longest 3 (src/add.cpp: add), 0 over 40; 2 files" in text
    assert "Python: 1 functions, median 2 lines, longest 2 (tools/run.py: run)" in text
    assert "JavaScript: 1 functions, median 3 lines, longest 3 (page/show.js: show)" in text


def test_an_empty_tree_fails(tmp_path):
    assert run(tmp_path)[0] == 1


PLANTED = {
    "long function": ("src/x.cpp", f"// X.\nvoid f() {{\n{long_body(39)}}}\n", "src/x.cpp:2: f: 41 lines, of 40"),
    "long method": ("src/x.h", f"// X.\n#pragma once\nclass X {{\n    X() : a_{{1}} {{\n{long_body(39)}    }}\n}};\n",
                    "src/x.h:4: X: 41 lines, of 40"),
    "long test": ("src/x_test.cpp", f"// X.\nTEST(A, B) {{\n{long_body(39)}}}\n", "TEST(A, B): 41 lines, of 40"),
    "long Python function": ("tools/x.py", f'"""X."""\ndef f():\n{long_body(40).replace(";", "")}',
                             "tools/x.py:2: f: 41 lines, of 40"),
    "long function of a page": ("page/x.js", f"// X.\nconst f = () => {{\n{long_body(39)}}};\n",
                                "page/x.js:2: f: 41 lines, of 40"),
    "long file of a page": ("page/x.js", "// X.\n" + "\n" * 300, "page/x.js: 301 lines, of 300"),
    "no purpose in a page": ("page/x.js", "/* X */\n", "page/x.js: it does not begin with a comment"),
    "long file": ("src/x.cpp", "// X.\n" + "\n" * 300, "src/x.cpp: 301 lines, of 300"),
    "guard by name": ("src/x.h", "// X.\n#ifndef X_H\n#define X_H\n#endif\n", "src/x.h: a header needs #pragma once"),
    "no purpose": ("src/x.cpp", "int x;\n", "src/x.cpp: it does not begin with a comment"),
    "no purpose in Python": ("tools/x.py", "import os\n", "tools/x.py: it does not begin with a comment"),
    "no @file": ("include/adp/x.h", "// X.\n#pragma once\n", "include/adp/x.h: it does not begin with a comment"),
    "qualified integer": ("src/x.h", "// X.\n#pragma once\nstd::uint8_t x;\n", "std::uint8_t: integer types are"),
    "qualified size": ("src/x.cpp", "// X.\nstd::size_t x;\n", "std::size_t: integer types are unqualified"),
    "C++ header of integers": ("src/x.cpp", "// X.\n#include <cstdint>\n", "#include <cstdint>: integer types are"),
    "test by another name": ("src/checks.cpp", "// X.\n#include <gtest/gtest.h>\n", "src/checks.cpp: what only tests use"),
    "pytest by another name": ("tools/x.py", '"""X."""\nimport pytest\n', "tools/x.py: what only tests use is named"),
    "test helper in the product": ("src/x.cpp", '// X.\n#include "src/testing/y.h"\n', "includes src/testing/y.h"),
}


@pytest.mark.parametrize("planted", PLANTED.values(), ids=PLANTED.keys())
def test_what_is_planted_is_found(tmp_path, planted):
    name, text, finding = planted
    status, found = check(tmp_path, **{name: text})
    assert status == 1
    assert finding in found


ALLOWED = {
    "function of forty lines": ("src/x.cpp", f"// X.\nvoid f() {{\n{long_body(38)}}}\n"),
    "file of three hundred lines": ("src/x.cpp", "// X.\n" + "\n" * 299),
    "declarations": ("include/adp/x.h", "/**\n * @file x.h\n */\n#pragma once\n" + "\n" * 400),
    "test helper": ("src/testing/x.h", "// X.\n#pragma once\n#include <gtest/gtest.h>\n"),
    "test that uses a helper": ("src/x_test.cpp", '// X.\n#include "src/testing/y.h"\n'),
    "a word in a comment": ("src/x.cpp", "// Like std::size_t.\n"),
    "function of a page of forty lines": ("page/x.js", f"// X.\nfunction f() {{\n{long_body(38)}}}\n"),
    "what other projects wrote": ("page/vendor/x.js", long_body(400)),
    "what was built": ("build/x.cpp", "int x;\n"),
}


@pytest.mark.parametrize("allowed", ALLOWED.values(), ids=ALLOWED.keys())
def test_what_is_allowed_passes(tmp_path, allowed):
    name, text = allowed
    assert check(tmp_path, **{name: text})[0] == 0


def test_functions_of_scripts_are_told_from_other_braces(tmp_path):
    path = tmp_path / "x.js"
    path.write_text("class A {\n    constructor() {\n    }\n    get b() {\n        return () => ({ c: 1 });\n    }\n}\n"
                    "const d = { e: (f) => {\n} };\ng(function () {\n});\nconst h = `${i(() => {\n})} }`;\nif (j) {\n}\n")
    assert [(found.name, found.line, found.lines) for found in function_lines.functions_of([path])[path]] == [
        ("constructor", 2, 2), ("b", 4, 3), ("e", 8, 2), ("function", 10, 2), ("function", 12, 2)]


def functions(text):
    return [(found.name, found.line, found.lines) for found in function_lines.c_functions(text)]


MEASURED = {
    "a table, its lambda and a call behind it are not functions": (
        'const Row kRows[] = {\n    {"a", [](int x) {\n        return x;\n    }},\n};\nINSTANTIATE(A, Values(X{1}));\n', []),
    "a lambda belongs to the function around it": (
        "void f() {\n    const auto g = [] {\n        return 1;\n    };\n}\n", [("f", 1, 5)]),
    "namespaces and classes are looked into": (
        "namespace a {\nclass B : C<int> {\n  public:\n    bool operator==(const B &) const {\n        return true;\n    }\n};\n}\n",
        [("operator", 4, 3)]),
    "braces in texts, comments and directives do not count": (
        "#define BEGIN {\nvoid f() {\n    // }\n    g(\"}\", '}', R\"(})\", 1'000);\n}\n", [("f", 2, 4)]),
    "defaults, lists of members and types of results": (
        "template <typename T = A<int>>\nX::X(int a = f(1), B b = {}) noexcept : a_(a), b_{b} {\n}\nauto g() -> int {\n}\n",
        [("X::X", 2, 2), ("g", 4, 2)]),
    "parameters that are functions": ("static int make(const A *a, long (*how)(long (*)(void))) {\n}\n", [("make", 1, 2)]),
    "an initialiser with a call in it": ("int x = f();\nconst A kA = g({1});\nstruct S {\n    int a = f();\n};\nenum E { kB = (1) };\n",
                                         []),
    "extern C": ('extern "C" {\nvoid f(void) {\n}\n}\n', [("f", 2, 2)]),
}


@pytest.mark.parametrize(("text", "found"), MEASURED.values(), ids=MEASURED.keys())
def test_functions_are_told_from_other_braces(text, found):
    assert functions(text) == found
