"""The bench that the scenarios share, and adpsh of each build on it.

Every scenario runs against each build of the library that ADP_SCENARIO_BUILDS names. Start them with script/scenario.
"""

import contextlib
import os

import pytest
from adp.lab import Build, Lab, LabError

pytest.register_assert_rewrite("acl", "crossing", "judge", "limits", "priorities", "ringside", "segment", "stage", "tagging")
from acl import Acl  # noqa: E402
from cpu import Cpu  # noqa: E402
from crossing import PORTS as CROSSING_PORTS  # noqa: E402
from crossing import Crossing  # noqa: E402
from failures import Failures  # noqa: E402
from limits import Limits  # noqa: E402
from priorities import Priorities  # noqa: E402
from judge import Judge  # noqa: E402
from reports import DIALECTS  # noqa: E402
from stage import MEMBERS, performance, theatre  # noqa: E402
from tagging import Tagging  # noqa: E402

BUILDS = os.environ.get("ADP_SCENARIO_BUILDS", "host,mips").split(",")
DEVICE_BUILD = os.environ.get("ADP_SCENARIO_DEVICE", "host")


def pytest_configure(config):
    config.pluginmanager.register(Failures())


def pytest_sessionstart():
    """A missing build fails the run with one sentence, not with one for each scenario."""
    try:
        Build(DEVICE_BUILD).command("vdeviced")
        for name in BUILDS:
            for program in ("adpsh", "link_aggregation", "acl", "igmp_snooping", "ring_protection"):
                Build(name).command(program)
    except LabError as problem:
        pytest.exit(str(problem), returncode=1)


@pytest.fixture(scope="session")
def lab():
    """A device with a host on each of its 26 ports."""
    with Lab(DEVICE_BUILD) as bench:
        yield bench


@pytest.fixture(scope="session", params=BUILDS)
def build(request):
    """Name of a build of the library."""
    return request.param


@pytest.fixture(scope="session")
def session_cpu(lab, build):
    with contextlib.closing(Cpu(lab, build)) as cpu:
        cpu.set_up()
        yield cpu


@pytest.fixture
def cpu(session_cpu):
    """The device's CPU with the library of one build: port map and send socket ready, no VLANs of its own."""
    yield session_cpu
    session_cpu.tidy()


@pytest.fixture
def hosts(lab):
    return lab.hosts


@pytest.fixture
def crossing(lab, cpu):
    """Three hosts of a tagged VLAN."""
    return Crossing(lab, cpu)


@pytest.fixture
def acl(cpu, build):
    """The field processor, empty before and afterwards."""
    rules = Acl(cpu, build)
    yield rules
    rules.tidy()


@pytest.fixture
def limits(cpu):
    """Storm control and ingress limits of the crossing's ports, none before and afterwards."""
    made = Limits(cpu, CROSSING_PORTS)
    yield made
    made.tidy()


@pytest.fixture
def tagging(lab, cpu):
    """Tags between the hosts, with no entries and every port's TPID and mode as at power-on."""
    rules = Tagging(lab, cpu)
    yield rules
    rules.tidy()


@pytest.fixture
def priorities(lab, cpu, crossing):
    """The priority and queue maps, as at power-on before and afterwards."""
    maps = Priorities(lab, cpu, crossing)
    yield maps
    maps.tidy()


@pytest.fixture
def tell(capsys):
    """Prints a line in any run, also without -s."""

    def print_line(text):
        with capsys.disabled():
            print(f"\n    {text}", end="")

    return print_line


# Multicast snooping


@pytest.fixture(name="theatre", scope="session")
def open_theatre():
    """A device whose hosts speak IP."""
    with theatre(DEVICE_BUILD) as bench:
        yield bench


@pytest.fixture
def stage(theatre, build):
    """The snooping program, which drops groups without listeners."""
    with performance(theatre, build) as made:
        made.agent.await_dropping()
        yield made


@pytest.fixture
def group_stage(theatre, build):
    """The same with an aggregation group of two ports."""
    with performance(theatre, build, MEMBERS) as made:
        made.agent.await_dropping()
        yield made


@pytest.fixture(params=DIALECTS)
def dialect(request):
    """IGMP and MLD."""
    return DIALECTS[request.param]


@pytest.fixture
def judge(stage, dialect):
    return Judge(stage, dialect)
