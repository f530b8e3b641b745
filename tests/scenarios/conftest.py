"""What the scenarios share besides the plugin's fixtures: helpers about one topic each, and the stage of multicast."""

import pytest
from adp.lab import Build, LabError
from adp.testing.crossing import Crossing
from adp.testing.plugin import SETTINGS

pytest.register_assert_rewrite("acl", "judge", "limits", "priorities", "ringside", "segment", "stage", "tagging")
from acl import Acl  # noqa: E402
from crossing import PORTS as CROSSING_PORTS  # noqa: E402
from limits import Limits  # noqa: E402
from priorities import Priorities  # noqa: E402
from judge import Judge  # noqa: E402
from reports import DIALECTS  # noqa: E402
from stage import MEMBERS, performance, theatre  # noqa: E402
from tagging import Tagging  # noqa: E402

EXAMPLES = ("link_aggregation", "acl", "igmp_snooping", "ring_protection")


def pytest_sessionstart(session):
    """A missing build fails the run with one sentence, not with one for each scenario."""
    try:
        for name in session.config.stash[SETTINGS].builds:
            for program in EXAMPLES:
                Build(name).command(program)
    except LabError as problem:
        pytest.exit(str(problem), returncode=1)


@pytest.fixture
def crossing(lab, cpu):
    """Three hosts of a tagged VLAN."""
    return Crossing(lab, cpu, CROSSING_PORTS)


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


# Multicast snooping


@pytest.fixture(name="theatre", scope="session")
def open_theatre(device_build):
    """A device whose hosts speak IP."""
    with theatre(device_build) as bench:
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
