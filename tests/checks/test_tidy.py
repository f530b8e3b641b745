"""Holds the check with clang-tidy to its word: it finds what is planted among files that are looked at together."""
import json
import shutil
from pathlib import Path

import pytest
import tidy

ROOT = Path(__file__).parents[2]
CLEAN = "namespace {\nint doubled(int a) {\n    return 2 * a;\n}\n}  // namespace\nint NAME(int a) {\n    return doubled(a);\n}\n"
NULL = "int *NAME() {\n    return 0;\n}\n"
ESCAPE = "int main(int count, char **) {\n    if (count > 1) {\n        throw 1;\n    }\n    return 0;\n}\n"


@pytest.fixture
def look(tmp_path):
    """Looks at sources of these texts: how many batches there are, how many were halved, and what is found."""
    shutil.copy(ROOT / ".clang-tidy", tmp_path)

    def run(**texts):
        files = []
        for name, text in texts.items():
            files.append(str(tmp_path / f"{name}.cpp"))
            Path(files[-1]).write_text(text.replace("NAME", name))
        commands = [{"file": file, "command": f"g++ -std=c++20 -o x -c {file}"} for file in files]
        (tmp_path / "compile_commands.json").write_text(json.dumps(commands))
        looked = tidy.Tidy(tmp_path, tmp_path)
        batches = looked.batches(files)
        found = "".join(words for batch in batches for words in looked.findings(batch, tidy.NO_ANALYZER))
        return len(batches), looked.halved, found

    return run


def test_clean_files_stand_together(look):
    assert look(a="int NAME() { return 1; }\n", b="int NAME() { return 2; }\n") == (1, 0, "")


def test_files_that_name_a_thing_alike_do_not(look):
    assert look(a=CLEAN, b=CLEAN) == (2, 0, "")


def test_a_finding_among_others_is_told_once(look):
    batches, halved, found = look(a=CLEAN, b=NULL, c="int NAME() { return 1; }\n")
    assert (batches, halved) == (1, 2)
    assert found.count("modernize-use-nullptr,") == 1 and "b.cpp" in found


def test_programs_stand_together_and_let_no_exception_escape(look):
    assert look(a="int main() {\n    return 0;\n}\n", b="int main() {\n    return 0;\n}\n") == (1, 0, "")
    batches, halved, found = look(a="int main() {\n    return 0;\n}\n", b=ESCAPE)
    assert (batches, halved) == (1, 1)
    assert "bugprone-exception-escape" in found
