"""Checks that a folder includes only what the table of docs/architecture.md lets it use, and that its picture agrees.

folders.py SOURCE_DIR
"""
import pathlib
import re
import sys

DOCUMENT, PICTURE = "docs/architecture.md", "docs/architecture.dot"
EVERYTHING = "everything"
INCLUDE_ROOTS = ("", "include", "platform", "src")
TEST = re.compile(r"_test\.cpp$|/testing/")


def table_of(root):
    """What each folder may use besides itself, from the section Folders; None for everything."""
    section = (root / DOCUMENT).read_text(encoding="utf-8").partition("\n## Folders\n")[2].partition("\n## ")[0]
    table = {}
    for row in re.findall(r"^\| `.*\|$", section, flags=re.M):
        folders, _, uses = row.strip("|").split("|")
        may_use = None if uses.strip() == EVERYTHING else re.findall(r"`([^`]+)`", uses)
        table.update(dict.fromkeys(re.findall(r"`([^`]+)`", folders), may_use))
    return table


def arrows_of(root):
    """(user, used) of each arrow of the picture that says "uses"."""
    text = (root / PICTURE).read_text(encoding="utf-8")
    for left, right, options in re.findall(r'"([^"]+)" -> "([^"]+)"(?: \[(.*)\])?$', text, flags=re.M):
        if not re.search(r"arrowhead=(?:none|vee)|style=invis", options):
            yield (right, left) if "dir=back" in options else (left, right)


def includes(path):
    for number, line in enumerate(path.read_text(encoding="utf-8").splitlines(), 1):
        match = re.match(r'\s*#\s*include\s+([<"])([^">]+)[">]', line)
        if match:
            yield number, match.group(2)


def place_of(root, includer, header):
    """The included file's place in the tree; None for a library's or the system's."""
    if header.startswith("generated/"):
        return header
    for folder in (includer.parent.relative_to(root), *INCLUDE_ROOTS):
        path = pathlib.PurePosixPath(folder) / header
        if (root / path).is_file():
            return str(path)
    return None


def lies_in(path, folder):
    return f"{path}/".startswith(folder + "/")


def folder_of(table, path):
    return max((name for name in table if lies_in(path, name)), key=len, default=None)


def may_use(table, folder, place):
    return table[folder] is None or any(lies_in(place, used) for used in (folder, *table[folder]))


class Check:
    def __init__(self, root):
        self.root, self.table = root, table_of(root)
        self.failures, self.includes, self.arrows = [], 0, 0

    def file(self, path):
        relative = str(path.relative_to(self.root))
        folder = folder_of(self.table, relative)
        if folder is None:
            self.failures.append(f"{relative}: its folder is not in the table of {DOCUMENT}")
            return
        for number, header in includes(path):
            self.includes += 1
            place = place_of(self.root, path, header)
            if place and not may_use(self.table, folder, place):
                self.failures.append(f"{relative}:{number}: {folder} must not include {place}")

    def files(self):
        for path in sorted(self.root.rglob("*.[ch]*")):
            relative = str(path.relative_to(self.root))
            if path.suffix in (".h", ".cpp", ".c") and not lies_in(relative, "build") and not TEST.search(relative):
                self.file(path)

    def rows(self):
        self.failures += [f"{DOCUMENT}: there is no folder {folder}" for folder in self.table
                          if not (self.root / folder).is_dir()]

    def picture(self):
        for user, used in arrows_of(self.root):
            self.arrows += 1
            if not any(lies_in(used, folder) or lies_in(folder, used) for folder in self.table.get(user) or ()):
                self.failures.append(f"{PICTURE}: {user} -> {used} is not in the table of {DOCUMENT}")


def main():
    check = Check(pathlib.Path(sys.argv[1]).resolve())
    check.files()
    check.rows()
    check.picture()
    if not check.includes or not check.arrows:
        check.failures.append("no include or no arrow was found")
    done = f"ok: {check.includes} includes and {check.arrows} arrows are in the table"
    print("\n".join(check.failures) if check.failures else done)
    return 1 if check.failures else 0


if __name__ == "__main__":
    sys.exit(main())
