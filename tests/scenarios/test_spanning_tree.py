"""Two devices joined by two links, and a spanning tree for each of two sets of VLANs: each set has a link to itself."""

import contextlib

import pytest
from adp.lab import Pair
from adp.lab.frames import BROADCAST, ETHERTYPE_EXPERIMENT, ethernet, mac, vlan_tag
from adp.testing.cpu import Cpu

# (near port, far port) of link 0 and link 1. The two sides use different ports.
LINKS = ((2, 4), (3, 5))
NEAR_HOST, FAR_HOST = 1, 6
USER_PORTS = 6
NEAR, FAR = 0, 1
BLOCKING, LEARNING, FORWARDING = 1, 3, 4
DEFAULT, ONE, OTHER = 0, 1, 2
VLANS = {ONE: (101, 102), OTHER: (201, 202)}
ALL_VLANS = [vid for vids in VLANS.values() for vid in vids]
VLAN_IDS = 4094
GROUPS, L2_ENTRIES = 16, 8192
MISSING, STG_MISSING, NO_SUCH_LIST = -21, -92, -96
CHUNK = 64
BPDU_GROUP = mac("01:80:c2:00:00:00")
# The LLC's two addresses are 0x42, followed by what says "unnumbered information"; the length is in place of a type.
BPDU_HEADER = bytes.fromhex("424203")
BPDU_BYTES = 60


@pytest.fixture(scope="module")
def pair(device_build):
    with Pair({NEAR_HOST}, {FAR_HOST}, LINKS, device_build, USER_PORTS) as devices:
        yield devices


@pytest.fixture(scope="module")
def cpus(pair, build):
    with contextlib.ExitStack() as stack:
        made = [stack.enter_context(contextlib.closing(Cpu(lab, build))) for lab in pair.labs]
        for cpu in made:
            cpu.set_up()
            assert cpu.result("adp_stg_init") == 0
        yield made


class Trees:
    """An instance for each set of VLANs; instance ONE forwards on link 0 and OTHER on link 1, on both devices."""

    def __init__(self, pair, cpus):
        self.pair, self.cpus = pair, cpus
        for side, (cpu, host) in enumerate(zip(cpus, (NEAR_HOST, FAR_HOST), strict=True)):
            for vid in ALL_VLANS:
                cpu.vlan(vid, {host, *self.ports(side)})
        for stg, vids in VLANS.items():
            self.both("adp_create_mstp_instance", stg)
            for vid in vids:
                self.both("adp_add_msti_member", stg, vid)
        self.prefer(ONE, 0)
        self.prefer(OTHER, 1)

    @staticmethod
    def ports(side):
        return [link[side] for link in LINKS]

    def both(self, *words):
        for cpu in self.cpus:
            assert cpu.result(*words) == 0

    def prefer(self, stg, link):
        """In a group one link forwards on both devices, and the other is blocked."""
        for side, cpu in enumerate(self.cpus):
            for number, port in enumerate(self.ports(side)):
                state = FORWARDING if number == link else BLOCKING
                assert cpu.result("adp_set_port_mstp_state", stg, port, state) == 0

    def states(self, stg, side=NEAR):
        """A device's states on link 0 and link 1."""
        answers = [self.cpus[side].call("adp_stg_stp_get", stg, port) for port in self.ports(side)]
        assert [answer["result"] for answer in answers] == [0, 0]
        return [answer["outputs"]["state"] for answer in answers]

    def _received(self, side):
        rows = {row["port"]: row["rx_frames"] for row in self.pair.labs[side].device.control("ports")["ports"]}
        return [rows[port] for port in self.ports(side)]

    def frame(self, vid, source, marker):
        return ethernet(BROADCAST, source, ETHERTYPE_EXPERIMENT, marker.ljust(46, b"."), vlan_tag(vid))

    def say(self, side, vid):
        """A broadcast of one device's host, which must reach the other's once; gives the links that carried it."""
        near, far = self.pair.labs
        marker = near.marker()
        frame = self.frame(vid, near.mac(), marker)
        before = self._received(1 - side)
        sender = (near.hosts[NEAR_HOST], far.hosts[FAR_HOST])[side]
        sender.send(frame)
        wanted = [{NEAR_HOST: [frame]}, {FAR_HOST: [frame]}]
        wanted[side] = {}
        assert self.pair.arrivals(marker) == tuple(wanted)
        counts = [after - count for after, count in zip(self._received(1 - side), before, strict=True)]
        return [link for link, count in enumerate(counts) for _ in range(count)]

    def link_of(self, vid):
        """The one link that carries a VLAN, there and back."""
        (link,) = there = self.say(NEAR, vid)
        assert self.say(FAR, vid) == there
        return link

    def links(self):
        return {vid: self.link_of(vid) for vid in ALL_VLANS}

    def map(self, side=NEAR):
        """{vid: group} of the library's own table, as far as VLANs are in groups."""
        table = self.cpus[side].shell.call("show aiVlanStg")["value"]
        return {vid: stg for vid, stg in enumerate(table) if stg}

    def tidy(self):
        for cpu in self.cpus:
            for stg in VLANS:
                assert cpu.result("adp_delete_mstp_instance", stg) in (0, STG_MISSING)
            for port in range(1, USER_PORTS + 1):
                assert cpu.result("adp_set_port_mstp_state", DEFAULT, port, FORWARDING) == 0
            cpu.tidy()


@pytest.fixture
def trees(pair, cpus):
    made = Trees(pair, cpus)
    yield made
    made.tidy()


def vlans_of(cpu, stg):
    """What adp_get_stg_vlan_list() tells."""
    answer = cpu.call("adp_get_stg_vlan_list", stg)
    return answer["outputs"]["vids"][: answer["result"]]


def test_two_instances_carry_their_vlans_on_links_of_their_own(trees):
    assert (trees.states(ONE), trees.states(OTHER)) == ([FORWARDING, BLOCKING], [BLOCKING, FORWARDING])
    assert trees.links() == {101: 0, 102: 0, 201: 1, 202: 1}
    trees.prefer(ONE, 1)
    trees.prefer(OTHER, 0)
    assert trees.links() == {101: 1, 102: 1, 201: 0, 202: 0}


def test_a_moved_vlan_takes_its_traffic_along(trees):
    trees.both("adp_add_msti_member", OTHER, 102)
    assert trees.map() == {101: ONE, 102: OTHER, 201: OTHER, 202: OTHER}
    # The group that it left forwards on all ports now, which would be a loop for those that stayed.
    for side in (NEAR, FAR):
        assert trees.states(ONE, side) == [FORWARDING, FORWARDING]
    assert trees.states(OTHER) == [BLOCKING, FORWARDING]
    trees.prefer(ONE, 0)
    assert trees.links() == {101: 0, 102: 1, 201: 1, 202: 1}


def test_adding_a_vlan_where_it_is_resets_the_ports_too(trees):
    trees.both("adp_add_msti_member", ONE, 102)
    assert trees.states(ONE) == [FORWARDING, FORWARDING]
    assert [vlans_of(cpu, ONE) for cpu in trees.cpus] == [[101, 102]] * 2
    trees.prefer(ONE, 0)
    assert trees.link_of(102) == 0


def test_a_deleted_instance_returns_its_vlans(trees):
    trees.prefer(DEFAULT, 0)
    assert trees.link_of(201) == 1
    trees.both("adp_delete_mstp_instance", OTHER)
    assert trees.map() == {101: ONE, 102: ONE}
    assert trees.links() == dict.fromkeys(ALL_VLANS, 0)
    assert {201, 202} <= set(vlans_of(trees.cpus[NEAR], DEFAULT))
    trees.prefer(DEFAULT, 1)
    assert trees.links() == {101: 0, 102: 0, 201: 1, 202: 1}
    assert trees.cpus[NEAR].result("adp_delete_mstp_instance", OTHER) == STG_MISSING
    trees.both("adp_delete_mstp_instance", DEFAULT)


def test_a_vlan_that_leaves_its_instance_is_in_the_default_group(trees):
    trees.prefer(DEFAULT, 1)
    trees.both("adp_del_msti_member", ONE, 101)
    assert trees.states(ONE) == [FORWARDING, FORWARDING]
    trees.prefer(ONE, 0)
    assert trees.links() == {101: 1, 102: 0, 201: 1, 202: 1}


def bpdu(source, marker):
    payload = BPDU_HEADER + marker.ljust(BPDU_BYTES - 14 - len(BPDU_HEADER), b"\0")
    return ethernet(BPDU_GROUP, source, len(payload), payload)


@pytest.mark.parametrize("state", range(FORWARDING + 1))
def test_bpdus_reach_the_cpu_whatever_the_state(trees, state):
    near = trees.pair.near
    for link in range(len(LINKS)):
        for side, cpu in enumerate(trees.cpus):
            assert cpu.result("adp_set_port_mstp_state", DEFAULT, trees.ports(side)[link], state) == 0
    for near_port, far_port in LINKS:
        marker = near.marker()
        frame = bpdu(near.mac(), marker)
        assert trees.cpus[NEAR].transmit(frame, (near_port,)) == 0
        arrived = trees.cpus[FAR].next_frame(marker)
        assert arrived, "the BPDU never reached the far CPU"
        # Destination, source, then the switch tag, whose word names the chip's port.
        assert int.from_bytes(arrived[14:18], "big") == trees.pair.far.device.physical(far_port)
        assert arrived[-len(frame) + 12 :] == frame[12:]
        assert trees.pair.arrivals(marker) == ({}, {}), "nobody else gets it"


@pytest.mark.parametrize(("state", "is_learned"), ((BLOCKING, False), (LEARNING, True)))
def test_what_does_not_forward_may_learn(trees, state, is_learned):
    near, cpu = trees.pair.near, trees.cpus[NEAR]
    vid, source, marker = VLANS[ONE][0], near.mac(), near.marker()
    assert cpu.result("adp_set_port_mstp_state", ONE, NEAR_HOST, state) == 0
    near.hosts[NEAR_HOST].send(trees.frame(vid, source, marker))
    assert trees.pair.arrivals(marker) == ({}, {})
    answer = cpu.call("adp_get_intf_by_addr", source.hex(), vid)
    assert answer["result"] == (0 if is_learned else MISSING)
    assert not is_learned or answer["outputs"]["intf"] == NEAR_HOST

    # Nor does it send; and the state is the instance's own.
    marker = near.marker()
    trees.pair.far.hosts[FAR_HOST].send(trees.frame(vid, near.mac(), marker))
    assert trees.pair.arrivals(marker) == ({}, {})
    assert trees.link_of(VLANS[OTHER][0]) == 1


# What the library tells of the groups


def test_lists_name_the_groups_and_their_vlans(trees):
    cpu = trees.cpus[NEAR]
    assert cpu.result("adp_get_max_stg") == 1 + len(VLANS)
    chunk = cpu.call("adp_get_stg_each_time_list", 0, CHUNK)
    assert (chunk["result"], chunk["outputs"]["groups"][: 1 + len(VLANS)]) == (0, [DEFAULT, ONE, OTHER])
    for stg, vids in VLANS.items():
        assert cpu.result("adp_get_stg_max_vlan", stg) == len(vids)
        assert vlans_of(cpu, stg) == list(vids)
        # Chunks of one VLAN each.
        chunks = [cpu.call("adp_get_stg_vlan_each_time_list", stg, at, 1) for at in range(len(vids))]
        assert [(chunk["result"], chunk["outputs"]["vids"]) for chunk in chunks] == [(0, [vid]) for vid in vids]


def test_the_default_groups_list_takes_several_chunks(trees):
    cpu = trees.cpus[NEAR]
    others = [vid for vid in range(1, VLAN_IDS + 1) if vid not in ALL_VLANS]
    assert cpu.result("adp_get_stg_max_vlan", DEFAULT) == len(others)
    assert vlans_of(cpu, DEFAULT) == others
    assert vlans_of(cpu, 7) == []


@pytest.mark.parametrize(
    ("make", "count"), ((("adp_stg_list",), 1 + len(VLANS)), (("adp_stg_vlan_list", ONE), len(VLANS[ONE])))
)
def test_a_list_is_given_back_once(trees, make, count):
    cpu = trees.cpus[NEAR]
    answer = cpu.call(*make)
    assert (answer["result"], answer["outputs"]["count"]) == (0, count)
    give_back = f"{make[0]}_destroy", answer["outputs"]["list"], count
    assert cpu.result(*give_back) == 0
    assert cpu.result(*give_back) == NO_SUCH_LIST


def test_sizes_and_the_default_group(trees):
    cpu = trees.cpus[NEAR]
    for call, output, value in (
        ("adp_get_max_support_stg", "count", GROUPS),
        ("adp_get_l2_cache_size", "size", L2_ENTRIES),
        ("adp_stg_default_get", "stg", DEFAULT),
    ):
        answer = cpu.call(call)
        assert (answer["result"], answer["outputs"][output]) == (0, value)
