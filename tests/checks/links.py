"""Checks that the relative links of the documents lead somewhere: links.py SOURCE_DIR"""
import pathlib
import re
import sys

from commands import pages

LINK = re.compile(r"\]\(([^)\s]+)\)")
FENCED = re.compile(r"^```.*?^```$", re.M | re.S)
CODE = re.compile(r"`[^`\n]*`")


def anchors_of(text):
    """The anchors that GitHub gives the headings of a page."""
    titles = re.findall(r"^#+ (.+)$", FENCED.sub("", text), flags=re.M)
    titles = [re.sub(r"\[([^\]]*)\]\([^)]*\)", r"\1", title) for title in titles]
    return {re.sub(r"[^\w -]", "", title.lower()).replace(" ", "-") for title in titles}


def complaints_of(page, root):
    text = page.read_text(encoding="utf-8")
    for link in LINK.findall(CODE.sub("", FENCED.sub("", text))):
        if re.match(r"[a-z]+:", link):
            continue
        target, _, anchor = link.partition("#")
        place = (page.parent / target).resolve() if target else page
        if not place.exists() or not place.is_relative_to(root):
            yield f"{page.relative_to(root)}: {link} leads nowhere"
        elif anchor and (place.suffix != ".md" or anchor not in anchors_of(place.read_text(encoding="utf-8"))):
            yield f"{page.relative_to(root)}: {link} names no heading"


def main(source):
    root = pathlib.Path(source).resolve()
    found = [complaint for page in pages(root) for complaint in complaints_of(page, root)]
    print("\n".join(found) or f"ok: the links of {len(pages(root))} pages lead somewhere")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
