"""The pytest plugin: options, markers, and the fixtures that bring up the lab.

Nothing happens in a run whose tests do not use them. Otherwise the process enters a network namespace of its own before
the first test, every device is recorded, and a failed test tells what became of its frames.
"""

import contextlib

import pytest
from adp.lab import Lab, LabError
from adp.lab.board import open_board
from adp.lab.isolate import enter

from .crossing import Crossing
from .failures import Failures
from .settings import Settings, add_options

MARKERS = (
    "build(*names): the builds of the library that the test is for, of those that the run has",
    "virtual_device(reason): the test needs what only the virtual device can do; on a board it is skipped",
)
# A test that uses one of these looks into the virtual device.
OF_THE_VIRTUAL_DEVICE = {"device"}
SETTINGS = pytest.StashKey()
FAILURES = "adp-failures"


def pytest_addoption(parser):
    add_options(parser)


def pytest_configure(config):
    try:
        config.stash[SETTINGS] = Settings(config)
    except LabError as problem:
        raise pytest.UsageError(str(problem)) from None
    for marker in MARKERS:
        config.addinivalue_line("markers", marker)


@pytest.hookimpl(tryfirst=True)  # so that the build comes first in the names of tests
def pytest_generate_tests(metafunc):
    if "adp_build" in metafunc.fixturenames:
        settings, marks = metafunc.config.stash[SETTINGS], metafunc.definition.iter_markers("build")
        metafunc.parametrize("adp_build", builds_for(settings, marks), indirect=True, scope="session")


def builds_for(settings, marks):
    """The builds that a test is run with. Of a board there is one, whatever its name."""
    wanted = [name for mark in marks for name in mark.args]
    chosen = [name for name in settings.builds if settings.board or not wanted or name in wanted]
    if chosen:
        return chosen
    reason = f"It is for the build {' or '.join(wanted)}, and the run has {', '.join(settings.builds)}."
    return [pytest.param(settings.builds[0], marks=pytest.mark.skip(reason=reason))]


def pytest_collection_modifyitems(config, items):
    board = config.stash[SETTINGS].board
    for item in items if board else ():
        mark = item.get_closest_marker("virtual_device")
        if mark or OF_THE_VIRTUAL_DEVICE & set(fixtures_of(item)):
            reason = " ".join(mark.args) if mark and mark.args else "It looks into the virtual device."
            item.add_marker(pytest.mark.skip(reason=f"{reason} The run is on the board of {board}."))


def fixtures_of(item):
    """The names of the fixtures that a test uses; a doctest has none."""
    return getattr(item, "fixturenames", ())


def pytest_collection_finish(session):
    """Before the first test, while there are no threads yet."""
    used = {name for item in session.items for name in fixtures_of(item)}
    if "adp_isolated" in used and not session.config.option.collectonly and not is_worker(session.config):
        begin(session.config, "adp_build" in used)


def is_worker(config):
    """Whether this is a process of pytest-xdist, which tells of a failed test and not of the end of a run."""
    return hasattr(config, "workerinput")


def begin(config, with_library):
    """Enters the namespaces and records the devices from now on. What is missing ends the run with one sentence."""
    settings = config.stash[SETTINGS]
    try:
        settings.check_programs(with_library)
        if not settings.board:
            enter()
    except LabError as problem:
        if is_worker(config):
            pytest.fail(str(problem), pytrace=False)
        pytest.exit(str(problem), returncode=1)
    config.pluginmanager.register(Failures(settings.failures), FAILURES)


@pytest.fixture(scope="session")
def lab(adp_settings, adp_isolated):
    """A device with hosts at the ports of --adp-hosts, or the board of --adp-board. All tests share it."""
    made = open_board(adp_settings.board) if adp_settings.board else Lab(adp_settings.device, adp_settings.hosts)
    with made as bench:
        yield bench


@pytest.fixture
def cpu(lab, build, adp_cpu):
    """The device's CPU with the library of one build: port map and send socket are ready, and what the test sets is undone."""
    made = adp_cpu.of(lab, build)
    yield made
    made.tidy()


@pytest.fixture
def hosts(lab):
    """The hosts by their user ports: `lab.hosts`."""
    return lab.hosts


@pytest.fixture
def device(lab):
    """The virtual device: `lab.device`. All cables are in and good again after the test, which is skipped on a board."""
    yield lab.device
    mend_cables(lab)


def mend_cables(lab):
    """Puts back the cables that are pulled, and makes bad ones good."""
    for port in {cable["port"] for cable in lab.device.ask("cables")["cables"]}:
        lab.device.cable(port)
    pulled = [port["port"] for port in lab.device.ask("ports")["ports"] if port["pulled"]]
    for port in pulled:
        lab.device.control("plug", port)
    if pulled:
        lab.await_links()


@pytest.fixture
def crossing(lab, cpu):
    """The lab's first three hosts, in a tagged VLAN."""
    return Crossing(lab, cpu)


@pytest.fixture(scope="session")
def build(adp_build, adp_isolated):
    """Name of the build of the library; the test runs once with each of --adp-builds."""
    return adp_build


@pytest.fixture(scope="session")
def device_build(adp_settings, adp_isolated):
    """Name of the build whose virtual device is used."""
    return adp_settings.device


@pytest.fixture
def tell(capsys):
    """Prints a line in any run, also without -s."""

    def print_line(text):
        with capsys.disabled():
            print(f"\n    {text}", end="")

    return print_line


@pytest.fixture(scope="session")
def adp_cpu():
    """What tests with the same lab and build share as `cpu`: an adp.testing.cpu.SharedCpu."""
    from .cpu import SharedCpu  # only here, since it needs the bindings

    with contextlib.closing(SharedCpu()) as made:
        yield made


@pytest.fixture(scope="session")
def adp_isolated(request):
    """The process is in a network namespace of its own. `lab` uses it; so must a fixture that makes a Lab itself."""
    if not request.config.pluginmanager.has_plugin(FAILURES):  # it was asked for by getfixturevalue(), or by a worker
        begin(request.config, False)


@pytest.fixture(scope="session")
def adp_settings(request):
    """The options of the run, as adp.testing.settings.Settings."""
    return request.config.stash[SETTINGS]


@pytest.fixture(scope="session")
def adp_build(request):
    """What `build` gives, also where a project has another fixture of that name."""
    return request.param
