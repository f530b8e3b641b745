"""Calls of `adp` by adpsh: every one is understood, and what a test sets does not reach the next one."""

import ctypes
import inspect
import sys

import adp
import pytest
from adp.lab import Lab
from adp.memory import RECORDS, FewPorts, Ports
from adp.parameters import Callback, Counted, PortsWord, Text
from adp.testing.calls import RemoteCall, text_of
from adp.testing.cpu import Cpu
from adp.testing.plugin import mend_cables

VLAN = 100


@pytest.fixture(scope="module")
def lab(device_build, adp_isolated):
    with Lab(device_build, (1, 2), user_ports=4) as lab:
        yield lab


def calls():
    """{name: call} of all that `adp` has."""
    functions = {name: function for name, function in inspect.getmembers(adp.bindings, inspect.isfunction)}
    return {name: fn for name, fn in functions.items() if "_" + name in vars(sys.modules[fn.__module__])}


def sample(parameter):
    """A value that the parameter takes."""
    if isinstance(parameter, PortsWord):
        return adp.PortSet({1})
    if isinstance(parameter, (Text, Callback)):
        return "lo" if isinstance(parameter, Text) else None
    if parameter.name == "destinations":
        return [1]
    if parameter.kind.__name__ in ("TxFrame", "RxFrame"):
        return getattr(adp, parameter.kind.__name__)(bytes(60))
    return of_type(parameter.kind * 60 if isinstance(parameter, Counted) else parameter.kind)


def of_type(kind):
    if issubclass(kind, (Ports, FewPorts)):
        return adp.PortSet({1})
    if issubclass(kind, ctypes.Array):
        element = kind._type_
        return bytes(kind._length_) if element is ctypes.c_uint8 else [of_type(element) for _ in range(kind._length_)]
    return RECORDS[kind]() if issubclass(kind, ctypes.Structure) else 1


def answer_of(shell, function):
    remote = RemoteCall(function)
    known = {parameter.name: parameter for parameter in remote.parameters}
    values = {name: sample(known[name]) for name in inspect.signature(function).parameters}
    try:
        return remote.make(shell, remote.values(**values))
    except adp.Error as error:
        return error


def test_adpsh_understands_every_call(device_build, build):
    with Lab(device_build, (), user_ports=4) as lab:
        shell = lab.shell(build)
        shell.call("map")
        answers = {name: answer_of(shell, function) for name, function in calls().items()}
    assert len(answers) > 250
    assert answers["vlan_create"].name == "vlan_exists"
    assert isinstance(answers["get_mac_addr"].outputs, adp.L2Entry)


@pytest.fixture
def cpu(lab, build):
    made = Cpu(lab, build)
    made.set_up()
    yield made
    made.tidy()
    made.close()


def vlans(lab):
    return {row["vid"]: (set(row["members"]), set(row["untagged"])) for row in lab.device.ask("vlans")["vlans"]}


def test_values_go_there_and_back(cpu):
    cpu.vlan_create(VLAN)
    cpu.vlan_port_set(VLAN, members={1, 2}, untagged=adp.PortSet({2}))
    assert cpu.vlan_port_get(VLAN) == (adp.PortSet({1, 2}), adp.PortSet({2}))
    cpu.add_mac_addr(bytes.fromhex("020000000001"), 1, VLAN, 1)
    entry = cpu.get_mac_addr(bytes.fromhex("020000000001"), VLAN)
    assert (entry.mac, entry.vid, entry.port) == (bytes.fromhex("020000000001"), VLAN, 1)
    cpu.create_agg_group(adp.agg(1))
    assert cpu.GET_AGG_GROUP(adp.agg(1)).count == 0


def test_a_refused_call_is_an_error_with_its_name(cpu):
    cpu.vlan_create(VLAN)
    with pytest.raises(adp.Error, match="vlan_exists") as caught:
        cpu.vlan_create(VLAN)
    assert (caught.value.call, caught.value.status, caught.value.name) == ("adp_vlan_create", -11, "vlan_exists")


@pytest.mark.parametrize(
    ("make", "sentence"),
    [
        (lambda cpu: cpu.vlan_create("100"), "vlan_create: vid: '100' is not a number"),
        (lambda cpu: cpu.vlan_create(), "vlan_create: missing a required argument: 'vid'"),
        (lambda cpu: cpu.vlan_port_set(VLAN, {1, 300}, set()), "vlan_port_set: a port is a number of 0 to 255, not 300"),
        (lambda cpu: cpu.linkscan_register(print), "linkscan_register: handler: adpsh cannot call a function of"),
    ],
)
def test_wrong_arguments_are_refused_before_the_call(cpu, make, sentence):
    with pytest.raises((TypeError, ValueError), match=sentence):
        make(cpu)


def test_text_is_what_adpsh_reads():
    texts = [text_of(value) for value in (None, {2, 1}, b"\x01\xff", b"", 'say "it"', [1, {3}], True, adp.L2Entry(vid=7))]
    assert texts[:7] == ["null", "{1,2}", "01ff", "[]", '"say \\"it\\""', "[1,{3}]", "1"]
    assert texts[7].startswith("{flags=0 mac=000000000000 vid=7 ")


def test_no_method_of_the_cpu_hides_a_call():
    assert not set(calls()) & set(dir(Cpu))


def test_cables_are_in_and_good_again(lab):
    lab.device.control("pull", 1)
    lab.device.cable(2, loss="100%")
    mend_cables(lab)
    assert lab.device.links() == {0, 1, 2}
    assert lab.device.ask("cables")["cables"] == []


def test_vlans_are_undone_without_a_power_cycle(lab, cpu):
    before, pid = vlans(lab), lab.device.pid
    cpu.vlan_create(VLAN)
    cpu.vlan_port_set(VLAN, {1, 2}, {2})
    cpu.intf_pivd_set(2, VLAN)
    cpu.vlan_port_set(1, {1}, {1})
    assert vlans(lab) != before
    cpu.tidy()
    cpu.vlan_create(VLAN)
    cpu.vlan_destroy(VLAN)
    cpu.tidy()
    assert (vlans(lab), cpu.intf_pivd_get(2), lab.device.pid) == (before, 1, pid)


def test_what_else_a_test_leaves_behind_ends_with_a_power_cycle(lab, cpu):
    pid = lab.device.pid
    cpu.create_mstp_instance(1)
    cpu.delete_mstp_instance(1)
    cpu.tidy()
    assert lab.device.pid == pid, "the device is as it was"
    cpu.create_agg_group(adp.agg(1))
    cpu.add_mac_addr(bytes.fromhex("020000000001"), 1, 1, 1)
    cpu.tidy()
    assert lab.device.pid != pid
    with pytest.raises(adp.Error, match="mac_missing"):
        cpu.get_mac_addr(bytes.fromhex("020000000001"), 1)
    assert cpu.get_agg_group_by_map(adp.agg(1)) == adp.PortSet()
