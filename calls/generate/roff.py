"""A page of the manual in man(7)'s macros."""
import re


def escape(text):
    """Text that stands for itself."""
    return text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("^", "\\(ha").replace("~", "\\(ti") \
        .replace("`", "\\(ga")


def words(text):
    """A line of running text. No word of it is a request."""
    return "\\&" + escape(text) if text[:1] in ".'" else escape(text)


class Page:
    def __init__(self, name, section, version, manual):
        self.lines = [f'.TH "{escape(name)}" {section} "" "adp {version}" "{manual}"', ".nh", ".ad l"]

    def section(self, title):
        self.lines.append(f'.SH "{title}"')

    def text(self, text):
        """A paragraph."""
        self.lines += [".PP", words(text)]

    def name(self, name, purpose):
        self.section("NAME")
        self.lines.append(f"{escape(name)} \\- {escape(purpose)}")

    def bold(self, line):
        self.lines += [".PP", f"\\fB{escape(line)}\\fR"]

    def code(self, lines):
        """Lines as they are."""
        self.lines += [".PP", ".nf", *(words(line) for line in lines), ".fi"]

    def entry(self, head, text):
        """A row of a list: what is explained, and its explanation."""
        self.lines += [".TP", f"\\fB{escape(head)}\\fR", words(text)]

    def item(self, text):
        self.lines += [".IP \\(bu 3", words(text)]

    def blocks(self, blocks):
        """Paragraphs, and lists as lists of items."""
        for block in blocks:
            if isinstance(block, str):
                self.text(block)
            else:
                for item in block:
                    self.item(item)

    def references(self, names):
        """The pages to look at, as (name, section)."""
        self.section("SEE ALSO")
        self.lines += [f".BR {escape(name)} ({section}){',' if (name, section) != names[-1] else ''}" for name, section in names]

    def __str__(self):
        return "\n".join(self.lines) + "\n"


def file_name(name, section):
    return f"{re.sub(r'[^A-Za-z0-9_.-]', '_', name)}.{section}"
