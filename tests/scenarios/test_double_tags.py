"""Double tags: the effect of each mode, entries by the customer's VLAN, and frames to the CPU."""

import pytest
from adp.lab.frames import ETHERTYPE_IPV4, vlan_tag
from adp.lab.ip import UDP, Ipv4Packet
from tagging import EXTERNAL, INTERNAL, MODE_NAMES, OFF, OLD_PROVIDER_TPID, ORDINARY_TPID, PROVIDER_TPID

SERVICE, OTHER_SERVICE, PORT_VLAN = 500, 600, 700
CUSTOMERS_VLAN, OTHER_CUSTOMERS_VLAN, NEITHER = 10, 11, 12
CUSTOMER, PROVIDER, PLAIN = 5, 22, 9
PORTS = {CUSTOMER, PROVIDER, PLAIN}
PROVIDER_TPIDS = (PROVIDER_TPID, OLD_PROVIDER_TPID)
BAD_ARGUMENT, NO_PORT, CPU_PORT = -3, -4, -6
READ_FAILED, TYPE_REFUSED = 102, 201
UNMAPPED, OTHER_TYPE = 27, 0x20000001
CPU_INTERFACE = 0
SWITCH_TAG_TPID = 0x8874


@pytest.fixture
def vlans(cpu, tagging):
    """All services on a port towards a customer, one towards a provider and an ordinary one."""
    for vid in (SERVICE, OTHER_SERVICE, PORT_VLAN):
        cpu.vlan(vid, PORTS | {0})
    cpu.set_pvid(CUSTOMER, PORT_VLAN)
    return tagging


@pytest.fixture(params=PROVIDER_TPIDS, ids=hex)
def provider(vlans, request):
    """The same with double tags; the provider's TPID is one of those in use."""
    vlans.dress(CUSTOMER, EXTERNAL)
    vlans.dress(PROVIDER, INTERNAL, request.param)
    vlans.provider_tpid = request.param
    return vlans


def from_customer(tagging, vid, tags, priority=0):
    """{port: tags} of a customer's frame in a service's VLAN."""
    service = vlan_tag(vid, priority, tagging.provider_tpid)
    return {PROVIDER: service + tags, PLAIN: vlan_tag(vid, priority) + tags}


# The modes

OUTER, INNER = vlan_tag(SERVICE, 3), vlan_tag(CUSTOMERS_VLAN, 6)
OLD_OUTER = vlan_tag(SERVICE, 3, OLD_PROVIDER_TPID)
BY_ENTRY, BY_PORT = vlan_tag(OTHER_SERVICE, 6), vlan_tag(PORT_VLAN)


@pytest.mark.parametrize(
    "mode, tpid, tags, leaves",
    [
        (OFF, ORDINARY_TPID, OUTER + INNER, OUTER + INNER),
        (OFF, OLD_PROVIDER_TPID, OLD_OUTER + INNER, OUTER + INNER),
        (OFF, OLD_PROVIDER_TPID, INNER, BY_PORT + INNER),
        (INTERNAL, OLD_PROVIDER_TPID, OLD_OUTER + INNER, OUTER + INNER),
        (INTERNAL, OLD_PROVIDER_TPID, INNER, BY_ENTRY + INNER),
        (INTERNAL, OLD_PROVIDER_TPID, OUTER + INNER, BY_PORT + OUTER + INNER),
        (INTERNAL, OLD_PROVIDER_TPID, b"", BY_PORT),
        (EXTERNAL, ORDINARY_TPID, INNER, BY_ENTRY + INNER),
        (EXTERNAL, ORDINARY_TPID, OUTER + INNER, BY_PORT + OUTER + INNER),
        (EXTERNAL, OLD_PROVIDER_TPID, OLD_OUTER + INNER, BY_PORT + OLD_OUTER + INNER),
        (EXTERNAL, ORDINARY_TPID, b"", BY_PORT),
    ],
    ids=[
        "off: the outer tag",
        "off: the outer tag of its TPID",
        "off: another type is content",
        "internal: the outer tag of its TPID",
        "internal: the entry without one",
        "internal: another type and no entry",
        "internal: untagged",
        "external: the entry",
        "external: no entry",
        "external: the TPID is content too",
        "external: untagged",
    ],
)
def test_what_a_mode_reads(vlans, mode, tpid, tags, leaves):
    vlans.dress(CUSTOMER, mode, tpid)
    vlans.double_tags.put(CUSTOMER, CUSTOMERS_VLAN, OTHER_SERVICE)
    assert vlans.leaves(CUSTOMER, tags) == {PROVIDER: leaves, PLAIN: leaves}


@pytest.mark.parametrize(
    "mode, tpid, written",
    [
        (OFF, ORDINARY_TPID, OUTER),
        (OFF, OLD_PROVIDER_TPID, OLD_OUTER),
        (INTERNAL, OLD_PROVIDER_TPID, OLD_OUTER),
        (INTERNAL, PROVIDER_TPID, vlan_tag(SERVICE, 3, PROVIDER_TPID)),
        (EXTERNAL, ORDINARY_TPID, b""),
        (EXTERNAL, OLD_PROVIDER_TPID, b""),
    ],
    ids=["off", "off 9100", "internal 9100", "internal 88a8", "external", "external 9100"],
)
def test_what_a_mode_writes(vlans, mode, tpid, written):
    vlans.dress(CUSTOMER, mode, tpid)
    assert vlans.leaves(PLAIN, OUTER + INNER) == {CUSTOMER: written + INNER, PROVIDER: OUTER + INNER}


# Entries by the customer's VLAN


def test_entries_choose_the_service(provider):
    provider.double_tags.put(CUSTOMER, CUSTOMERS_VLAN, SERVICE)
    provider.double_tags.put(CUSTOMER, OTHER_CUSTOMERS_VLAN, OTHER_SERVICE, 4)
    first, second, third = (vlan_tag(vid, 2) for vid in (CUSTOMERS_VLAN, OTHER_CUSTOMERS_VLAN, NEITHER))
    assert provider.leaves(CUSTOMER, first) == from_customer(provider, SERVICE, first, 2)
    assert provider.leaves(CUSTOMER, second) == from_customer(provider, OTHER_SERVICE, second, 4)
    for tags in (third, third + first, b""):
        assert provider.leaves(CUSTOMER, tags) == from_customer(provider, PORT_VLAN, tags)


def test_deleted_entry_leaves_frames_to_the_ports_vlan(provider):
    provider.double_tags.put(CUSTOMER, CUSTOMERS_VLAN, SERVICE)
    assert provider.double_tags.delete(CUSTOMER, CUSTOMERS_VLAN) == 0
    inner = vlan_tag(CUSTOMERS_VLAN)
    assert provider.leaves(CUSTOMER, inner) == from_customer(provider, PORT_VLAN, inner)


# What is set is read


@pytest.mark.parametrize("mode", [OFF, INTERNAL, EXTERNAL])
@pytest.mark.parametrize("tpid", [ORDINARY_TPID, *PROVIDER_TPIDS], ids=hex)
def test_mode_and_tpid_are_read_back(tagging, mode, tpid):
    tagging.dress(CUSTOMER, mode, tpid)
    assert (tagging.mode(CUSTOMER), tagging.tpid(CUSTOMER)) == ((0, mode), (0, tpid))
    assert tagging.dressed({CUSTOMER, PLAIN}) == {CUSTOMER: (MODE_NAMES[mode], tpid), PLAIN: ("off", ORDINARY_TPID)}


@pytest.mark.parametrize("tpid", PROVIDER_TPIDS, ids=hex)
def test_only_16_bits_of_tpid_and_mode_count(tagging, tpid):
    assert tagging.set_tpid(CUSTOMER, 0x10000 | tpid, option=7) == 0
    assert tagging.set_mode(CUSTOMER, 0xFFFF0000 | EXTERNAL) == 0
    assert (tagging.tpid(CUSTOMER), tagging.mode(CUSTOMER)) == ((0, tpid), (0, EXTERNAL))


@pytest.mark.parametrize("tpid", [0, 0x05FF, 0x10000, SWITCH_TAG_TPID, 0x10000 | SWITCH_TAG_TPID])
def test_types_that_cannot_be_a_tags_are_refused(tagging, tpid):
    tagging.dress(CUSTOMER, INTERNAL, PROVIDER_TPID)
    assert tagging.set_tpid(CUSTOMER, tpid) == BAD_ARGUMENT
    assert tagging.tpid(CUSTOMER) == (0, PROVIDER_TPID)


def test_there_are_three_modes(tagging):
    tagging.dress(CUSTOMER, INTERNAL)
    assert tagging.set_mode(CUSTOMER, EXTERNAL + 1) == BAD_ARGUMENT
    assert tagging.mode(CUSTOMER) == (0, INTERNAL)


@pytest.mark.parametrize(
    "interface, set_status, read_status",
    [(CPU_INTERFACE, CPU_PORT, 0), (UNMAPPED, NO_PORT, READ_FAILED), (OTHER_TYPE, TYPE_REFUSED, TYPE_REFUSED)],
)
def test_other_interfaces_are_refused(cpu, tagging, interface, set_status, read_status):
    assert cpu.result("adp_double_tag_set", interface, INTERNAL) == set_status
    assert cpu.result("adp_double_tag_tipd_set", interface, PROVIDER_TPID, 0) == set_status
    assert tagging.double_tags.add(interface, CUSTOMERS_VLAN, SERVICE) == set_status
    assert tagging.double_tags.delete(interface, CUSTOMERS_VLAN) == set_status
    assert (tagging.mode(interface)[0], tagging.tpid(interface)[0]) == (read_status, read_status)
    assert tagging.double_tags.entries() == {}


# To the CPU. Its frames carry the tag with the TPID of the port that they came in on.

TAG_BYTES = 4
INNERMOST = 12
IPV4_HEADER_BYTES = 20
UDP_PACKET = Ipv4Packet("10.1.2.3", "10.9.9.9", UDP, 5000).build(b"", b"", b"")[2:]


def at_cpu(tagging, port, tags):
    """(tags at the CPU, status and descriptor of the receive call) of a UDP packet."""
    arrived, seen = tagging.reaches_cpu(port, tags, ethertype=ETHERTYPE_IPV4, head=UDP_PACKET)
    return seen, *tagging.cpu.receive(arrived)


@pytest.mark.parametrize(
    "inner, tag_at",
    [(b"", None), (INNER, INNERMOST + TAG_BYTES)],
    ids=["alone", "before a customer's"],
)
def test_frames_with_the_old_provider_tag_are_received(vlans, inner, tag_at):
    vlans.dress(PROVIDER, INTERNAL, OLD_PROVIDER_TPID)
    tags = OLD_OUTER + inner
    seen, status, descriptor = at_cpu(vlans, PROVIDER, tags)
    assert (seen, status, descriptor["intf"]) == (tags, 0, PROVIDER)
    payload = INNERMOST + len(tags) + 2
    assert (descriptor["vlan_tag"], descriptor["l4_header"]) == (tag_at, payload + IPV4_HEADER_BYTES)


@pytest.mark.parametrize("inner", [b"", INNER], ids=["alone", "before a customer's"])
def test_frames_with_the_provider_tag_are_refused(vlans, inner):
    vlans.dress(PROVIDER, INTERNAL, PROVIDER_TPID)
    tags = vlan_tag(SERVICE, 3, PROVIDER_TPID) + inner
    seen, status, descriptor = at_cpu(vlans, PROVIDER, tags)
    assert (seen, status) == (tags, -1)
    assert (descriptor["intf"], descriptor["l4_header"]) == (PROVIDER, None), "the port is known, the packet not found"


@pytest.mark.parametrize(
    "tags, status, tag_at",
    [(b"", 0, INNERMOST), (INNER, 0, INNERMOST + TAG_BYTES), (INNER + INNER, -1, INNERMOST + TAG_BYTES)],
    ids=["untagged", "one tag", "two tags"],
)
def test_customers_frames_have_a_tag_more_at_the_cpu(provider, tags, status, tag_at):
    provider.double_tags.put(CUSTOMER, CUSTOMERS_VLAN, SERVICE)
    seen, received, descriptor = at_cpu(provider, CUSTOMER, tags)
    assert seen == (vlan_tag(SERVICE, 6) if tags else BY_PORT) + tags
    assert (received, descriptor["intf"], descriptor["vlan_tag"]) == (status, CUSTOMER, tag_at)
