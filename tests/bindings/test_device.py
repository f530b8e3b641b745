"""The bindings on a device: exceptions and what they carry, tables, functions that are called, frames."""
import contextlib
import os
import subprocess
import sys

import pytest
from programs import PORT, SECONDS
from test_against_adpsh import Caller

import adp
from adp.lab import Lab
from adp.lab.process import LineReader

PROGRAM = [sys.executable, "-B", __file__.replace("test_device", "programs")]


@pytest.fixture(name="lab", scope="module")
def lab_with_two_hosts():
    with Lab(device_build="host", hosts=[1, PORT]) as lab:
        yield lab


@pytest.fixture(name="caller", scope="module")
def bindings_of_the_lab(lab):
    with contextlib.closing(Caller(lab.device)) as caller:
        assert caller.call("map_ports", []) == (0, None)
        yield caller


def said(lab, name):
    """What a program says that uses the bindings on the device's CPU, and its errors."""
    with lab.device.popen([*PROGRAM, name], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as running:
        output, errors = running.communicate(timeout=SECONDS)
    assert running.returncode == 0, errors
    return output.splitlines(), errors


def test_vlan_is_made_and_read(lab, caller):
    assert caller.call("vlan_create", [100]) == (0, None)
    assert caller.call("vlan_port_set", [100, adp.PortSet({1, 2}), adp.PortSet({2})]) == (0, None)
    assert caller.call("vlan_port_get", [100]) == (0, (adp.PortSet({1, 2}), adp.PortSet({2})))
    assert [vlan["vid"] for vlan in lab.device.ask("vlans")["vlans"]] == [1, 100]
    assert caller.call("vlan_create", [100]) == (-11, None)


@pytest.mark.parametrize("program, lines", [
    ("failure", ["adp_get_agg_group_by_map ADP_FAIL -1 PortSet()"]),
    ("no_map", ["0 []"]),
    ("tables", ["26 27 6", "2 0405 True", "PortSet({1, 2}) 8", "[0, 3, 0] 4096"]),
    ("rules", ["0 None", "0 None", "[4, 7] 1", "True None"]),
    ("received", ["True 3", "True True None 12 True 3 6"]),
])
def test_program_says(lab, program, lines):
    assert said(lab, program)[0] == lines


def test_exceptions_of_functions_are_not_lost(lab):
    lines, errors = said(lab, "handlers")
    assert lines == ["True 7", "0", "0", "False"]
    assert "KeyError: 'not lost'" in errors and "OverflowError: the result of " in errors


def test_link_events(lab):
    with lab.device.popen([*PROGRAM, "links"], stdout=subprocess.PIPE) as running:
        lines = LineReader(running.stdout)
        assert lines.line(SECONDS, "the program") == "1"  # the present link
        lab.device.control("pull", PORT)
        assert lines.line(SECONDS, "the program") == "0"
        lab.device.control("plug", PORT)
        assert lines.line(SECONDS, "the program") == "1"
        assert running.wait(SECONDS) == 0
    lab.await_links()


def test_no_device_is_a_sentence():
    done = subprocess.run([*PROGRAM, "no_device"], capture_output=True, text=True, timeout=SECONDS, check=True,
                          env={**os.environ, "VDEVICE_DIR": "/absent"})
    assert done.stdout.startswith("the device cannot be reached: ")


def test_frame_is_sent_out_of_a_port(lab, caller):
    marker = lab.marker()
    frame = bytes.fromhex("ffffffffffff") + lab.mac() + bytes.fromhex("0800") + marker.ljust(50, b"\0")
    assert caller.call("transmit_frame", [frame, 0, PORT, adp.TagOpcode.PORT_AS_IS]) == (0, None)
    assert lab.arrivals(marker) == {PORT: [frame]}
