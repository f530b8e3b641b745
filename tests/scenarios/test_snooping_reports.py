"""Messages to the snooping program: each kind of record, VLANs, and malformed ones."""

import contextlib
import random

import pytest
from adp.lab.frames import vlan_tag
from adp.lab.listener import group_mac
from adp.testing.cpu import Cpu
from reports import (
    ALLOW_SOURCES,
    BLOCK_SOURCES,
    MODE_IS_EXCLUDE,
    MODE_IS_INCLUDE,
    TO_EXCLUDE,
    TO_INCLUDE,
)
from segment import ALL, BUCKET_FULL, CAPACITY, bucket, colon_form, in_a_row
from stage import ONE, OTHER, SOURCE, VLAN

SUBJECT, FIRST_BROKEN = 2, 10
OTHER_VLAN = 100
MUTANTS, BATCH = 1000, 50
SEED = 7
UNCHANGED_BYTES = 14


def key(address, vid=VLAN):
    """How the switch's table of groups names a group."""
    return vid, colon_form(group_mac(address))


# Kind of record, number of its sources, and whether a listener is there afterwards: of none before, of one before.
RECORDS = (
    (MODE_IS_INCLUDE, 0, False, False),
    (MODE_IS_INCLUDE, 1, True, True),
    (MODE_IS_EXCLUDE, 0, True, True),
    (MODE_IS_EXCLUDE, 2, True, True),
    (TO_INCLUDE, 0, False, False),
    (TO_INCLUDE, 3, True, True),
    (TO_EXCLUDE, 0, True, True),
    (TO_EXCLUDE, 1, True, True),
    (ALLOW_SOURCES, 1, True, True),
    (BLOCK_SOURCES, 1, False, True),
)


@pytest.mark.parametrize("was_there", (False, True), ids=("stranger", "listener"))
def test_records_say_who_listens(judge, dialect, was_there):
    for number, (kind, sources, *is_there) in enumerate(RECORDS):
        group = dialect.group(SUBJECT + number)
        if was_there:
            judge.say(dialect.about(group))
        judge.say(dialect.records(dialect.record(kind, group, sources)))
        assert judge.groups() == ({key(group): {ONE}} if is_there[was_there] else {}), (kind, sources)
        judge.say(dialect.about(group, dialect.leave))


def test_a_report_speaks_of_many_groups(judge, dialect):
    groups = [dialect.group(SUBJECT + number) for number in range(40)]
    judge.say(dialect.records(*[dialect.record(TO_EXCLUDE, group, 1) for group in groups]))
    assert judge.groups() == {key(group): {ONE} for group in groups}
    judge.say(dialect.records(*[dialect.record(TO_INCLUDE, group) for group in groups]))
    assert judge.groups() == {}


def test_what_stands_before_the_break_counts(judge, dialect):
    good, bad = dialect.group(SUBJECT), dialect.group(SUBJECT + 1)
    judge.say(dialect.records(dialect.record(TO_EXCLUDE, good), dialect.record(TO_EXCLUDE, bad, told_sources=9)))
    assert judge.groups() == {key(good): {ONE}}


def test_groups_are_kept_by_vlan(stage, theatre, build, dialect):
    with contextlib.closing(Cpu(theatre, build)) as cpu:
        cpu.set_up()
        cpu.vlan(OTHER_VLAN, (SOURCE, ONE, OTHER))
        group = dialect.group(SUBJECT)
        for port, vid in ((ONE, OTHER_VLAN), (OTHER, VLAN)):
            stage.say(port, dialect.frame(dialect.about(group), tags=vlan_tag(vid)))
            stage.agent.await_change(vid, group, f"port {port}", True)
        assert stage.entries()[key(group, OTHER_VLAN)] == {ONE}
        assert stage.heard(group) == {OTHER}
        # A VLAN's groups go with it, so the program ends first.
        assert stage.end() == 0
        cpu.tidy()


def test_a_group_for_which_there_is_no_room_is_followed_when_there_is(judge, dialect, stage, theatre, build):
    group = dialect.group(SUBJECT)
    full = bucket(group_mac(group), VLAN)
    fixed = [address for address in in_a_row(CAPACITY) if bucket(address, VLAN) == full]
    with contextlib.closing(Cpu(theatre, build)) as cpu:
        cpu.set_up()
        # What a host's kernel has said may have been learned into this very bucket.
        assert cpu.result("adp_del_mac_by_lrntype", ALL) == 0
        for address in fixed:
            assert cpu.result("adp_add_mac_addr", address.hex(), OTHER, VLAN, 1) == 0
        judge.say(dialect.about(group))
        stage.agent.await_line(f"igmp_snooping: Could not create a group: the answer was {BUCKET_FULL}.")
        assert judge.groups() == {}
        assert cpu.result("adp_del_mac_by_lrntype", ALL) == 0
        judge.say(dialect.about(group))
        assert judge.groups() == {key(group): {ONE}}


def broken(dialect, group):
    """Messages without effect, with options of their frames."""
    join, listen = dialect.about(group), dialect.record(TO_EXCLUDE, group)
    record = dialect.records(listen)
    return [
        (dialect.records(), {}),
        (dialect.records(told=0xFFFF), {}),
        (record[:-1], {}),
        (dialect.records(listen, told=0), {}),
        (dialect.records(dialect.record(TO_EXCLUDE, group, told_sources=1)), {}),
        (dialect.records(dialect.record(TO_EXCLUDE, group, told_sources=0xFFFF)), {}),
        (dialect.records(dialect.record(TO_EXCLUDE, group, auxiliary=0xFF)), {}),
        (dialect.records(dialect.record(0, group)), {}),
        (dialect.records(dialect.record(0xFF, group, 1)), {}),
        (join[:-1], {}),
        (join[:4], {}),
        (join[:1], {"is_checked": False}),
        (join[:2] + b"\x12\x34" + join[4:], {"is_checked": False}),
        (record[:2] + b"\x12\x34" + record[4:], {"is_checked": False}),
        (join, {"tags": vlan_tag(VLAN) + vlan_tag(VLAN)}),
    ]


BROKEN_PACKETS = {
    "IGMP": ({"frag": 1}, {"flags": "MF"}, {"len": 1500}, {"len": 20}, {"ihl": 4}, {"ihl": 15}),
    "MLD": ({"hlim": 64}, {"plen": 1400}, {"plen": 8}, {"src": "fe80::6"}),
}
# Groups that hosts need not ask for, that stay within a host, or that are none.
NOT_FOLLOWED = {
    "IGMP": ("224.0.0.1", "224.0.0.251", "10.9.0.7", "255.255.255.255", "0.0.0.0"),
    "MLD": ("ff02::1", "ff01::5", "ff00::5", "fe80::7", "::"),
}


def test_broken_messages_change_nothing(judge, dialect, stage):
    group = dialect.group(FIRST_BROKEN)
    cases = broken(dialect, group)
    cases += [(dialect.about(group), options) for options in BROKEN_PACKETS[dialect.name]]
    cases += [(dialect.about(other), {}) for other in NOT_FOLLOWED[dialect.name]]
    for message, options in cases:
        stage.say(ONE, dialect.frame(message, **options))
        assert judge.groups() == {}, (message.hex(), options)


def test_a_broken_leave_changes_nothing(judge, dialect, stage):
    group = dialect.group(SUBJECT)
    leave = dialect.about(group, dialect.leave)
    judge.say(dialect.about(group))
    stage.say(ONE, dialect.frame(leave[:2] + b"\x12\x34" + leave[4:], is_checked=False))
    judge.say(leave[:-1])
    assert judge.groups() == {key(group): {ONE}}


def mutant(dialect, chance):
    """A message that was right until some of its bytes were changed, and then perhaps its end cut off."""
    group = dialect.group(FIRST_BROKEN + chance.randrange(8))
    records = [dialect.record(chance.randrange(1, 7), group, chance.randrange(3)) for _ in range(chance.randrange(4))]
    whole = (dialect.about(group), dialect.records(*records), dialect.general_query())
    message = bytearray(chance.choice(whole))
    if chance.random() < 0.5:
        message[chance.randrange(len(message))] = chance.randrange(256)
        frame = bytearray(dialect.frame(bytes(message)))
    else:
        frame = bytearray(dialect.frame(bytes(message)))
        for _ in range(chance.randrange(1, 4)):
            frame[chance.randrange(UNCHANGED_BYTES, len(frame))] = chance.randrange(256)
    if chance.random() < 0.2:
        del frame[chance.randrange(UNCHANGED_BYTES + 4, len(frame)) :]
    return bytes(frame)


def test_random_changes_never_stop_the_program(judge, dialect, stage):
    chance = random.Random(SEED)
    for _ in range(MUTANTS // BATCH):
        for _ in range(BATCH):
            stage.say(ONE, mutant(dialect, chance))
        judge.wait()
    assert stage.end() == 0
    assert stage.entries() == {}
