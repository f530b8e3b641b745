"""A device as a container runs it: its files, its programs, its ports, its end. In containers with script/image --check,
in processes otherwise."""

import time

import pytest

VLAN = """
adp_vlan_create 10
adp_vlan_port_set 10 {1-2} {2}
adp_intf_pivd_set 2 10
adp_vlan_port_set 1 {3-26} {3-26}
"""
VLAN_FILE = """
log-level = "notice"

[[vlan]]
vid = 10
members = "1-2"
untagged = "2"

[[port]]
ports = 2
pvid = 10
"""


def shown_vlans(device):
    return device.run("vdevctl", "vlans", "10")


def test_frames_cross_two_devices_and_do_so_again_after_a_restart(make_device, cables):
    """Lines for adpsh set up the one device, the configuration file the other."""
    near, far = make_device({"startup.adpsh": VLAN}), make_device({"vdeviced.toml": VLAN_FILE})
    vlans = shown_vlans(near)
    for again in (False, True):
        for device in (near, far) if again else ():
            assert device.stop() == 0
            device.start()
            device.await_ready()
        cables.join(near, 1, far, 1)
        one, other = cables.host(near, 2, "10.0.0.1/24"), cables.host(far, 2, "10.0.0.2/24")
        stranger = cables.host(far, 3, "10.0.0.3/24")
        near.await_output("eth1: link up", "vdevctl", "log")
        far.await_output("eth1: link up", "vdevctl", "log")
        for host in (one, other, stranger):
            host.await_link()
        assert shown_vlans(near) == vlans
        assert one.ping("10.0.0.2", attempts=3)
        assert not one.ping("10.0.0.3", seconds=1.0)


def test_linux_bridges_the_ports_and_has_an_address_there(make_device, cables):
    device = make_device({"switchd.toml": "user_ports = 3\n"})
    one, two = cables.host(device, 1, "10.0.0.1/24"), cables.host(device, 2, "10.0.0.2/24")
    outside = cables.host(device, 3, "10.0.0.3/24")
    device.await_output("swp2", "on-cpu", "ip", "link")
    for line in ("add br10 type bridge", "set swp1 master br10", "set swp2 master br10",
                 "set swp1 up", "set swp2 up", "set swp3 up", "set br10 up"):
        device.run("on-cpu", "ip", "link", *line.split())
    device.run("on-cpu", "ip", "address", "add", "10.0.0.9/24", "dev", "br10")
    device.await_output('"synced": true', "adp-switchd", "status", "--json")
    device.await_output("   10  cpu,1-2", "vdevctl", "vlans", "10")
    for host in (one, two, outside):
        host.await_link()
    assert one.ping("10.0.0.2", attempts=5, seconds=10.0)
    assert one.ping("10.0.0.9", attempts=5, seconds=10.0), "over the CPU port, which is inside"
    assert not one.ping("10.0.0.3", seconds=1.0)
    began = time.monotonic()
    assert device.stop() == 0
    assert time.monotonic() - began < 5
    assert "run-device: adp-switchd has ended\n" in device.log()


def test_the_management_network_is_not_reached_through_the_ports(make_device, cables):
    device = make_device()
    operator, host = cables.host(device, 0, "192.0.2.2/24"), cables.host(device, 1, "192.0.2.3/24")
    device.run("ip", "address", "add", "192.0.2.1/24", "dev", "eth0")
    device.run("ip", "link", "set", "eth0", "up")
    for station in (operator, host):
        station.await_link()
    assert operator.ping("192.0.2.1", attempts=3)
    assert not host.ping("192.0.2.1", seconds=1.0)


def test_the_shell_works_on_the_devices_cpu(make_device):
    device = make_device()
    assert "= 0 (success)" in device.run("adpsh", "--map", "adp_vlan_create 77")
    assert "   77 " in device.run("vdevctl", "vlans")
    assert "eth0" in device.run("on-cpu", "ip", "link", "show", "eth0")


def test_a_killed_device_ends_the_container(make_device):
    device = make_device()
    device.run("sh", "-c", "kill -9 $(pidof vdeviced)")
    assert device.wait() == 137
    assert device.log().endswith("run-device: vdeviced was killed by signal 9, the container ends\n")


def test_a_killed_switchd_ends_the_container(make_device):
    device = make_device({"switchd.toml": ""})
    device.run("sh", "-c", "kill -9 $(pidof adp-switchd)")
    assert device.wait() == 137
    assert "run-device: adp-switchd was killed by signal 9, the container ends\n" in device.log()


@pytest.mark.parametrize("name, text, fault, end", [
    ("vdeviced.toml", "user-ports = 99\n", "vdeviced: {etc}/vdeviced.toml:1: user-ports 99 is not in 1 to 31.\n",
     "run-device: vdeviced has failed with status 1, the container ends\n"),
    ("startup.adpsh", "adp_vlan_craete 10\n", "adpsh: ",
     "run-device: adpsh, in {etc}/startup.adpsh, has failed with status 1, the container ends\n"),
    ("switchd.toml", "user_ports = 99\n", "adp-switchd: {etc}/switchd.toml:1: ",
     "run-device: adp-switchd has failed with status 1, the container ends\n"),
])
def test_a_mistake_in_a_file_ends_the_container_with_a_sentence(make_device, name, text, fault, end):
    device = make_device({name: text}, wait=False)
    assert device.wait() == 1
    for sentence in (fault, end):
        assert sentence.format(etc=device.etc) in device.log()


def test_a_hangup_lets_the_files_be_read_again(make_device):
    device = make_device({"switchd.toml": ""})
    device.signal("HUP")
    device.await_output("the configuration was read again", "vdevctl", "log")
    device.run("adp-switchd", "status")
    assert device.stop() == 0


def test_processes_without_a_parent_leave_nothing(make_device):
    device = make_device()
    device.run("sh", "-c", "(exec sh -c 'sleep 0.2 & sleep 0.2 &') &")
    device.await_output("none", "sh", "-c", "grep -hc sleep /proc/[0-9]*/comm | grep -q 1 || echo none")
    assert "Z (zombie)" not in device.run("sh", "-c", "cat /proc/[0-9]*/status")


def test_every_line_of_the_log_has_its_programs_name(make_device):
    device = make_device({"startup.adpsh": VLAN, "switchd.toml": ""})
    assert device.stop() == 0
    names = {line.split(":")[0] for line in device.log().splitlines()}
    assert names >= {"vdeviced", "adpsh", "run-device"}
    assert names <= {"vdeviced", "adpsh", "run-device", "adp-switchd"}
