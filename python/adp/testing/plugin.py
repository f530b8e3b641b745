"""The pytest plugin: options, markers, and the fixtures that bring up the lab.

Nothing happens in a run whose tests do not use them. Otherwise the process enters a network namespace of its own before
the first test, every device is recorded, and a failed test tells what became of its frames.
"""

import contextlib

import pytest
from adp.lab import Lab, LabError
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


def pytest_addoption(parser):
    add_options(parser)


def pytest_configure(config):
    for marker in MARKERS:
        config.addinivalue_line("markers", marker)


def pytest_generate_tests(metafunc):
    if "adp_build" not in metafunc.fixturenames:
        return
    builds = Settings(metafunc.config).builds
    wanted = [name for mark in metafunc.definition.iter_markers("build") for name in mark.args] or builds
    if Settings(metafunc.config).board:
        wanted = builds
    chosen = [name for name in builds if name in wanted]
    if not chosen:
        reason = f"It is for the build {' or '.join(wanted)}, and the run has {', '.join(builds)}."
        chosen = [pytest.param(builds[0], marks=pytest.mark.skip(reason=reason))]
    metafunc.parametrize("adp_build", chosen, indirect=True, scope="session")


def pytest_collection_modifyitems(config, items):
    board = Settings(config).board
    if board:
        for item in items:
            mark = item.get_closest_marker("virtual_device")
            if mark or OF_THE_VIRTUAL_DEVICE & set(getattr(item, "fixturenames", ())):
                reason = " ".join(mark.args) if mark and mark.args else "It looks into the virtual device."
                item.add_marker(pytest.mark.skip(reason=f"{reason} The run is on the board of {board}."))


def pytest_collection_finish(session):
    """Before the first test, while there are no threads yet."""
    used = {name for item in session.items for name in getattr(item, "fixturenames", ())}
    if "adp_isolated" in used and not session.config.option.collectonly:
        begin(session.config, "adp_build" in used)


def begin(config, with_library):
    """Enters the namespaces and records the devices from now on. What is missing ends the run with one sentence."""
    settings = Settings(config)
    try:
        settings.check_programs(with_library)
        if not settings.board:
            enter()
    except LabError as problem:
        pytest.exit(str(problem), returncode=1)
    config.pluginmanager.register(Failures(settings.failures), "adp-failures")


@pytest.fixture(scope="session")
def adp_isolated():
    """The process is in a network namespace of its own. `lab` uses it; so must a fixture that makes a Lab itself."""


@pytest.fixture(scope="session")
def adp_settings(request):
    """The options of the run, as adp.testing.settings.Settings."""
    return Settings(request.config)


@pytest.fixture(scope="session")
def device_build(adp_settings, adp_isolated):
    """Name of the build whose virtual device is used."""
    return adp_settings.device


@pytest.fixture(scope="session")
def adp_build(request):
    """The build that pytest_generate_tests has chosen."""
    return request.param


@pytest.fixture(scope="session")
def build(adp_build, adp_isolated):
    """Name of the build of the library; the test runs once with each of --adp-builds."""
    return adp_build


@pytest.fixture(scope="session")
def lab(adp_settings, adp_isolated):
    """A device with hosts at the ports of --adp-hosts, or the board of --adp-board. All tests share it."""
    with open_lab(adp_settings) as bench:
        yield bench


def open_lab(settings):
    if settings.board:
        from adp.lab.board import open_board

        return open_board(settings.board)
    return Lab(settings.device, settings.hosts)


@pytest.fixture(scope="session")
def session_cpu(lab, build):
    """The CPU that the tests of a build share; they use `cpu`."""
    from .cpu import Cpu  # only here, since it needs the bindings

    with contextlib.closing(Cpu(lab, build)) as made:
        made.set_up()
        yield made


@pytest.fixture
def cpu(session_cpu):
    """The device's CPU with the library of one build: port map and send socket ready, no VLANs of its own."""
    yield session_cpu
    session_cpu.tidy()


@pytest.fixture
def hosts(lab):
    """The hosts by their user ports."""
    return lab.hosts


@pytest.fixture
def device(lab):
    """The virtual device. A test that uses it is skipped on a board."""
    return lab.device


@pytest.fixture
def crossing(lab, cpu):
    """Three hosts of a tagged VLAN."""
    return Crossing(lab, cpu)


@pytest.fixture
def tell(capsys):
    """Prints a line in any run, also without -s."""

    def print_line(text):
        with capsys.disabled():
            print(f"\n    {text}", end="")

    return print_line
