"""What the check of public headers complains about."""
import pytest

import public_headers

C, CXX = public_headers.COMPILERS[:2]


@pytest.fixture(name="root")
def root_fixture(tmp_path):
    (tmp_path / "include" / "adp").mkdir(parents=True)

    def write(text):
        (tmp_path / "include" / "adp" / "x.h").write_text(text, encoding="utf-8")
        return str(tmp_path)
    return write


@pytest.mark.parametrize("compiler", public_headers.COMPILERS, ids=lambda compiler: compiler[0])
def test_a_header_that_needs_another_one_is_found(root, compiler):
    assert not public_headers.complaint(root("#pragma once\n#include <stdint.h>\nuint32_t f(void);\n"), compiler, "adp/x.h")
    assert "uint32_t" in public_headers.complaint(root("#pragma once\nuint32_t f(void);\n"), compiler, "adp/x.h")


def test_a_header_without_a_guard_is_found(root):
    assert "redefinition" in public_headers.complaint(root("struct a { int b; };\n"), C, "adp/x.h")


def test_what_only_one_of_the_languages_has_is_found(root):
    assert public_headers.complaint(root("#pragma once\nint f();\n"), C, "adp/x.h")
    assert public_headers.complaint(root("#pragma once\nint f(int *restrict a);\n"), CXX, "adp/x.h")


def test_all_headers_of_the_folder_are_compiled(root):
    assert public_headers.headers_of(root("")) == ["adp/x.h", *public_headers.OTHERS]
