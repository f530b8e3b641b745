"""Holds the check of links to its word: a link that leads nowhere is found, and only that."""
import links
import pytest

PAGE = "# A page\n\n## Of `some` words, too\n\n```sh\n# no heading\n```\n"


def check(root, text):
    (root / "docs").mkdir()
    (root / "docs" / "other.md").write_text(PAGE, encoding="utf-8")
    (root / "README.md").write_text(text, encoding="utf-8")
    return links.main(root)


@pytest.mark.parametrize("link", ["docs/other.md", "docs", "docs/other.md#a-page", "docs/other.md#of-some-words-too", "#here",
                                  "https://example.com/none"])
def test_what_exists_is_found(tmp_path, link):
    assert check(tmp_path, f"# Here\n\n[x]({link})\n") == 0


@pytest.mark.parametrize("link", ["other.md", "docs/other.md#page", "docs/other.md#no-heading", "#there", "docs#a-page",
                                  "../README.md", "/docs"])
def test_what_does_not_exist_is_a_complaint(tmp_path, capsys, link):
    assert check(tmp_path, f"# Here\n\n[x]({link})\n") == 1
    assert link in capsys.readouterr().out


def test_code_has_no_links(tmp_path):
    assert check(tmp_path, "`[x](none)`\n\n```c\n[x](none)\n```\n") == 0
