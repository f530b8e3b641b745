"""The pictures of the documents can be taken: what they show is there, and the files are small."""

from tests.panel.pictures import failover, office


def test_pictures_of_the_documents_are_taken(the_browser, tmp_path):
    office(the_browser, tmp_path)
    failover(the_browser, tmp_path)
    assert {path.name for path in tmp_path.iterdir()} == {"panel-front.png", "panel-explain.png", "panel-failover.png"}
    assert the_browser.errors() == []
