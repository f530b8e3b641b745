"""Queries and reports on their way through the snooping program: who gets them, and where it takes a router to be."""

import contextlib

import pytest
from adp.lab.frames import vlan_tag
from adp.testing.cpu import Cpu
from judge import Judge
from reports import DIALECTS, PIM_HELLO, SPEAKER, TO_EXCLUDE, pim_hello, router_advertisement
from stage import MEMBERS, NEIGHBOUR, ONE, OTHER, PORTS, SOURCE, VLAN, WITNESS, performance

ROUTER, SECOND_ROUTER = WITNESS, SOURCE
SUBJECT = 2
TRUNK_VLAN = 100
BLOCKING, FORWARDING = 1, 4
EVERY_PORT = 0x7FFFFFF  # bits 0 to 26
NORMAL = 5
PIM_JOIN = 0x23
IPV6_ROUTER_ADVERTISEMENT = 151
SPANNING_TREE = 1
SHORT_AGE = 1


@pytest.fixture
def theatre_cpu(theatre, build):
    with contextlib.closing(Cpu(theatre, build)) as cpu:
        cpu.set_up()
        yield cpu
        cpu.tidy()


def reports(dialect):
    """A message of each kind that is for routers."""
    group = dialect.group(SUBJECT)
    return (dialect.about(group), dialect.records(dialect.record(TO_EXCLUDE, group)), dialect.about(group, dialect.leave))


def test_a_query_reaches_all_ports_but_its_own(judge, dialect):
    for port in (ROUTER, ONE):
        assert judge.carried_frame(port, dialect.query_frame()) == set(PORTS) - {port}


def test_a_report_reaches_routers_and_nobody_else(judge, dialect):
    for report in reports(dialect):
        assert judge.carried(OTHER, report) == set(), "nobody has queried"
    judge.carried_frame(ROUTER, dialect.query_frame())
    for report in reports(dialect):
        assert judge.carried(OTHER, report) == {ROUTER}
        assert judge.carried(ROUTER, report) == set(), "not back to where it came from"
    judge.carried_frame(SECOND_ROUTER, dialect.query_frame())
    for report in reports(dialect):
        assert judge.carried(OTHER, report) == {ROUTER, SECOND_ROUTER}


def test_a_router_of_the_other_protocol_gets_no_reports(stage):
    one, other = DIALECTS.values()
    for here, there in ((one, other), (other, one)):
        Judge(stage, here).carried_frame(ROUTER if here is one else SECOND_ROUTER, here.query_frame())
    for dialect, router in ((one, ROUTER), (other, SECOND_ROUTER)):
        for report in reports(dialect):
            assert Judge(stage, dialect).carried(OTHER, report) == {router}


def test_a_router_gets_the_streams_that_somebody_wants(judge, dialect, stage):
    wanted, unwanted = (dialect.group(SUBJECT + number) for number in range(2))
    router = {ROUTER}
    judge.say(dialect.about(wanted))
    judge.wait()
    assert stage.heard(wanted) == {ONE}
    judge.carried_frame(ROUTER, dialect.query_frame())
    assert stage.heard(wanted) == {ONE} | router
    stage.say(OTHER, dialect.frame(dialect.about(wanted)))
    judge.say(dialect.about(wanted, dialect.leave))
    judge.wait()
    assert stage.heard(wanted) == {OTHER} | router
    stage.say(OTHER, dialect.frame(dialect.about(wanted, dialect.leave)))
    judge.wait()
    assert stage.heard(wanted) == stage.heard(unwanted) == set()


def test_a_router_ages_out(theatre, build, dialect):
    with performance(theatre, build, router_age=SHORT_AGE) as stage:
        stage.agent.await_dropping()
        judge = Judge(stage, dialect)
        group = dialect.group(SUBJECT)
        judge.say(dialect.about(group))
        stage.say(ROUTER, dialect.query_frame())
        stage.agent.await_router(VLAN, dialect.ip_version, f"port {ROUTER}")
        stage.agent.await_router(VLAN, dialect.ip_version, f"port {ROUTER}", is_there=False)
        assert judge.carried(OTHER, dialect.about(dialect.group(SUBJECT + 1))) == set()
        assert stage.heard(group) == {ONE}


def test_a_query_without_an_address_is_a_switch_s(stage):
    judge = Judge(stage, DIALECTS["IGMP"])
    query = judge.dialect.query_frame(src="0.0.0.0")
    assert judge.carried_frame(ROUTER, query) == set(PORTS) - {ROUTER}
    assert judge.carried(OTHER, judge.dialect.about(judge.dialect.group(SUBJECT))) == set()


@pytest.mark.parametrize("frame", (pim_hello, router_advertisement))
def test_a_router_that_does_not_query_is_heard(stage, frame):
    judge = Judge(stage, DIALECTS["IGMP"])
    assert judge.carried_frame(ROUTER, frame()) == set(PORTS) - {ROUTER}
    for report in reports(judge.dialect):
        assert judge.carried(OTHER, report) == {ROUTER}


def test_unknown_messages_go_on_to_all(stage):
    judge = Judge(stage, DIALECTS["IGMP"])
    for kind in (0x13, 0x31, 0xFF):
        message = bytes([kind, 0, 0, 0]) + bytes(4)
        assert judge.carried(OTHER, message) == set(PORTS) - {OTHER}


def test_what_the_switch_has_forwarded_does_not_go_on(stage):
    judge = Judge(stage, DIALECTS["MLD"])
    message = bytes([IPV6_ROUTER_ADVERTISEMENT, 0, 0, 0]) + bytes(4)
    assert judge.carried(OTHER, message, dst="ff02::1") == set(PORTS) - {OTHER}


def broken(dialect):
    """Frames of routers that are no such thing."""
    query = dialect.general_query()
    to_all = {"dst": dialect.everybody}
    yield dialect.frame(query[:2] + b"\x12\x34" + query[4:], is_checked=False, **to_all), set()
    yield dialect.frame(query[:4], **to_all), set()
    yield dialect.frame(query[:7], **to_all), set()
    if dialect.name == "MLD":
        yield dialect.frame(query[:23], **to_all), set()
        yield dialect.query_frame(hlim=64), set()
        yield dialect.query_frame(plen=1400), set()
        return
    yield dialect.query_frame(frag=1), set()
    yield dialect.query_frame(len=1500), set()
    flooded = set(PORTS) - {ROUTER}  # these have gone to everybody before the program reads them
    yield pim_hello(is_checked=False), flooded
    yield pim_hello(kind=PIM_JOIN), flooded
    yield pim_hello(kind=PIM_HELLO | 1 << 6), flooded
    yield pim_hello(src="0.0.0.0"), flooded
    yield pim_hello(len=24), flooded
    yield router_advertisement(is_checked=False), set()


def test_broken_messages_find_no_router(judge, dialect):
    for frame, reached in broken(dialect):
        assert judge.carried_frame(ROUTER, frame) == reached, frame.hex()
        assert judge.carried(OTHER, dialect.about(dialect.group(SUBJECT))) == set(), frame.hex()


def test_a_tagged_vlan_keeps_its_messages(judge, dialect, theatre_cpu):
    theatre_cpu.vlan(TRUNK_VLAN, (ROUTER, ONE, OTHER))
    tags = vlan_tag(TRUNK_VLAN)
    assert judge.carried_frame(ROUTER, dialect.query_frame(tags=tags)) == {ONE, OTHER}
    report = dialect.about(dialect.group(SUBJECT))
    assert judge.carried(OTHER, report, tags=tags) == {ROUTER}
    assert judge.carried(OTHER, report) == set(), "the router is in another VLAN"
    assert judge.stage.end() == 0, "a VLAN's groups go with it, so the program ends first"


def test_messages_pass_no_blocked_port(judge, dialect, theatre_cpu):
    assert theatre_cpu.result("adp_set_port_erps_state", OTHER, BLOCKING) == 0
    try:
        assert judge.carried_frame(ROUTER, dialect.query_frame()) == set(PORTS) - {ROUTER, OTHER}
        assert judge.carried_frame(OTHER, dialect.query_frame()) == set()
    finally:
        assert theatre_cpu.result("adp_set_port_erps_state", OTHER, FORWARDING) == 0


def test_messages_pass_no_port_that_is_blocked_in_their_vlan(judge, dialect, theatre_cpu):
    theatre_cpu.vlan(TRUNK_VLAN, (ROUTER, ONE, OTHER))
    assert theatre_cpu.result("adp_create_mstp_instance", SPANNING_TREE) == 0
    try:
        assert theatre_cpu.result("adp_add_msti_member", SPANNING_TREE, TRUNK_VLAN) == 0
        assert theatre_cpu.result("adp_set_port_mstp_state", SPANNING_TREE, OTHER, BLOCKING) == 0
        tagged = dialect.query_frame(tags=vlan_tag(TRUNK_VLAN))
        assert judge.carried_frame(ROUTER, tagged) == {ONE}
        assert judge.carried_frame(ROUTER, dialect.query_frame()) == set(PORTS) - {ROUTER}
    finally:
        assert theatre_cpu.result("adp_delete_mstp_instance", SPANNING_TREE) == 0


def test_messages_pass_no_isolation(judge, dialect, theatre_cpu):
    assert theatre_cpu.result("adp_set_port_isolate", ROUTER, 1 | 1 << OTHER, 0) == 0
    try:
        assert judge.carried_frame(ROUTER, dialect.query_frame()) == {OTHER}
    finally:
        assert theatre_cpu.result("adp_set_port_isolate", ROUTER, EVERY_PORT, 0) == 0


def test_an_unauthorised_station_is_not_heard(judge, dialect, theatre_cpu):
    address = SPEAKER.hex()
    report = dialect.frame(dialect.about(dialect.group(SUBJECT)))
    judge.carried_frame(ROUTER, dialect.query_frame())
    assert theatre_cpu.result("adp_set_port_dot1x_mode", OTHER, 0, 0, 0) == 0
    try:
        assert judge.carried_frame(OTHER, dialect.query_frame()) == set()
        assert judge.carried_frame(OTHER, report) == set()
        assert judge.groups() == {}
        assert theatre_cpu.result("adp_set_mac_dot1x_authorized_state", OTHER, VLAN, address, 1) == 0
        assert judge.carried_frame(OTHER, report) == {ROUTER}
        assert theatre_cpu.result("adp_set_mac_dot1x_authorized_state", OTHER, VLAN, address, 0) == 0
    finally:
        assert theatre_cpu.result("adp_intf_learn_set", OTHER, NORMAL) == 0


def test_an_aggregation_group_is_one_port(group_stage, dialect):
    judge = Judge(group_stage, dialect)
    single = set(PORTS) - set(MEMBERS)
    left = judge.carried_frame(ROUTER, dialect.query_frame())
    assert left - set(MEMBERS) == single - {ROUTER} and len(left & set(MEMBERS)) == 1
    for member in MEMBERS:
        assert judge.carried_frame(member, dialect.query_frame()) == single
    for report in reports(dialect):
        left = judge.carried(OTHER, report)
        assert left - set(MEMBERS) == {ROUTER} and len(left & set(MEMBERS)) == 1
        assert judge.carried(NEIGHBOUR, report) == {ROUTER}


def test_a_query_reaches_a_group_that_has_lost_a_member(group_stage, dialect):
    bench = group_stage.bench
    judge = Judge(group_stage, dialect)
    for lost, left in (MEMBERS, MEMBERS[::-1]):
        bench.device.control("pull", lost)
        try:
            bench.device.await_links(set(PORTS) - {lost})
            assert judge.carried_frame(ROUTER, dialect.query_frame()) & set(MEMBERS) == {left}
        finally:
            bench.device.control("plug", lost)
            bench.await_links()
