"""What the tests of the panel have: one browser, one lab of two devices, a server, and a server that changes nothing.

A lab stays for all tests: each leaves it as it was, or has the fixture `fresh`.
"""

import pathlib
import subprocess
import tempfile

import pytest
from browser import browser
from panels import DEVICES, lab_of, server_of


@pytest.fixture(scope="session")
def loopback():
    """The namespace of the run has one, which is down at first."""
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True, timeout=30)


@pytest.fixture(scope="session")
def downloads():
    """The folder in which the browser saves files."""
    with tempfile.TemporaryDirectory(prefix="downloads-") as folder:
        yield pathlib.Path(folder)


@pytest.fixture(scope="session")
def the_browser(loopback, downloads):
    with browser(downloads) as page:
        yield page


@pytest.fixture(scope="session")
def lab():
    with lab_of() as made:
        yield made


@pytest.fixture(scope="session")
def server(lab, loopback):
    with server_of(lab) as made:
        yield made


@pytest.fixture(scope="session")
def read_only(lab, loopback):
    """A server that changes nothing: page.open("#front/sw1", read_only.url)"""
    with server_of(lab, "--read-only") as made:
        yield made


@pytest.fixture
def page(the_browser, server):
    """The browser's page. After the test there must be no error on the console."""
    the_browser.begin(server.url)
    yield the_browser
    errors = the_browser.errors()
    the_browser.end()
    assert errors == []


@pytest.fixture
def fresh(lab):
    """Devices that were just switched on, after the test, too."""
    yield lab
    for device in DEVICES:
        lab.restart(device)
