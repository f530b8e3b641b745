"""What the bindings refuse before the library is called, and what they make of values. No library is loaded here."""
import ctypes
import os
import subprocess
import sys

import pytest

import adp
from adp.frames import MOST_ELEMENTS
from adp.memory import FewPorts, Ports, loaded, stored

ABSENT = "/absent/libadp.so"


@pytest.fixture(autouse=True)
def no_library(monkeypatch):
    """A call that is made after all raises LibraryError."""
    monkeypatch.setenv("ADP_LIBRARY", ABSENT)


@pytest.mark.parametrize("call, refused", [
    (lambda: adp.vlan_create("100"), TypeError),
    (lambda: adp.vlan_create(None), TypeError),
    (lambda: adp.vlan_create(1.5), TypeError),
    (lambda: adp.vlan_create(-1), OverflowError),
    (lambda: adp.vlan_create(1 << 32), OverflowError),
    (lambda: adp.create_mstp_instance(1 << 31), OverflowError),
    (lambda: adp.create_mstp_instance(-(1 << 31) - 1), OverflowError),
    (lambda: adp.add_mac_mcast_addr(bytes(6), 1 << 64, 1, 1), OverflowError),
    (lambda: adp.add_mac_addr(bytes(5), 1, 1, 0), ValueError),
    (lambda: adp.add_mac_addr(bytes(7), 1, 1, 0), ValueError),
    (lambda: adp.add_mac_addr("020000000001", 1, 1, 0), TypeError),
    (lambda: adp.add_mac_addr(None, 1, 1, 0), TypeError),
    (lambda: adp.add_mac_addr([2, 0, 0, 0, 0, 1], 1, 1, 0), TypeError),
    (lambda: adp.vlan_port_set(100, {1, 2}, adp.PortSet()), TypeError),
    (lambda: adp.vlan_port_set(100, adp.PortSet(), None), TypeError),
    (lambda: adp.vlan_port_add(100, 7, None), TypeError),
    (lambda: adp.api_xlate_port_pbmp_a2p(adp.PortSet({64})), ValueError),
    (lambda: adp.add_agg_member(adp.agg(1), [1, -1]), OverflowError),
    (lambda: adp.add_agg_member(adp.agg(1), [1, "2"]), TypeError),
    (lambda: adp.add_agg_member(adp.agg(1), "12"), TypeError),
    (lambda: adp.add_agg_member(adp.agg(1), None), TypeError),
    (lambda: adp.add_agg_member(adp.agg(1), iter([1])), TypeError),
    (lambda: adp.get_agg_group(adp.agg(1), MOST_ELEMENTS + 1), ValueError),
    (lambda: adp.get_agg_group(adp.agg(1), -1), OverflowError),
    (lambda: adp.get_stg_each_time_list(0, "1"), TypeError),
    (lambda: adp.get_nic_index(b"eth0"), TypeError),
    (lambda: adp.get_nic_index("eth0\0"), ValueError),
    (lambda: adp.linkscan_register(7), TypeError),
    (lambda: adp.fp_add_entity_rule(adp.FpInfo()), TypeError),
    (lambda: adp.fp_add_entity_rule(adp.FpEntity(priority=-1)), OverflowError),
    (lambda: adp.fp_add_entity_rule(adp.FpEntity(qualifies=[adp.FpQualify()] * 17)), ValueError),
    (lambda: adp.fp_add_entity_rule(adp.FpEntity(qualifies=[adp.FpQualify(data=bytes(65))])), ValueError),
    (lambda: adp.create_dscp_map(1, [adp.DscpMapEntry()] * 63), ValueError),
    (lambda: adp.set_queue_weight_pri(1, 0, 0, adp.QueueWeights([1] * 9)), ValueError),
    (lambda: adp.transmit_frame(bytes(1 << 16), 0, 1, 3), ValueError),
    (lambda: adp.receive_frame("frame"), TypeError),
    (lambda: adp.receive_frame_record(adp.RxFrame(bytes(60), vlan_tag=-1), 0), OverflowError),
    (lambda: adp.receive_frame_record(adp.RxFrame(bytes(60), vlan_tag=1 << 16), 0), ValueError),
    (lambda: adp.receive_frame_record(adp.RxFrame(bytes(1 << 16)), 0), ValueError),
    (lambda: adp.receive_frame_record(None, 0), TypeError),
    (lambda: adp.transmit_frame_record(adp.TxFrame(None), None, 1, 1), TypeError),
    (lambda: adp.transmit_frame_record(adp.TxFrame(bytes(60), -1), None, 1, 1), OverflowError),
    (lambda: adp.transmit_frame_record(adp.TxFrame(bytes(60)), 7, 1, 1), TypeError),
    (lambda: adp.transmit_frame_record(adp.RxFrame(bytes(60)), None, 1, 1), TypeError),
])
def test_refused_before_the_library_is_called(call, refused):
    with pytest.raises(refused):
        call()


@pytest.mark.parametrize("call", [
    lambda: adp.vlan_create(adp.NO_VLAN),
    lambda: adp.set_port_mstp_state(-1, adp.agg(8), adp.StgState.BLOCKING),
    lambda: adp.vlan_port_get(100),
    lambda: adp.add_agg_member(adp.agg(1), (1, 2)),
    lambda: adp.transmit_frame(bytearray(60), 0, 1, adp.TagOpcode.PORT),
    lambda: adp.max_phy_port_num.value,
    lambda: len(adp.intf_to_phy_port),
])
def test_a_missing_library_is_a_sentence(call):
    with pytest.raises(adp.LibraryError, match=f"libadp cannot be loaded: {ABSENT}: .*ADP_LIBRARY names the library"):
        call()


def test_a_library_that_is_another_one_is_a_sentence():
    """libc has no such call."""
    done = subprocess.run([sys.executable, "-B", "-c", "import adp; adp.vlan_create(1)"], text=True, capture_output=True,
                          env={**os.environ, "ADP_LIBRARY": "libc.so.6"}, timeout=60, check=False)
    assert done.stderr.endswith("adp.errors.LibraryError: libc.so.6 does not have adp_vlan_create\n")


@pytest.mark.parametrize("first", ["import adp", "import adp.lab", "from adp import lab"])
def test_importing_does_not_import_the_bindings(first):
    program = f"{first}; import sys; print([name for name in sys.modules if 'adp.calls' in name])"
    done = subprocess.run([sys.executable, "-B", "-c", program], text=True, capture_output=True, timeout=60, check=True)
    assert done.stdout == "[]\n"


def test_an_unknown_name_is_an_attribute_error():
    with pytest.raises(AttributeError, match="module 'adp' has no attribute 'vlan_creat'"):
        adp.vlan_creat(1)


def test_error_has_name_number_call_and_sentence():
    error = adp.Error("adp_vlan_create", -11)
    assert (error.call, error.status, error.name) == ("adp_vlan_create", -11, "vlan_exists")
    assert str(error) == "adp_vlan_create gave -11 (vlan_exists of the virtual device: the VLAN exists already)"
    assert str(adp.Error("adp_x", adp.E_DRIVER)).startswith("adp_x gave 102 (ADP_E_DRIVER: a driver call failed, or")
    assert str(adp.Error("adp_x", 7)) == "adp_x gave 7 (unknown result)"


class TestPortSet:
    """A set of ports."""

    def test_is_a_set(self):
        assert adp.PortSet({1, 2}) == {1, 2} == adp.PortSet([2, 1, 1])
        assert 1 in adp.PortSet({1}) and not adp.PortSet()
        assert repr(adp.PortSet({26, 1})) == "PortSet({1, 26})" and repr(adp.PortSet()) == "PortSet()"

    @pytest.mark.parametrize("ports, refused", [({-1}, ValueError), ({256}, ValueError), ({"1"}, TypeError), (1, TypeError)])
    def test_has_ports_alone(self, ports, refused):
        with pytest.raises(refused):
            adp.PortSet(ports)

    def test_is_a_bitmap(self):
        assert adp.PortSet({0, 31, 32, 255}).words() == [0x80000001, 1, 0, 0, 0, 0, 0, 1 << 31]
        for ports in (adp.PortSet(), adp.PortSet(range(256)), adp.PortSet({7, 64})):
            assert loaded(stored("ports", ports, Ports)) == ports
        assert loaded(stored("ports", adp.PortSet({63}), FewPorts)) == {63}


@pytest.mark.parametrize("group", [0, 9, -1])
def test_agg_has_eight_groups(group):
    assert adp.agg(1) == 0x10000001
    with pytest.raises(ValueError):
        adp.agg(group)


def test_record_comes_back_as_it_was():
    entity = adp.FpEntity(submodule_type=3, qualifies=[adp.FpQualify(5, b"\1\2", b"\xff")], actions=[adp.FpAction(9)])
    back = loaded(stored("entity", entity, adp.FpEntity.LAYOUT))
    assert back.qualifies[0] == adp.FpQualify(5, b"\1\2".ljust(64, b"\0"), b"\xff".ljust(64, b"\0"))
    assert back.submodule_type == 3 and back.actions[0].type == 9 and len(back.qualifies) == 16
    assert loaded(stored("entity", back, adp.FpEntity.LAYOUT)) == back


def test_results_of_functions_are_checked():
    assert loaded(ctypes.c_int16(-1)) == -1
    assert adp.StgState.FORWARDING == 4 and adp.FpActionType is not adp.FpAction
