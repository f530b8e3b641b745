"""Writes the generated part of the Python package, python/adp/calls, from the headers. A test compares the two."""
import ast
import os
import sys

import emit_python
import emit_python_types as types
import emit_status
import exported
import interface
import python_names as names

FOLDER = os.path.join("python", "adp", "calls")


def files(root):
    """File name to text."""
    include = os.path.join(root, "include")
    library = exported.read(include)
    rows = emit_status.results(os.path.join(include, "adp", "types.h"),
                               os.path.join(root, "vdevice", "chip", "frame", "status.h"))
    found = {"constants.py": types.constants(library), "results.py": types.results(rows),
             "layouts.py": types.layouts(library), "records.py": types.records(library),
             "tables.py": types.tables(library), "__init__.py": '"""The generated part of the package."""\n'}
    public = [*names.TAKEN]
    for module in ("constants.py", "records.py", "tables.py"):
        public += public_names(found[module])
    for header in sorted({function.header for function in library.functions}):
        module = f"{names.module_of(header)}.py"
        found[module] = emit_python.module(library, header)
        public += public_names(found[module])
    for name in public:
        if public.count(name) > 1:
            raise interface.HeaderError(f"{name}: another name of the package is the same")
    return found


def public_names(source):
    """What a module has for others: its __all__."""
    [listed] = [node.value for node in ast.parse(source).body
                if isinstance(node, ast.Assign) and node.targets[0].id == "__all__"]
    return ast.literal_eval(listed)


def main():
    root = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    try:
        written = files(root)
    except interface.HeaderError as error:
        sys.exit(f"script/reference: {error}")
    for name, text in written.items():
        with open(os.path.join(root, FOLDER, name), "w", encoding="utf-8") as output:
            output.write(text)


if __name__ == "__main__":
    main()
